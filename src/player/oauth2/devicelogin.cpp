#include "devicelogin.h"

#include "oauth2log.h"
#include "pkce.h"
#include "redactor.h"

#include <QLatin1String>

namespace player {

namespace {

constexpr qint64 slowDownMs = 5000;
constexpr qint64 longestBackoffMs = 60000;

QString expiredMessage()
{
    return QStringLiteral("The code has expired. Get a new code.");
}

QString messageFor(const QString& errorCode)
{
    if (errorCode == QLatin1String("expired_token"))
        return expiredMessage();
    if (errorCode == QLatin1String("access_denied"))
        return QStringLiteral("The sign-in was declined. Get a new code to try again.");
    if (errorCode == QLatin1String("invalid_client"))
        return QStringLiteral("The service does not know this player (invalid_client). Check the "
                              "client id and the client secret in the settings.");
    if (errorCode == QLatin1String("unsupported_grant_type"))
        return QStringLiteral("The service does not offer sign-in by code "
                              "(unsupported_grant_type). Check the token URL in the settings.");
    return QStringLiteral("The service refused the sign-in (%1).").arg(errorCode);
}

} // namespace

DeviceLogin::DeviceLogin(const OAuth2Client& client, Clock& clock, Events events)
    : m_client(client)
    , m_clock(clock)
    , m_events(std::move(events))
{
    askForCode();
}

DeviceLogin::~DeviceLogin() = default;

bool DeviceLogin::usesEarlierForm() const
{
    // Before it was given a URN, the grant had a short name, and two more parameters.
    return !m_client.info().deviceCodeGrantType().startsWith(QLatin1String("urn:"));
}

OAuth2Client::Parameters DeviceLogin::codeParameters() const
{
    const TavuOAuth2ServiceInfo& info = m_client.info();
    OAuth2Client::Parameters parameters;
    if (usesEarlierForm())
        parameters.append({ QStringLiteral("response_type"), info.deviceCodeGrantType() });
    if (!info.scope().isEmpty())
        parameters.append({ QStringLiteral("scope"), info.scope() });
    const QVariantHash more = tavuvariant::toHash(info.scopeData());
    for (auto item = more.begin(); item != more.end(); ++item)
        parameters.append({ item.key(), tavuvariant::toText(item.value()) });
    if (info.usePkce()) {
        parameters.append({ QStringLiteral("code_challenge"), pkce::challengeOf(m_verifier) });
        parameters.append({ QStringLiteral("code_challenge_method"), QStringLiteral("S256") });
    }
    return parameters;
}

OAuth2Client::Parameters DeviceLogin::pollParameters() const
{
    OAuth2Client::Parameters parameters{
        { QStringLiteral("grant_type"), m_client.info().deviceCodeGrantType() },
        { QStringLiteral("device_code"), m_code.deviceCode },
    };
    if (usesEarlierForm())
        parameters.append({ QStringLiteral("user_code"), m_code.userCode });
    if (m_client.info().usePkce())
        parameters.append({ QStringLiteral("code_verifier"), m_verifier });
    return parameters;
}

void DeviceLogin::askForCode()
{
    m_verifier = pkce::makeVerifier();
    addSecret(m_verifier.toStdString());
    m_client.askForDeviceCode(codeParameters(), m_context,
        [this](const OAuth2Client::Answer& answer) { codeAnswered(answer); });
}

void DeviceLogin::codeAnswered(const OAuth2Client::Answer& answer)
{
    if (answer.kind == OAuth2Client::Answer::Refused
        && answer.json.contains(QStringLiteral("error")))
        return fail(messageFor(errorCodeOf(answer.json)));
    if (answer.kind != OAuth2Client::Answer::Success)
        return fail(QStringLiteral("The service cannot be asked for a code: %1. Get a new code to "
                                   "try again.")
                        .arg(answer.reason));
    QString reason;
    const auto code = DeviceAnswer::read(answer.json, &reason);
    if (!code)
        return fail(QStringLiteral("The service's answer cannot be used: %1. Get a new code to "
                                   "try again.")
                        .arg(reason));
    m_code = *code;
    for (const QString& secret : { m_code.deviceCode, m_code.userCode })
        addSecret(secret.toStdString());
    m_codeEndsMs = m_clock.monotonicMs() + m_code.lifetimeMs;
    m_intervalMs = m_code.intervalMs;
    m_backoffMs = 0;
    pollAfter(m_intervalMs);
    const auto waiting = m_events.waiting;
    waiting(m_code);
}

void DeviceLogin::pollAfter(qint64 ms)
{
    m_nextPoll = m_clock.after(ms, [this] { poll(); });
}

void DeviceLogin::poll()
{
    m_client.askForToken(pollParameters(), m_context,
        [this](const OAuth2Client::Answer& answer) { polled(answer); });
}

void DeviceLogin::polled(const OAuth2Client::Answer& answer)
{
    switch (answer.kind) {
    case OAuth2Client::Answer::Success:
        return takeToken(answer.json);
    case OAuth2Client::Answer::Refused:
        m_backoffMs = 0;
        return refused(errorCodeOf(answer.json));
    case OAuth2Client::Answer::Unavailable:
    case OAuth2Client::Answer::Lost:
        break;
    }
    LOG4CPLUS_WARN(oauth2Logger(), "Asking for the login's outcome failed: " << answer.reason);
    const qint64 waited = qMax(m_intervalMs, m_backoffMs);
    m_backoffMs = qMin(2 * waited, qMax(longestBackoffMs, m_intervalMs));
    pollAgain();
}

void DeviceLogin::refused(const QString& errorCode)
{
    if (errorCode == QLatin1String("authorization_pending"))
        return pollAgain();
    if (errorCode == QLatin1String("slow_down")) {
        m_intervalMs += slowDownMs;
        return pollAgain();
    }
    if (errorCode == QLatin1String("invalid_grant") && !m_startedOver) {
        LOG4CPLUS_WARN(oauth2Logger(), "The server took the code for another's; starting over");
        m_startedOver = true;
        return askForCode();
    }
    fail(messageFor(errorCode));
}

void DeviceLogin::pollAgain()
{
    // One poll may come after the code's end, for an approval in its last moments.
    if (m_clock.monotonicMs() >= m_codeEndsMs)
        return fail(expiredMessage());
    pollAfter(qMax(m_intervalMs, m_backoffMs));
}

void DeviceLogin::takeToken(const QVariantHash& json)
{
    QString reason;
    const auto token = TokenAnswer::read(json, &reason);
    if (!token)
        return fail(QStringLiteral("The service's answer cannot be used: %1. Get a new code to "
                                   "try again.")
                        .arg(reason));
    const auto approved = m_events.approved;
    approved(*token);
}

void DeviceLogin::fail(const QString& message)
{
    LOG4CPLUS_WARN(oauth2Logger(), "Login failed: " << message);
    m_nextPoll.reset();
    const auto failed = m_events.failed;
    failed(message);
}

} // namespace player
