#pragma once

#include "tokens.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariantHash>

#include <optional>

namespace emulator::oauth2 {

/// What the authorization server demands and grants.
struct Rules
{
    QString clientId = QStringLiteral("tavu-player");
    QString clientSecret = QStringLiteral("emulator-secret"); ///< empty: a public client
    /// Names of the device grant that are taken, in any order.
    QStringList deviceGrants{ QStringLiteral("device_code"),
        QStringLiteral("urn:ietf:params:oauth:grant-type:device_code") };
    int pollIntervalS = 5;
    int codeLifetimeS = 600;
    int tokenLifetimeS = 3600;
    bool refreshGrace = true; ///< a refresh token works until its successor has been used
    bool pkceRequired = true;
    bool autoApprove = false; ///< every code is approved as soon as it is made
};

/// A form as it was posted; the last of equal names counts.
using Form = QHash<QString, QString>;

/// Reads application/x-www-form-urlencoded text.
Form parseForm(const QByteArray& body);

/// Who claims to ask: from the "authorization" field (Basic) or from the form.
struct Client
{
    QString id;
    QString secret;
};
Client clientOf(const QByteArray& authorization, const Form& form);

struct Answer
{
    int status = 200;
    QVariantHash json;
};

/// The authorization server without its HTTP: device authorization (RFC 8628) with proof keys
/// (RFC 7636, S256), refresh with rotation, where the reuse of an old refresh token revokes its
/// whole family (RFC 6749, RFC 6819). Times are milliseconds since the epoch.
class Authority
{
public:
    /// `secret` signs tokens; `stateFile` keeps the logins over restarts, empty keeps none.
    /// `trouble` hears of it when they cannot be kept.
    Authority(const Rules& rules, const QByteArray& secret, const QString& stateFile,
        Tokens::Trouble trouble = {});

    Rules& rules() { return m_rules; }

    /// `verificationUri` is the page where the user types the code.
    Answer authorizeDevice(
        const Client& client, const Form& form, const QString& verificationUri, qint64 nowMs);
    Answer token(const Client& client, const Form& form, qint64 nowMs);

    enum class Decision { Open, Approved, Denied };
    struct Asking
    {
        QString userCode;
        QString scope;
        Decision decision = Decision::Open;
    };
    /// The open question behind a user code, however it was typed; nothing when it is unknown, over
    /// or answered.
    std::optional<Asking> asking(const QString& userCode, qint64 nowMs) const;
    /// Answers it. False when there is no open question of the code.
    bool decide(const QString& userCode, bool approve, qint64 nowMs);

    /// Tokens without a login; for tests and tools.
    Answer grantDirectly(qint64 nowMs);

    TokenState checkBearer(const QByteArray& authorization, qint64 nowMs) const;
    /// From now on every token is refused, refresh tokens too.
    void revokeAll();
    /// From now on every access token issued so far is refused; refresh tokens stay good.
    void expireAccessTokens();

private:
    struct Pending
    {
        Asking asking;
        QString challenge;
        qint64 expiresMs = 0;
        qint64 intervalMs = 0;
        qint64 lastPollMs = 0;
    };

    std::optional<Answer> refuseClient(const Client& client, bool secretNeeded) const;
    Answer deviceToken(const Form& form, qint64 nowMs);
    Answer pollOf(Pending& pending, const Form& form, qint64 nowMs);
    Answer refresh(const Form& form, qint64 nowMs);
    Answer issue(const TokenPair& pair, const QString& scope) const;
    Pending* findByUserCode(const QString& userCode, qint64 nowMs);
    void forgetOld(qint64 nowMs);

    Rules m_rules;
    Tokens m_tokens;
    QHash<QString, Pending> m_pending; ///< by device code
};

} // namespace emulator::oauth2
