#include "controlfixture.h"

class State : public ControlFixture
{
};

TEST_F(State, IsWhatTheFirstEventTells)
{
    player.m_login = hash(R"({"state": "loggedOut"})");
    player.m_player = hash(R"({"state": 0, "artwork": "skin:iconMusic", "error": null})");
    const RawPeer::Answer answer = get("/api/v1/state");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.field("Cache-Control"), "no-store");
    const QVariantHash state = object(answer);
    EXPECT_FALSE(at(state, "service.loggedIn").toBool());
    EXPECT_EQ(at(state, "player.artwork").toString(), QString());
    EXPECT_TRUE(at(state, "player").toHash().contains(QStringLiteral("error")));
    EXPECT_GT(at(state, "serial").toLongLong(), 0);
    for (const char* key : { "version", "login", "player", "messages", "serial", "service" })
        EXPECT_TRUE(state.contains(QLatin1String(key))) << key;
}

TEST_F(State, HasTheLastMessages)
{
    player.m_messages = { hash(R"({"id": "1", "title": "One", "kind": "error"})"),
        hash(R"({"id": "2", "title": "Two", "rows": [{"title": "OK"}]})") };
    const QVariantHash answer = object(get("/api/v1/messages"));
    EXPECT_EQ(at(answer, "messages").toList().size(), 2);
    EXPECT_EQ(at(answer, "messages.0.kind").toString(), QStringLiteral("error"));
    EXPECT_FALSE(at(answer, "messages.0").toHash().contains(QStringLiteral("rows")));
    EXPECT_FALSE(at(answer, "messages.1.rows.0.ref").toString().isEmpty());
}
