#include "connectFixture.h"

#include "tavujson.h"

#include <functional>

namespace {

constexpr auto error = log4cplus::ERROR_LOG_LEVEL;
constexpr auto info = log4cplus::INFO_LOG_LEVEL;
constexpr auto trace = log4cplus::TRACE_LOG_LEVEL;

class AmazonMusicConnectTest : public ConnectFixture
{
};

TEST_F(AmazonMusicConnectTest, NeedsABaseUrl)
{
    EXPECT_DEATH(
        {
            host.setBaseUrl(QString());
            connect();
        },
        "!m_connectBaseUrl.isEmpty\\(\\)");
}

TEST_F(AmazonMusicConnectTest, BeginsAtTheBaseUrlWithoutToken)
{
    EXPECT_EQ(connect().getBaseUrl().toEncoded(), service.baseUrl().toLatin1());
    EXPECT_TRUE(connect().getToken().isEmpty());
}

TEST_F(AmazonMusicConnectTest, RefusesRequestsBeforeTheUserHasSignedIn)
{
    const Reply reply = get("/a#fragment");

    ASSERT_TRUE(reply.isFinished());
    const HttpClient::Result result = expectValue(reply);
    EXPECT_EQ(result.code, 403);
    EXPECT_EQ(result.url.toEncoded(), at("/a#fragment").toEncoded());
    EXPECT_EQ(result.error, HttpClientStatus::Ok);
    EXPECT_TRUE(result.data.isEmpty());
    EXPECT_TRUE(result.headers.isEmpty());
    service.expectNoRequest();
}

TEST_F(AmazonMusicConnectTest, SendsWithTheTokenAndDeliversTheAnswer)
{
    signIn();
    const Reply reply = get("/a?b=c#d");
    const auto call = service.expectRequest("GET", "/a?b=c");
    EXPECT_EQ(call.header("authorization"), "Bearer T1");
    call.answer(200, "body", { { "X-Kind", "test" } });

    const HttpClient::Result result = expectValue(reply);
    EXPECT_EQ(result.code, 200);
    EXPECT_EQ(result.data, "body");
    EXPECT_EQ(result.headers.value("x-kind"), "test");
    EXPECT_EQ(result.url.toEncoded(), at("/a?b=c#d").toEncoded());
    EXPECT_EQ(connect().getToken(), QStringLiteral("T1"));
}

TEST_F(AmazonMusicConnectTest, TellsNothingOfADeviceWithoutCapability)
{
    signIn();
    const Reply reply = get("/a");
    const auto call = service.expectRequest("GET", "/a");
    EXPECT_FALSE(call.request().headers.contains("x-amzn-audio-drmtype"));
    EXPECT_FALSE(call.request().headers.contains("x-amzn-audio-device-capability"));
    call.answer(200);
    EXPECT_EQ(code(reply), 200);
}

TEST_F(AmazonMusicConnectTest, TellsTheDevicesCapability)
{
    host.setDeviceCapability(QStringLiteral("HD,UHD"));
    signIn();
    const Reply reply = get("/a");
    const auto call = service.expectRequest("GET", "/a");
    EXPECT_EQ(call.header("authorization"), "Bearer T1");
    EXPECT_EQ(call.header("x-amzn-audio-drmtype"), "WIDEVINE");
    EXPECT_EQ(call.header("x-amzn-audio-device-capability"), "HD,UHD");
    call.answer(200);
    EXPECT_EQ(code(reply), 200);
}

TEST_F(AmazonMusicConnectTest, PostsItsBodyAsLatin1)
{
    signIn();
    const Reply reply =
        connect().post(at("/p"), QString::fromUtf8("\xC3\xA9t\xC3\xA9 \xE2\x82\xAC"));
    const auto call = service.expectRequest("POST", "/p");
    EXPECT_EQ(call.request().body, "\xE9t\xE9 ?");
    EXPECT_EQ(call.header("authorization"), "Bearer T1");
    call.answer(204);
    EXPECT_EQ(code(reply), 204);
}

TEST_F(AmazonMusicConnectTest, DeliversEveryOtherAnswerUnchanged)
{
    signIn();
    for (const int status : { 204, 303, 304, 400, 404, 409, 500, 503 }) {
        const Reply reply = get("/" + QByteArray::number(status));
        service.expectRequest("GET", "/" + QByteArray::number(status)).answer(status);
        EXPECT_EQ(code(reply), status);
    }
    EXPECT_EQ(host.tokenRenewals(), 0);
}

TEST_F(AmazonMusicConnectTest, DeliversATransferThatFailed)
{
    signIn();
    const Reply reply = connect().post(at("/p"), QString());
    service.expectRequest("POST", "/p").cut();

    const HttpClient::Result result = expectValue(reply);
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.error, HttpClientStatus::Ok);
}

