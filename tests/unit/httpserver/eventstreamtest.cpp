#include "serverfixture.h"

#include <memory>
#include <vector>

using http::EventStream;
using http::Request;
using http::Responder;

class EventStreams : public ServerFixture
{
protected:
    EventStreams()
    {
        add("GET", "/events", [this](const Request&, const Responder& responder) {
            streams.push_back(responder.events({ { "X-A", "b" } }));
            streams.back().onClosed([this] { ++closed; });
        });
        answerText("/a", "A");
    }
    std::unique_ptr<RawPeer> join()
    {
        const std::size_t before = streams.size();
        auto peer = std::make_unique<RawPeer>(port());
        peer->request("GET", "/events");
        EXPECT_TRUE(waitUntil([&] { return streams.size() == before + 1; }));
        EXPECT_TRUE(peer->waitFor("\r\n\r\n"));
        return peer;
    }

    std::vector<EventStream> streams;
    int closed = 0;
};

TEST_F(EventStreams, CarryEvents)
{
    const auto peer = join();
    EXPECT_TRUE(peer->received().contains("Content-Type: text/event-stream\r\n"));
    EXPECT_TRUE(peer->received().contains("Cache-Control: no-store\r\n"));
    EXPECT_TRUE(peer->received().contains("X-A: b\r\n"));
    EXPECT_TRUE(streams[0].isOpen());
    EXPECT_TRUE(streams[0].send("7", "player", "{\"a\":1}"));
    EXPECT_TRUE(peer->waitFor("id: 7\nevent: player\ndata: {\"a\":1}\n\n"));
}

TEST_F(EventStreams, AreFormattedLineByLine)
{
    EXPECT_EQ(
        EventStream::format("", "", "a\nb\r\nc\rd"), "data: a\ndata: b\ndata: c\ndata: d\n\n");
    EXPECT_EQ(EventStream::format("1\n2", "e\rx", ""), "id: 1 2\nevent: e x\ndata: \n\n");
}

TEST_F(EventStreams, BeatWhileQuiet)
{
    limits.heartbeatMs = 50;
    const auto peer = join();
    EXPECT_TRUE(waitUntil([&] { return peer->received().count(":\n\n") >= 2; }));
    EXPECT_TRUE(peer->connected());
}

TEST_F(EventStreams, DropAClientThatLagsTooFarBehind)
{
    const auto lagging = join();
    lagging->socket()->setReadBufferSize(1024);
    const auto other = join();
    const QByteArray data(8 * 1024, 'a');
    int sent = 0;
    while (streams[0].send({}, "e", data) && ++sent < 10000) {
        ASSERT_TRUE(streams[1].send(QByteArray::number(sent), {}, "x"));
        settle();
        other->received();
    }
    EXPECT_LT(sent, 10000);
    EXPECT_FALSE(streams[0].isOpen());
    EXPECT_EQ(closed, 0) << "the owner is told from the event loop, not inside send()";
    EXPECT_TRUE(waitUntil([&] { return closed == 1; }));
    EXPECT_TRUE(streams[1].isOpen());
    EXPECT_TRUE(other->waitFor("id: " + QByteArray::number(sent) + '\n'));
    EXPECT_EQ(RawPeer(port()).ask("GET", "/a").body, "A");
}

TEST_F(EventStreams, KeepAClientThatDoesNotReadForAWhile)
{
    limits.writeTimeoutMs = 50;
    limits.eventBacklogBytes = 64 * 1024 * 1024;
    const auto resting = join();
    resting->socket()->setReadBufferSize(1024);
    // Far more than the buffers of both ends hold.
    for (int i = 0; i < 32; ++i)
        ASSERT_TRUE(streams[0].send({}, {}, QByteArray(1024 * 1024, 'a')));
    waitUntil([&] { return closed > 0; }, 300);
    EXPECT_EQ(closed, 0);
    EXPECT_TRUE(streams[0].isOpen());
}

TEST_F(EventStreams, DeliverAnEventThatIsLargerThanTheBacklog)
{
    const auto peer = join();
    EXPECT_TRUE(streams[0].send({}, {}, QByteArray(1024 * 1024, 'a')));
    EXPECT_TRUE(peer->waitFor("aaa\n\n"));
    EXPECT_TRUE(streams[0].isOpen());
}

TEST_F(EventStreams, EndWithThePeer)
{
    auto peer = join();
    peer.reset();
    EXPECT_TRUE(waitUntil([&] { return closed == 1; }));
    EXPECT_FALSE(streams[0].isOpen());
    EXPECT_FALSE(streams[0].send({}, {}, "x"));
}

TEST_F(EventStreams, EndWithTheLastHandle)
{
    const auto peer = join();
    const EventStream copy = streams[0];
    streams.clear();
    EXPECT_TRUE(copy.send({}, {}, "still"));
    EXPECT_TRUE(peer->waitFor("still"));
    const_cast<EventStream&>(copy) = EventStream();
    EXPECT_TRUE(peer->waitFor("0\r\n\r\n"));
    EXPECT_EQ(closed, 0);
}

TEST_F(EventStreams, EndWhenClosed)
{
    const auto peer = join();
    streams[0].close();
    EXPECT_TRUE(peer->waitFor("0\r\n\r\n"));
    EXPECT_FALSE(streams[0].send({}, {}, "x"));
}

TEST_F(EventStreams, AnswerHeadWithoutEvents)
{
    RawPeer peer(port());
    const RawPeer::Answer answer = peer.ask("HEAD", "/events");
    EXPECT_EQ(answer.status, 200);
    EXPECT_FALSE(streams[0].isOpen());
    EXPECT_EQ(peer.ask("GET", "/a").body, "A");
}

TEST_F(EventStreams, WithoutAConnectionAreClosed)
{
    const EventStream none;
    EXPECT_FALSE(none.isOpen());
    EXPECT_FALSE(none.send({}, {}, "x"));
    none.close();
    none.onClosed([] {});
}

TEST_F(EventStreams, ReachAThousandClientsWithoutLoss)
{
    std::vector<std::unique_ptr<RawPeer>> peers;
    for (int i = 0; i < 1000; ++i)
        peers.push_back(join());
    const int events = 10;
    for (int i = 0; i < events; ++i) {
        const QByteArray event = EventStream::format(QByteArray::number(i), "e", "data");
        for (const EventStream& stream : streams)
            ASSERT_TRUE(stream.send(event));
    }
    const auto complete = [&](const std::unique_ptr<RawPeer>& peer) {
        return peer->received().count("event: e\n") == events;
    };
    EXPECT_TRUE(waitUntil([&] { return std::all_of(peers.begin(), peers.end(), complete); }));
    EXPECT_EQ(closed, 0);
}
