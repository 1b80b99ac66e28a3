#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <functional>
#include <optional>

namespace emulator::oauth2 {

enum class TokenState { Good, Missing, Unknown, Expired, Revoked };

struct TokenPair
{
    QString access;
    QString refresh;
};

/// Makes and checks tokens. Each login is a family: its refresh token works once and gives the next
/// one; when an old one comes back, the family is revoked. With grace the one before the newest
/// works on until something of the newest pair was used: its answer may have been lost. Families
/// are kept in the state file; tokens themselves are signed and stored nowhere.
class Tokens
{
public:
    /// For people: the families could not be kept, and why; once until they can be again.
    using Trouble = std::function<void(const QString& problem)>;

    Tokens(const QByteArray& secret, const QString& stateFile, Trouble trouble = {});

    /// Starts a family.
    TokenPair begin(qint64 nowMs, qint64 lifetimeMs);
    /// The family's next pair; nothing when the token is not good.
    std::optional<TokenPair> refresh(
        const QString& refreshToken, qint64 nowMs, qint64 lifetimeMs, bool grace);
    TokenState checkAccess(const QString& accessToken, qint64 nowMs) const;

    void revokeAll();
    void expireAccessTokens();

private:
    TokenPair pairOf(const QString& family, qint64 nowMs, qint64 lifetimeMs);
    bool isUsed(const QString& family, int generation) const;
    QString seal(const QString& content) const;
    QString open(const QString& token) const;
    void load();
    void save();

    QByteArray m_secret;
    QString m_stateFile;
    Trouble m_trouble;
    bool m_told = false;
    QHash<QString, int> m_families; ///< name to generation; a revoked one is gone
    mutable QHash<QString, int> m_used; ///< name to the newest generation that came back
    qint64 m_serial = 0; ///< of the access token made last
    qint64 m_firstGoodSerial = 0; ///< those before count as expired
};

} // namespace emulator::oauth2
