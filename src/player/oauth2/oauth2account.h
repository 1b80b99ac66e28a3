#pragma once

#include "cmpath.h"
#include "cmreply.h"
#include "devicelogin.h"
#include "tavuoauth2devicecode.h"
#include "tokenrenewal.h"
#include "tokenstore.h"

#include <memory>
#include <optional>
#include <vector>

namespace player {

/// The login of one service: where it stands, its tokens and when they are renewed. Publishes the
/// service's values at every change.
class OAuth2Account
{
public:
    /// `http`, `clock` and `store` must outlive the account. Publishes at once; with a token in
    /// the store the user counts as signed in, and an access token is asked for.
    OAuth2Account(
        const TavuOAuth2ServiceInfo& info, HttpClient& http, Clock& clock, TokenStore& store);
    ~OAuth2Account();
    Q_DISABLE_COPY_MOVE(OAuth2Account)

    /// Starts a login unless the user is signed in or one is under way. `anew` gives up a code that
    /// the user has not entered yet.
    void startLogin(bool anew);
    /// Asks for a new access token; `reply` finishes with the outcome. Requests that come meanwhile
    /// share it. Whoever asks right after a renewal, or after a token before the present one alone
    /// was refused, is given the present one.
    void refreshToken(const CMReply<QVariant>& reply);
    /// A server has refused the token. One that the account never had is passed over.
    void tokenRefused(const QString& token);
    /// Forgets the tokens.
    void logout();

private:
    enum class Stage { Idle, Starting, Waiting, Failed, LoggedIn };
    static QString nameOf(Stage stage);

    std::unique_ptr<DeviceLogin> makeLogin();
    std::unique_ptr<TokenRenewal> makeRenewal();
    void showCode(const DeviceAnswer& code);
    void loginApproved(const TokenAnswer& token);
    void renewed(const TokenAnswer& token);
    void takeTokens(const TokenAnswer& token);
    void setAccessToken(const QString& token);
    void saveRefreshToken();
    bool wasJustRenewed() const;
    bool isAnotherRefused() const;
    void watchExpiry(qint64 lifetimeMs);
    void expired();
    void endLogin(const QString& message);
    void finishWaiting(const QString& error);
    void setStage(Stage stage, const QString& message = QString());
    QString missingSetting() const;
    QString name() const { return m_client.info().serviceName(); }

    void publishAccessToken();
    void publishLoggedIn(bool loggedIn);
    void publishDeviceCode(const QString& message);
    CMPath path(const QString& subpath) const;

    const OAuth2Client m_client;
    Clock& m_clock;
    TokenStore& m_store;
    Stage m_stage = Stage::Idle;
    DeviceAnswer m_code;
    qint64 m_codeEndsWallMs = 0;
    QString m_refreshToken;
    QString m_accessToken;
    bool m_isRefused = false; // The access token.
    QStringList m_earlierTokens; // The access tokens before it, oldest first.
    bool m_earlierRefused = false; // One of these, since the last wish for another token.
    std::optional<qint64> m_renewedMs; // Monotonic; none when the access token came with the login.
    QString m_saveProblem; // Empty when the token is on the disk.
    std::vector<CMReply<QVariant>> m_waiting; // For the outcome of a renewal.
    std::unique_ptr<DeviceLogin> m_login;
    std::unique_ptr<TokenRenewal> m_renewal;
    std::unique_ptr<Alarm> m_renewalDue;
    std::unique_ptr<Alarm> m_expiry;
    std::unique_ptr<Alarm> m_saveAgain;
};

} // namespace player