TEST_F(AmazonMusicConnectTest, TakesABodyOfOneMebibyteAndNoMore)
{
    signIn();
    const Reply fits = get("/fits");
    service.expectRequest("GET", "/fits").answer(200, QByteArray(1048576, 'x'));
    EXPECT_EQ(expectValue(fits).data.size(), 1048576);

    const Reply exceeds = get("/exceeds");
    service.expectRequest("GET", "/exceeds").answer(200, QByteArray(1048577, 'x'));
    EXPECT_EQ(expectValue(exceeds).error, HttpClientStatus::ReadLimitExceeded);
    EXPECT_EQ(expectValue(exceeds).code, 0);
}

TEST_F(AmazonMusicConnectTest, KeepsAnswersUntilTheCacheIsCleared)
{
    signIn();
    const http::Headers keep{ { "Cache-Control", "max-age=3600" } };
    const Reply first = get("/a");
    service.expectRequest("GET", "/a").answer(200, "one", keep);
    EXPECT_EQ(expectValue(first).data, "one");

    EXPECT_EQ(expectValue(get("/a")).data, "one");
    service.expectNoRequest();

    connect().clearCache();
    const Reply third = get("/a");
    service.expectRequest("GET", "/a").answer(200, "two", keep);
    EXPECT_EQ(expectValue(third).data, "two");
}

// Where requests go.

TEST_F(AmazonMusicConnectTest, PutsSchemeAndHostOfTheBaseUrlBeforeTheRestOfAnUrl)
{
    host.setBaseUrl(QStringLiteral("https://base.example:8443/ignored?x=y#z"));
    const auto updated = [&](const char* text) {
        return connect().updateUrl(url(text)).toEncoded();
    };

    EXPECT_EQ(updated("http://other.example/a%2Fb/?q=%2B&r#f%20g"),
        "https://base.example:8443/a%2Fb/?q=%2B&r#f%20g");
    EXPECT_EQ(
        updated("/search/?keywords=a%26b"), "https://base.example:8443/search/?keywords=a%26b");
    EXPECT_EQ(updated("http://other.example/a"), "https://base.example:8443/a");
}

TEST_F(AmazonMusicConnectTest, SendsEverythingButPlainPostsToTheBaseUrl)
{
    service.serveHost("elsewhere.test");
    signIn();
    const TavuUrl foreign = url("https://elsewhere.test/events/1?x=y");

    const Reply browse = connect().sendBrowseRequest(foreign);
    service.expectRequest("GET", "/events/1?x=y").answer(200);
    EXPECT_EQ(expectValue(browse).url.toEncoded(), at("/events/1?x=y").toEncoded());

    const Reply select = connect().sendUserSelect(foreign);
    const auto selectCall = service.expectRequest("POST", "/events/1?x=y");
    EXPECT_EQ(selectCall.url(), at("/events/1?x=y").toEncoded());
    EXPECT_TRUE(selectCall.request().body.isEmpty());
    selectCall.answer(200);
    EXPECT_EQ(code(select), 200);

    const Reply plain = connect().sendPost(foreign);
    const auto plainCall = service.expectRequest("POST", "/events/1?x=y");
    EXPECT_EQ(plainCall.url(), "https://elsewhere.test/events/1?x=y");
    EXPECT_TRUE(plainCall.request().body.isEmpty());
    plainCall.answer(200);
    EXPECT_EQ(code(plain), 200);
}

TEST_F(AmazonMusicConnectTest, SendsReportsAndRatingsAsJson)
{
    signIn();
    TavuAmazonMusicPlaybackEventReport report;
    report.setEvent(QStringLiteral("START"));
    report.setTrackPosition(1234);
    const Reply reported = connect().sendReport(url("https://elsewhere.test/e"), report);
    const auto reportCall = service.expectRequest("POST", "/e");
    EXPECT_EQ(TavuJson::parse(reportCall.request().body).toHash(), report.__hash());
    reportCall.answer(200);
    EXPECT_EQ(code(reported), 200);

    TavuAmazonMusicTrackRatingRequest rating;
    rating.setThumbRating(QStringLiteral("UP"));
    const Reply rated = connect().sendRating(url("https://elsewhere.test/r"), rating);
    const auto ratingCall = service.expectRequest("POST", "/r");
    EXPECT_EQ(ratingCall.request().body, R"({"thumbRating":"UP"})");
    ratingCall.answer(200);
    EXPECT_EQ(code(rated), 200);
}

