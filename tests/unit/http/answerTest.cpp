#include "clientFixture.h"

#include <QElapsedTimer>
#include <QTimer>

namespace {

class HttpClientAnswer : public ClientFixture
{
protected:
    RawServer server{ [this](const RawServer::Call& call) { answer(call); } };
    RawServer::Script answer;

    /// The result of one request that the server answers with these bytes and then hangs up on.
    Result resultOf(const QByteArray& bytes)
    {
        answer = [bytes](const RawServer::Call& call) {
            call.write(bytes);
            call.close();
        };
        return get(server.url("/"));
    }
    Result resultOf(const QByteArray& bytes, const HttpClientOptions& how)
    {
        answer = [bytes](const RawServer::Call& call) { call.write(bytes); };
        return get(server.url("/"), how);
    }
};

QByteArray gzipBomb(int zeros)
{
    // qCompress makes a zlib stream behind a length of four bytes; "deflate" names just that.
    return qCompress(QByteArray(zeros, '\0'), 9).mid(4);
}

} // namespace

TEST_F(HttpClientAnswer, HeadersAreDeliveredAndLocationIsAbsolute)
{
    const Result result = resultOf("HTTP/1.1 302 Found\r\nLocation: ../next?a=b#c\r\n"
                                   "X-Several: 1\r\nx-several: 2\r\nContent-Length: 0\r\n\r\n");
    EXPECT_EQ(result.code, 302);
    EXPECT_EQ(result.headers.value("location"), server.url("/next?a=b#c").toEncoded());
    EXPECT_EQ(result.headers.value("X-SEVERAL"), "1");
    EXPECT_EQ(server.calls().size(), 1);
}

TEST_F(HttpClientAnswer, InterimAnswersAndTrailersArePassedOver)
{
    const Result result =
        resultOf("HTTP/1.1 103 Early Hints\r\nX-Early: 1\r\n\r\n"
                 "HTTP/1.1 200 OK\r\nX-Real: 1\r\nTransfer-Encoding: chunked\r\n\r\n"
                 "5\r\nhello\r\n0\r\nX-Trailer: 1\r\n\r\n");
    EXPECT_EQ(result.data, "hello");
    EXPECT_TRUE(result.headers.contains("x-real"));
    EXPECT_FALSE(result.headers.contains("x-early"));
    EXPECT_FALSE(result.headers.contains("x-trailer"));
}

TEST_F(HttpClientAnswer, ResetInMidBodyFailsAndThePartIsDropped)
{
    answer = [](const RawServer::Call& call) {
        call.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\npart");
        call.reset();
    };
    expectFailure(get(server.url("/")), HttpClientStatus::ConnectionClosed);
}

TEST_F(HttpClientAnswer, ShortBodyFails)
{
    expectFailure(resultOf("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\npart"),
        HttpClientStatus::ConnectionClosed);
}

TEST_F(HttpClientAnswer, MissingLastChunkFails)
{
    expectFailure(resultOf("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\npart\r\n"),
        HttpClientStatus::ConnectionClosed);
}

TEST_F(HttpClientAnswer, SurplusBytesAreDroppedAndTheConnectionIsNotUsedAgain)
{
    const QByteArray surplus = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nokHTTP/1.1 200 OK\r\n"
                               "Content-Length: 6\r\n\r\npoison";
    EXPECT_EQ(resultOf(surplus, options()).data, "ok");
    answer = [](const RawServer::Call& call) { call.answer("next"); };
    EXPECT_EQ(get(server.url("/")).data, "next");
    EXPECT_EQ(server.connections(), 2);
}

TEST_F(HttpClientAnswer, ContradictoryFramingIsRefusedAndTheConnectionClosed)
{
    const QByteArrayList heads{
        "Content-Length: 2\r\nContent-Length: 3\r\n",
        "Content-Length: 2\r\nTransfer-Encoding: chunked\r\n",
        "Transfer-Encoding: chunked\r\nContent-Length: 2\r\n",
        "Content-Length: 2, 3\r\n",
        "Content-Length: -2\r\n",
        "Content-Length: +2\r\n",
        "Content-Length:\r\n 2\r\n",
        "Content-Length : 2\r\n",
    };
    for (const QByteArray& head : heads) {
        SCOPED_TRACE(head.toStdString());
        const int ended = server.ended();
        expectFailure(resultOf("HTTP/1.1 200 OK\r\n" + head + "\r\n0\r\n\r\n", options()),
            HttpClientStatus::ProtocolError);
        EXPECT_TRUE(waitUntil([&] { return server.ended() == ended + 1; }));
    }
}

