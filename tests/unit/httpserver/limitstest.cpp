#include "serverfixture.h"

#include <QElapsedTimer>

#include <fstream>
#include <memory>
#include <unistd.h>
#include <vector>

using http::Request;
using http::Responder;
using http::Response;

namespace {

/// Resident memory of this process in bytes.
qint64 residentBytes()
{
    qint64 total = 0;
    qint64 resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * ::sysconf(_SC_PAGESIZE);
}

QByteArray chunk(const QByteArray& data)
{
    return QByteArray::number(data.size(), 16) + "\r\n" + data + "\r\n";
}

} // namespace

class LimitsOf : public ServerFixture
{
protected:
    LimitsOf()
    {
        add("POST", "/a", [this](const Request& request, const Responder& responder) {
            ++handled;
            responder.send(Response::text(200, QByteArray::number(request.body.size())));
        });
        answerText("/a", "A");
    }

    int handled = 0;
};

TEST_F(LimitsOf, RequestLineEndInUriTooLong)
{
    RawPeer peer(port());
    peer.send("GET /" + QByteArray(1024 * 1024, 'a'));
    const RawPeer::Answer answer = peer.answer();
    EXPECT_EQ(answer.status, 414);
    EXPECT_TRUE(peer.waitForEnd());
}

TEST_F(LimitsOf, RequestLineAreExact)
{
    limits.requestLineBytes = 100;
    const QByteArray rest = " HTTP/1.1\r\nHost: x\r\n\r\n";
    const int room = 100 - int(sizeof "GET /a? HTTP/1.1\r\n") + 1;
    RawPeer fits(port());
    fits.send("GET /a?" + QByteArray(room, 'x') + rest);
    EXPECT_EQ(fits.answer().status, 200);
    RawPeer tooLong(port());
    tooLong.send("GET /a?" + QByteArray(room + 1, 'x') + rest);
    EXPECT_EQ(tooLong.answer().status, 414);
}

TEST_F(LimitsOf, HeadEndInFieldsTooLarge)
{
    RawPeer peer(port());
    peer.send("GET /a HTTP/1.1\r\nHost: x\r\n" + QByteArray("A: b\r\n").repeated(100000));
    EXPECT_EQ(peer.answer().status, 431);
    EXPECT_TRUE(peer.waitForEnd());
}

TEST_F(LimitsOf, HeadAreExact)
{
    const QByteArray start = "GET /a HTTP/1.1\r\nHost: x\r\nA: ";
    const int room = 64 * 1024 - start.size() - 4;
    RawPeer fits(port());
    fits.send(start + QByteArray(room, 'b') + "\r\n\r\n");
    EXPECT_EQ(fits.answer().status, 200);
    RawPeer tooLong(port());
    tooLong.send(start + QByteArray(room + 1, 'b') + "\r\n\r\n");
    EXPECT_EQ(tooLong.answer().status, 431);
}

TEST_F(LimitsOf, BodyRefuseAnAnnouncedOneBeforeItComes)
{
    RawPeer peer(port());
    peer.send("POST /a HTTP/1.1\r\nHost: x\r\nContent-Length: 65537\r\n\r\n");
    EXPECT_EQ(peer.answer().status, 413);
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_EQ(handled, 0);
}

TEST_F(LimitsOf, BodyLetABodyThatJustFitsPass)
{
    RawPeer peer(port());
    EXPECT_EQ(peer.ask("POST", "/a", QByteArray(65536, 'a')).body, "65536");
    peer.send("POST /a HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n"
        + chunk(QByteArray(65535, 'a')) + chunk("b") + "0\r\n\r\n");
    EXPECT_EQ(peer.answer().body, "65536");
}

TEST_F(LimitsOf, BodyEndAChunkedOneWithoutEndAndWithoutStoringIt)
{
    RawPeer peer(port());
    peer.send("POST /a HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n");
    const QByteArray piece = chunk(QByteArray(1000, 'a'));
    for (int i = 0; i < 64; ++i)
        peer.send(piece);
    settle();
    const qint64 before = residentBytes();
    int sent = 0;
    while (peer.connected() && sent < 100000) {
        peer.send(piece);
        ++sent;
        if (peer.socket()->bytesToWrite() > 256 * 1024)
            waitUntil([&] { return !peer.connected() || peer.socket()->bytesToWrite() == 0; });
    }
    const RawPeer::Answer answer = peer.answer();
    EXPECT_EQ(answer.status, 413);
    EXPECT_EQ(handled, 0);
    // Of up to 100 MB. The peer's own buffers and the memory checker's count as well.
    EXPECT_LE(residentBytes() - before, 16 * 1024 * 1024);
}

TEST_F(LimitsOf, ConnectionsTurnTheNextOneAway)
{
    limits.connections = 2;
    RawPeer first(port());
    RawPeer second(port());
    EXPECT_EQ(first.ask("GET", "/a").body, "A");
    EXPECT_EQ(second.ask("GET", "/a").body, "A");
    {
        RawPeer third(port());
        EXPECT_EQ(third.answer().status, 503);
        EXPECT_TRUE(third.waitForEnd());
    }
    EXPECT_EQ(first.ask("GET", "/a").body, "A");
    first.socket()->abort();
    EXPECT_TRUE(waitUntil([&] { return server.connectionCount() == 1; }));
    EXPECT_EQ(RawPeer(port()).ask("GET", "/a").body, "A");
}

