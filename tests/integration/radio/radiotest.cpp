#include "application.h"
#include "cmroot.h"
#include "playerfacade.h"
#include "printers.h"
#include "sound.h"
#include "soundserver.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace {

constexpr int patienceMs = 30000;

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

QVariant valueOf(const CMReply<QVariant>& reply)
{
    EXPECT_TRUE(waitUntil([&] { return reply.isFinished(); }, patienceMs));
    EXPECT_FALSE(reply.error().isSet()) << reply.error().message().toStdString();
    return reply.value();
}

QString errorOf(const CMReply<QVariant>& reply)
{
    EXPECT_TRUE(waitUntil([&] { return reply.isFinished(); }, patienceMs));
    return reply.error().message();
}

/// A player with the radio as its plug-in, and a server of stations.
class Radio : public ::testing::Test
{
protected:
    ~Radio() override
    {
        m_application.reset();
        settle();
        CMRoot()->reset();
    }

    QString file(const char* name) const { return folder.filePath(text(name)); }

    void startWith(const QString& playlist)
    {
        player::Settings settings;
        const QString sink =
            QStringLiteral("audioconvert ! audio/x-raw,format=S16LE,rate=44100,channels=2,"
                           "layout=interleaved ! filesink location=%1")
                .arg(file("captured.raw"));
        for (const QString& assignment : { text("player.plugin=" RADIO_PLUGIN),
                 text("player.plugin-settings=playlist=") + playlist, text("player.mpris=false"),
                 text("control.port=0"), text("player.output=") + sink })
            EXPECT_TRUE(settings.apply(assignment)) << settings.error().toStdString();
        m_application = std::make_unique<player::Application>(
            settings, folder.path(), settings.text("player.plugin"));
        QString outcome;
        QObject::connect(m_application.get(), &player::Application::ready, m_application.get(),
            [&outcome] { outcome = text("ready"); });
        QObject::connect(m_application.get(), &player::Application::failed, m_application.get(),
            [&outcome](int, const QString& message) { outcome = message; });
        m_application->start();
        EXPECT_TRUE(waitUntil([&] { return !outcome.isEmpty(); }, patienceMs));
        ASSERT_EQ(outcome, text("ready"));
    }

    /// Writes a playlist of two stations, one on a folder with a blank in its name, and starts.
    void startWithTwoStations()
    {
        server.add(text("/one"), flac(first), live());
        server.add(text("/two"), flac(second), live());
        QFile playlist(file("my stations.m3u"));
        ASSERT_TRUE(playlist.open(QIODevice::WriteOnly));
        playlist.write("#EXTM3U\n#EXTINF:-1,Station One\n" + server.url(text("/one")).toUtf8()
            + "\n#EXTINF:-1,Station Two\n" + server.url(text("/two")).toUtf8() + '\n');
        playlist.close();
        startWith(playlist.fileName().replace(QLatin1Char(' '), QLatin1String("%20")));
    }

    /// As a station sends: without length, and deaf to ranges.
    static SoundServer::Manner live()
    {
        SoundServer::Manner manner;
        manner.contentType = "audio/flac";
        manner.ranges = false;
        manner.chunked = true;
        return manner;
    }

    PlayerFacade& player() { return m_application->player(); }
    QVariantList rows()
    {
        return valueOf(player().rows(QString(), 0, 49)).toHash().value(text("rows")).toList();
    }
    QString titleOf(const QVariant& row) { return row.toHash().value(text("title")).toString(); }
    bool waitForIdle()
    {
        return waitUntil(
            [this] { return player().player().value(text("state")).toInt() == 0; }, patienceMs);
    }
    bool waitForTitle(const QString& title)
    {
        return waitUntil([&] { return titleOf(player().player()) == title; }, patienceMs);
    }
    QByteArray heard()
    {
        QFile captured(file("captured.raw"));
        return captured.open(QIODevice::ReadOnly) ? captured.readAll() : QByteArray();
    }

    const Sound first = Sound::melody(1500, 1);
    const Sound second = Sound::melody(1500, 2);
    SoundServer server;
    QTemporaryDir folder;

private:
    std::unique_ptr<player::Application> m_application;
};

TEST_F(Radio, its_stations_are_the_players_first_screen)
{
    startWithTwoStations();
    ASSERT_EQ(rows().size(), 2);
    EXPECT_EQ(titleOf(rows().at(0)), text("Station One"));
    EXPECT_EQ(titleOf(rows().at(1)), text("Station Two"));
    EXPECT_EQ(player().service().value(text("name")).toString(), text("Radio"));
}

TEST_F(Radio, nobody_has_to_sign_in)
{
    startWithTwoStations();
    EXPECT_EQ(player().login().value(text("state")).toString(), text("loggedIn"));
    player().logout();
    ASSERT_TRUE(waitUntil([this] { return !player().messages().isEmpty(); }, patienceMs));
    EXPECT_EQ(titleOf(player().messages().last()), text("\"Radio\" needs no sign-in."));
    EXPECT_EQ(player().login().value(text("state")).toString(), text("loggedIn"));
}

TEST_F(Radio, a_station_sounds_as_it_is_sent_and_ends_when_its_stream_does)
{
    startWithTwoStations();
    valueOf(player().play(rows().at(1).toHash()));
    // A file takes sound faster than an ear: the title may be gone before anybody looks.
    ASSERT_TRUE(waitUntil([this] { return heard().size() >= second.samples.size(); }, patienceMs));
    ASSERT_TRUE(waitForIdle());
    EXPECT_TRUE(heard() == second.samples);
    EXPECT_EQ(server.askedFor(text("/one")), 0);
}

TEST_F(Radio, next_and_previous_go_round_the_stations)
{
    SoundServer::Manner endless = live();
    endless.shaping.bytesPerSecond = 20000;
    startWithTwoStations();
    server.add(text("/one"), flac(Sound::melody(20000, 3)), endless);
    server.add(text("/two"), flac(Sound::melody(20000, 4)), endless);
    valueOf(player().play(rows().at(1).toHash()));
    ASSERT_TRUE(waitForTitle(text("Station Two")));
    valueOf(player().command(PlayerFacade::Command::Next));
    ASSERT_TRUE(waitForTitle(text("Station One")));
    valueOf(player().command(PlayerFacade::Command::Previous));
    ASSERT_TRUE(waitForTitle(text("Station Two")));
    EXPECT_EQ(
        errorOf(player().command(PlayerFacade::Command::Like)), text("Stations are not rated."));
    valueOf(player().command(PlayerFacade::Command::Stop));
    ASSERT_TRUE(waitForIdle());
    EXPECT_EQ(errorOf(player().command(PlayerFacade::Command::Next)), text("Nothing is playing."));
}

TEST_F(Radio, a_playlist_that_cannot_be_read_is_named_on_the_screen)
{
    startWith(text("/nowhere/stations.m3u"));
    ASSERT_EQ(rows().size(), 1);
    EXPECT_EQ(titleOf(rows().at(0)),
        text("/nowhere/stations.m3u cannot be read: No such file or directory."));
}

} // namespace
