#include "clientFixture.h"

namespace {

class HttpClientRequest : public ClientFixture
{
protected:
    RawServer server{ [](const RawServer::Call& call) { call.answer("{}"); } };
    const RawServer::Call& call() { return server.calls().last(); }
};

} // namespace

TEST_F(HttpClientRequest, GetSendsTheEncodedTargetWithoutFragment)
{
    const Result result = get(server.url("/a%2Fb/c%25?q=x%2By&z#chunk%20one"));
    EXPECT_EQ(call().line(), "GET /a%2Fb/c%25?q=x%2By&z HTTP/1.1");
    EXPECT_EQ(call().field("host"), "127.0.0.1:" + QByteArray::number(server.serverPort()));
    EXPECT_EQ(result.error, HttpClientStatus::Ok);
    EXPECT_EQ(result.code, 200);
    EXPECT_EQ(result.data, "{}");
    EXPECT_TRUE(result.reason.isEmpty());
}

TEST_F(HttpClientRequest, ResultCarriesTheRequestedUrlWithItsFragment)
{
    const TavuUrl url = server.url("/playable?a=%2F#chunk one");
    EXPECT_EQ(get(url).url, url);
    EXPECT_EQ(get(url).url.fragment(), QStringLiteral("chunk one"));
}

TEST_F(HttpClientRequest, CallbackNeverRunsInsideTheCall)
{
    Pending sent;
    Pending refused;
    client().get(server.url("/"), options(), sent.callback());
    client().get(TavuUrl(), options(), refused.callback());
    EXPECT_EQ(sent.calls(), 0);
    EXPECT_EQ(refused.calls(), 0);
    sent.wait();
    refused.wait();
}

TEST_F(HttpClientRequest, HeadersGoOutAsGiven)
{
    HttpClientHeaders headers;
    headers.insert("authorization", "Bearer secret");
    headers.insert("x-amzn-audio-drmtype", "WIDEVINE");
    headers.insert("x-empty", "");
    HttpClientOptions how = options();
    how.setHeaders(headers);
    get(server.url("/"), how);
    EXPECT_EQ(call().field("authorization"), "Bearer secret");
    EXPECT_EQ(call().field("x-amzn-audio-drmtype"), "WIDEVINE");
    EXPECT_FALSE(call().field("x-empty").isNull());
    EXPECT_EQ(call().field("x-empty"), "");
}

