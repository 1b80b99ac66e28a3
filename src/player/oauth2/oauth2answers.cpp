#include "oauth2answers.h"

#include "tavuurl.h"
#include "tavuvariant.h"

#include <algorithm>

namespace player {

namespace {

constexpr int longestToken = 16 * 1024;
constexpr int longestUserCode = 64;
constexpr int longestUri = 2048;
constexpr qint64 defaultIntervalS = 5;
constexpr qint64 longestIntervalS = 300;
constexpr qint64 defaultCodeLifetimeS = 600;
constexpr qint64 longestCodeLifetimeS = qint64{ 24 } * 3600;
constexpr qint64 defaultTokenLifetimeS = 3600;
constexpr qint64 longestTokenLifetimeS = qint64{ 20 } * 24 * 3600;

QString field(const QVariantHash& json, const char* name)
{
    return tavuvariant::toText(json.value(QString::fromLatin1(name)));
}

/// Seconds of a field as milliseconds; the default when it is missing, no number, or not above 0.
qint64 milliseconds(
    const QVariantHash& json, const char* name, qint64 defaultSeconds, qint64 longestSeconds)
{
    const qint64 seconds = tavuvariant::toI64(json.value(QString::fromLatin1(name)));
    return qMin(seconds > 0 ? seconds : defaultSeconds, longestSeconds) * 1000;
}

bool isVisibleAscii(QChar c)
{
    return c > QLatin1Char(' ') && c < QLatin1Char('\x7f');
}

bool isVisibleAscii(const QString& text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return isVisibleAscii(c); });
}

/// People are to read it and type it; nothing may pretend to be something else.
bool isUserCode(const QString& text)
{
    const bool printable = std::all_of(text.begin(), text.end(),
        [](QChar c) { return isVisibleAscii(c) || c == QLatin1Char(' '); });
    return !text.trimmed().isEmpty() && text.size() <= longestUserCode && printable;
}

/// People are to open it.
bool isWebAddress(const QString& text)
{
    if (text.isEmpty() || text.size() > longestUri || !isVisibleAscii(text))
        return false;
    const TavuUrl url(text);
    const bool web =
        url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http");
    return url.isValid() && web && !url.host().isEmpty() && !url.hasUserInfo();
}

QString unusable(const char* name)
{
    return QStringLiteral("its %1 is missing or malformed").arg(QString::fromLatin1(name));
}

QString verificationUri(const QVariantHash& json)
{
    const QString uri = field(json, "verification_uri");
    return uri.isEmpty() ? field(json, "verification_url") : uri; // As older servers name it.
}

} // namespace

std::optional<DeviceAnswer> DeviceAnswer::read(const QVariantHash& json, QString* reason)
{
    DeviceAnswer answer;
    answer.deviceCode = field(json, "device_code");
    answer.userCode = field(json, "user_code");
    answer.verificationUri = player::verificationUri(json);
    answer.verificationUriComplete = field(json, "verification_uri_complete");
    answer.lifetimeMs =
        milliseconds(json, "expires_in", defaultCodeLifetimeS, longestCodeLifetimeS);
    answer.intervalMs = milliseconds(json, "interval", defaultIntervalS, longestIntervalS);
    const bool completeIsGood =
        answer.verificationUriComplete.isEmpty() || isWebAddress(answer.verificationUriComplete);
    if (!isToken(answer.deviceCode))
        *reason = unusable("device_code");
    else if (!isUserCode(answer.userCode))
        *reason = unusable("user_code");
    else if (!isWebAddress(answer.verificationUri))
        *reason = unusable("verification_uri");
    else if (!completeIsGood)
        *reason = unusable("verification_uri_complete");
    else
        return answer;
    return std::nullopt;
}

std::optional<TokenAnswer> TokenAnswer::read(const QVariantHash& json, QString* reason)
{
    TokenAnswer answer;
    answer.accessToken = field(json, "access_token");
    answer.refreshToken = field(json, "refresh_token");
    answer.lifetimeMs =
        milliseconds(json, "expires_in", defaultTokenLifetimeS, longestTokenLifetimeS);
    const QString type = field(json, "token_type");
    if (!isToken(answer.accessToken))
        *reason = unusable("access_token");
    else if (!answer.refreshToken.isEmpty() && !isToken(answer.refreshToken))
        *reason = unusable("refresh_token");
    else if (!type.isEmpty() && type.compare(QLatin1String("bearer"), Qt::CaseInsensitive) != 0)
        *reason = unusable("token_type");
    else
        return answer;
    return std::nullopt;
}

bool isToken(const QString& text)
{
    return !text.isEmpty() && text.size() <= longestToken && isVisibleAscii(text);
}

QString errorCodeOf(const QVariantHash& json)
{
    const QString code = field(json, "error");
    const bool usable = !code.isEmpty() && code.size() <= 64 && isVisibleAscii(code);
    return usable ? code : QStringLiteral("unknown_error");
}

} // namespace player
