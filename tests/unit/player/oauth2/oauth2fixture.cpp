#include "oauth2fixture.h"

OAuth2Fixture::OAuth2Fixture()
{
    CMRoot()->reset();
    CMRoot()->connectValueChange(path(TavuOAuth2AccessTokenSubPath()), this,
        SLOT(on_token_published(TavuValue)), Qt::DirectConnection);
    CMRoot()->connectValueChange(path(TavuOAuth2LoggedInSubPath()), this,
        SLOT(on_loggedIn_published(TavuValue)), Qt::DirectConnection);
}

OAuth2Fixture::~OAuth2Fixture()
{
    service.reset();
    CMRoot()->reset();
}

TavuOAuth2ServiceInfo OAuth2Fixture::info() const
{
    TavuOAuth2ServiceInfo made;
    made.setServiceName(TavuAmazonMusicName());
    made.setDisplayName(QStringLiteral("Amazon Music"));
    made.setClientId(QStringLiteral("client & id"));
    made.setClientSecret(QStringLiteral("client-secret"));
    made.setTokenUrl(server.tokenUrl());
    made.setScope(QStringLiteral("music all"));
    made.setScopeData(QVariantHash());
    made.setUsePkce(true);
    made.setAuthMethod(TavuOAuth2AuthMethod::RequestBody);
    made.setDeviceCodeUrl(server.deviceUrl());
    made.setDeviceCodeGrantType(QStringLiteral("device_code"));
    return made;
}

void OAuth2Fixture::start(const TavuOAuth2ServiceInfo& registration)
{
    service = std::make_unique<player::OAuth2Service>(folder.path(), &clock);
    const auto reply = CMReply<QVariant>::create();
    CMRoot()->invoke(TavuOAuth2AddServicePath(), registration, reply);
    expectValue(reply);
}

void OAuth2Fixture::restart()
{
    service.reset();
    published.clear();
    start();
}

CMReply<QVariant> OAuth2Fixture::invoke(const QString& subpath, const QVariant& argument)
{
    const auto reply = CMReply<QVariant>::create();
    CMRoot()->invoke(path(subpath), argument, reply);
    return reply;
}

void OAuth2Fixture::showCode()
{
    startLogin();
    EXPECT_TRUE(waitForState("waiting"));
}

void OAuth2Fixture::signIn(const char* access, const char* refresh, int lifetimeS)
{
    showCode();
    server.token = AuthorizationServer::tokens(access, refresh, lifetimeS);
    clock.advance(clock.untilNext());
    EXPECT_TRUE(waitForToken(access));
    EXPECT_TRUE(waitForState("loggedIn"));
}

void OAuth2Fixture::expectPollAfter(qint64 ms)
{
    const int before = server.polls();
    EXPECT_EQ(clock.untilNext(), ms);
    clock.advance(ms - 1);
    settle();
    EXPECT_EQ(server.polls(), before) << "polled too early";
    clock.advance(1);
    EXPECT_TRUE(waitUntil([&] { return server.polls() == before + 1; })) << "not polled";
    // Its answer leads to the next wait, or to the end of them.
    EXPECT_TRUE(waitUntil(
        [&] { return clock.waiting() > 0 || login().state() != QLatin1String("waiting"); }));
}

void OAuth2Fixture::advance(qint64 ms)
{
    clock.advance(ms);
    settle();
}

bool OAuth2Fixture::isLoggedIn() const
{
    return TavuValue(CMRoot()->getValue(path(TavuOAuth2LoggedInSubPath())).toHash()).bool_();
}

QString OAuth2Fixture::accessToken() const
{
    return TavuValue(CMRoot()->getValue(path(TavuOAuth2AccessTokenSubPath())).toHash()).string();
}

TavuOAuth2DeviceCode OAuth2Fixture::login() const
{
    return CMRoot()->getValue(path(TavuOAuth2DeviceCodeSubPath())).toHash();
}

bool OAuth2Fixture::waitForState(const char* state)
{
    return waitUntil([&] { return login().state() == QLatin1String(state); });
}

bool OAuth2Fixture::waitForToken(const char* token)
{
    return waitUntil([&] { return accessToken() == QLatin1String(token); });
}

QByteArray OAuth2Fixture::saved(const QString& suffix) const
{
    QFile file(tokenFile() + suffix);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

CMPath OAuth2Fixture::path(const QString& subpath)
{
    return (TavuOAuth2ServicePath() + TavuAmazonMusicName()).appendSubpath(subpath);
}

void OAuth2Fixture::on_token_published(const TavuValue& value)
{
    published.append(QStringLiteral("token ") + value.string());
    if (onToken)
        onToken(value.string());
}

void OAuth2Fixture::on_loggedIn_published(const TavuValue& value)
{
    published.append(QStringLiteral("loggedIn %1").arg(value.bool_()));
}
