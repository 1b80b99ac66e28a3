#include "controlfixture.h"

namespace {

struct Event
{
    qint64 id = 0;
    QByteArray name;
    QVariant data;
};

/// The events in what a stream has received, chunk framing taken off.
QVector<Event> eventsIn(const QByteArray& received)
{
    QVector<Event> events;
    Event event;
    for (const QByteArray& line : received.split('\n')) {
        if (line.startsWith("id: "))
            event.id = line.mid(4).toLongLong();
        else if (line.startsWith("event: "))
            event.name = line.mid(7);
        else if (line.startsWith("data: "))
            event.data = TavuJson::parse(line.mid(6));
        else if (line.isEmpty() && !event.name.isEmpty())
            events += std::exchange(event, {});
    }
    return events;
}

} // namespace

class Events : public ControlFixture
{
protected:
    std::unique_ptr<RawPeer> listen(const QByteArray& fields = {})
    {
        auto peer = std::make_unique<RawPeer>(port());
        peer->request("GET", "/api/v1/events", {}, fields);
        EXPECT_TRUE(peer->waitFor("retry: 1000\n\n"));
        return peer;
    }
    /// The names of all events so far, once there are `count`.
    QByteArrayList names(RawPeer& peer, int count)
    {
        EXPECT_TRUE(waitUntil([&] { return eventsIn(peer.received()).size() >= count; }));
        QByteArrayList names;
        for (const Event& event : eventsIn(peer.received()))
            names += event.name;
        return names;
    }
};

TEST_F(Events, BeginWithTheWholeState)
{
    player.m_login = hash(R"({"state": "loggedIn"})");
    player.m_player = hash(R"({"state": 2, "title": "Song"})");
    player.m_messages = { hash(R"({"id": "1", "title": "Hello"})") };
    const auto peer = listen();
    EXPECT_EQ(names(*peer, 1), QByteArrayList{ "snapshot" });
    const Event snapshot = eventsIn(peer->received())[0];
    EXPECT_EQ(at(snapshot.data, "version").toString(), QStringLiteral("1.2.3"));
    EXPECT_EQ(at(snapshot.data, "login.state").toString(), QStringLiteral("loggedIn"));
    EXPECT_EQ(at(snapshot.data, "player.title").toString(), QStringLiteral("Song"));
    EXPECT_EQ(at(snapshot.data, "messages.0.title").toString(), QStringLiteral("Hello"));
    EXPECT_EQ(at(snapshot.data, "service.name").toString(), QStringLiteral("Test Music"));
    EXPECT_TRUE(at(snapshot.data, "service.loggedIn").toBool());
    EXPECT_EQ(at(snapshot.data, "serial").toLongLong(), snapshot.id);
    EXPECT_GT(snapshot.id, 0);
}