// The session.

TEST_F(AmazonMusicConnectTest, HoldsRequestsUntilATokenArrives)
{
    connect().setLoggedIn(true);
    const Reply first = get("/1");
    const Reply second = connect().post(at("/2"), QStringLiteral("two"));
    service.expectNoRequest();
    expectPending(first);

    host.setToken(QStringLiteral("T1"));

    const auto one = service.expectRequest("GET", "/1");
    const auto two = service.expectRequest("POST", "/2");
    EXPECT_EQ(one.header("authorization"), "Bearer T1");
    EXPECT_EQ(two.header("authorization"), "Bearer T1");
    EXPECT_EQ(two.request().body, "two");
    one.answer(200);
    two.answer(201);
    EXPECT_EQ(code(first), 200);
    EXPECT_EQ(code(second), 201);
}

TEST_F(AmazonMusicConnectTest, LogsThatATokenHasArrived)
{
    const LogCapture log;
    connect().setLoggedIn(true);
    host.setToken(QStringLiteral("T1"));
    EXPECT_EQ(count(log, info, "Token changed, resending queued requests"), 1);
}

TEST_F(AmazonMusicConnectTest, SendsWhatWaitsInTheOrderOfItsArrival)
{
    connect().setLoggedIn(true);
    QStringList finished;
    QList<Reply> replies;
    // Requests that fail before they leave the client fail in the order in which they were sent.
    for (const char* target : { "none:/1", "none:/2", "none:/3" }) {
        replies.append(connect().get(url(target)));
        replies.last().onSuccess(
            [&](const HttpClient::Result& result) { finished += result.url.path(); });
    }
    host.setToken(QStringLiteral("T1"));

    for (const Reply& reply : qAsConst(replies))
        EXPECT_EQ(code(reply), 0);
    EXPECT_EQ(finished,
        (QStringList{ QStringLiteral("/1"), QStringLiteral("/2"), QStringLiteral("/3") }));
}

TEST_F(AmazonMusicConnectTest, HearsOfATokenThatWasThereBefore)
{
    host.setToken(QStringLiteral("T0"));
    connect().setLoggedIn(true);

    EXPECT_TRUE(waitUntil([&] { return connect().getToken() == QStringLiteral("T0"); }));
}

TEST_F(AmazonMusicConnectTest, TracesWhetherATokenIsSetAndNeverTheToken)
{
    const LogCapture log;
    connect().setLoggedIn(true);
    host.setToken(QStringLiteral("secretToken"));
    const Reply reply = get("/a");
    service.expectRequest("GET", "/a").answer(401);
    expectPending(reply);
    host.setToken(QString());

    const QString entered =
        QStringLiteral("Enter void AmazonMusicConnect::on_token_changed(const TavuValue&): ");
    EXPECT_EQ(log.count(trace, entered + QStringLiteral("Is set: 1")), 1);
    EXPECT_EQ(log.count(trace, entered + QStringLiteral("Is set: 0")), 1);
    EXPECT_FALSE(log.mentions(QStringLiteral("secretToken")));
}

TEST_F(AmazonMusicConnectTest, WaitsThirtySecondsForAToken)
{
    EXPECT_FALSE(timer().isActive());
    connect().setLoggedIn(true);

    EXPECT_TRUE(timer().isActive());
    EXPECT_TRUE(timer().isSingleShot());
    EXPECT_EQ(timer().interval(), 30000);
    EXPECT_EQ(connect().findChildren<QTimer*>().size(), 1);

    host.setToken(QStringLiteral("T1"));
    EXPECT_FALSE(timer().isActive());
    host.setToken(QString());
    EXPECT_TRUE(timer().isActive());
}

TEST_F(AmazonMusicConnectTest, DoesNotWaitWhenATokenIsThereAtSignIn)
{
    connect();
    host.setToken(QStringLiteral("T1"));
    connect().setLoggedIn(true);

    EXPECT_FALSE(timer().isActive());
}