TEST_F(HttpClientRequest, HeaderWithControlCharactersIsRefusedUnsent)
{
    const QByteArrayList values{ "a\r\nx-injected: 1", "a\nb", "a\rb", QByteArray("a\0b", 3),
        "a\x7f" };
    for (const QByteArray& value : values)
        expectFailure(
            get(server.url("/"), withHeader("authorization", value)), HttpClientStatus::Failed);
    for (const QByteArray& name : QByteArrayList{ "", "a b", "a:b", "a\r\nb" })
        expectFailure(get(server.url("/"), withHeader(name, "v")), HttpClientStatus::Failed);
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(HttpClientRequest, PostSendsTheBytesAsTheyAre)
{
    const QByteArray body("{\"title\":\"B\xe9same \\u0000\"}\0\xff", 26);
    const Result result = post(server.url("/report"), body);
    EXPECT_EQ(call().line(), "POST /report HTTP/1.1");
    EXPECT_EQ(call().body, body);
    EXPECT_EQ(call().field("content-type"), "application/json");
    EXPECT_TRUE(call().field("expect").isNull());
    EXPECT_EQ(result.code, 200);
}

TEST_F(HttpClientRequest, LargePostGoesOutWithoutAskingFirst)
{
    const QByteArray body(300 * 1024, 'x');
    post(server.url("/"), body);
    EXPECT_EQ(call().body, body);
    EXPECT_TRUE(call().field("expect").isNull());
}

TEST_F(HttpClientRequest, EmptyPostHasALengthButNoType)
{
    post(server.url("/"), QByteArray());
    EXPECT_EQ(call().field("content-length"), "0");
    EXPECT_TRUE(call().field("content-type").isNull());
}

TEST_F(HttpClientRequest, GivenContentTypeIsKept)
{
    post(server.url("/"), "a=b", withHeader("Content-Type", "application/x-www-form-urlencoded"));
    EXPECT_EQ(call().field("content-type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(call().head.toLower().count("content-type:"), 1);
}

TEST_F(HttpClientRequest, BodyBytesOutliveTheCallersCopy)
{
    server.setScript([](const RawServer::Call& call) { call.answer(call.body); });
    Pending pending;
    {
        QByteArray body(100000, 'a');
        client().post(server.url("/"), body, options(), pending.callback());
        body.fill('b');
    }
    EXPECT_EQ(pending.wait().data, QByteArray(100000, 'a'));
}

TEST_F(HttpClientRequest, ConnectionIsUsedAgain)
{
    for (int round = 0; round < 5; ++round)
        get(server.url("/"));
    post(server.url("/"), "{}");
    EXPECT_EQ(server.calls().size(), 6);
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(HttpClientRequest, AThousandAtOnceShareSixteenConnections)
{
    std::vector<Pending> pending(1000);
    for (Pending& one : pending)
        client().get(server.url("/"), options(), one.callback());
    for (Pending& one : pending)
        EXPECT_EQ(one.wait().code, 200);
    EXPECT_EQ(server.calls().size(), 1000);
    EXPECT_EQ(server.connections(), 16);
}

TEST_F(HttpClientRequest, WaitingForATurnCountsAgainstTheTimeout)
{
    server.setScript([](const RawServer::Call&) {});
    std::vector<Pending> holding(16);
    for (Pending& one : holding)
        client().get(server.url("/"), options(), one.callback());
    Pending waiting;
    client().get(server.url("/late"), options(50), waiting.callback());
    expectFailure(waiting.wait(), HttpClientStatus::Timeout);
    settle();
    EXPECT_EQ(server.calls().size(), 16);
}

TEST_F(HttpClientRequest, NamesAreMappedToOtherAddresses)
{
    config.connectTo.append(
        "music.example.test:80:127.0.0.1:" + QByteArray::number(server.serverPort()));
    const Result result = get(TavuUrl::fromEncoded("http://music.example.test/page"));
    EXPECT_EQ(result.code, 200);
    EXPECT_EQ(call().field("host"), "music.example.test");
}

TEST_F(HttpClientRequest, CallbackMayAskAgainAndDestroyTheClient)
{
    bool second = false;
    client().get(server.url("/"), options(), [&](const Result&) {
        client().get(server.url("/"), options(), [&](const Result&) {
            second = true;
            destroyClient();
        });
    });
    EXPECT_TRUE(waitUntil([&] { return second; }));
    settle();
}

TEST_F(HttpClientRequest, DestroyingTheClientEndsItsTransfersWithoutACall)
{
    server.setScript([](const RawServer::Call&) {});
    Pending pending;
    Pending refused;
    client().get(server.url("/"), options(), pending.callback());
    EXPECT_TRUE(waitUntil([&] { return server.calls().size() == 1; }));
    client().get(TavuUrl(), options(), refused.callback());
    destroyClient();
    EXPECT_TRUE(waitUntil([&] { return server.ended() == 1; }));
    EXPECT_EQ(pending.calls(), 0);
    EXPECT_EQ(refused.calls(), 0);
}

TEST_F(HttpClientRequest, StatusesArePrintable)
{
    EXPECT_EQ(HttpClient::toString(HttpClientStatus::Ok), QStringLiteral("OK"));
    EXPECT_EQ(HttpClient::toString(HttpClientStatus::Timeout), QStringLiteral("Timeout"));
    EXPECT_EQ(HttpClient::toString(HttpClientStatus(99)), QStringLiteral("Status 99"));
}

TEST(HttpClientHeaders, NamesCompareCaseInsensitively)
{
    HttpClientHeaders headers;
    headers.insert("Location", "a");
    headers.insert("location", "b");
    headers.append("Set-Cookie", "1");
    headers.append("set-cookie", "2");
    EXPECT_EQ(headers.value("LOCATION"), "b");
    EXPECT_EQ(headers.value("set-cookie"), "1");
    EXPECT_EQ(headers.value("etag", "none"), "none");
    EXPECT_EQ(headers.fields().size(), 3);
    headers.remove("SET-COOKIE");
    EXPECT_FALSE(headers.contains("set-cookie"));
}
