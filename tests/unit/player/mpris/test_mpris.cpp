#include "logcapture.h"
#include "mprisfixture.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QXmlStreamReader>

namespace {

const char rootInterface[] = "org.mpris.MediaPlayer2";
const char playerInterface[] = "org.mpris.MediaPlayer2.Player";
const char propertiesInterface[] = "org.freedesktop.DBus.Properties";

/// "kind name(types)" or "kind name type access" of each member of an interface, sorted.
QStringList membersOf(const QString& introspection, const char* interface)
{
    QStringList members;
    QXmlStreamReader xml(introspection);
    bool inside = false;
    while (!xml.atEnd()) {
        xml.readNext();
        const auto attribute = [&](const char* name) {
            return xml.attributes().value(QLatin1String(name));
        };
        if (xml.isStartElement() && xml.name() == QLatin1String("interface"))
            inside = attribute("name") == QLatin1String(interface);
        else if (!inside || !xml.isStartElement())
            continue;
        else if (xml.name() == QLatin1String("property"))
            members += QStringLiteral("property %1 %2 %3")
                           .arg(attribute("name"), attribute("type"), attribute("access"));
        else if (xml.name() == QLatin1String("arg"))
            members.last().insert(members.last().size() - 1, attribute("type").toString());
        else if (xml.name() != QLatin1String("annotation"))
            members += QStringLiteral("%1 %2()").arg(xml.name(), attribute("name"));
    }
    members.sort();
    return members;
}

/// A desktop on the other side of the bus.
class Mpris : public QObject, public MprisFixture
{
    Q_OBJECT

protected:
    Mpris()
        : desktop(bus.connect())
    {
    }

    void start()
    {
        MprisFixture::start();
        listen(propertiesInterface, "PropertiesChanged", SLOT(on_properties_changed(QDBusMessage)));
        listen(playerInterface, "Seeked", SLOT(on_seeked(QDBusMessage)));
    }
    void listen(const char* interface, const char* signal, const char* slot)
    {
        desktop.connect(mpris->busName(), text("/org/mpris/MediaPlayer2"),
            QString::fromLatin1(interface), QString::fromLatin1(signal), this, slot);
    }
    QDBusMessage call(const char* interface, const char* method, const QVariantList& arguments = {})
    {
        QDBusMessage message =
            QDBusMessage::createMethodCall(mpris->busName(), text("/org/mpris/MediaPlayer2"),
                QString::fromLatin1(interface), QString::fromLatin1(method));
        message.setArguments(arguments);
        const QDBusPendingCall pending = desktop.asyncCall(message);
        EXPECT_TRUE(waitUntil([&] { return pending.isFinished(); })) << method;
        return pending.reply();
    }
    QVariant property(const char* name, const char* interface = playerInterface)
    {
        const QDBusMessage reply = call(propertiesInterface, "Get",
            { QString::fromLatin1(interface), QString::fromLatin1(name) });
        EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << name;
        return reply.arguments().value(0).value<QDBusVariant>().variant();
    }
    QDBusMessage setProperty(const char* name, const QVariant& value)
    {
        return call(propertiesInterface, "Set",
            { QString::fromLatin1(playerInterface), QString::fromLatin1(name),
                QVariant::fromValue(QDBusVariant(value)) });
    }
    void setPosition(const char* track, qlonglong position)
    {
        call(playerInterface, "SetPosition",
            { QVariant::fromValue(QDBusObjectPath(text(track))), position });
    }
    static QVariantMap map(const QVariant& value)
    {
        return qdbus_cast<QVariantMap>(value.value<QDBusArgument>());
    }
    /// What has been announced since the last time, once everything has arrived.
    QVariantMap announced()
    {
        property("Rate"); // Answers come behind the signals that were sent before them.
        settle();
        QVariantMap all;
        all.swap(m_announced);
        return all;
    }

    QDBusConnection desktop;
    QList<qlonglong> seeks;

private Q_SLOTS:
    void on_properties_changed(const QDBusMessage& message)
    {
        EXPECT_EQ(message.arguments().value(0).toString(), QString::fromLatin1(playerInterface));
        const QVariantMap changed = map(message.arguments().value(1));
        for (auto property = changed.begin(); property != changed.end(); ++property)
            m_announced.insert(property.key(), property.value());
    }
    void on_seeked(const QDBusMessage& message)
    {
        seeks.append(message.arguments().value(0).toLongLong());
    }

private:
    QVariantMap m_announced;
};

} // namespace

