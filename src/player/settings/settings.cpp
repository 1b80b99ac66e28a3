#include "settings.h"

#include <QFile>
#include <QTextStream>
#include <QUrl>

#include <algorithm>
#include <vector>

namespace player {

namespace {

const SettingInfo* find(const QString& key)
{
    const auto& all = Settings::all();
    const auto found = std::find_if(
        all.begin(), all.end(), [&](const SettingInfo& info) { return info.key == key; });
    return found != all.end() ? &*found : nullptr;
}

/// Levenshtein's distance, for "did you mean".
int distance(const QString& a, const QString& b)
{
    std::vector<int> row(static_cast<std::size_t>(b.size()) + 1);
    for (std::size_t column = 0; column < row.size(); ++column)
        row[column] = static_cast<int>(column);
    for (int i = 1; i <= a.size(); ++i) {
        int diagonal = row[0];
        row[0] = i;
        for (int j = 1; j <= b.size(); ++j) {
            const auto column = static_cast<std::size_t>(j);
            const int replaced = diagonal + (a.at(i - 1) == b.at(j - 1) ? 0 : 1);
            diagonal = row[column];
            row[column] = std::min({ replaced, row[column] + 1, row[column - 1] + 1 });
        }
    }
    return row.back();
}

QString nearestKey(const QString& key)
{
    const auto& all = Settings::all();
    return std::min_element(all.begin(), all.end(),
        [&](const SettingInfo& a, const SettingInfo& b) {
            return distance(a.key, key) < distance(b.key, key);
        })
        ->key;
}

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
            && url.scheme().startsWith(QLatin1String("http")));
}

/// What is wrong with a value; empty when nothing is.
QString complaint(const SettingInfo& info, const QString& value)
{
    switch (info.type) {
    case SettingType::Text:
        return QString();
    case SettingType::Number:
        return isNumber(value, 1000000) ? QString() : QStringLiteral("a number from 0 to 1000000");
    case SettingType::Port:
        return isNumber(value, 65535) ? QString() : QStringLiteral("a port from 0 to 65535");
    case SettingType::Boolean:
        return isBoolean(value) ? QString() : QStringLiteral("true or false");
    case SettingType::Url:
        return isUrl(value) ? QString() : QStringLiteral("a http or https URL with a host");
    }
    return QString();
}

} // namespace

bool Settings::load(const QString& fileName, bool mustExist)
{
    QFile file(fileName);
    if (!file.exists() && !mustExist)
        return true;
    if (!file.open(QIODevice::ReadOnly)) {
        m_error = QStringLiteral("%1: cannot be read (%2).").arg(fileName, file.errorString());
        return false;
    }
    return parse(QString::fromUtf8(file.readAll()), fileName);
}

bool Settings::parse(const QString& text, const QString& fileName)
{
    Settings read(*this);
    QString section;
    int number = 0;
    for (const QString& raw : text.split(QLatin1Char('\n'))) {
        ++number;
        const QString where = QStringLiteral("%1, line %2").arg(fileName).arg(number);
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            section = line.mid(1, line.size() - 2).trimmed();
            continue;
        }
        const int equals = line.indexOf(QLatin1Char('='));
        if (equals < 0) {
            m_error = QStringLiteral("%1: \"%2\" is neither \"key = value\", \"[section]\" nor a "
                                     "comment (#).")
                          .arg(where, line.left(80));
            return false;
        }
        const QString key = section + QLatin1Char('.') + line.left(equals).trimmed();
        if (!read.set(key, line.mid(equals + 1).trimmed(), where)) {
            m_error = read.m_error;
            return false;
        }
    }
    *this = read;
    return true;
}

bool Settings::apply(const QString& assignment)
{
    const int equals = assignment.indexOf(QLatin1Char('='));
    if (equals < 0) {
        m_error = QStringLiteral("\"%1\" is not \"section.name=value\".").arg(assignment);
        return false;
    }
    return set(assignment.left(equals).trimmed(), assignment.mid(equals + 1).trimmed(),
        QStringLiteral("the command line"));
}

bool Settings::set(const QString& key, const QString& value, const QString& where)
{
    const SettingInfo* info = find(key);
    if (!info) {
        m_error = QStringLiteral("%1: there is no setting \"%2\"; the nearest is \"%3\".")
                      .arg(where, key.left(80), nearestKey(key.left(80)));
        return false;
    }
    const QString wanted = complaint(*info, value);
    if (!wanted.isEmpty()) {
        m_error = QStringLiteral("%1: \"%2\" must be %3, not \"%4\".")
                      .arg(where, key, wanted, value.left(80));
        return false;
    }
    m_values.insert(key, value);
    return true;
}

QString Settings::value(const char* key) const
{
    const QString name = QString::fromLatin1(key);
    const SettingInfo* info = find(name);
    Q_ASSERT_X(info, "Settings", key);
    return m_values.value(name, info->defaultValue);
}

QString Settings::text(const char* key) const
{
    return value(key);
}

int Settings::number(const char* key) const
{
    return value(key).toInt();
}

bool Settings::boolean(const char* key) const
{
    return value(key) == QLatin1String("true");
}

QStringList Settings::list(const char* key) const
{
    return value(key).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QString Settings::toFile() const
{
    QString text;
    QTextStream out(&text);
    QString section;
    for (const SettingInfo& info : all()) {
        const int dot = info.key.indexOf(QLatin1Char('.'));
        if (info.key.left(dot) != section) {
            section = info.key.left(dot);
            out << "\n[" << section << "]\n";
        }
        out << "# " << info.description << '\n';
        const QString assignment = info.key.mid(dot + 1) + QLatin1String(" = ")
            + m_values.value(info.key, info.defaultValue);
        out << (m_values.contains(info.key) ? QString() : QStringLiteral("#"))
            << assignment.trimmed() << "\n\n";
    }
    return text.trimmed() + QLatin1Char('\n');
}

} // namespace player
