#include "controlfixture.h"

class Play : public ControlFixture
{
protected:
    Play() { player.answerWith(QVariant()); }
};

TEST_F(Play, StartsTheWholeRow)
{
    const QVariantHash row = hash(R"({"title": "Song", "type": 3, "path": "/p?selfUrl=s"})");
    const QByteArray ref = shown(row).value(QStringLiteral("ref")).toString().toLatin1();
    player.answerWith(QVariant());
    const RawPeer::Answer answer = post("/api/v1/play", "{\"ref\": \"" + ref + "\"}");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{}");
    ASSERT_EQ(player.calls.size(), 1);
    EXPECT_EQ(player.calls[0].arguments[0].toHash(), row);
}

TEST_F(Play, TellsARefusalWithItsScreen)
{
    const QByteArray ref =
        shown(hash(R"({"type": 3})")).value(QStringLiteral("ref")).toString().toLatin1();
    CMError error(hash(R"({"name": "error", "title": "Error", "message": "Upgrade your plan",
        "actionReply": {"xclass": "TavuActionReply", "result": {"path": "/music/stationsError"}}})"));
    player.failWith(error);
    const RawPeer::Answer answer = post("/api/v1/play", "{\"ref\": \"" + ref + "\"}");
    EXPECT_EQ(answer.status, 409);
    EXPECT_EQ(at(object(answer), "detail").toString(), QStringLiteral("Upgrade your plan"));
    EXPECT_EQ(at(object(answer), "actionReply.result.path").toString(),
        QStringLiteral("/music/stationsError"));
}

TEST_F(Play, RefusesUnknownRows)
{
    EXPECT_EQ(post("/api/v1/play", R"({"ref": "gone"})").status, 404);
    EXPECT_EQ(post("/api/v1/play", R"({"ref": ["gone"]})").status, 400);
    EXPECT_EQ(post("/api/v1/play", "{}").status, 400);
    EXPECT_TRUE(player.calls.isEmpty());
}

TEST_F(Play, PassesCommandsOn)
{
    for (const char* name : { "pause", "resume", "next", "previous", "stop", "like", "dislike" })
        EXPECT_EQ(post(QByteArray("/api/v1/player/") + name).status, 200) << name;
    QStringList told;
    for (const char* name :
        { "TogglePause", "Resume", "Next", "Previous", "Stop", "Like", "Dislike" })
        told += QStringLiteral("command[\"") + QLatin1String(name) + QStringLiteral("\"]");
    EXPECT_EQ(player.told(), told);
}

TEST_F(Play, ShowsWhatARatingSays)
{
    player.answerWith(hash(R"({"xclass": "TavuActionReply", "result": {"path": "/dialog/1"}})"));
    EXPECT_EQ(at(object(post("/api/v1/player/like")), "result.path").toString(),
        QStringLiteral("/dialog/1"));
}

TEST_F(Play, EndsACommandAtTheDeadline)
{
    options.deadlineMs = 100;
    player.hold();
    EXPECT_EQ(post("/api/v1/player/next").status, 504);
}

TEST_F(Play, TellsThePlayersOwnDeadlineInThePlayersWords)
{
    CMError late(hash(R"({"title": "Error", "message": "Not in time"})"));
    late.setName(PlayerFacade::noAnswerName());
    player.failWith(late);
    const RawPeer::Answer answer = post("/api/v1/player/next");
    EXPECT_EQ(answer.status, 504);
    EXPECT_EQ(at(object(answer), "title").toString(), QStringLiteral("No answer"));
    EXPECT_EQ(at(object(answer), "detail").toString(), QStringLiteral("Not in time"));
    EXPECT_GT(control::Options().deadlineMs, PlayerFacade::answerDeadlineMs);
}

TEST_F(Play, SeeksToWholeMilliseconds)
{
    EXPECT_EQ(post("/api/v1/player/seek", R"({"position": 90500})").status, 200);
    EXPECT_EQ(post("/api/v1/player/seek", R"({"position": 1e3})").status, 200);
    EXPECT_EQ(post("/api/v1/player/seek", R"({"position": 9007199254740991})").status, 200);
    const QStringList told{ QStringLiteral("seek[90500]"), QStringLiteral("seek[1000]"),
        QStringLiteral("seek[9007199254740991]") };
    EXPECT_EQ(player.told(), told);
}

TEST_F(Play, RefusesPositionsThatAreNone)
{
    for (const char* position : { "-1", "1.5", "NaN", "Infinity", "1e999", "\"5\"", "null", "true",
             "9223372036854775808", "1e300", "1e17", "[5]" })
        EXPECT_EQ(
            post("/api/v1/player/seek", QByteArray("{\"position\": ") + position + '}').status, 400)
            << position;
    EXPECT_EQ(post("/api/v1/player/seek").status, 400);
    EXPECT_TRUE(player.calls.isEmpty());
}

