#pragma once

#include "clock.h"
#include "oauth2answers.h"
#include "oauth2client.h"

#include <functional>
#include <memory>

namespace player {

/// Gets new access tokens for a refresh token (RFC 6749, section 6): one request at a time, and
/// after a failure at most one every 30 seconds. Goes on by itself until it succeeds or the server
/// takes the login back. Destroying it ends it: whatever is answered later is ignored.
class TokenRenewal
{
public:
    /// Each may destroy the renewal.
    struct Events
    {
        std::function<void(const TokenAnswer&)> renewed;
        /// The server takes the refresh token for invalid: the login has ended.
        std::function<void()> revoked;
        /// It failed for now; `message` tells people why.
        std::function<void(const QString& message)> failed;
    };

    /// `client` and `clock` must outlive the renewal.
    TokenRenewal(const OAuth2Client& client, Clock& clock, Events events);
    ~TokenRenewal();
    Q_DISABLE_COPY_MOVE(TokenRenewal)

    /// What the next request shows. Empty: there is nothing to renew with.
    void setRefreshToken(const QString& token) { m_refreshToken = token; }

    /// Asks for a new token, unless that is being done. Returns false when it has to wait after a
    /// failure; it will then be done by itself.
    bool renew();

private:
    void send();
    void answered(const OAuth2Client::Answer& answer);
    void refused(const QString& errorCode);
    void failAndWait(const QString& reason);
    void takeToken(const QVariantHash& json);

    const OAuth2Client& m_client;
    Clock& m_clock;
    const Events m_events;
    QString m_refreshToken;
    bool m_sending = false;
    bool m_isRepeat = false;
    std::unique_ptr<Alarm> m_nextTry;
    CMContext m_context;
};

} // namespace player