TEST_F(Mpris, IsThereBeforeAnythingPlays)
{
    start();
    EXPECT_EQ(mpris->busName(), text("org.mpris.MediaPlayer2.tavu"));
    EXPECT_EQ(property("Identity", rootInterface).toString(), text("Tavu"));
    EXPECT_EQ(property("DesktopEntry", rootInterface).toString(), text("tavu-player"));
    EXPECT_FALSE(property("CanQuit", rootInterface).toBool());
    EXPECT_FALSE(property("CanRaise", rootInterface).toBool());
    EXPECT_FALSE(property("HasTrackList", rootInterface).toBool());
    EXPECT_TRUE(property("SupportedUriSchemes", rootInterface).toStringList().isEmpty());
    EXPECT_TRUE(property("SupportedMimeTypes", rootInterface).toStringList().isEmpty());
    EXPECT_EQ(property("PlaybackStatus").toString(), text("Stopped"));
    EXPECT_FALSE(property("CanPlay").toBool());
}

TEST_F(Mpris, GivesAllPropertiesOfThePlayer)
{
    facade.m_player = playing();
    start();
    const QDBusMessage reply =
        call(propertiesInterface, "GetAll", { QString::fromLatin1(playerInterface) });
    const QStringList names = map(reply.arguments().value(0)).keys();
    const QStringList expected{ text("CanControl"), text("CanGoNext"), text("CanGoPrevious"),
        text("CanPause"), text("CanPlay"), text("CanSeek"), text("LoopStatus"), text("MaximumRate"),
        text("Metadata"), text("MinimumRate"), text("PlaybackStatus"), text("Position"),
        text("Rate"), text("Shuffle"), text("Volume") };
    EXPECT_EQ(names, expected);
}

TEST_F(Mpris, DescribesItselfAsTheInterfacesAreWritten)
{
    start();
    const QString xml =
        call("org.freedesktop.DBus.Introspectable", "Introspect").arguments().value(0).toString();
    EXPECT_EQ(membersOf(xml, rootInterface),
        (QStringList{ text("method Quit()"), text("method Raise()"),
            text("property CanQuit b read"), text("property CanRaise b read"),
            text("property DesktopEntry s read"), text("property HasTrackList b read"),
            text("property Identity s read"), text("property SupportedMimeTypes as read"),
            text("property SupportedUriSchemes as read") }));
    EXPECT_EQ(membersOf(xml, playerInterface),
        (QStringList{ text("method Next()"), text("method OpenUri(s)"), text("method Pause()"),
            text("method Play()"), text("method PlayPause()"), text("method Previous()"),
            text("method Seek(x)"), text("method SetPosition(ox)"), text("method Stop()"),
            text("property CanControl b read"), text("property CanGoNext b read"),
            text("property CanGoPrevious b read"), text("property CanPause b read"),
            text("property CanPlay b read"), text("property CanSeek b read"),
            text("property LoopStatus s readwrite"), text("property MaximumRate d read"),
            text("property Metadata a{sv} read"), text("property MinimumRate d read"),
            text("property PlaybackStatus s read"), text("property Position x read"),
            text("property Rate d readwrite"), text("property Shuffle b readwrite"),
            text("property Volume d readwrite"), text("signal Seeked(x)") }));
}

TEST_F(Mpris, ARatingIsAnnouncedWithTheMetadata)
{
    facade.m_player = playing();
    start();
    announced();
    QVariantHash rated = playing();
    rated.insert(text("rating"), text("up"));
    show(rated);
    EXPECT_EQ(
        map(announced().value(text("Metadata"))).value(text("xesam:userRating")).toDouble(), 1.0);
}

TEST_F(Mpris, TheSettingNamesTheBus)
{
    const QDBusConnection session = player::Mpris::busNamed(text("session"));
    const QDBusConnection system = player::Mpris::busNamed(text("system"));
    EXPECT_EQ(session.name(), QDBusConnection::sessionBus().name());
    EXPECT_EQ(system.name(), QDBusConnection::systemBus().name());
    EXPECT_NE(session.name(), system.name());
}

TEST_F(Mpris, SecondInstanceHasItsProcessIdInTheName)
{
    start();
    const player::Mpris second(&facade, text("Tavu"), bus.connect());
    EXPECT_EQ(second.busName(),
        text("org.mpris.MediaPlayer2.tavu.instance%1").arg(QCoreApplication::applicationPid()));
    EXPECT_EQ(mpris->busName(), text("org.mpris.MediaPlayer2.tavu"));
}

TEST_F(Mpris, EndingGivesTheNameBack)
{
    start();
    mpris.reset();
    EXPECT_FALSE(desktop.interface()->isServiceRegistered(text("org.mpris.MediaPlayer2.tavu")));
}

