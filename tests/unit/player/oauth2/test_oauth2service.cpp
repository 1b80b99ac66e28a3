#include "oauth2fixture.h"

#include <QThread>

using Server = AuthorizationServer;

namespace {

class OAuth2Service : public OAuth2Fixture
{
};

} // namespace

TEST_F(OAuth2Service, RegistrationIsAnsweredWhileTheCallersThreadBlocks)
{
    service = std::make_unique<player::OAuth2Service>(folder.path(), &clock);
    std::atomic<bool> answered = false;
    const TavuOAuth2ServiceInfo registration = info();
    const std::unique_ptr<QThread> plugin(QThread::create([&] {
        const auto reply = CMReply<QVariant>::create();
        CMRoot()->invoke(TavuOAuth2AddServicePath(), registration, reply);
        answered = reply.waitForFinished(10000) && !reply.error().isSet();
    }));
    plugin->start();
    EXPECT_TRUE(waitUntil([&] { return plugin->isFinished(); }));
    EXPECT_TRUE(answered);
    EXPECT_EQ(login().state(), QStringLiteral("idle"));
}

TEST_F(OAuth2Service, ValuesStandWhenTheRegistrationIsAnswered)
{
    service = std::make_unique<player::OAuth2Service>(folder.path(), &clock);
    const auto reply = CMReply<QVariant>::create();
    bool stood = false;
    reply.addWatcher([&](const CMVoidReply&) { stood = login().state() == QLatin1String("idle"); },
        Qt::DirectConnection);
    CMRoot()->invoke(TavuOAuth2AddServicePath(), info(), reply);
    expectValue(reply);
    EXPECT_TRUE(stood);
}

TEST_F(OAuth2Service, ServiceWithoutNameIsRefused)
{
    service = std::make_unique<player::OAuth2Service>(folder.path(), &clock);
    for (const char* name : { "", "a/b" }) {
        TavuOAuth2ServiceInfo nameless = info();
        nameless.setServiceName(QString::fromLatin1(name));
        const auto reply = CMReply<QVariant>::create();
        CMRoot()->invoke(TavuOAuth2AddServicePath(), nameless, reply);
        expectError(reply, QStringLiteral("A service needs a name without \"/\"."));
    }
}

TEST_F(OAuth2Service, RegisteringAnewReplacesTheService)
{
    start();
    showCode();
    const auto reply = CMReply<QVariant>::create();
    CMRoot()->invoke(TavuOAuth2AddServicePath(), info(), reply);
    expectValue(reply);
    EXPECT_EQ(login().state(), QStringLiteral("idle"));
    EXPECT_EQ(clock.waiting(), 0);
    signIn("access-1", "refresh-1");
}

TEST_F(OAuth2Service, EndingFailsThoseWhoWait)
{
    start();
    signIn("access-1", "refresh-1");
    server.token = Server::silent();
    const auto wish = refresh();
    EXPECT_TRUE(waitUntil([&] { return server.polls() == 2; }));
    service.reset();
    expectError(wish, QStringLiteral("The login service has ended."));
    expectError(refresh());
}

TEST_F(OAuth2Service, DamagedTokensLeadToTheLoginScreenWithAMessage)
{
    QFile file(tokenFile());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{\"version\":1,\"services\":");
    file.close();
    start();
    EXPECT_FALSE(isLoggedIn());
    EXPECT_EQ(login().message(),
        QStringLiteral("The saved login was damaged and is set aside as %1.bad. Sign in again.")
            .arg(tokenFile()));
    EXPECT_EQ(service->complaint(), login().message());
    EXPECT_EQ(saved(QStringLiteral(".bad")), "{\"version\":1,\"services\":");
    signIn("access-1", "refresh-1");
    EXPECT_TRUE(saved().contains("refresh-1"));
}
