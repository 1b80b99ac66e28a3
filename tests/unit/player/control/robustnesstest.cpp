#include "controlfixture.h"

#include <random>
#include <vector>

class Robustness : public ControlFixture
{
protected:
    Robustness() { player.answerWith(QVariant()); }
};

TEST_F(Robustness, BodiesThatAreNoJsonObjectAreRefusedAndTheConnectionStaysUsable)
{
    const std::vector<QByteArray> bodies{ "[]", "null", "true", "5", "\"text\"", "{", "}", "[",
        "{]", "{\"a\"}", "{\"a\":}", "{\"a\":1,}", "{,}", "{\"a\" 1}", "{\"a\":1 \"b\":2}", "{a:1}",
        "{'a':1}", "{\"a\":01}", "{\"a\":+1}", "{\"a\":.5}", "{\"a\":5.}", "{\"a\":-}",
        "{\"a\":1e}", "{\"a\":0x1}", "{\"a\":NaN}", "{\"a\":Infinity}", "{\"a\":tru}",
        "{\"a\":\"\t\"}", "{\"a\":\"\n\"}", "{\"a\":\"\\x\"}", "{\"a\":\"\\u12\"}",
        "{\"a\":\"\xff\"}", "{\"a\":\"\xc0\xaf\"}", "{\"a\":\"\xed\xa0\x80\"}",
        "{\"a\":1}{\"b\":2}", "{\"a\":1}x", "{\"a\":1}//c", "{/*c*/}", "{\"a\":\"unterminated",
        "\xff\xfe{\0}\0", "{\"a\":1}\x01", "x", QByteArray(10000, '['),
        QByteArray("{\"a\":").repeated(10000), QByteArray("\0", 1) };
    RawPeer peer(port());
    for (const QByteArray& body : bodies) {
        EXPECT_EQ(peer.ask("POST", "/api/v1/player/next", body).status, 400)
            << body.left(40).constData();
        ASSERT_TRUE(peer.connected());
    }
    EXPECT_TRUE(player.calls.isEmpty());
    EXPECT_EQ(peer.ask("POST", "/api/v1/player/next", "{}").status, 200);
}

TEST_F(Robustness, DamagedBodiesHaveADefinedAnswer)
{
    std::minstd_rand random(1);
    const QByteArray whole =
        R"({"ref": "a", "text": "b", "position": 5, "mode": 1, "volume": 50, "mute": true, "id": "x"})";
    const std::vector<QByteArray> targets{ "/api/v1/player/volume", "/api/v1/player/seek",
        "/api/v1/player/mode", "/api/v1/play", "/api/v1/search", "/api/v1/rows/activate",
        "/api/v1/outputs" };
    RawPeer peer(port());
    for (int round = 0; round < 3000; ++round) {
        QByteArray body = whole;
        for (unsigned damage = random() % 4; damage > 0; --damage)
            body[int(random() % unsigned(body.size()))] = char(random() % 256);
        const int status = peer.ask("POST", targets[random() % targets.size()], body).status;
        ASSERT_TRUE(status == 200 || status == 400 || status == 404) << status;
        ASSERT_TRUE(peer.connected());
    }
}

TEST_F(Robustness, LargeBodiesAreRefusedUnread)
{
    for (const QByteArray& framing : std::vector<QByteArray>{ "Content-Length: 65537\r\n\r\n",
             "Transfer-Encoding: chunked\r\n\r\n20000\r\n" + QByteArray(1000, 'a') }) {
        RawPeer peer(port());
        peer.send("POST /api/v1/search HTTP/1.1\r\nHost: localhost\r\n"
                  "Content-Type: application/json\r\n"
            + framing);
        const RawPeer::Answer answer = peer.answer();
        EXPECT_EQ(answer.status, 413);
        EXPECT_EQ(answer.field("Content-Type"), "application/problem+json");
        EXPECT_TRUE(peer.waitForEnd());
    }
    EXPECT_TRUE(player.calls.isEmpty());
}

TEST_F(Robustness, LongPathsOfRowsFitIntoARequest)
{
    const QByteArray path(30000, 'a');
    EXPECT_EQ(get("/api/v1/rows?path=" + path).status, 200);
    EXPECT_EQ(player.calls[0].arguments[0].toString().size(), path.size());
    EXPECT_EQ(get("/api/v1/rows?path=" + QByteArray(70000, 'a')).status, 414);
}

TEST_F(Robustness, TenThousandPipelinedCommandsAreDoneInOrder)
{
    const int count = 10000;
    RawPeer peer(port());
    for (int i = 0; i < count; ++i)
        peer.request("POST", "/api/v1/player/seek", "{\"position\":" + QByteArray::number(i) + '}');
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(peer.answer().status, 200);
    ASSERT_EQ(player.calls.size(), count);
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(player.calls[i].arguments[0].toInt(), i);
}

TEST_F(Robustness, TheServerMayGoWhileClientsWait)
{
    player.hold();
    auto* server = new control::ControlServer(player, options);
    RawPeer peer(server->listen(QHostAddress::LocalHost, 0));
    peer.request("GET", "/api/v1/rows");
    ASSERT_TRUE(waitUntil([&] { return player.calls.size() == 1; }));
    delete server;
    EXPECT_TRUE(peer.waitForEnd());
    player.calls[0].reply.setValue(QVariant());
    settle();
}
