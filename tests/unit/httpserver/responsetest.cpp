#include "serverfixture.h"

#include <QElapsedTimer>
#include <QTimer>

#include <arpa/inet.h>
#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>

using http::Request;
using http::Responder;
using http::Response;
using http::Shaping;

class Responses : public ServerFixture
{
protected:
    /// GET /a is answered by `handler`; returns the peer that has asked.
    RawPeer ask(const std::function<void(const Responder&)>& handler, const char* version = "1.1")
    {
        add("GET", "/a",
            [handler](const Request&, const Responder& responder) { handler(responder); });
        RawPeer peer(port());
        peer.send(QByteArray("GET /a HTTP/") + version + "\r\nHost: x\r\n\r\n");
        return peer;
    }
};

TEST_F(Responses, CarryDateLengthAndPhrase)
{
    RawPeer peer = ask([](const Responder& responder) {
        responder.send({ 202, { { "X-A", "b" } }, "body" });
    });
    ASSERT_TRUE(peer.waitFor("body"));
    EXPECT_TRUE(peer.received().startsWith("HTTP/1.1 202 Accepted\r\n"));
    const RawPeer::Answer answer = peer.answer();
    EXPECT_EQ(answer.field("Content-Length"), "4");
    EXPECT_EQ(answer.field("X-A"), "b");
    EXPECT_TRUE(answer.field("Date").endsWith(" GMT"));
}

TEST_F(Responses, LeaveOutTheBodyWhereThereMustBeNone)
{
    RawPeer peer = ask([](const Responder& responder) { responder.send({ 204, {}, "body" }); });
    const RawPeer::Answer answer = peer.answer();
    EXPECT_EQ(answer.status, 204);
    EXPECT_TRUE(answer.field("Content-Length").isEmpty());
    settle();
    EXPECT_TRUE(peer.received().isEmpty());
}

TEST_F(Responses, OfTwentyFiveKilobytesComeAtOnce)
{
    // Without immediate sending the last part waits for the peer's delayed acknowledgement, some
    // 40 ms nearly each time.
    add("GET", "/25", [](const Request&, const Responder& responder) {
        responder.send(Response::text(200, QByteArray(25 * 1024, 'a')));
    });
    RawPeer peer(port());
    int waited = 0;
    for (int i = 0; i < 50; ++i) {
        QElapsedTimer clock;
        clock.start();
        ASSERT_EQ(peer.ask("GET", "/25").body.size(), 25 * 1024);
        waited += clock.elapsed() >= 35 ? 1 : 0;
    }
    EXPECT_LT(waited, 25);
}

TEST_F(Responses, DropFieldsThatWouldBeginFurtherLines)
{
    const QByteArray nul("f\0g", 3);
    RawPeer peer = ask([nul](const Responder& responder) {
        responder.send({ 200,
            { { "A", "b\r\nSet-Cookie: c" }, { "B: b\r\nC", "c" }, { "F", nul }, { "D", "e" } },
            "x" });
    });
    const RawPeer::Answer answer = peer.answer();
    EXPECT_TRUE(answer.field("A").isEmpty());
    EXPECT_TRUE(answer.field("Set-Cookie").isEmpty());
    EXPECT_TRUE(answer.field("C").isEmpty());
    EXPECT_TRUE(answer.field("F").isEmpty());
    EXPECT_EQ(answer.field("D"), "e");
}

TEST_F(Responses, MayComeLater)
{
    RawPeer peer = ask([](const Responder& responder) {
        QTimer::singleShot(20, [responder] { responder.send(Response::text(200, "later")); });
    });
    EXPECT_EQ(peer.answer().body, "later");
    EXPECT_TRUE(peer.connected());
}

TEST_F(Responses, CountOnlyOnce)
{
    RawPeer peer = ask([](const Responder& responder) {
        responder.send(Response::text(200, "first"));
        responder.send(Response::text(500, "second"));
        responder.begin({});
        responder.close();
        EXPECT_FALSE(responder.isOpen());
    });
    EXPECT_EQ(peer.answer().body, "first");
    settle();
    EXPECT_TRUE(peer.received().isEmpty());
    EXPECT_TRUE(peer.connected());
}

