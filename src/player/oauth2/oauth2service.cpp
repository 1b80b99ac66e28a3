#include "oauth2service.h"

#include "cmroot.h"
#include "oauth2log.h"
#include "refusedtoken.h"
#include "tavupaths.h"

namespace player {

OAuth2Service::OAuth2Service(const QString& stateFolder, Clock* clock, QObject* parent)
    : QObject(parent)
    , m_clock(clock ? *clock : m_systemClock)
    , m_store(stateFolder + QLatin1String("/tokens.json"))
    , m_http(nullptr, HttpClient::HttpDefault, false)
{
    CMRoot()->addService(TavuOAuth2AddServicePath(), this,
        [this](const QVariant& argument, const CMReply<QVariant>& reply) {
            addService(argument, reply);
        });
    CMRoot()->addService(httpclient::refusedTokenPath(), this,
        [this](const QVariant& argument, const CMReply<QVariant>& reply) {
            tokenRefused(argument, reply);
        });
}

OAuth2Service::~OAuth2Service() = default;

void OAuth2Service::addService(const QVariant& argument, const CMReply<QVariant>& reply)
{
    const TavuOAuth2ServiceInfo info(tavuvariant::toHash(argument));
    const QString name = info.serviceName();
    if (name.isEmpty() || name.contains(QLatin1Char('/')))
        return reply.setError(
            CMError(TrString(QStringLiteral("A service needs a name without \"/\"."))));
    LOG4CPLUS_INFO(oauth2Logger(), "Service registered: " << name);
    if (m_accounts.count(name) == 0)
        m_registrations.append({ name, info.displayName() });
    Q_EMIT registered(name);
    auto account = std::make_unique<OAuth2Account>(info, m_http, m_clock, m_store);
    m_accounts[name] = std::move(account);
    serve(name, TavuOAuth2StartLoginSubPath(), &OAuth2Service::startLogin);
    serve(name, TavuOAuth2RefreshTokenSubPath(), &OAuth2Service::refreshToken);
    serve(name, TavuOAuth2LogoutSubPath(), &OAuth2Service::logout);
    reply.setValue(QVariant());
}

void OAuth2Service::tokenRefused(const QVariant& token, const CMReply<QVariant>& reply)
{
    for (const auto& [name, account] : m_accounts)
        account->tokenRefused(token.toString());
    reply.setValue(QVariant());
}

void OAuth2Service::serve(const QString& name, const QString& subpath, Call call)
{
    CMRoot()->addService((TavuOAuth2ServicePath() + name).appendSubpath(subpath), this,
        [this, name, call](const QVariant& argument, const CMReply<QVariant>& reply) {
            (this->*call)(*m_accounts.at(name), argument, reply);
        });
}

void OAuth2Service::startLogin(
    OAuth2Account& account, const QVariant& argument, const CMReply<QVariant>& reply)
{
    account.startLogin(TavuValue(tavuvariant::toHash(argument)).bool_());
    reply.setValue(QVariant());
}

void OAuth2Service::refreshToken(
    OAuth2Account& account, const QVariant&, const CMReply<QVariant>& reply)
{
    account.refreshToken(reply);
}

void OAuth2Service::logout(OAuth2Account& account, const QVariant&, const CMReply<QVariant>& reply)
{
    account.logout();
    reply.setValue(QVariant());
}

} // namespace player