TEST_F(AmazonMusicConnectTest, FailsWhatWaitsInOrderWhenNoTokenComes)
{
    connect().setLoggedIn(true);
    QStringList finished;
    const Reply first = get("/1");
    const Reply second = get("/2");
    for (const Reply& reply : { second, first })
        reply.onSuccess([&](const HttpClient::Result& result) { finished += result.url.path(); });

    // The timer of half a minute, shortened.
    connect().findChild<QTimer*>()->start(1);

    EXPECT_EQ(code(first), 403);
    EXPECT_EQ(code(second), 403);
    EXPECT_EQ(finished, (QStringList{ QStringLiteral("/1"), QStringLiteral("/2") }));
    const Reply later = get("/3");
    EXPECT_TRUE(later.isFinished());
    EXPECT_EQ(code(later), 403);
    service.expectNoRequest();
}

TEST_F(AmazonMusicConnectTest, OpensTheSessionAgainWhenATokenComesLate)
{
    connect().setLoggedIn(true);
    QMetaObject::invokeMethod(&connect(), "on_invalidSessionTimer_timeout");
    host.setToken(QStringLiteral("T1"));

    const Reply reply = get("/a");
    service.expectRequest("GET", "/a").answer(200);
    EXPECT_EQ(code(reply), 200);
}

TEST_F(AmazonMusicConnectTest, KeepsWhatWaitsWhenTheTokenIsTakenAway)
{
    connect().setLoggedIn(true);
    const Reply reply = get("/a");
    host.setToken(QString());
    expectPending(reply);

    host.setToken(QStringLiteral("T2"));
    service.expectRequest("GET", "/a").answer(200);
    EXPECT_EQ(code(reply), 200);
}

TEST_F(AmazonMusicConnectTest, FailsWhatWaitsWhenTheUserSignsOut)
{
    connect().setLoggedIn(true);
    const Reply waiting = get("/a");
    connect().setLoggedIn(false);

    EXPECT_TRUE(waiting.isFinished());
    EXPECT_EQ(code(waiting), 403);
    EXPECT_FALSE(timer().isActive());
    EXPECT_EQ(code(get("/b")), 403);
    service.expectNoRequest();
}

TEST_F(AmazonMusicConnectTest, SurvivesRequestsMadeWhileItFailsOthers)
{
    connect().setLoggedIn(true);
    const Reply first = get("/1");
    Reply nested;
    first.onSuccess([&](const HttpClient::Result&) { nested = get("/nested"); });
    const Reply second = get("/2");

    connect().cancelAllRequests(503);

    EXPECT_EQ(code(first), 503);
    EXPECT_EQ(code(second), 503);
    expectPending(nested);
}

TEST_F(AmazonMusicConnectTest, RefusesWhatIsAskedForWhileItClosesTheSession)
{
    const auto closeBy = [&](const std::function<void()>& close) {
        connect().setLoggedIn(true);
        const Reply waiting = get("/a");
        Reply nested;
        waiting.onSuccess([&](const HttpClient::Result&) { nested = get("/nested"); });
        close();
        EXPECT_EQ(code(waiting), 403);
        EXPECT_TRUE(nested.isFinished());
        EXPECT_EQ(code(nested), 403);
    };
    closeBy([&] { connect().setLoggedIn(false); });
    closeBy([&] { QMetaObject::invokeMethod(&connect(), "on_invalidSessionTimer_timeout"); });
}

TEST_F(AmazonMusicConnectTest, FailsWhatWaitsWhenTheNetworkGoes)
{
    connect().setLoggedIn(true);
    const Reply waiting = get("/a");
    host.setNetworkConnected(false);
    EXPECT_EQ(code(waiting), 503);

    // The session goes on.
    const Reply later = get("/b");
    expectPending(later);
    host.setNetworkConnected(true);
    expectPending(later);
    host.setToken(QStringLiteral("T1"));
    service.expectRequest("GET", "/b").answer(200);
    EXPECT_EQ(code(later), 200);
}

TEST_F(AmazonMusicConnectTest, LetsWhatIsSentGoOnWhenTheNetworkGoes)
{
    signIn();
    const Reply reply = get("/a");
    const auto call = service.expectRequest("GET", "/a");
    host.setNetworkConnected(false);
    expectPending(reply);

    call.answer(200);
    EXPECT_EQ(code(reply), 200);
}

TEST_F(AmazonMusicConnectTest, LogsWhatItCancels)
{
    const LogCapture log;
    get("/a");

    EXPECT_EQ(log.countContaining(
                  trace, QStringLiteral(": request url: %1a code: 403").arg(service.baseUrl())),
        1);
}