TEST_F(Responses, AreSuppliedWhenAHandlerForgets)
{
    RawPeer peer = ask([](const Responder&) {});
    EXPECT_EQ(peer.answer().status, 500);
}

TEST_F(Responses, StreamInChunks)
{
    RawPeer peer = ask([](const Responder& responder) {
        responder.begin({ 200, { { "Content-Type", "text/plain" } }, "one " });
        responder.write("two ");
        responder.write({});
        QTimer::singleShot(10, [responder] {
            responder.write("three");
            responder.end();
        });
    });
    const RawPeer::Answer answer = peer.answer();
    EXPECT_EQ(answer.body, "one two three");
    EXPECT_EQ(answer.field("Transfer-Encoding"), "chunked");
    EXPECT_TRUE(answer.complete);
    EXPECT_TRUE(peer.connected());
}

TEST_F(Responses, StreamToOldClientsUntilTheEnd)
{
    RawPeer peer = ask(
        [](const Responder& responder) {
            responder.begin({});
            responder.write("all");
            responder.end();
        },
        "1.0");
    const RawPeer::Answer answer = peer.answer();
    EXPECT_EQ(answer.body, "all");
    EXPECT_TRUE(answer.field("Transfer-Encoding").isEmpty());
    EXPECT_TRUE(answer.complete);
}

TEST_F(Responses, StreamWithALength)
{
    RawPeer peer = ask([](const Responder& responder) {
        responder.begin({ 200, { { "Content-Length", "6" } }, {} });
        responder.write("abc");
        responder.write("def");
        responder.end();
    });
    const RawPeer::Answer answer = peer.answer();
    EXPECT_EQ(answer.body, "abcdef");
    EXPECT_TRUE(answer.field("Transfer-Encoding").isEmpty());
    EXPECT_TRUE(peer.connected());
}

TEST_F(Responses, ThatBreakTheirLengthEndTheConnection)
{
    RawPeer peer = ask([](const Responder& responder) {
        responder.begin({ 200, { { "Content-Length", "6" } }, "abc" });
        responder.end();
    });
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_FALSE(peer.answer().complete);
}

TEST_F(Responses, LeftHalfwayAreSeenAsCut)
{
    RawPeer peer = ask([](const Responder& responder) {
        responder.begin({});
        responder.write("abc");
    });
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_FALSE(peer.answer().complete);
}

TEST_F(Responses, TellWhenTheirBytesAreTaken)
{
    const qint64 piece = 1024 * 1024;
    int pieces = 0;
    qint64 most = 0;
    RawPeer peer = ask([&](const Responder& responder) {
        responder.begin({});
        responder.onDrained([&, responder] {
            if (++pieces == 8) {
                responder.onDrained(nullptr);
                responder.end();
            } else {
                responder.write(QByteArray(int(piece), 'a'));
            }
            most = qMax(most, responder.pending());
        });
        responder.write("a");
    });
    EXPECT_EQ(peer.answer().body.size(), 7 * piece + 1);
    EXPECT_LE(most, piece + 100);
}

TEST_F(Responses, CanBeAnyBytes)
{
    RawPeer peer = ask([](const Responder& responder) {
        responder.writeRaw("garbage, not HTTP");
        responder.close();
    });
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_EQ(peer.received(), "garbage, not HTTP");
}

TEST_F(Responses, HangWhileTheirHandleIsKept)
{
    std::unique_ptr<Responder> kept;
    RawPeer peer =
        ask([&](const Responder& responder) { kept = std::make_unique<Responder>(responder); });
    EXPECT_FALSE(peer.waitFor("HTTP", 100));
    EXPECT_TRUE(peer.connected());
}

TEST_F(Responses, TrickleAtTheGivenPace)
{
    RawPeer peer = ask([](const Responder& responder) {
        Shaping shaping;
        shaping.bytesPerSecond = 1000;
        responder.shape(shaping);
        responder.send(Response::text(200, QByteArray(300, 'a')));
    });
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(peer.answer().body.size(), 300);
    EXPECT_GE(clock.elapsed(), 200);
    EXPECT_TRUE(peer.connected());
}