TEST_F(Mpris, AnnouncesWhatHasChangedAndNothingElse)
{
    start();
    show(playing());
    const QVariantMap first = announced();
    EXPECT_EQ(first.value(text("PlaybackStatus")).toString(), text("Playing"));
    EXPECT_EQ(
        map(first.value(text("Metadata"))).value(text("xesam:title")).toString(), text("Blue"));
    EXPECT_TRUE(first.value(text("CanPlay")).toBool());
    EXPECT_FALSE(first.contains(text("Volume")));
    EXPECT_FALSE(first.contains(text("Position")));
    show(playing());
    EXPECT_TRUE(announced().isEmpty());
    show(playing("Blue", 3));
    EXPECT_EQ(announced().keys(), QStringList{ text("PlaybackStatus") });
}

TEST_F(Mpris, EachItemHasItsOwnTrackId)
{
    const auto trackId = [this] {
        return map(property("Metadata"))
            .value(text("mpris:trackid"))
            .value<QDBusObjectPath>()
            .path();
    };
    facade.m_player = playing("Blue");
    start();
    const QString blue = trackId();
    QVariantHash longer = playing("Blue");
    longer.insert(text("duration"), 210000);
    show(longer);
    EXPECT_EQ(trackId(), blue);
    show(playing("Green"));
    EXPECT_NE(trackId(), blue);
    show(idle());
    EXPECT_EQ(trackId(), text("/org/mpris/MediaPlayer2/TrackList/NoTrack"));
}

TEST_F(Mpris, TransportReachesThePlayer)
{
    facade.m_player = playing();
    start();
    call(playerInterface, "Next");
    call(playerInterface, "Previous");
    call(playerInterface, "PlayPause");
    call(playerInterface, "Pause");
    call(playerInterface, "Stop");
    call(playerInterface, "Play");
    EXPECT_EQ(told(),
        (QStringList{ text("command[\"Next\"]"), text("command[\"Previous\"]"),
            text("command[\"TogglePause\"]"), text("command[\"TogglePause\"]"),
            text("command[\"Stop\"]") }));
    show(playing("Blue", 3));
    call(playerInterface, "Pause");
    call(playerInterface, "PlayPause");
    call(playerInterface, "Play");
    EXPECT_EQ(told(), (QStringList{ text("command[\"Resume\"]"), text("command[\"Resume\"]") }));
}

