#include "serverfixture.h"

#include <QVector>

#include <sys/socket.h>

using http::Request;
using http::Responder;
using http::Response;

class Connections : public ServerFixture
{
};

TEST_F(Connections, AnswerSeveralRequestsInTurn)
{
    answerText("/a", "A");
    answerText("/b", "B");
    RawPeer peer(port());
    EXPECT_EQ(peer.ask("GET", "/a").body, "A");
    EXPECT_EQ(peer.ask("GET", "/b").body, "B");
    EXPECT_EQ(peer.ask("GET", "/c").status, 404);
    EXPECT_EQ(peer.ask("GET", "/a").body, "A");
    EXPECT_TRUE(peer.connected());
    EXPECT_EQ(server.connectionCount(), 1);
}

TEST_F(Connections, CloseWhenTheClientAsksForIt)
{
    answerText("/a", "A");
    RawPeer peer(port());
    const RawPeer::Answer answer = peer.ask("GET", "/a", {}, "Connection: close\r\n");
    EXPECT_EQ(answer.body, "A");
    EXPECT_EQ(answer.field("Connection"), "close");
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_TRUE(waitUntil([&] { return server.connectionCount() == 0; }));
}

TEST_F(Connections, CloseBehindAnOldClient)
{
    answerText("/a", "A");
    RawPeer peer(port());
    peer.send("GET /a HTTP/1.0\r\n\r\n");
    EXPECT_EQ(peer.answer().body, "A");
    EXPECT_TRUE(peer.waitForEnd());
}

TEST_F(Connections, CloseWhenTheAnswerSaysSo)
{
    add("GET", "/a", [](const Request&, const Responder& responder) {
        responder.send({ 200, { { "Connection", "close" } }, "A" });
    });
    RawPeer peer(port());
    EXPECT_EQ(peer.ask("GET", "/a").body, "A");
    EXPECT_TRUE(peer.waitForEnd());
}

TEST_F(Connections, AnswerTenThousandPipelinedRequestsInOrder)
{
    QVector<int> order;
    add("POST", "/{n}", [&](const Request& request, const Responder& responder) {
        order += request.parameters.value(QStringLiteral("n")).toInt();
        responder.send(Response::text(200, request.body));
    });
    const int count = 10000;
    RawPeer peer(port());
    for (int i = 0; i < count; ++i) {
        const QByteArray body = QByteArray::number(i);
        peer.request("POST", '/' + body, body);
    }
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(peer.answer().body, QByteArray::number(i));
    ASSERT_EQ(order.size(), count);
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(order[i], i);
}

TEST_F(Connections, TakeTheNextRequestOnlyAfterTheAnswer)
{
    QVector<Responder> waiting;
    add("GET", "/wait", [&](const Request&, const Responder& responder) { waiting += responder; });
    answerText("/a", "A");
    RawPeer peer(port());
    peer.request("GET", "/wait");
    peer.request("GET", "/wait");
    peer.request("GET", "/a");
    ASSERT_TRUE(waitUntil([&] { return waiting.size() == 1; }));
    settle();
    EXPECT_EQ(waiting.size(), 1);
    waiting[0].send(Response::text(200, "first"));
    ASSERT_TRUE(waitUntil([&] { return waiting.size() == 2; }));
    waiting[1].send(Response::text(200, "second"));
    EXPECT_EQ(peer.answer().body, "first");
    EXPECT_EQ(peer.answer().body, "second");
    EXPECT_EQ(peer.answer().body, "A");
}

TEST_F(Connections, HoldNoMoreThanALittleOfAPipeliningPeer)
{
    QVector<Responder> waiting;
    add("GET", "/wait", [&](const Request&, const Responder& responder) { waiting += responder; });
    RawPeer peer(port());
    const QByteArray request = "GET /wait HTTP/1.1\r\nHost: x\r\n\r\n";
    peer.send(request);
    ASSERT_TRUE(waitUntil([&] { return waiting.size() == 1; }));
    // Far more than the buffers of both ends hold: the rest has to wait with the peer.
    const int flood = 32 * 1024 * 1024;
    peer.send(request.repeated(flood / request.size()));
    settle();
    waitUntil([&] { return peer.socket()->bytesToWrite() == 0; }, 300);
    EXPECT_GT(peer.socket()->bytesToWrite(), flood / 2);
}

TEST_F(Connections, AnswerOthersWhileOneIsServedALot)
{
    const int wishes = 20000;
    int served = 0;
    add("GET", "/a", [&](const Request&, const Responder& responder) {
        ++served;
        responder.send(Response::text(200, "A"));
    });
    RawPeer greedy(port());
    greedy.send(QByteArray("GET /a HTTP/1.1\r\nHost: x\r\n\r\n").repeated(wishes));
    ASSERT_TRUE(waitUntil([&] { return served > 0; }));
    RawPeer modest(port());
    EXPECT_EQ(modest.ask("GET", "/a").body, "A");
    EXPECT_LT(served, wishes);
}

