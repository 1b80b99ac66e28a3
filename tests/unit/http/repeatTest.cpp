#include "clientFixture.h"

#include <QElapsedTimer>

namespace {

/// Requests that are sent more than once, and those that must not be.
class HttpClientRepeat : public ClientFixture
{
protected:
    RawServer server{ [this](const RawServer::Call& call) { answer(call); } };
    RawServer::Script answer;

    HttpClientOptions following(int redirects)
    {
        HttpClientOptions how = withHeader("authorization", "Bearer secret");
        how.setMaxRedirects(redirects);
        return how;
    }
    /// A server that lets each connection die on the second request it carries.
    void dieOnReuse()
    {
        answer = [requests = QHash<int, int>()](const RawServer::Call& call) mutable {
            if (++requests[call.connection] > 1)
                call.reset();
            else
                call.answer("ok");
        };
    }
    void refuse(int status, const QByteArray& retryAfter, int times)
    {
        answer = [=](const RawServer::Call& call) {
            if (call.number > times)
                call.answer("ok");
            else
                call.answer(status, "busy", "Retry-After: " + retryAfter + "\r\n");
        };
    }
};

} // namespace

TEST_F(HttpClientRepeat, GetIsSentAgainWhenAKeptConnectionDies)
{
    dieOnReuse();
    EXPECT_EQ(get(server.url("/")).data, "ok");
    EXPECT_EQ(get(server.url("/")).data, "ok");
    EXPECT_EQ(server.calls().size(), 3);
    EXPECT_EQ(server.connections(), 2);
}

TEST_F(HttpClientRepeat, PostIsNotSentAgainWhenAKeptConnectionDies)
{
    dieOnReuse();
    EXPECT_EQ(get(server.url("/")).data, "ok");
    expectFailure(post(server.url("/"), "{}"), HttpClientStatus::ConnectionClosed);
    EXPECT_EQ(server.calls().size(), 2);
}

TEST_F(HttpClientRepeat, EmptyPostIsNotSentAgainEither)
{
    dieOnReuse();
    EXPECT_EQ(get(server.url("/")).data, "ok");
    expectFailure(post(server.url("/"), QByteArray()), HttpClientStatus::ConnectionClosed);
    EXPECT_EQ(server.calls().size(), 2);
}

TEST_F(HttpClientRepeat, RepeatablePostIsSentAgainWhenAKeptConnectionDies)
{
    dieOnReuse();
    HttpClientOptions repeatable = options();
    repeatable.setRepeatable(true);
    EXPECT_EQ(get(server.url("/")).data, "ok");
    EXPECT_EQ(post(server.url("/"), "{}", repeatable).data, "ok");
    EXPECT_EQ(server.calls().size(), 3);
    EXPECT_EQ(server.calls().last().body, "{}");
    EXPECT_EQ(server.connections(), 2);
}

TEST_F(HttpClientRepeat, RepeatablePostIsNotSentAgainOnAFreshConnectionThatDies)
{
    answer = [](const RawServer::Call& call) { call.reset(); };
    HttpClientOptions repeatable = options();
    repeatable.setRepeatable(true);
    expectFailure(post(server.url("/"), "{}", repeatable), HttpClientStatus::ConnectionClosed);
    EXPECT_EQ(server.calls().size(), 1);
}

TEST_F(HttpClientRepeat, PostGoesOnAFreshConnectionWhenTheKeptOneWasClosedMeanwhile)
{
    answer = [](const RawServer::Call& call) {
        call.answer("ok");
        call.close();
    };
    for (int round = 1; round <= 3; ++round) {
        EXPECT_EQ(post(server.url("/"), "{}").data, "ok");
        ASSERT_TRUE(waitUntil([&] { return server.ended() == round; }));
    }
    EXPECT_EQ(server.calls().size(), 3);
    EXPECT_EQ(server.connections(), 3);
}

TEST_F(HttpClientRepeat, FreshConnectionThatDiesIsNotMadeUpFor)
{
    answer = [](const RawServer::Call& call) { call.reset(); };
    expectFailure(get(server.url("/")), HttpClientStatus::ConnectionClosed);
    EXPECT_EQ(server.calls().size(), 1);
}

TEST_F(HttpClientRepeat, GetIsSentAgainAfterAShortRetryAfter)
{
    refuse(503, "0", 1);
    EXPECT_EQ(get(server.url("/")).data, "ok");
    EXPECT_EQ(server.calls().size(), 2);
}

TEST_F(HttpClientRepeat, TooManyRequestsIsTreatedAlike)
{
    refuse(429, "0", 2);
    EXPECT_EQ(get(server.url("/")).data, "ok");
    EXPECT_EQ(server.calls().size(), 3);
}

TEST_F(HttpClientRepeat, GetIsSentAgainTwiceAtMost)
{
    refuse(503, "0", 100);
    const Result result = get(server.url("/"));
    EXPECT_EQ(result.code, 503);
    EXPECT_EQ(result.data, "busy");
    EXPECT_EQ(server.calls().size(), 3);
}

