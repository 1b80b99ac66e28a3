#include "pkce.h"

#include <QCryptographicHash>
#include <QRandomGenerator>

#include <array>

namespace player::pkce {

namespace {

QString base64Url(const QByteArray& bytes)
{
    return QString::fromLatin1(
        bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

} // namespace

QString makeVerifier()
{
    std::array<quint32, 8> words{};
    QRandomGenerator::system()->fillRange(words.data(), int(words.size()));
    return base64Url(QByteArray(reinterpret_cast<const char*>(words.data()), sizeof words));
}

QString challengeOf(const QString& verifier)
{
    return base64Url(QCryptographicHash::hash(verifier.toLatin1(), QCryptographicHash::Sha256));
}

} // namespace player::pkce
