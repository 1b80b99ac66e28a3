#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

/// The player's configuration: one commented file of "key = value" lines in sections, read
/// strictly. Values given on the command line win over the file, the file over the defaults.
namespace player {

/// What a value must look like.
enum class SettingType {
    Text,
    Number,
    Percent,
    Boolean,
    Url,
    Port,
    Address,
    Mappings,
    LogLevel,
    Bus,
};

/// One setting that the player knows.
struct SettingInfo
{
    QString key; ///< "section.name"
    SettingType type;
    QString defaultValue;
    QString description; ///< One sentence or two, for people.
};

class Settings
{
public:
    /// Every setting there is, in the order of the file.
    static const QVector<SettingInfo>& all();

    /// Reads a file of UTF-8 text. On false `error()` says which line is wrong, why, and what to
    /// write instead, in characters that a terminal can be given; nothing of the file has been
    /// taken over then. A file that is not there is an error only when `mustExist`.
    bool load(const QString& fileName, bool mustExist);
    /// Sets "section.name=value", as given on the command line.
    bool apply(const QString& assignment);
    QString error() const { return m_error; }

    /// `key` must be one of all().
    QString text(const char* key) const;
    int number(const char* key) const;
    bool boolean(const char* key) const;
    /// A text of several, separated by blanks.
    QStringList list(const char* key) const;

    /// All settings with what they are now, as a file that load() reads: the commented sample file
    /// when nothing was changed.
    QString toFile() const;

private:
    bool parse(const QString& text, const QString& fileName);
    bool set(const QString& key, const QString& value, const QString& where);
    QString value(const char* key) const;

    QHash<QString, QString> m_values;
    QString m_error;
};

} // namespace player
