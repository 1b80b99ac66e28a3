#include "settings.h"

#include "settingtypes.h"

#include <QFile>
#include <QTextCodec>
#include <QTextStream>

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

/// As much of a foreign text as is to be shown, without what would steer a terminal.
QString shown(const QString& text)
{
    constexpr int atMost = 80;
    QString plain = text.left(atMost);
    for (QChar& character : plain) {
        if (!character.isPrint())
            character = QChar::ReplacementCharacter;
    }
    return plain;
}

/// The number of the first line that is not UTF-8 text; 0 when all are.
int lineThatIsNoText(const QByteArray& bytes)
{
    int number = 0;
    const QTextCodec* utf8 = QTextCodec::codecForName("UTF-8");
    for (const QByteArray& line : bytes.split('\n')) {
        ++number;
        QTextCodec::ConverterState state;
        utf8->toUnicode(line.constData(), line.size(), &state);
        if (state.invalidChars > 0 || state.remainingChars > 0 || line.contains('\0'))
            return number;
    }
    return 0;
}

QString freshFile()
{
    return QStringLiteral("\"tavu-player --print-config\" prints a fresh file.");
}

} // namespace

bool Settings::load(const QString& fileName, bool mustExist)
{
    QFile file(fileName);
    if (!file.exists() && !mustExist)
        return true;
    if (!file.open(QIODevice::ReadOnly)) {
        m_error = QStringLiteral("The settings file %1 cannot be read: %2. Name another with "
                                 "--config, or make one: %3")
                      .arg(shown(fileName), file.errorString(), freshFile());
        return false;
    }
    constexpr qint64 longestFile = qint64{ 1024 } * 1024;
    const QByteArray bytes = file.read(longestFile + 1);
    const int badLine = lineThatIsNoText(bytes);
    if (badLine != 0 || bytes.size() > longestFile) {
        m_error = badLine != 0
            ? QStringLiteral("%1, line %2: this is not UTF-8 text. Mend the line, or start afresh: "
                             "%3")
                  .arg(shown(fileName), QString::number(badLine), freshFile())
            : QStringLiteral("%1 is too long for a settings file. Name another with --config.")
                  .arg(shown(fileName));
        return false;
    }
    return parse(QString::fromUtf8(bytes), shown(fileName));
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
                          .arg(where, shown(line));
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
        m_error = QStringLiteral("The command line: \"%1\" is not \"section.name=value\".")
                      .arg(shown(assignment));
        return false;
    }
    return set(assignment.left(equals).trimmed(), assignment.mid(equals + 1).trimmed(),
        QStringLiteral("The command line"));
}

bool Settings::set(const QString& key, const QString& value, const QString& where)
{
    const SettingInfo* info = find(key);
    if (!info) {
        m_error = QStringLiteral("%1: there is no setting \"%2\"; the nearest is \"%3\".")
                      .arg(where, shown(key), nearestKey(key.left(80)));
        return false;
    }
    const QString wanted = demandOn(info->type, value);
    if (!wanted.isEmpty()) {
        m_error = QStringLiteral("%1: \"%2\" must be %3, not \"%4\".")
                      .arg(where, key, wanted, shown(value));
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
