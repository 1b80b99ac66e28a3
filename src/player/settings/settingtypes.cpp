#include "settingtypes.h"

#include <QHostAddress>
#include <QRegularExpression>
#include <QUrl>

#include <algorithm>

namespace player {

namespace {

bool isBoolean(const QString& value)
{
    return value == QLatin1String("true") || value == QLatin1String("false");
}

bool isNumber(const QString& value, int highest)
{
    bool ok = false;
    const int number = value.toInt(&ok);
    return ok && number >= 0 && number <= highest;
}

bool isUrl(const QString& value)
{
    const QUrl url(value, QUrl::StrictMode);
    return value.isEmpty()
        || (url.isValid() && !url.host().isEmpty()
            && (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https")));
}

/// The ports may be left out, for any and for the same one.
bool isMapping(const QString& value)
{
    static const QRegularExpression mapping(QStringLiteral(
        R"(^(\[[0-9A-Fa-f:.]+\]|[^\[\]:/]*):\d{0,5}:(\[[0-9A-Fa-f:.]+\]|[^\[\]:/]*):\d{0,5}$)"));
    return mapping.match(value).hasMatch();
}

bool areMappings(const QString& value)
{
    const QStringList mappings = value.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return std::all_of(mappings.begin(), mappings.end(), isMapping);
}

bool isText(const QString& value)
{
    return std::none_of(value.begin(), value.end(), [](QChar character) {
        return character.category() == QChar::Other_Control && character != QLatin1Char('\t');
    });
}

bool isBus(const QString& value)
{
    return value == QLatin1String("auto") || value == QLatin1String("session")
        || value == QLatin1String("system");
}

bool isLogLevel(const QString& value)
{
    static const QStringList levels{ QStringLiteral("trace"), QStringLiteral("debug"),
        QStringLiteral("info"), QStringLiteral("warn"), QStringLiteral("error"),
        QStringLiteral("off") };
    return levels.contains(value);
}

QString demand(bool met, const char* wanted)
{
    return met ? QString() : QString::fromLatin1(wanted);
}

} // namespace

QString demandOn(SettingType type, const QString& value)
{
    switch (type) {
    case SettingType::Text:
        return demand(isText(value), "one line of text without control characters");
    case SettingType::Number:
        return demand(isNumber(value, 1000000), "a number from 0 to 1000000");
    case SettingType::Percent:
        return demand(isNumber(value, 100), "a number from 0 to 100");
    case SettingType::Port:
        return demand(isNumber(value, 65535), "a port from 0 to 65535");
    case SettingType::Boolean:
        return demand(isBoolean(value), "true or false");
    case SettingType::Url:
        return demand(isUrl(value), "a http or https URL with a host");
    case SettingType::Address:
        return demand(!QHostAddress(value).isNull(), "an IP address, such as 127.0.0.1");
    case SettingType::Mappings:
        return demand(areMappings(value), "host:port:address:port, several separated by blanks");
    case SettingType::Bus:
        return demand(isBus(value), "auto, session or system");
    case SettingType::LogLevel:
        return demand(isLogLevel(value), "trace, debug, info, warn, error or off");
    }
    return QString();
}

} // namespace player
