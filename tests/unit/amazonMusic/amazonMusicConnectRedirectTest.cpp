#include "connectFixture.h"

namespace {

const QByteArray baseHost = "https://base.service.test";
const QByteArray movedHost = "https://moved.service.test";
const QByteArray elsewhere = "https://elsewhere.test";

class AmazonMusicConnectRedirectTest : public ConnectFixture
{
protected:
    AmazonMusicConnectRedirectTest()
    {
        service.serveHost("elsewhere.test");
        service.serveHost("*.service.test");
        host.setBaseUrl(QString::fromLatin1(baseHost + '/'));
        host.setDomainSuffix(QStringLiteral(".service.test"));
    }

    Reply browse(const QByteArray& path) { return connect().sendBrowseRequest(url(path)); }
    QByteArray baseUrl() { return connect().getBaseUrl().toEncoded(); }

    /// The base URL after the service has redirected a request from `from` to `to`.
    QByteArray baseUrlAfterRedirect(const QByteArray& from, const QByteArray& to)
    {
        const Reply reply = connect().get(url(from + "/a"));
        service.expectRequest("GET", "/a").answer(302, QByteArray(), location(to + "/b"));
        const auto followed = service.expectRequest("GET", "/b");
        EXPECT_EQ(followed.url(), to + "/b");
        followed.answer(200);
        EXPECT_EQ(code(reply), 200);
        return baseUrl();
    }
};

TEST_F(AmazonMusicConnectRedirectTest, FollowsEachKindOfRedirect)
{
    signIn();
    for (const int status : { 301, 302, 307, 308 }) {
        const Reply reply = browse("/from");
        service.expectRequest("GET", "/from")
            .answer(status, QByteArray(), location(baseHost + "/to?x=%2F"));
        const auto followed = service.expectRequest("GET", "/to?x=%2F");
        EXPECT_EQ(followed.header("authorization"), "Bearer T1");
        followed.answer(200, "there");

        EXPECT_EQ(expectValue(reply).data, "there");
        EXPECT_EQ(expectValue(reply).url.toEncoded(), baseHost + "/to?x=%2F");
    }
}

TEST_F(AmazonMusicConnectRedirectTest, FollowsARelativeRedirect)
{
    signIn();
    const Reply reply = browse("/dir/from");
    service.expectRequest("GET", "/dir/from").answer(302, QByteArray(), location("to"));
    service.expectRequest("GET", "/dir/to").answer(200);
    EXPECT_EQ(code(reply), 200);
}

TEST_F(AmazonMusicConnectRedirectTest, KeepsMethodAndBody)
{
    signIn();
    const Reply reply = connect().post(url(baseHost + "/from"), QStringLiteral("body"));
    service.expectRequest("POST", "/from").answer(302, QByteArray(), location(baseHost + "/to"));
    const auto followed = service.expectRequest("POST", "/to");
    EXPECT_EQ(followed.request().body, "body");
    followed.answer(200);
    EXPECT_EQ(code(reply), 200);
}

TEST_F(AmazonMusicConnectRedirectTest, GoesOnOverHttpsWhateverTheAnswerSays)
{
    host.setBaseUrl(service.baseUrl());
    signIn();
    const Reply reply = browse("/from");
    service.expectRequest("GET", "/from")
        .answer(302, QByteArray(), location("http://elsewhere.test/to"));
    const auto followed = service.expectRequest("GET", "/to");
    EXPECT_EQ(followed.url(), elsewhere + "/to");
    EXPECT_TRUE(followed.request().secure);
    followed.answer(200);
    EXPECT_EQ(code(reply), 200);
}

TEST_F(AmazonMusicConnectRedirectTest, MovesTheBaseUrlInsideTheServicesDomain)
{
    const LogCapture log;
    signIn();
    EXPECT_EQ(baseUrlAfterRedirect(baseHost, movedHost), movedHost + '/');
    EXPECT_EQ(log.texts(log4cplus::INFO_LOG_LEVEL).last(),
        QStringLiteral("Connect url changed to: https://moved.service.test/"));

    const Reply later = browse("/later");
    const auto call = service.expectRequest("GET", "/later");
    EXPECT_EQ(call.url(), movedHost + "/later");
    call.answer(200);
    EXPECT_EQ(code(later), 200);
}

TEST_F(AmazonMusicConnectRedirectTest, MovesTheBaseUrlToSchemeHttpsAndThePathOfTheRoot)
{
    signIn();
    const Reply reply = browse("/a");
    service.expectRequest("GET", "/a")
        .answer(302, QByteArray(), location("http://moved.service.test/deep/path?x=y#z"));
    service.expectRequest("GET", "/deep/path?x=y").answer(200);
    EXPECT_EQ(code(reply), 200);
    EXPECT_EQ(baseUrl(), movedHost + '/');
}

TEST_F(AmazonMusicConnectRedirectTest, MovesTheBaseUrlWithoutWhatTheOldOneHadMore)
{
    host.setBaseUrl(QString::fromLatin1(baseHost + ":443/old/?x=y#z"));
    signIn();
    EXPECT_EQ(baseUrlAfterRedirect(baseHost, movedHost), movedHost + '/');
}

TEST_F(AmazonMusicConnectRedirectTest, LeavesTheBaseUrlWhenTheServiceSendsElsewhere)
{
    signIn();
    EXPECT_EQ(baseUrlAfterRedirect(baseHost, elsewhere), baseHost + '/');
}

TEST_F(AmazonMusicConnectRedirectTest, LeavesTheBaseUrlWhenAnotherHostRedirects)
{
    signIn();
    EXPECT_EQ(baseUrlAfterRedirect(elsewhere, movedHost), baseHost + '/');
}

TEST_F(AmazonMusicConnectRedirectTest, LeavesTheBaseUrlOnItsOwnHost)
{
    const LogCapture log;
    signIn();
    EXPECT_EQ(baseUrlAfterRedirect(baseHost, baseHost), baseHost + '/');
    EXPECT_FALSE(log.mentions(QStringLiteral("Connect url changed to: ")));
}

TEST_F(AmazonMusicConnectRedirectTest, LeavesTheBaseUrlWithoutADomainSuffix)
{
    host.setDomainSuffix(QString());
    signIn();
    EXPECT_EQ(baseUrlAfterRedirect(baseHost, movedHost), baseHost + '/');
}

TEST_F(AmazonMusicConnectRedirectTest, LeavesTheBaseUrlWhenTheDomainSuffixHasNoDot)
{
    host.setDomainSuffix(QStringLiteral("service.test"));
    signIn();
    EXPECT_EQ(baseUrlAfterRedirect(baseHost, movedHost), baseHost + '/');
}

TEST_F(AmazonMusicConnectRedirectTest, ComparesTheDomainSuffixCaseSensitively)
{
    host.setDomainSuffix(QStringLiteral(".Service.test"));
    signIn();
    EXPECT_EQ(baseUrlAfterRedirect(baseHost, movedHost), baseHost + '/');
}

TEST_F(AmazonMusicConnectRedirectTest, LeavesTheBaseUrlAfterTheRequestsTokenWasRenewed)
{
    signIn();
    host.renewTokenWith(QStringLiteral("T2"));
    const Reply reply = browse("/a");
    service.expectRequest("GET", "/a").answer(401);
    service.expectRequest("GET", "/a").answer(302, QByteArray(), location(movedHost + "/b"));
    const auto followed = service.expectRequest("GET", "/b");
    EXPECT_EQ(followed.url(), movedHost + "/b");
    followed.answer(200);

    EXPECT_EQ(code(reply), 200);
    EXPECT_EQ(baseUrl(), baseHost + '/');
}

TEST_F(AmazonMusicConnectRedirectTest, DeliversTheSixthRedirect)
{
    const LogCapture log;
    signIn();
    const Reply reply = browse("/0");
    for (int hop = 0; hop < 5; ++hop)
        service.expectRequest("GET", "/" + QByteArray::number(hop))
            .answer(302, QByteArray(), location(baseHost + '/' + QByteArray::number(hop + 1)));
    service.expectRequest("GET", "/5").answer(307, "loop", { { "Location", baseHost + "/6" } });

    EXPECT_EQ(expectValue(reply).code, 307);
    EXPECT_EQ(expectValue(reply).data, "loop");
    service.expectNoRequest();
    EXPECT_EQ(log.texts(log4cplus::WARN_LOG_LEVEL),
        QStringList{
            QStringLiteral("Too many redirects, stopping loop: https://base.service.test/5") });
}

TEST_F(AmazonMusicConnectRedirectTest, CountsTheRedirectsOfEachRequestOnItsOwn)
{
    signIn();
    for (int round = 0; round < 2; ++round) {
        const Reply reply = browse("/0");
        for (int hop = 0; hop < 5; ++hop)
            service.expectRequest("GET", "/" + QByteArray::number(hop))
                .answer(302, QByteArray(), location(baseHost + '/' + QByteArray::number(hop + 1)));
        service.expectRequest("GET", "/5").answer(200);
        EXPECT_EQ(code(reply), 200);
    }
}

TEST_F(AmazonMusicConnectRedirectTest, EndsARedirectToNowhere)
{
    signIn();
    const Reply reply = browse("/a");
    service.expectRequest("GET", "/a").answer(302);

    EXPECT_EQ(expectValue(reply).code, 0);
    EXPECT_NE(expectValue(reply).error, HttpClientStatus::Ok);
}

TEST_F(AmazonMusicConnectRedirectTest, WaitsForATokenBetweenTwoHops)
{
    signIn();
    const Reply reply = browse("/a");
    const auto call = service.expectRequest("GET", "/a");
    host.setToken(QString());
    call.answer(302, QByteArray(), location(baseHost + "/b"));
    expectPending(reply);
    service.expectNoRequest();

    host.setToken(QStringLiteral("T2"));
    const auto followed = service.expectRequest("GET", "/b");
    EXPECT_EQ(followed.header("authorization"), "Bearer T2");
    followed.answer(200);
    EXPECT_EQ(code(reply), 200);
}

} // namespace