TEST_F(LimitsOf, ConnectionsOfOneAddressLeaveRoomForOthers)
{
    limits.connectionsPerAddress = 2;
    RawPeer first(port());
    EXPECT_EQ(first.ask("GET", "/a").body, "A");
    auto second = std::make_unique<RawPeer>(port());
    EXPECT_EQ(second->ask("GET", "/a").body, "A");
    EXPECT_EQ(RawPeer(port()).answer().status, 503);

    QTcpSocket other;
    ASSERT_TRUE(other.bind(QHostAddress(QStringLiteral("127.0.0.2"))));
    other.connectToHost(QHostAddress::LocalHost, port());
    other.write("GET /a HTTP/1.1\r\nHost: localhost\r\n\r\n");
    QByteArray answer;
    EXPECT_TRUE(waitUntil([&] { return (answer += other.readAll()).endsWith("\r\n\r\nA"); }));
    EXPECT_TRUE(answer.startsWith("HTTP/1.1 200 ")) << answer.constData();

    second.reset();
    EXPECT_TRUE(waitUntil([&] { return server.connectionCount() == 2; }));
    EXPECT_EQ(RawPeer(port()).ask("GET", "/a").body, "A");
}

TEST_F(LimitsOf, TimeEndASlowHead)
{
    limits.headTimeoutMs = 150;
    RawPeer peer(port());
    peer.send("GET /a HTT");
    EXPECT_EQ(peer.answer().status, 408);
    EXPECT_TRUE(peer.waitForEnd());
}

TEST_F(LimitsOf, TimeCloseASilentConnectionWithoutAWord)
{
    limits.headTimeoutMs = 150;
    RawPeer peer(port());
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_TRUE(peer.received().isEmpty());
}

TEST_F(LimitsOf, TimeEndASlowBody)
{
    limits.bodyTimeoutMs = 150;
    RawPeer peer(port());
    peer.send("POST /a HTTP/1.1\r\nHost: x\r\nContent-Length: 10\r\n\r\nabc");
    EXPECT_EQ(peer.answer().status, 408);
    EXPECT_EQ(handled, 0);
}

TEST_F(LimitsOf, TimeCloseAnIdleConnection)
{
    limits.idleTimeoutMs = 150;
    RawPeer peer(port());
    QElapsedTimer clock;
    clock.start(); // It begins with the answer, which this end may see later than the timer does.
    EXPECT_EQ(peer.ask("GET", "/a").body, "A");
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_GE(clock.elapsed(), 140);
}

TEST_F(LimitsOf, TimeDoNotCountWhileAnAnswerIsAwaited)
{
    limits.headTimeoutMs = limits.bodyTimeoutMs = limits.idleTimeoutMs = 500;
    std::unique_ptr<Responder> waiting;
    add("GET", "/wait", [&](const Request&, const Responder& responder) {
        waiting = std::make_unique<Responder>(responder);
    });
    RawPeer peer(port());
    peer.request("GET", "/wait");
    ASSERT_TRUE(waitUntil([&] { return waiting != nullptr; }));
    waitUntil([&] { return !peer.connected(); }, 1000);
    waiting->send(Response::text(200, "at last"));
    EXPECT_EQ(peer.answer().body, "at last");
}

TEST_F(LimitsOf, TimeCutAReaderThatDoesNotRead)
{
    limits.writeTimeoutMs = 150;
    add("GET", "/much", [](const Request&, const Responder& responder) {
        responder.send(Response::text(200, QByteArray(32 * 1024 * 1024, 'a')));
    });
    RawPeer peer(port());
    peer.socket()->setReadBufferSize(1024);
    peer.request("GET", "/much");
    ASSERT_TRUE(waitUntil([&] { return peer.socket()->bytesAvailable() > 0; }));
    EXPECT_TRUE(waitUntil([&] { return server.connectionCount() == 0; }));
}

TEST_F(LimitsOf, TimeLetAReaderOfMediaRest)
{
    limits.writeTimeoutMs = 0;
    limits.idleTimeoutMs = 50;
    const int size = 32 * 1024 * 1024;
    add("GET", "/much", [](const Request&, const Responder& responder) {
        responder.sendBytes(QByteArray(size, 'a'), {});
    });
    RawPeer peer(port());
    peer.socket()->setReadBufferSize(1024);
    peer.request("GET", "/much");
    ASSERT_TRUE(waitUntil([&] { return peer.socket()->bytesAvailable() > 0; }));
    waitUntil([&] { return server.connectionCount() == 0; }, 300);
    EXPECT_EQ(server.connectionCount(), 1);
    peer.socket()->setReadBufferSize(0);
    EXPECT_EQ(peer.answer().body.size(), size);
}

TEST_F(LimitsOf, SlowHeadsDoNotHoldUpOthers)
{
    limits.headTimeoutMs = 600000; // All of them stay, however long the others take.
    std::vector<std::unique_ptr<RawPeer>> slow;
    for (int i = 0; i < 1000; ++i) {
        slow.push_back(std::make_unique<RawPeer>(port()));
        slow.back()->send("GET /a HTTP/1.1\r\nHo");
    }
    RawPeer peer(port());
    for (int i = 0; i < 200; ++i)
        ASSERT_EQ(peer.ask("GET", "/a").body, "A");
    EXPECT_EQ(server.connectionCount(), 1001);
}

TEST_F(LimitsOf, RefusalsCanBeWordedByTheOwner)
{
    server.setRefusal([](int status) {
        return Response::json(status, "{\"no\":" + QByteArray::number(status) + '}');
    });
    RawPeer peer(port());
    peer.send("GET /a\n");
    const RawPeer::Answer answer = peer.answer();
    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, "{\"no\":400}");
}