TEST_F(HttpClientAnswer, LengthBeyondAllNumbersIsRefused)
{
    expectFailure(
        resultOf("HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999\r\n\r\n", options()),
        HttpClientStatus::ReadLimitExceeded);
}

TEST_F(HttpClientAnswer, TheSameLengthTwiceIsTakenOnce)
{
    EXPECT_EQ(
        resultOf("HTTP/1.1 200 OK\r\nContent-Length: 2\r\nContent-Length: 2\r\n\r\nok").data, "ok");
}

TEST_F(HttpClientAnswer, WhatIsNotHttpFailsWithoutWaitingForMore)
{
    EXPECT_EQ(resultOf("<html>hello</html>\r\n\r\n").error, HttpClientStatus::ProtocolError);
    EXPECT_EQ(resultOf(QByteArray("\x16\x03\x01\x00\x05garbage", 12)).error,
        HttpClientStatus::ProtocolError);
    EXPECT_EQ(resultOf("HTTP/0.9 200 OK\r\n\r\n").error, HttpClientStatus::ProtocolError);
    EXPECT_EQ(resultOf("").error, HttpClientStatus::ConnectionClosed);
}

TEST_F(HttpClientAnswer, EmptyBodyIsAnAnswer)
{
    const Result result = resultOf("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    EXPECT_EQ(result.error, HttpClientStatus::Ok);
    EXPECT_EQ(result.code, 200);
    EXPECT_TRUE(result.data.isEmpty());
}

TEST_F(HttpClientAnswer, BodyOfExactlyTheLimitIsAccepted)
{
    const QByteArray body(1048576, 'x');
    answer = [&](const RawServer::Call& call) { call.answer(body); };
    EXPECT_EQ(get(server.url("/")).data, body);
    EXPECT_EQ(resultOf("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n100000\r\n" + body
                  + "\r\n0\r\n\r\n")
                  .data,
        body);
}

TEST_F(HttpClientAnswer, OneByteOverTheLimitIsRefused)
{
    const QByteArray body(1048577, 'x');
    answer = [&](const RawServer::Call& call) { call.answer(body); };
    expectFailure(get(server.url("/")), HttpClientStatus::ReadLimitExceeded);
    expectFailure(resultOf("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n100001\r\n" + body
                      + "\r\n0\r\n\r\n"),
        HttpClientStatus::ReadLimitExceeded);
}

TEST_F(HttpClientAnswer, WithoutLimitAnyLengthIsTaken)
{
    const QByteArray body(3 * 1048576, 'x');
    answer = [&](const RawServer::Call& call) { call.answer(body); };
    EXPECT_EQ(get(server.url("/"), options(30000, 0)).data, body);
}

TEST_F(HttpClientAnswer, CompressedBodyArrivesDecoded)
{
    answer = [](const RawServer::Call& call) {
        EXPECT_TRUE(call.field("accept-encoding").contains("gzip"));
        call.answer(qCompress(QByteArray("{\"a\":1}"), 9).mid(4), "Content-Encoding: deflate\r\n");
    };
    EXPECT_EQ(get(server.url("/")).data, "{\"a\":1}");
}

TEST_F(HttpClientAnswer, CompressedBodyIsCountedDecoded)
{
    const QByteArray bomb = gzipBomb(64 * 1024 * 1024);
    ASSERT_LT(bomb.size(), 128 * 1024);
    answer = [&](const RawServer::Call& call) {
        call.answer(bomb, "Content-Encoding: deflate\r\n");
    };
    expectFailure(get(server.url("/")), HttpClientStatus::ReadLimitExceeded);
    answer = [&](const RawServer::Call& call) {
        call.answer(gzipBomb(1048576), "Content-Encoding: deflate\r\n");
    };
    EXPECT_EQ(get(server.url("/")).data.size(), 1048576);
}

TEST_F(HttpClientAnswer, BrokenCompressionFails)
{
    expectFailure(resultOf("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 6\r\n\r\n"
                           "nogzip"),
        HttpClientStatus::ProtocolError);
}

TEST_F(HttpClientAnswer, HeaderBlockOver256KiBIsRefused)
{
    const QByteArray field = "X-Filler: " + QByteArray(1000, 'x') + "\r\n";
    const int fitting = 256 * 1024 / field.size() - 1;
    const QByteArray end = "Content-Length: 0\r\n\r\n";
    EXPECT_EQ(resultOf("HTTP/1.1 200 OK\r\n" + field.repeated(fitting) + end).code, 200);
    expectFailure(resultOf("HTTP/1.1 200 OK\r\n" + field.repeated(fitting + 2) + end),
        HttpClientStatus::ReadLimitExceeded);
}

TEST_F(HttpClientAnswer, EndlessHeaderBlockIsCutOff)
{
    answer = [](const RawServer::Call& call) {
        QTcpSocket* const socket = call.socket;
        QObject::connect(socket, &QTcpSocket::bytesWritten, socket,
            [socket] { socket->write("X-Endless: yes, it is\r\n"); });
        socket->write("HTTP/1.1 200 OK\r\n" + QByteArray("X-Endless: yes\r\n").repeated(20000));
    };
    expectFailure(get(server.url("/")), HttpClientStatus::ReadLimitExceeded);
}

TEST_F(HttpClientAnswer, EndlessHeaderLineIsCutOff)
{
    answer = [](const RawServer::Call& call) {
        call.write("HTTP/1.1 200 OK\r\nX-Endless: " + QByteArray(400 * 1024, 'x'));
    };
    expectFailure(get(server.url("/")), HttpClientStatus::ReadLimitExceeded);
}

TEST_F(HttpClientAnswer, EndlessInterimAnswersAreCutOff)
{
    answer = [](const RawServer::Call& call) {
        call.write(QByteArray("HTTP/1.1 103 Early Hints\r\nX-Filler: abcdefghijkl\r\n\r\n")
                       .repeated(6000));
    };
    expectFailure(get(server.url("/")), HttpClientStatus::ReadLimitExceeded);
}

TEST_F(HttpClientAnswer, TimeoutIsForTheWholeTransfer)
{
    // A byte now and then resets an idle time-out, not this one.
    QTimer trickle;
    answer = [&](const RawServer::Call& call) {
        call.write("HTTP/1.1 200 OK\r\nContent-Length: 100000\r\n\r\n");
        QObject::connect(&trickle, &QTimer::timeout, call.socket,
            [socket = call.socket] { socket->write("x"); });
        trickle.start(10);
    };
    QElapsedTimer clock;
    clock.start();
    expectFailure(get(server.url("/"), options(300)), HttpClientStatus::Timeout);
    EXPECT_GE(clock.elapsed(), 299);
}

TEST_F(HttpClientAnswer, SilentServerTimesOut)
{
    answer = [](const RawServer::Call&) {};
    expectFailure(get(server.url("/"), options(100)), HttpClientStatus::Timeout);
    answer = [](const RawServer::Call& call) {
        call.write("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf");
    };
    expectFailure(get(server.url("/"), options(100)), HttpClientStatus::Timeout);
}

TEST_F(HttpClientAnswer, RefusedConnectionFailsAtOnce)
{
    const TavuUrl url = server.url("/");
    server.close();
    expectFailure(get(url), HttpClientStatus::ConnectFailed);
}

TEST_F(HttpClientAnswer, UnknownNameFails)
{
    // A label of 64 letters is refused by the resolver before it asks anybody.
    config.connectTo.append("unknown.test:80:" + QByteArray(64, 'a') + ".test:80");
    expectFailure(
        get(TavuUrl::fromEncoded("http://unknown.test/")), HttpClientStatus::NameNotResolved);
}

TEST_F(HttpClientAnswer, ServerThatComesBackIsReachedAgain)
{
    answer = [](const RawServer::Call& call) { call.reset(); };
    expectFailure(get(server.url("/")), HttpClientStatus::ConnectionClosed);
    answer = [](const RawServer::Call& call) { call.answer("back"); };
    EXPECT_EQ(get(server.url("/")).data, "back");
}