TEST_F(Responses, OfFilesTrickleAsWell)
{
    RawPeer peer = ask([](const Responder& responder) {
        Shaping shaping;
        shaping.bytesPerSecond = 2 * 1024 * 1024;
        responder.shape(shaping);
        responder.sendBytes(QByteArray(400 * 1024, 'a'), {});
    });
    QElapsedTimer clock;
    clock.start();
    const RawPeer::Answer answer = peer.answer();
    EXPECT_TRUE(answer.complete);
    EXPECT_EQ(answer.body.size(), 400 * 1024);
    EXPECT_GE(clock.elapsed(), 120);
}

TEST_F(Responses, CanBeCutInTheBody)
{
    RawPeer peer = ask([](const Responder& responder) {
        Shaping shaping;
        shaping.stopAfterBytes = 5;
        responder.shape(shaping);
        responder.send(Response::text(200, "0123456789"));
    });
    EXPECT_TRUE(peer.waitForEnd());
    const RawPeer::Answer answer = peer.answer();
    EXPECT_EQ(answer.field("Content-Length"), "10");
    EXPECT_EQ(answer.body, "01234");
    EXPECT_FALSE(answer.complete);
}

TEST_F(Responses, CanLackTheLastChunk)
{
    RawPeer peer = ask([](const Responder& responder) {
        Shaping shaping;
        shaping.stopAfterBytes = 10;
        responder.shape(shaping);
        responder.begin({});
        responder.write("0123456789");
        responder.end();
    });
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_TRUE(peer.received().endsWith("a\r\n0123456789\r\n"));
}

TEST_F(Responses, CanStopAndKeepTheConnection)
{
    RawPeer peer = ask([](const Responder& responder) {
        Shaping shaping;
        shaping.stopAfterBytes = 0;
        shaping.stop = Shaping::Stop::Hang;
        responder.shape(shaping);
        responder.send(Response::text(200, "0123456789"));
    });
    EXPECT_TRUE(peer.waitFor("\r\n\r\n"));
    EXPECT_FALSE(peer.waitFor("0123", 100));
    EXPECT_TRUE(peer.connected());
}

/// How a connection ends for a client that asks for /a: what came, and errno of the last read.
static std::pair<QByteArray, int> readToTheEnd(quint16 port)
{
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    const QByteArray request = "GET /a HTTP/1.1\r\nHost: x\r\n\r\n";
    waitUntil([&] {
        return ::send(descriptor, request.constData(), size_t(request.size()), MSG_NOSIGNAL) > 0;
    });
    QByteArray received;
    int error = -1;
    waitUntil([&] {
        char buffer[4096];
        const ssize_t size = ::recv(descriptor, buffer, sizeof buffer, 0);
        if (size > 0)
            received.append(buffer, int(size));
        else if (size == 0 || errno != EAGAIN)
            error = size == 0 ? 0 : errno;
        return error >= 0;
    });
    ::close(descriptor);
    return { received, error };
}

TEST_F(Responses, CanBeReset)
{
    add("GET", "/a", [](const Request&, const Responder& responder) { responder.reset(); });
    EXPECT_EQ(readToTheEnd(port()).second, ECONNRESET);
}

TEST_F(Responses, CanBeResetInTheBody)
{
    add("GET", "/a", [](const Request&, const Responder& responder) {
        Shaping shaping;
        shaping.stopAfterBytes = 5;
        shaping.stop = Shaping::Stop::Reset;
        responder.shape(shaping);
        responder.send(Response::text(200, "0123456789"));
    });
    const auto [received, error] = readToTheEnd(port());
    EXPECT_EQ(error, ECONNRESET);
    EXPECT_FALSE(received.contains("012345"));
}

TEST_F(Responses, EndInOrderWithoutAReset)
{
    add("GET", "/a", [](const Request&, const Responder& responder) {
        responder.begin({});
        responder.write("abc");
        responder.close();
    });
    const auto [received, error] = readToTheEnd(port());
    EXPECT_EQ(error, 0);
    EXPECT_TRUE(received.endsWith("3\r\nabc\r\n"));
}