TEST_F(Play, TellsWhatThePlayerSaysOfAPosition)
{
    player.failWith(CMError(hash(R"({"name": "error", "message": "Behind the end"})")));
    const RawPeer::Answer answer = post("/api/v1/player/seek", R"({"position": 99999999})");
    EXPECT_EQ(answer.status, 409);
    EXPECT_EQ(at(object(answer), "detail").toString(), QStringLiteral("Behind the end"));
}

TEST_F(Play, SetsTheMode)
{
    for (const char* mode : { "0", "5" })
        EXPECT_EQ(post("/api/v1/player/mode", QByteArray("{\"mode\": ") + mode + '}').body, "{}");
    for (const char* mode : { "-1", "6", "1.5", "\"1\"", "null", "4294967296" })
        EXPECT_EQ(post("/api/v1/player/mode", QByteArray("{\"mode\": ") + mode + '}').status, 400)
            << mode;
    const QStringList told{ QStringLiteral("setPlayMode[0]"), QStringLiteral("setPlayMode[5]") };
    EXPECT_EQ(player.told(), told);
}

TEST_F(Play, SetsVolumeAndMute)
{
    EXPECT_EQ(post("/api/v1/player/volume", R"({"volume": 0})").status, 200);
    EXPECT_EQ(post("/api/v1/player/volume", R"({"volume": 100, "mute": false})").status, 200);
    EXPECT_EQ(post("/api/v1/player/volume", R"({"mute": true})").status, 200);
    const QStringList told{ QStringLiteral("setVolume[0]"), QStringLiteral("setVolume[100]"),
        QStringLiteral("setMuted[false]"), QStringLiteral("setMuted[true]") };
    EXPECT_EQ(player.told(), told);
}

TEST_F(Play, ChangesNothingWhenEitherIsWrong)
{
    for (const char* body : { "{}", R"({"volume": -1})", R"({"volume": 101})", R"({"volume": "5"})",
             R"({"volume": null})", R"({"mute": 1})", R"({"volume": 5, "mute": "no"})",
             R"({"volume": 5.5})", R"({"volume": NaN})" })
        EXPECT_EQ(post("/api/v1/player/volume", body).status, 400) << body;
    EXPECT_TRUE(player.calls.isEmpty());
}

TEST_F(Play, ListsAndChoosesOutputs)
{
    player.m_outputs = { hash(R"({"id": "good", "name": "Speakers", "selected": true})") };
    EXPECT_EQ(at(object(get("/api/v1/outputs")), "outputs.0.name").toString(),
        QStringLiteral("Speakers"));
    EXPECT_EQ(post("/api/v1/outputs", R"({"id": "good"})").status, 200);
    EXPECT_EQ(post("/api/v1/outputs", R"({"id": "gone"})").status, 404);
    EXPECT_EQ(post("/api/v1/outputs", R"({"id": 5})").status, 400);
}

TEST_F(Play, ShowsWhatHasPlayedAndWhatFollows)
{
    player.m_queue = hash(R"({"endless": true, "from": {"title": "Station", "type": 3},
        "played": [{"at": "2024-01-01T00:00:00.000Z", "row": {"title": "First", "type": 3}}],
        "current": {"title": "Second", "type": 3}, "next": {}})");
    const QVariantHash queue = object(get("/api/v1/queue"));
    EXPECT_EQ(at(queue, "endless"), QVariant(true));
    EXPECT_EQ(at(queue, "from.title").toString(), QStringLiteral("Station"));
    EXPECT_EQ(at(queue, "current.playable"), QVariant(true));
    EXPECT_TRUE(queue.contains(QStringLiteral("next")));
    EXPECT_FALSE(at(queue, "next").isValid());
    EXPECT_EQ(at(queue, "played.0.at").toString(), QStringLiteral("2024-01-01T00:00:00.000Z"));
    const QByteArray ref = at(queue, "played.0.row.ref").toString().toLatin1();
    EXPECT_EQ(post("/api/v1/play", "{\"ref\": \"" + ref + "\"}").status, 200);
    EXPECT_EQ(
        at(player.calls.last().arguments[0].toHash(), "title").toString(), QStringLiteral("First"));
}

TEST_F(Play, SetsTheSleepTimerAndCallsItOff)
{
    EXPECT_EQ(post("/api/v1/player/sleep", R"({"minutes": 30})").body, "{}");
    EXPECT_EQ(
        post("/api/v1/player/sleep", R"({"minutes": 1440, "finishTrack": true})").status, 200);
    EXPECT_EQ(post("/api/v1/player/sleep", R"({"minutes": 0})").status, 200);
    for (const char* body : { "{}", R"({"minutes": -1})", R"({"minutes": 1441})",
             R"({"minutes": "5"})", R"({"minutes": 5, "finishTrack": 1})" })
        EXPECT_EQ(post("/api/v1/player/sleep", body).status, 400) << body;
    const QStringList told{ QStringLiteral("setSleep[1800000,false]"),
        QStringLiteral("setSleep[86400000,true]"), QStringLiteral("setSleep[0,false]") };
    EXPECT_EQ(player.told(), told);
}
