#pragma once

#include <QHash>
#include <QString>

namespace player {

/// The refresh tokens of all services, in one file of the state folder that its owner alone can
/// read. Access tokens are never kept: their age does not survive a change of the wall clock.
class TokenStore
{
public:
    /// Reads the file. A file that cannot be understood is set aside as "<name>.bad", and one that
    /// others can read is mended; both are logged.
    explicit TokenStore(const QString& fileName);

    /// For people: what was wrong with the file and what to do; empty when it was fine.
    const QString& complaint() const { return m_complaint; }

    /// Empty when there is none.
    QString refreshToken(const QString& service) const { return m_tokens.value(service); }
    /// Has the token on the disk when it returns true; else `error` says why not, and the file
    /// still holds the one before. An empty token removes the service, from the previous generation
    /// of the file too.
    bool save(const QString& service, const QString& refreshToken, QString* error);

private:
    void load();
    void mendMode();
    bool take(const QByteArray& text);
    void setAside();
    bool write(QString* error) const;

    const QString m_fileName;
    QHash<QString, QString> m_tokens; // By service.
    QString m_complaint;
};

} // namespace player