TEST_F(Events, TellWhatChanges)
{
    const auto peer = listen();
    player.m_player = hash(R"({"title": "Next", "artwork": "https://example.org/a.jpg"})");
    Q_EMIT player.playerChanged();
    EXPECT_EQ(names(*peer, 2).last(), "player");
    player.m_login = hash(R"({"state": "waiting", "userCode": "ABCD"})");
    Q_EMIT player.loginChanged();
    EXPECT_EQ(names(*peer, 3).last(), "login");
    Q_EMIT player.positionChanged(5000, 1700000000000);
    EXPECT_EQ(names(*peer, 4).last(), "position");
    Q_EMIT player.rowsChanged(QStringLiteral("/music/browse?url=a%26b"));
    EXPECT_EQ(names(*peer, 5).last(), "rows");
    Q_EMIT player.messageAdded(hash(R"({"id": "7", "rows": [{"title": "OK", "type": 102}]})"));
    EXPECT_EQ(names(*peer, 6).last(), "message");
    Q_EMIT player.outputsChanged();
    EXPECT_EQ(names(*peer, 7).last(), "player");
    const QVector<Event> events = eventsIn(peer->received());
    EXPECT_TRUE(
        at(events[1].data, "artwork").toString().startsWith(QLatin1String("/api/v1/artwork/")));
    EXPECT_EQ(at(events[2].data, "userCode").toString(), QStringLiteral("ABCD"));
    EXPECT_EQ(events[3].data.toHash(), hash(R"({"position": 5000, "at": 1700000000000})"));
    EXPECT_EQ(events[4].data.toHash(), hash(R"({"path": "/music/browse?url=a%26b"})"));
    EXPECT_FALSE(at(events[5].data, "rows.0.ref").toString().isEmpty());
    for (int i = 1; i < events.size(); ++i)
        EXPECT_EQ(events[i].id, events[0].id + i);
}

TEST_F(Events, TellThatTheQueueIsToBeAskedForAgain)
{
    const auto peer = listen();
    Q_EMIT player.queueChanged();
    Q_EMIT player.queueChanged();
    Q_EMIT player.positionChanged(1, 2);
    const QByteArrayList expected{ "snapshot", "queue", "position" };
    EXPECT_EQ(names(*peer, 3), expected);
    EXPECT_EQ(eventsIn(peer->received())[1].data, QVariantHash());
}

TEST_F(Events, TellTheChangesOfOneTurnOnce)
{
    const auto peer = listen();
    for (int i = 0; i < 10; ++i) {
        player.m_player.insert(QStringLiteral("volume"), i);
        Q_EMIT player.playerChanged();
        Q_EMIT player.loginChanged();
        Q_EMIT player.rowsChanged(QStringLiteral("/a"));
    }
    Q_EMIT player.positionChanged(1, 2);
    const QByteArrayList expected{ "snapshot", "login", "player", "rows", "position" };
    EXPECT_EQ(names(*peer, 5), expected);
    settle();
    EXPECT_EQ(names(*peer, 5), expected);
    EXPECT_EQ(at(eventsIn(peer->received())[2].data, "volume").toInt(), 9);
}

TEST_F(Events, DoNotRepeatWhatTheSnapshotTells)
{
    listen();
    Q_EMIT player.playerChanged();
    const auto late = listen();
    settle();
    EXPECT_EQ(names(*late, 1), QByteArrayList{ "snapshot" });
}

TEST_F(Events, GoOnWhereAClientWasCutOff)
{
    auto first = listen();
    Q_EMIT player.positionChanged(1, 1);
    names(*first, 2);
    const qint64 seen = eventsIn(first->received()).last().id;
    first.reset();
    Q_EMIT player.positionChanged(2, 2);
    Q_EMIT player.positionChanged(3, 3);
    const auto again = listen("Last-Event-ID: " + QByteArray::number(seen) + "\r\n");
    const QByteArrayList expected{ "position", "position" };
    EXPECT_EQ(names(*again, 2), expected);
    EXPECT_EQ(eventsIn(again->received())[0].id, seen + 1);
    const auto upToDate = listen("Last-Event-ID: " + QByteArray::number(seen + 2) + "\r\n");
    Q_EMIT player.positionChanged(4, 4);
    EXPECT_EQ(names(*upToDate, 1), QByteArrayList{ "position" });
}

TEST_F(Events, BeginAnewWhenTooMuchWasMissed)
{
    auto first = listen();
    names(*first, 1);
    const qint64 seen = eventsIn(first->received()).last().id;
    for (int i = 0; i < 256; ++i)
        Q_EMIT player.positionChanged(i, i);
    EXPECT_EQ(
        names(*listen("Last-Event-ID: " + QByteArray::number(seen) + "\r\n"), 256).size(), 256);
    Q_EMIT player.positionChanged(256, 256);
    const auto again = listen("Last-Event-ID: " + QByteArray::number(seen) + "\r\n");
    EXPECT_EQ(names(*again, 1), QByteArrayList{ "snapshot" });
}

TEST_F(Events, BeginAnewForNumbersThatAreNotOurs)
{
    for (const char* id : { "0", "-1", "9223372036854775807", "99999999999999999999", "x", "" })
        EXPECT_EQ(names(*listen(QByteArray("Last-Event-ID: ") + id + "\r\n"), 1),
            QByteArrayList{ "snapshot" })
            << id;
}

TEST_F(Events, BeatWhileNothingChanges)
{
    options.limits.heartbeatMs = 50;
    EXPECT_TRUE(listen()->waitFor("\n:\n\n"));
}

TEST_F(Events, HaveAPlaceForSoManyClients)
{
    options.eventClients = 2;
    const auto first = listen();
    auto second = listen();
    EXPECT_EQ(get("/api/v1/events").status, 503);
    second.reset();
    settle();
    EXPECT_TRUE(waitUntil([&] {
        RawPeer peer(port());
        peer.request("GET", "/api/v1/events");
        return peer.waitFor("retry:", 200);
    }));
}

TEST_F(Events, ReachOthersWhileOneDoesNotRead)
{
    const auto lagging = listen();
    lagging->socket()->setReadBufferSize(1024);
    const auto other = listen();
    const QString text(16 * 1024, QLatin1Char('a'));
    int sent = 0;
    for (; sent < 2000 && lagging->connected(); ++sent) {
        Q_EMIT player.messageAdded({ { QStringLiteral("text"), text } });
        settle();
        other->received();
    }
    Q_EMIT player.positionChanged(77, 77);
    EXPECT_TRUE(other->waitFor("\"position\":77"));
    EXPECT_EQ(names(*other, sent + 2).size(), sent + 2);
    EXPECT_EQ(get("/api/v1/login").status, 200);
}

TEST_F(Events, EndWithTheServer)
{
    const auto peer = listen();
    auto* last = new control::ControlServer(player, options);
    const quint16 at = last->listen(QHostAddress::LocalHost, 0);
    RawPeer other(at);
    other.request("GET", "/api/v1/events");
    EXPECT_TRUE(other.waitFor("retry:"));
    delete last;
    EXPECT_TRUE(other.waitForEnd());
    Q_EMIT player.positionChanged(1, 1);
    EXPECT_EQ(names(*peer, 2).last(), "position");
}
