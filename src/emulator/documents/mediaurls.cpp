#include "mediaurls.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QMessageAuthenticationCode>

namespace emulator::documents {

namespace {

QString signedText(
    catalogue::Id track, const QString& expires, const QString& then, const QString& keyed)
{
    return QStringLiteral("audio %1 %2 %3 %4").arg(catalogue::toText(track), expires, then, keyed);
}

} // namespace

MediaUrls::MediaUrls(const QByteArray& secret)
    : m_secret(secret)
{
}

QString MediaUrls::sign(const QString& text) const
{
    const QByteArray code =
        QMessageAuthenticationCode::hash(text.toUtf8(), m_secret, QCryptographicHash::Sha256);
    return QString::fromLatin1(
        code.left(18).toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

QString MediaUrls::audio(
    const catalogue::Track& track, qint64 expiresMs, int expiredStatus, bool keyHeaders) const
{
    const QString expires = QString::number(expiresMs);
    const QString then = QString::number(expiredStatus);
    const QString keyed = QString::number(keyHeaders ? 1 : 0);
    return QStringLiteral("/audio/%1.%2?expires=%3&then=%4&keyed=%5&signature=%6")
        .arg(catalogue::toText(track.id), QFileInfo(track.path).suffix().toLower(), expires, then,
            keyed, sign(signedText(track.id, expires, then, keyed)));
}

MediaUrls::Check MediaUrls::check(catalogue::Id track, const QString& expires, const QString& then,
    const QString& keyed, const QString& signature, qint64 nowMs) const
{
    if (signature != sign(signedText(track, expires, then, keyed)))
        return Check::Forged;
    return expires.toLongLong() < nowMs ? Check::Expired : Check::Good;
}

QString MediaUrls::keyIdName()
{
    return QStringLiteral("x-audio-key-id");
}

QString MediaUrls::keyName()
{
    return QStringLiteral("x-audio-key");
}

QString MediaUrls::keyId(catalogue::Id track) const
{
    return sign(QLatin1String("key id ") + catalogue::toText(track)).left(8);
}

QString MediaUrls::key(catalogue::Id track) const
{
    return sign(QLatin1String("key ") + catalogue::toText(track));
}

} // namespace emulator::documents
