#include "lag.h"
#include "streamertest.h"
#include "watchdog.h"

namespace {

using StreamerPlay = StreamerTest;

TEST_F(StreamerPlay, playsAFlacSampleBySample)
{
    const Sound song = Sound::melody(3000, 1);
    streamer().play(7, flacRoles(QStringLiteral("song"), song), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("wanted"), 7));
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 7));
    EXPECT_TRUE(soundsLike(captured(), song.samples));
}

TEST_F(StreamerPlay, tellsTheCourseOfAnItemInOrder)
{
    streamer().play(7, flacRoles(QStringLiteral("song"), Sound::melody(1000, 1)), {});
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 7));
    EXPECT_EQ(ear().story(7),
        (QStringList{ QStringLiteral("state 1"), QStringLiteral("level 100"),
            QStringLiteral("started"), QStringLiteral("state 2"), QStringLiteral("wanted"),
            QStringLiteral("ended") }));
}

TEST_F(StreamerPlay, playsMp3OpusAndM4aAsPlainGStreamerDoes)
{
    const Sound song = Sound::melody(2000, 2, 48000);
    makeStreamer(Unsynced, 48000);
    const QVector<QPair<QString, QByteArray>> files{ { QStringLiteral("/a.mp3"), mp3(song) },
        { QStringLiteral("/a.opus"), opus(song) }, { QStringLiteral("/a.m4a"), m4a(song) } };
    QByteArray expected;
    quint64 id = 0;
    for (const auto& [path, file] : files) {
        server.add(path, file);
        streamer().play(++id, roles(path, song.durationMs()), {});
        streamer().setNoNextMedia();
        ASSERT_TRUE(ear().hears(QStringLiteral("ended"), id)) << path.toStdString();
        expected += decode(file, 48000);
        EXPECT_TRUE(soundsLike(captured(), expected)) << path.toStdString();
    }
}

TEST_F(StreamerPlay, joinsFlacsExactly)
{
    const Sound first = Sound::melody(1500, 1);
    const Sound second = Sound::melody(1500, 2);
    const Sound third = Sound::melody(1000, 3);
    streamer().play(1, flacRoles(QStringLiteral("a"), first), {});
    streamer().setNextMedia(2, flacRoles(QStringLiteral("b"), second), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("started"), 2));
    streamer().setNextMedia(3, flacRoles(QStringLiteral("c"), third), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("started"), 3));
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 3));
    EXPECT_TRUE(soundsLike(captured(), first.samples + second.samples + third.samples));
}

TEST_F(StreamerPlay, joinsInRealTimeAndTellsTheChangeWhenItSounds)
{
    makeStreamer(Synced);
    const Sound first = Sound::melody(1500, 1);
    const Sound second = Sound::melody(1000, 2);
    streamer().play(1, flacRoles(QStringLiteral("a"), first), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("wanted"), 1));
    streamer().setNextMedia(2, flacRoles(QStringLiteral("b"), second), {});
    const Lag lag;
    ASSERT_TRUE(ear().hears(QStringLiteral("started"), 2));
    const qint64 heard = captured().size() / Sound::frameSize;
    EXPECT_GE(heard, first.frames() - 44100 / 5);
    EXPECT_LE(heard, first.frames() + 44100 / 5 + lag.worstMs() * 44100 / 1000);
    ASSERT_TRUE(ear().hears(QStringLiteral("wanted"), 2));
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 2));
    EXPECT_TRUE(soundsLike(captured(), first.samples + second.samples));
}

TEST_F(StreamerPlay, losesNoSampleWhereMp3sAndOpusesJoin)
{
    makeStreamer(Unsynced, 48000);
    QByteArray expected;
    quint64 id = 0;
    streamer();
    const auto give = [&](const QString& path, const QByteArray& file) {
        server.add(path, file);
        expected += decode(file, 48000);
        ++id;
        if (id == 1)
            streamer().play(id, roles(path, 1500), {});
        else
            streamer().setNextMedia(id, roles(path, 1500), {});
        EXPECT_TRUE(ear().hears(QStringLiteral("started"), id)) << path.toStdString();
    };
    give(QStringLiteral("/a.mp3"), mp3(Sound::melody(1500, 1, 48000)));
    give(QStringLiteral("/b.mp3"), mp3(Sound::melody(1500, 2, 48000)));
    give(QStringLiteral("/c.opus"), opus(Sound::melody(1500, 3, 48000)));
    give(QStringLiteral("/d.opus"), opus(Sound::melody(1500, 4, 48000)));
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), id));
    EXPECT_TRUE(soundsLike(captured(), expected));
}

TEST_F(StreamerPlay, startsAtThePositionThatTheItemSays)
{
    const Sound song = Sound::melody(3000, 1);
    streamer().play(1, startingAt(flacRoles(QStringLiteral("a"), song), 1234), {});
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 1));
    EXPECT_TRUE(soundsLike(captured(), song.from(44100 * 1234 / 1000)));
}

} // namespace
