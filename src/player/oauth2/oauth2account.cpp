#include "oauth2account.h"

#include "cmroot.h"
#include "oauth2log.h"
#include "redactor.h"
#include "tavupaths.h"

namespace player {

namespace {

constexpr qint64 longestLeadMs = 60000;
constexpr qint64 saveAgainMs = 30000;
// So late a request may be refused that was sent before a renewal.
constexpr qint64 stragglersMs = 2000;
// More than there can be renewals while one request waits for its answer.
constexpr int mostEarlierTokens = 16;

} // namespace

OAuth2Account::OAuth2Account(
    const TavuOAuth2ServiceInfo& info, HttpClient& http, Clock& clock, TokenStore& store)
    : m_client(info, http)
    , m_clock(clock)
    , m_store(store)
    , m_refreshToken(store.refreshToken(info.serviceName()))
{
    addLastingSecret(info.clientSecret().toStdString());
    addSecret(m_refreshToken.toStdString());
    const bool loggedIn = !m_refreshToken.isEmpty();
    publishAccessToken();
    publishLoggedIn(loggedIn);
    setStage(loggedIn ? Stage::LoggedIn : Stage::Idle, loggedIn ? QString() : store.complaint());
    if (!loggedIn)
        return;
    m_renewal = makeRenewal();
    m_renewal->renew();
}

QString OAuth2Account::nameOf(Stage stage)
{
    switch (stage) {
    case Stage::Idle:
        return QStringLiteral("idle");
    case Stage::Starting:
        return QStringLiteral("starting");
    case Stage::Waiting:
        return QStringLiteral("waiting");
    case Stage::Failed:
        return QStringLiteral("failed");
    case Stage::LoggedIn:
        return QStringLiteral("loggedIn");
    }
    return QString();
}

OAuth2Account::~OAuth2Account()
{
    finishWaiting(QStringLiteral("The login service has ended."));
    // The last chance: the token on the disk has been used up.
    QString error;
    if (!m_saveProblem.isEmpty() && !m_store.save(name(), m_refreshToken, &error))
        LOG4CPLUS_ERROR(oauth2Logger(), "The login is lost, since it cannot be saved: " << error);
}

QString OAuth2Account::missingSetting() const
{
    const TavuOAuth2ServiceInfo& info = m_client.info();
    if (info.deviceCodeUrl().isEmpty())
        return QStringLiteral("device code URL");
    if (info.tokenUrl().isEmpty())
        return QStringLiteral("token URL");
    return info.clientId().isEmpty() ? QStringLiteral("client id") : QString();
}

void OAuth2Account::startLogin(bool anew)
{
    const bool underWay = m_stage == Stage::Starting || (m_stage == Stage::Waiting && !anew);
    if (m_stage == Stage::LoggedIn || underWay)
        return;
    const QString missing = missingSetting();
    if (!missing.isEmpty())
        return setStage(Stage::Failed,
            QStringLiteral("The service's %1 is missing in the settings.").arg(missing));
    m_login.reset();
    setStage(Stage::Starting);
    m_login = makeLogin();
}

std::unique_ptr<DeviceLogin> OAuth2Account::makeLogin()
{
    DeviceLogin::Events events;
    events.waiting = [this](const DeviceAnswer& code) { showCode(code); };
    events.approved = [this](const TokenAnswer& token) { loginApproved(token); };
    events.failed = [this](const QString& message) {
        m_login.reset();
        setStage(Stage::Failed, message);
    };
    return std::make_unique<DeviceLogin>(m_client, m_clock, events);
}

std::unique_ptr<TokenRenewal> OAuth2Account::makeRenewal()
{
    TokenRenewal::Events events;
    events.renewed = [this](const TokenAnswer& token) { renewed(token); };
    events.revoked = [this] {
        endLogin(QStringLiteral("The service has ended the login. Sign in again."));
    };
    events.failed = [this](const QString& message) {
        setStage(Stage::LoggedIn, message);
        finishWaiting(message);
    };
    auto renewal = std::make_unique<TokenRenewal>(m_client, m_clock, events);
    renewal->setRefreshToken(m_refreshToken);
    return renewal;
}

void OAuth2Account::showCode(const DeviceAnswer& code)
{
    m_code = code;
    m_codeEndsWallMs = m_clock.wallMs() + code.lifetimeMs;
    setStage(Stage::Waiting);
}

void OAuth2Account::loginApproved(const TokenAnswer& token)
{
    m_login.reset();
    LOG4CPLUS_INFO(oauth2Logger(), "Signed in to " << m_client.info().displayName());
    m_stage = Stage::LoggedIn;
    m_refreshToken = token.refreshToken;
    m_renewedMs.reset();
    m_renewal = makeRenewal();
    takeTokens(token);
    publishLoggedIn(true);
    setStage(Stage::LoggedIn, m_saveProblem);
}

void OAuth2Account::renewed(const TokenAnswer& token)
{
    if (!token.refreshToken.isEmpty())
        m_refreshToken = token.refreshToken;
    m_renewal->setRefreshToken(m_refreshToken);
    m_renewedMs = m_clock.monotonicMs();
    takeTokens(token);
    setStage(Stage::LoggedIn, m_saveProblem);
    finishWaiting(QString());
}

void OAuth2Account::takeTokens(const TokenAnswer& token)
{
    for (const QString& secret : { token.accessToken, m_refreshToken })
        addSecret(secret.toStdString());
    // The server may have given up the old refresh token: the new one is on the disk before
    // anything is done with what came along with it.
    saveRefreshToken();
    watchExpiry(token.lifetimeMs);
    setAccessToken(token.accessToken);
}

void OAuth2Account::setAccessToken(const QString& token)
{
    m_earlierTokens.removeAll(token);
    if (!m_accessToken.isEmpty() && m_accessToken != token)
        m_earlierTokens.append(m_accessToken);
    if (m_earlierTokens.size() > mostEarlierTokens)
        m_earlierTokens.removeFirst();
    m_accessToken = token;
    m_isRefused = false;
    publishAccessToken();
}

void OAuth2Account::saveRefreshToken()
{
    const auto running = std::move(m_saveAgain); // This may be its call.
    QString error;
    if (m_store.save(name(), m_refreshToken, &error)) {
        m_saveProblem.clear();
        return;
    }
    m_saveProblem = QStringLiteral("The login could not be saved (%1). It works until the player "
                                   "ends; saving is tried again.")
                        .arg(error);
    LOG4CPLUS_ERROR(oauth2Logger(), m_saveProblem);
    m_saveAgain = m_clock.after(saveAgainMs, [this] {
        saveRefreshToken();
        setStage(Stage::LoggedIn, m_saveProblem);
    });
}

void OAuth2Account::watchExpiry(qint64 lifetimeMs)
{
    const qint64 lead = qMin(longestLeadMs, lifetimeMs / 5);
    m_renewalDue = m_clock.after(lifetimeMs - lead, [this] {
        if (!m_refreshToken.isEmpty())
            m_renewal->renew();
    });
    m_expiry = m_clock.after(lifetimeMs, [this] { expired(); });
}

void OAuth2Account::expired()
{
    if (m_refreshToken.isEmpty())
        return endLogin(QStringLiteral("The login has expired. Sign in again."));
    setAccessToken(QString());
}

void OAuth2Account::refreshToken(const CMReply<QVariant>& reply)
{
    if (m_stage != Stage::LoggedIn)
        return reply.setError(CMError(TrString(QStringLiteral("Nobody is signed in."))));
    if (m_refreshToken.isEmpty()) {
        reply.setError(CMError(TrString(QStringLiteral("The login has expired. Sign in again."))));
        return endLogin(QStringLiteral("The login has expired. Sign in again."));
    }
    const bool isGood = wasJustRenewed() || isAnotherRefused();
    m_earlierRefused = false;
    if (isGood) {
        publishAccessToken();
        return reply.setValue(QVariant());
    }
    if (!m_renewal->renew())
        return reply.setError(CMError(TrString(
            QStringLiteral("The login could not be renewed a moment ago; it is tried again."))));
    m_waiting.push_back(reply);
}

bool OAuth2Account::wasJustRenewed() const
{
    return !m_accessToken.isEmpty() && m_renewedMs
        && m_clock.monotonicMs() - *m_renewedMs < stragglersMs;
}

bool OAuth2Account::isAnotherRefused() const
{
    return !m_accessToken.isEmpty() && m_earlierRefused && !m_isRefused;
}

void OAuth2Account::tokenRefused(const QString& token)
{
    m_isRefused = m_isRefused || token == m_accessToken;
    m_earlierRefused = m_earlierRefused || m_earlierTokens.contains(token);
}

void OAuth2Account::logout()
{
    endLogin(QString());
}

void OAuth2Account::endLogin(const QString& message)
{
    m_login.reset();
    m_renewal.reset();
    m_renewalDue.reset();
    m_expiry.reset();
    m_saveAgain.reset();
    m_refreshToken.clear();
    m_saveProblem.clear();
    QString error;
    if (!m_store.save(name(), QString(), &error))
        LOG4CPLUS_ERROR(oauth2Logger(), "The saved login cannot be removed: " << error);
    // In this order: what ends with the login may still report under its token.
    publishLoggedIn(false);
    setAccessToken(QString());
    setStage(Stage::Idle, message);
    finishWaiting(message.isEmpty() ? QStringLiteral("Signed out.") : message);
}

void OAuth2Account::finishWaiting(const QString& error)
{
    std::vector<CMReply<QVariant>> waiting;
    waiting.swap(m_waiting);
    for (const CMReply<QVariant>& reply : waiting) {
        if (error.isEmpty())
            reply.setValue(QVariant());
        else
            reply.setError(CMError(TrString(error)));
    }
}

void OAuth2Account::setStage(Stage stage, const QString& message)
{
    m_stage = stage;
    publishDeviceCode(message);
}

void OAuth2Account::publishAccessToken()
{
    CMRoot()->setValue(path(TavuOAuth2AccessTokenSubPath()), TavuValue::fromString(m_accessToken));
}

void OAuth2Account::publishLoggedIn(bool loggedIn)
{
    CMRoot()->setValue(path(TavuOAuth2LoggedInSubPath()), TavuValue::fromBool(loggedIn));
}

void OAuth2Account::publishDeviceCode(const QString& message)
{
    TavuOAuth2DeviceCode record;
    record.setState(nameOf(m_stage));
    record.setDisplayName(m_client.info().displayName());
    record.setMessage(message);
    if (m_stage == Stage::Waiting) {
        record.setUserCode(m_code.userCode);
        record.setVerificationUri(m_code.verificationUri);
        record.setVerificationUriComplete(m_code.verificationUriComplete);
        record.setExpiresAt(m_codeEndsWallMs);
    }
    CMRoot()->setValue(path(TavuOAuth2DeviceCodeSubPath()), record);
}

CMPath OAuth2Account::path(const QString& subpath) const
{
    return (TavuOAuth2ServicePath() + name()).appendSubpath(subpath);
}

} // namespace player