// Tokens that the service refuses.

/// The two codes with which the service refuses a token.
class AmazonMusicConnectRefusalTest : public ConnectFixture, public testing::WithParamInterface<int>
{
protected:
    AmazonMusicConnectRefusalTest()
    {
        signIn();
        m_reply = get("/a");
        service.expectRequest("GET", "/a").answer(GetParam());
        EXPECT_TRUE(waitUntil([&] { return host.tokenRenewals() > 0; }));
    }

    LogCapture m_log;
    Reply m_reply;
};

TEST_P(AmazonMusicConnectRefusalTest, HasTheTokenRenewedAndHoldsTheRequest)
{
    expectPending(m_reply);
    EXPECT_EQ(host.tokenRenewals(), 1);
    EXPECT_EQ(count(m_log, error, "Authentication required - renew token"), 1);
    EXPECT_TRUE(connect().getToken().isEmpty());
    EXPECT_TRUE(timer().isActive());
}

TEST_P(AmazonMusicConnectRefusalTest, RenewsOnceForARequest)
{
    host.setToken(QStringLiteral("new"));
    const auto again = service.expectRequest("GET", "/a");
    EXPECT_EQ(again.header("authorization"), "Bearer new");
    again.answer(GetParam(), "still no");

    EXPECT_EQ(expectValue(m_reply).code, GetParam());
    EXPECT_EQ(expectValue(m_reply).data, "still no");
    EXPECT_EQ(host.tokenRenewals(), 1);
}

INSTANTIATE_TEST_SUITE_P(Codes, AmazonMusicConnectRefusalTest, testing::Values(401, 403));

TEST_F(AmazonMusicConnectTest, SendsAPostAgainWithItsBodyAfterARenewal)
{
    signIn();
    host.renewTokenWith(QStringLiteral("T2"));
    const Reply reply = connect().post(at("/p"), QStringLiteral("body"));
    service.expectRequest("POST", "/p").answer(401);
    const auto again = service.expectRequest("POST", "/p");
    EXPECT_EQ(again.header("authorization"), "Bearer T2");
    EXPECT_EQ(again.request().body, "body");
    again.answer(200);
    EXPECT_EQ(code(reply), 200);
}

TEST_F(AmazonMusicConnectTest, RenewsOnceForRequestsRefusedTogether)
{
    signIn();
    const Reply first = get("/1");
    const Reply second = get("/2");
    const auto one = service.expectRequest("GET", "/1");
    const auto two = service.expectRequest("GET", "/2");
    one.answer(401);
    EXPECT_TRUE(waitUntil([&] { return host.tokenRenewals() == 1; }));
    two.answer(401);
    expectPending(second);
    service.expectNoRequest();
    EXPECT_EQ(host.tokenRenewals(), 1);

    host.setToken(QStringLiteral("T2"));
    service.expectRequest("GET", "/1").answer(200);
    service.expectRequest("GET", "/2").answer(200);
    EXPECT_EQ(code(first), 200);
    EXPECT_EQ(code(second), 200);
}

TEST_F(AmazonMusicConnectTest, FailsARefusedRequestWhenNoNewTokenComes)
{
    signIn();
    const Reply reply = get("/a");
    service.expectRequest("GET", "/a").answer(401);
    EXPECT_TRUE(waitUntil([&] { return timer().isActive(); }));

    connect().findChild<QTimer*>()->start(1);

    EXPECT_EQ(code(reply), 403);
}

TEST_F(AmazonMusicConnectTest, DeliversARefusalAfterTheUserHasSignedOut)
{
    signIn();
    const Reply reply = get("/a");
    const auto call = service.expectRequest("GET", "/a");
    host.setToken(QString());
    connect().setLoggedIn(false);
    call.answer(401, "no");

    EXPECT_EQ(expectValue(reply).code, 401);
    EXPECT_EQ(expectValue(reply).data, "no");
    EXPECT_EQ(host.tokenRenewals(), 0);
}

TEST_F(AmazonMusicConnectTest, CallsNobodyBackAfterItsEnd)
{
    Reply reply;
    {
        AmazonMusicConnect shortLived;
        shortLived.setLoggedIn(true);
        host.setToken(QStringLiteral("T1"));
        reply = shortLived.get(at("/a"));
        service.expectRequest("GET", "/a").answer(200);
    }
    expectPending(reply);
}

} // namespace