TEST_F(Mpris, NothingLoadedTakesNoCommands)
{
    start();
    for (const char* method : { "Next", "Previous", "Pause", "Stop", "Play" })
        EXPECT_EQ(call(playerInterface, method).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(call(playerInterface, "PlayPause").type(), QDBusMessage::ErrorMessage);
    call(playerInterface, "Seek", { qlonglong(1000000) });
    setPosition("/org/mpris/MediaPlayer2/TrackList/NoTrack", 0);
    EXPECT_EQ(told(), QStringList());
}

TEST_F(Mpris, SeekIsRelativeAndStaysAtTheStart)
{
    facade.m_player = playing("Blue", 3);
    start();
    reportPosition(50000);
    call(playerInterface, "Seek", { qlonglong(10000000) });
    call(playerInterface, "Seek", { qlonglong(-60000000) });
    call(playerInterface, "Seek", { std::numeric_limits<qlonglong>::min() });
    EXPECT_EQ(told(), (QStringList{ text("seek[60000]"), text("seek[0]"), text("seek[0]") }));
}

TEST_F(Mpris, SeekBehindTheEndIsNext)
{
    facade.m_player = playing("Blue", 3);
    start();
    call(playerInterface, "Seek", { qlonglong(200001000) });
    call(playerInterface, "Seek", { std::numeric_limits<qlonglong>::max() });
    EXPECT_EQ(told(), (QStringList{ text("command[\"Next\"]"), text("command[\"Next\"]") }));
}

TEST_F(Mpris, SetPositionCountsForThePresentTrackAlone)
{
    facade.m_player = playing();
    start();
    setPosition("/org/tavu/track/1", 30000000);
    setPosition("/org/tavu/track/2", 30000000);
    setPosition("/org/tavu/track/1", -1);
    setPosition("/org/tavu/track/1", 200001000);
    EXPECT_EQ(told(), QStringList{ text("seek[30000]") });
}

TEST_F(Mpris, PositionFlowsBetweenReportsUpToTheEnd)
{
    facade.m_player = playing("Blue", 3);
    start();
    reportPosition(30000);
    EXPECT_EQ(property("Position").toLongLong(), 30000000);
    show(playing());
    EXPECT_TRUE(waitUntil([&] { return property("Position").toLongLong() > 30000000; }));
    reportPosition(900000);
    EXPECT_EQ(property("Position").toLongLong(), 200000000);
}

TEST_F(Mpris, SeekedTellsOfJumpsAlone)
{
    facade.m_player = playing("Blue", 3);
    start();
    reportPosition(100);
    reportPosition(60000);
    reportPosition(60000);
    announced();
    EXPECT_EQ(seeks, QList<qlonglong>{ 60000000 });
    show(playing("Green", 3));
    reportPosition(0);
    announced();
    EXPECT_EQ(seeks.size(), 1);
}

TEST_F(Mpris, ModesAndVolumeCanBeSet)
{
    QVariantHash present = playing();
    present.insert(text("mode"), 1);
    facade.m_player = present;
    start();
    setProperty("LoopStatus", text("Playlist"));
    setProperty("LoopStatus", text("None"));
    setProperty("LoopStatus", text("Forever"));
    setProperty("Shuffle", false);
    setProperty("Volume", 0.355);
    setProperty("Volume", 7.0);
    setProperty("Volume", -1.0);
    setProperty("Volume", std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(told(),
        (QStringList{ text("setPlayMode[5]"), text("setPlayMode[0]"), text("setVolume[36]"),
            text("setVolume[100]"), text("setVolume[0]") }));
}

TEST_F(Mpris, RaisingTheVolumeUnmutes)
{
    QVariantHash muted = playing();
    muted.insert(text("mute"), true);
    facade.m_player = muted;
    start();
    setProperty("Volume", 0.5);
    EXPECT_EQ(told(), (QStringList{ text("setMuted[false]"), text("setVolume[50]") }));
}

TEST_F(Mpris, RateZeroPausesAndOthersAreIgnored)
{
    facade.m_player = playing();
    start();
    setProperty("Rate", 2.0);
    setProperty("Rate", 0.0);
    EXPECT_EQ(told(), QStringList{ text("command[\"TogglePause\"]") });
    EXPECT_EQ(property("Rate").toDouble(), 1.0);
}

TEST_F(Mpris, WrongCallsGetErrors)
{
    facade.m_player = playing();
    start();
    EXPECT_EQ(call(playerInterface, "Seek", { text("far") }).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call(playerInterface, "Dance").type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(setProperty("Volume", QVariant::fromValue(QDBusObjectPath(text("/x")))).type(),
        QDBusMessage::ErrorMessage);
    EXPECT_EQ(setProperty("Metadata", 1).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(setProperty("CanPlay", true).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call(playerInterface, "OpenUri", { text("file:///etc/passwd") }).errorName(),
        text("org.freedesktop.DBus.Error.NotSupported"));
    EXPECT_EQ(told(), QStringList());
    EXPECT_EQ(property("PlaybackStatus").toString(), text("Playing"));
}

TEST_F(Mpris, AThousandCallsAreAllAnswered)
{
    facade.m_player = playing();
    start();
    std::vector<QDBusPendingCall> calls;
    for (int number = 0; number < 1000; ++number)
        calls.push_back(desktop.asyncCall(QDBusMessage::createMethodCall(mpris->busName(),
            text("/org/mpris/MediaPlayer2"), QString::fromLatin1(playerInterface), text("Next"))));
    for (const QDBusPendingCall& one : calls)
        EXPECT_TRUE(waitUntil([&] { return one.isFinished() && !one.isError(); }));
    EXPECT_EQ(told().size(), 1000);
}

TEST_F(Mpris, WithoutABusItIsOffWithOneLine)
{
    LogCapture log("Mpris");
    const QDBusConnection nowhere =
        QDBusConnection::connectToBus(text("unix:path=/nowhere/bus"), text("nowhere"));
    player::Mpris off(&facade, text("Tavu"), nowhere);
    show(playing());
    reportPosition(60000);
    EXPECT_TRUE(off.busName().isEmpty());
    EXPECT_EQ(log.texts(log4cplus::WARN_LOG_LEVEL).size(), 1);
    EXPECT_EQ(log.countContaining(log4cplus::WARN_LOG_LEVEL, text("set player.mpris = false")), 1);
    QDBusConnection::disconnectFromBus(text("nowhere"));
}

TEST_F(Mpris, BusThatDiesTurnsItOffWithOneLine)
{
    facade.m_player = playing();
    start();
    LogCapture log("Mpris");
    bus.kill();
    EXPECT_TRUE(waitUntil([&] { return mpris->busName().isEmpty(); }));
    show(playing("Green"));
    reportPosition(60000);
    settle();
    EXPECT_EQ(log.texts(log4cplus::WARN_LOG_LEVEL),
        QStringList{
            text("D-Bus has gone: media keys and desktops cannot steer the player until it "
                 "is started again; all else works") });
}

#include "test_mpris.moc"
