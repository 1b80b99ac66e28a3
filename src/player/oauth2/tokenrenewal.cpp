#include "tokenrenewal.h"

#include "oauth2log.h"

namespace player {

namespace {

constexpr qint64 pauseAfterFailureMs = 30000;

} // namespace

TokenRenewal::TokenRenewal(const OAuth2Client& client, Clock& clock, Events events)
    : m_client(client)
    , m_clock(clock)
    , m_events(std::move(events))
{
}

TokenRenewal::~TokenRenewal() = default;

bool TokenRenewal::renew()
{
    if (m_nextTry)
        return false;
    if (!m_sending)
        send();
    return true;
}

void TokenRenewal::send()
{
    m_sending = true;
    const OAuth2Client::Parameters parameters{
        { QStringLiteral("grant_type"), QStringLiteral("refresh_token") },
        { QStringLiteral("refresh_token"), m_refreshToken },
    };
    m_client.askForToken(
        parameters, m_context, [this](const OAuth2Client::Answer& answer) { answered(answer); });
}

void TokenRenewal::answered(const OAuth2Client::Answer& answer)
{
    m_sending = false;
    switch (answer.kind) {
    case OAuth2Client::Answer::Success:
        return takeToken(answer.json);
    case OAuth2Client::Answer::Refused:
        return refused(errorCodeOf(answer.json));
    case OAuth2Client::Answer::Unavailable:
        return failAndWait(answer.reason);
    case OAuth2Client::Answer::Lost:
        break;
    }
    if (m_isRepeat)
        return failAndWait(answer.reason);
    // The server may have given out a new refresh token that never arrived; it tells by its answer
    // to the old one whether the login can go on.
    m_isRepeat = true;
    send();
}

void TokenRenewal::refused(const QString& errorCode)
{
    if (errorCode != QLatin1String("invalid_grant"))
        return failAndWait(errorCode);
    LOG4CPLUS_WARN(oauth2Logger(), "The service has ended the login");
    const auto revoked = m_events.revoked;
    revoked();
}

void TokenRenewal::failAndWait(const QString& reason)
{
    m_isRepeat = false;
    LOG4CPLUS_WARN(oauth2Logger(), "The access token cannot be renewed: " << reason);
    m_nextTry = m_clock.after(pauseAfterFailureMs, [this] {
        const auto running = std::move(m_nextTry);
        renew();
    });
    const auto failed = m_events.failed;
    failed(
        QStringLiteral("The login could not be renewed (%1). It is tried again every 30 seconds.")
            .arg(reason));
}

void TokenRenewal::takeToken(const QVariantHash& json)
{
    QString reason;
    const auto token = TokenAnswer::read(json, &reason);
    if (!token)
        return failAndWait(reason);
    m_isRepeat = false;
    const auto renewed = m_events.renewed;
    renewed(*token);
}

} // namespace player
