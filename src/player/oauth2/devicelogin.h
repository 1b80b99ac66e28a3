#pragma once

#include "clock.h"
#include "oauth2answers.h"
#include "oauth2client.h"

#include <functional>
#include <memory>

namespace player {

/// One login by device code (RFC 8628) with a proof key (RFC 7636): asks for a code, then asks the
/// server again and again whether the user has entered it. Never asks faster than the server
/// allows. Destroying it ends it: whatever is answered later is ignored.
class DeviceLogin
{
public:
    /// Each may destroy the login.
    struct Events
    {
        /// The user is to enter this code. May come a second time, with another code.
        std::function<void(const DeviceAnswer&)> waiting;
        /// The end: the user has approved.
        std::function<void(const TokenAnswer&)> approved;
        /// The end: `message` tells people why and what to do.
        std::function<void(const QString& message)> failed;
    };

    /// `client` and `clock` must outlive the login. Starts at once.
    DeviceLogin(const OAuth2Client& client, Clock& clock, Events events);
    ~DeviceLogin();
    Q_DISABLE_COPY_MOVE(DeviceLogin)

private:
    void askForCode();
    void codeAnswered(const OAuth2Client::Answer& answer);
    void pollAfter(qint64 ms);
    void poll();
    void polled(const OAuth2Client::Answer& answer);
    void refused(const QString& errorCode);
    void pollAgain();
    void takeToken(const QVariantHash& json);
    void fail(const QString& message);
    OAuth2Client::Parameters codeParameters() const;
    OAuth2Client::Parameters pollParameters() const;
    bool usesEarlierForm() const;

    const OAuth2Client& m_client;
    Clock& m_clock;
    const Events m_events;
    QString m_verifier;
    DeviceAnswer m_code;
    qint64 m_codeEndsMs = 0; // Monotonic.
    qint64 m_intervalMs = 0; // As the server wants it; never shrinks for one code.
    qint64 m_backoffMs = 0; // 0 while the server answers.
    bool m_startedOver = false;
    std::unique_ptr<Alarm> m_nextPoll;
    CMContext m_context;
};

} // namespace player
