#include "tokens.h"

#include "savefile.h"
#include "tavujson.h"

#include <QCryptographicHash>
#include <QFile>
#include <QMessageAuthenticationCode>
#include <QRandomGenerator>
#include <QStringList>
#include <QVariantHash>

#include <utility>

#include <algorithm>

namespace emulator::oauth2 {

namespace {

const QString accessMark = QStringLiteral("access");
const QString refreshMark = QStringLiteral("refresh");
const QString serialKey = QStringLiteral("serial");
const QString firstGoodKey = QStringLiteral("firstGoodSerial");
const QString familiesKey = QStringLiteral("families");

QString base64(const QByteArray& bytes)
{
    return QString::fromLatin1(
        bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

QByteArray codeOf(const QString& content, const QByteArray& secret)
{
    return QMessageAuthenticationCode::hash(content.toUtf8(), secret, QCryptographicHash::Sha256);
}

} // namespace

Tokens::Tokens(const QByteArray& secret, const QString& stateFile, Trouble trouble)
    : m_secret(secret)
    , m_stateFile(stateFile)
    , m_trouble(std::move(trouble))
{
    load();
}

QString Tokens::seal(const QString& content) const
{
    return base64(content.toUtf8()) + QLatin1Char('.') + base64(codeOf(content, m_secret));
}

// The content of a token that was sealed here; empty for any other text.
QString Tokens::open(const QString& token) const
{
    const QString content = QString::fromUtf8(QByteArray::fromBase64(
        token.section(QLatin1Char('.'), 0, 0).toLatin1(), QByteArray::Base64UrlEncoding));
    return seal(content) == token ? content : QString();
}

TokenPair Tokens::pairOf(const QString& family, qint64 nowMs, qint64 lifetimeMs)
{
    const int generation = m_families.value(family);
    ++m_serial;
    save();
    return { seal(QStringLiteral("%1 %2 %3 %4 %5")
                      .arg(accessMark, family)
                      .arg(m_serial)
                      .arg(nowMs + lifetimeMs)
                      .arg(generation)),
        seal(QStringLiteral("%1 %2 %3").arg(refreshMark, family).arg(generation)) };
}

TokenPair Tokens::begin(qint64 nowMs, qint64 lifetimeMs)
{
    const QString family = QString::number(QRandomGenerator::system()->generate64(), 36);
    m_families.insert(family, 0);
    return pairOf(family, nowMs, lifetimeMs);
}

bool Tokens::isUsed(const QString& family, int generation) const
{
    return m_used.value(family) >= generation;
}

std::optional<TokenPair> Tokens::refresh(
    const QString& refreshToken, qint64 nowMs, qint64 lifetimeMs, bool grace)
{
    const QStringList content = open(refreshToken).split(QLatin1Char(' '));
    if (content.size() != 3 || content.at(0) != refreshMark)
        return std::nullopt;
    const auto family = m_families.find(content.at(1));
    if (family == m_families.end())
        return std::nullopt;
    const int shown = content.at(2).toInt();
    if (grace && shown == *family - 1 && !isUsed(family.key(), *family))
        return pairOf(content.at(1), nowMs, lifetimeMs);
    if (*family != shown) {
        m_families.erase(family);
        save();
        return std::nullopt;
    }
    m_used.insert(family.key(), shown);
    ++*family;
    return pairOf(content.at(1), nowMs, lifetimeMs);
}

TokenState Tokens::checkAccess(const QString& accessToken, qint64 nowMs) const
{
    const QStringList content = open(accessToken).split(QLatin1Char(' '));
    if (content.size() != 5 || content.at(0) != accessMark)
        return TokenState::Unknown;
    if (!m_families.contains(content.at(1)))
        return TokenState::Revoked;
    int& used = m_used[content.at(1)];
    used = std::max(used, content.at(4).toInt());
    const bool good =
        content.at(2).toLongLong() >= m_firstGoodSerial && nowMs < content.at(3).toLongLong();
    return good ? TokenState::Good : TokenState::Expired;
}

void Tokens::revokeAll()
{
    m_families.clear();
    save();
}

void Tokens::expireAccessTokens()
{
    m_firstGoodSerial = m_serial + 1;
    save();
}

void Tokens::load()
{
    QFile file(m_stateFile);
    if (m_stateFile.isEmpty() || !file.open(QIODevice::ReadOnly))
        return;
    const QVariantHash state = TavuJson::parse(file.readAll()).toHash();
    m_serial = state.value(serialKey).toLongLong();
    m_firstGoodSerial = state.value(firstGoodKey).toLongLong();
    const QVariantHash families = state.value(familiesKey).toHash();
    for (auto family = families.cbegin(); family != families.cend(); ++family)
        m_families.insert(family.key(), family->toInt());
}

void Tokens::save()
{
    if (m_stateFile.isEmpty())
        return;
    QVariantHash families;
    for (auto family = m_families.cbegin(); family != m_families.cend(); ++family)
        families.insert(family.key(), *family);
    QString error;
    const bool saved = files::replaceFile(m_stateFile,
        TavuJson::toJson(QVariantHash{ { serialKey, m_serial }, { firstGoodKey, m_firstGoodSerial },
            { familiesKey, families } }),
        files::privateFile, &error);
    if (!std::exchange(m_told, !saved) && !saved && m_trouble)
        m_trouble(QStringLiteral("Logins cannot be kept: %1. They work until the emulator ends; "
                                 "free some space there.")
                      .arg(error));
}

} // namespace emulator::oauth2