TEST_F(Connections, TellWhenThePeerGoes)
{
    int closed = 0;
    QVector<Responder> waiting;
    add("GET", "/wait", [&](const Request&, const Responder& responder) {
        waiting += responder;
        responder.onClosed([&] { ++closed; });
    });
    {
        RawPeer peer(port());
        peer.request("GET", "/wait");
        ASSERT_TRUE(waitUntil([&] { return waiting.size() == 1; }));
        EXPECT_TRUE(waiting[0].isOpen());
    }
    ASSERT_TRUE(waitUntil([&] { return closed == 1; }));
    EXPECT_FALSE(waiting[0].isOpen());
    waiting[0].send(Response::text(200, "late"));
    waiting.clear();
    settle();
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(server.connectionCount(), 0);
}

TEST_F(Connections, DoNotTellOfAnEndAfterTheAnswer)
{
    int closed = 0;
    add("GET", "/a", [&](const Request&, const Responder& responder) {
        responder.onClosed([&] { ++closed; });
        responder.send(Response::text(200, "A"));
    });
    {
        RawPeer peer(port());
        EXPECT_EQ(peer.ask("GET", "/a").body, "A");
    }
    ASSERT_TRUE(waitUntil([&] { return server.connectionCount() == 0; }));
    EXPECT_EQ(closed, 0);
}

TEST_F(Connections, AnswerAPeerThatHasClosedItsOwnDirection)
{
    answerText("/a", "A");
    RawPeer peer(port());
    peer.request("GET", "/a");
    ::shutdown(int(peer.socket()->socketDescriptor()), SHUT_WR);
    EXPECT_EQ(peer.answer().body, "A");
}

TEST_F(Connections, SurviveAStormOfResets)
{
    answerText("/a", "A");
    const quint16 at = port();
    for (int i = 0; i < 300; ++i) {
        RawPeer peer(at);
        peer.send(i % 2 ? "GET /a HTTP/1.1\r\nHost: x\r\n\r\n" : "GET /");
        const linger discard{ 1, 0 };
        ::setsockopt(int(peer.socket()->socketDescriptor()), SOL_SOCKET, SO_LINGER, &discard,
            sizeof discard);
        peer.socket()->abort();
    }
    EXPECT_TRUE(waitUntil([&] { return server.connectionCount() == 0; }));
    EXPECT_EQ(RawPeer(at).ask("GET", "/a").body, "A");
}

TEST_F(Connections, EndWithTheServer)
{
    QVector<Responder> waiting;
    int closed = 0;
    add("GET", "/wait", [&](const Request&, const Responder& responder) {
        waiting += responder;
        responder.onClosed([&] { ++closed; });
    });
    RawPeer peer(port());
    peer.request("GET", "/wait");
    ASSERT_TRUE(waitUntil([&] { return waiting.size() == 1; }));
    server.close();
    server.close();
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_TRUE(waitUntil([&] { return closed == 1; }));
    EXPECT_FALSE(waiting[0].isOpen());
    EXPECT_FALSE(RawPeer(port()).connected());
    EXPECT_GT(server.listen(), 0);
}

TEST(Server, MayGoBeforeItsResponders)
{
    QVector<Responder> waiting;
    auto server = std::make_unique<http::Server>();
    server->setHandler([&](const Request&, const Responder& responder) { waiting += responder; });
    RawPeer peer(server->listen());
    peer.request("GET", "/");
    ASSERT_TRUE(waitUntil([&] { return waiting.size() == 1; }));
    server.reset();
    EXPECT_FALSE(waiting[0].isOpen());
    waiting[0].send(Response::text(200, "late"));
    waiting.clear();
    EXPECT_TRUE(peer.waitForEnd());
}

TEST(Server, SaysWhyItCannotListen)
{
    http::Server first;
    const quint16 port = first.listen();
    ASSERT_GT(port, 0);
    http::Server second;
    EXPECT_EQ(second.listen(QHostAddress::LocalHost, port), 0);
    EXPECT_FALSE(second.errorString().isEmpty());
}

TEST(Server, ListensOnSeveralPorts)
{
    http::Server server;
    server.setHandler([](const Request& request, const Responder& responder) {
        responder.send(Response::text(200, QByteArray::number(request.localPort)));
    });
    const quint16 first = server.listen();
    const quint16 second = server.listen();
    ASSERT_NE(first, second);
    EXPECT_EQ(RawPeer(first).ask("GET", "/").body, QByteArray::number(first));
    EXPECT_EQ(RawPeer(second).ask("GET", "/").body, QByteArray::number(second));
}

TEST(Server, AnswersNotFoundWithoutAHandler)
{
    http::Server server;
    EXPECT_EQ(RawPeer(server.listen()).ask("GET", "/").status, 404);
}