TEST_F(HttpClientRepeat, WaitsAsLongAsTheServerAsks)
{
    refuse(503, "1", 1);
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(get(server.url("/")).data, "ok");
    EXPECT_GE(clock.elapsed(), 1000);
}

TEST_F(HttpClientRepeat, LongMissingOrOddRetryAfterIsDelivered)
{
    for (const QByteArray after : { "3", "", "-1", "soon", "Wed, 21 Oct 2015 07:28:00 GMT" }) {
        refuse(503, after, 1000);
        const int before = server.calls().size();
        EXPECT_EQ(get(server.url("/")).code, 503) << after.toStdString();
        EXPECT_EQ(server.calls().size(), before + 1);
    }
}

TEST_F(HttpClientRepeat, RetryAfterBeyondTheTimeoutIsDelivered)
{
    refuse(503, "2", 1000);
    EXPECT_EQ(get(server.url("/"), options(1500)).code, 503);
    EXPECT_EQ(server.calls().size(), 1);
}

TEST_F(HttpClientRepeat, OtherErrorsAndPostsAreDeliveredAtOnce)
{
    refuse(500, "0", 1000);
    EXPECT_EQ(get(server.url("/")).code, 500);
    refuse(503, "0", 1000);
    EXPECT_EQ(post(server.url("/"), "{}").code, 503);
    EXPECT_EQ(server.calls().size(), 2);
}

TEST_F(HttpClientRepeat, RedirectIsDeliveredByDefault)
{
    answer = [](const RawServer::Call& call) { call.answer(307, "", "Location: /b\r\n"); };
    const Result result = get(server.url("/a"));
    EXPECT_EQ(result.code, 307);
    EXPECT_EQ(result.headers.value("location"), server.url("/b").toEncoded());
    EXPECT_EQ(server.calls().size(), 1);
}

TEST_F(HttpClientRepeat, MissingLocationStaysMissingAndABadOneIsEmpty)
{
    answer = [](const RawServer::Call& call) { call.answer(302, "", ""); };
    EXPECT_FALSE(get(server.url("/")).headers.contains("location"));
    answer = [](const RawServer::Call& call) {
        call.answer(302, "", "Location: http://a.test:99999/\r\n");
    };
    const Result result = get(server.url("/"));
    EXPECT_TRUE(result.headers.contains("location"));
    EXPECT_EQ(result.headers.value("location"), QByteArray());
}

TEST_F(HttpClientRepeat, RedirectIsFollowedWhereAllowed)
{
    answer = [](const RawServer::Call& call) {
        if (call.line().contains(" /a "))
            call.answer(307, "", "Location: /b\r\n");
        else
            call.answer("arrived");
    };
    const TavuUrl url = server.url("/a#part");
    const Result result = post(url, "body", following(1));
    EXPECT_EQ(result.data, "arrived");
    EXPECT_EQ(result.url, url);
    EXPECT_EQ(server.calls().last().line(), "POST /b HTTP/1.1");
    EXPECT_EQ(server.calls().last().body, "body");
    EXPECT_EQ(server.calls().last().field("authorization"), "Bearer secret");
}

TEST_F(HttpClientRepeat, SeeOtherTurnsAPostIntoAGet)
{
    answer = [](const RawServer::Call& call) {
        if (call.line().contains(" /a "))
            call.answer(303, "", "Location: /b\r\n");
        else
            call.answer("arrived");
    };
    EXPECT_EQ(post(server.url("/a"), "body", following(1)).data, "arrived");
    EXPECT_EQ(server.calls().last().line(), "GET /b HTTP/1.1");
    EXPECT_TRUE(server.calls().last().body.isEmpty());
}

TEST_F(HttpClientRepeat, RedirectsAreCounted)
{
    answer = [](const RawServer::Call& call) { call.answer(302, "", "Location: /next\r\n"); };
    expectFailure(get(server.url("/"), following(3)), HttpClientStatus::TooManyRedirects);
    EXPECT_EQ(server.calls().size(), 4);
}

TEST_F(HttpClientRepeat, AuthorizationIsNotTakenToAnotherOrigin)
{
    RawServer other([](const RawServer::Call& call) { call.answer("other"); });
    answer = [&](const RawServer::Call& call) {
        call.answer(302, "", "Location: " + other.url("/").toEncoded() + "\r\n");
    };
    EXPECT_EQ(get(server.url("/"), following(1)).data, "other");
    EXPECT_TRUE(other.calls().last().field("authorization").isNull());
}

TEST_F(HttpClientRepeat, RedirectToNowhereFailsUnsent)
{
    answer = [](const RawServer::Call& call) {
        call.answer(302, "", "Location: javascript:alert(1)\r\n");
    };
    expectFailure(get(server.url("/"), following(1)), HttpClientStatus::InvalidUrl);
    EXPECT_EQ(server.calls().size(), 1);
}
