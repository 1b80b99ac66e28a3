#include "lag.h"
#include "streamertest.h"
#include "watchdog.h"

#include <QThread>

namespace {

class StreamerTransport : public StreamerTest
{
protected:
    void playToEnd(quint64 id)
    {
        streamer().setNoNextMedia();
        ASSERT_TRUE(ear().hears(QStringLiteral("ended"), id));
    }
};

TEST_F(StreamerTransport, pausesInSilenceAndGoesOnAtTheSameSample)
{
    makeStreamer(Synced);
    const Sound song = Sound::melody(1500, 1);
    streamer().play(1, flacRoles(QStringLiteral("a"), song), {});
    ASSERT_TRUE(ear().hearsPositionFrom(1, 300));
    streamer().pause();
    ASSERT_TRUE(ear().hearsState(1, paused));
    settle();
    const QByteArray before = captured();
    const qint64 where = ear().position(1);
    EXPECT_NEAR(double(where), before.size() / 4 / 44.1, 150);
    const int told = ear().all().size();
    EXPECT_FALSE(waitUntil([&] { return captured() != before; }, 400));
    EXPECT_EQ(ear().all().size(), told) << "nothing is told while nothing changes";
    ear().forget();
    streamer().resume();
    ASSERT_TRUE(ear().hearsState(1, playing));
    playToEnd(1);
    EXPECT_TRUE(soundsLike(captured(), song.samples));
    EXPECT_EQ(ear().count(QStringLiteral("started"), 1), 0) << "it was the same playback";
}

TEST_F(StreamerTransport, seeksToTheExactSample)
{
    makeStreamer(Synced);
    const Sound song = Sound::melody(20000, 1);
    streamer().play(1, flacRoles(QStringLiteral("a"), song), {});
    ASSERT_TRUE(ear().hearsState(1, playing));
    streamer().pause();
    ASSERT_TRUE(ear().hearsState(1, paused));
    ear().forget();
    streamer().seekTime(19321);
    ASSERT_TRUE(ear().hearsPositionFrom(1, 19321));
    streamer().resume();
    ASSERT_TRUE(ear().hearsState(1, playing));
    playToEnd(1);
    const QByteArray expected = song.from(44100 * 19321 / 1000);
    EXPECT_TRUE(soundsLike(captured().right(expected.size()), expected));
}

TEST_F(StreamerTransport, seeksBackWhileItPlays)
{
    makeStreamer(Synced);
    const Sound song = Sound::melody(1200, 1);
    streamer().play(1, flacRoles(QStringLiteral("a"), song), {});
    ASSERT_TRUE(ear().hearsPositionFrom(1, 700));
    streamer().seekTime(400);
    playToEnd(1);
    const QByteArray expected = song.from(44100 * 400 / 1000);
    EXPECT_TRUE(soundsLike(captured().right(expected.size()), expected));
}

// A seek back after everything of the item has gone to the decoder, with the next item prepared.
TEST_F(StreamerTransport, seeksBackInsideItsItemAlthoughTheNextIsPrepared)
{
    makeStreamer(Synced);
    const Sound first = Sound::melody(2500, 1);
    const Sound second = Sound::melody(500, 2);
    streamer().play(1, flacRoles(QStringLiteral("a"), first), {});
    streamer().setNextMedia(2, flacRoles(QStringLiteral("b"), second), {});
    ASSERT_TRUE(ear().hearsPositionFrom(1, 900));
    streamer().seekTime(800);
    ASSERT_TRUE(ear().hears(QStringLiteral("started"), 2));
    playToEnd(2);
    const QByteArray expected = first.from(44100 * 800 / 1000) + second.samples;
    EXPECT_TRUE(soundsLike(captured().right(expected.size()), expected));
}

TEST_F(StreamerTransport, seeksBackWhenTheItemHasJustEnded)
{
    const Sound song = Sound::melody(1000, 1);
    streamer().play(1, flacRoles(QStringLiteral("a"), song), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("wanted"), 1));
    ASSERT_TRUE(waitUntil([&] { return captured().size() == song.samples.size(); }));
    settle();
    streamer().seekTime(600);
    playToEnd(1);
    // The first sound is gone: a seek empties the file that it goes to.
    EXPECT_TRUE(soundsLike(captured(), song.from(44100 * 600 / 1000)));
}

TEST_F(StreamerTransport, endsAfterASeekBehindTheEnd)
{
    makeStreamer(Synced);
    const Sound song = Sound::melody(3000, 1);
    streamer().play(1, flacRoles(QStringLiteral("a"), song), {});
    ASSERT_TRUE(ear().hearsState(1, playing));
    streamer().seekTime(1000000);
    playToEnd(1);
    EXPECT_EQ(ear().count(QStringLiteral("failed"), 1), 0);
}

TEST_F(StreamerTransport, followsTheLastOfManySeeks)
{
    makeStreamer(Synced);
    const Sound song = Sound::melody(10000, 1);
    streamer().play(1, flacRoles(QStringLiteral("a"), song), {});
    for (const int where : { 500, 9000, 100, 4000, 7000, 9500 })
        streamer().seekTime(where);
    playToEnd(1);
    const QByteArray expected = song.from(44100 * 9500 / 1000);
    EXPECT_TRUE(soundsLike(captured(), expected));
}

struct Format
{
    const char* path;
    QByteArray (*make)(const Sound&);
    int toleranceMs;
};

/// The frame near `guess` where `stretch` is most like `whole`; -1 when it is not like it anywhere.
int placeOf(const QByteArray& stretch, const QByteArray& whole, int guess)
{
    const auto* part = reinterpret_cast<const qint16*>(stretch.constData());
    const auto* all = reinterpret_cast<const qint16*>(whole.constData());
    qint64 best = stretch.size() / 2 * 300;
    int place = -1;
    for (int frame = guess - 4800; frame < guess + 4800; ++frame) {
        qint64 difference = 0;
        for (int i = 0; i < stretch.size() / 2 && difference < best; ++i)
            difference += std::abs(part[i] - all[frame * 2 + i]);
        if (difference < best) {
            best = difference;
            place = frame;
        }
    }
    return place;
}

class StreamerSeekFormats : public StreamerTransport, public ::testing::WithParamInterface<Format>
{
};

TEST_P(StreamerSeekFormats, startsAndSeeksNearEnoughToThePosition)
{
    makeStreamer(Unsynced, 48000);
    const Sound song = Sound::melody(20000, 1, 48000);
    const QString path = QString::fromLatin1(GetParam().path);
    const QByteArray file = GetParam().make(song);
    server.add(path, file);
    const QByteArray whole = decode(file, 48000);
    streamer().play(1, startingAt(roles(path, song.durationMs()), 13000), {});
    playToEnd(1);
    const int frames = whole.size() / 4 - 13 * 48000;
    EXPECT_NEAR(captured().size() / 4, frames, GetParam().toleranceMs * 48) << "by length";
    const int middle = captured().size() / 8;
    EXPECT_NEAR(placeOf(captured().mid(middle * 4, 4000), whole, 13 * 48000 + middle),
        13 * 48000 + middle, GetParam().toleranceMs * 48);
}

INSTANTIATE_TEST_SUITE_P(Formats, StreamerSeekFormats,
    ::testing::Values(
        Format{ "/a.mp3", mp3, 30 }, Format{ "/a.opus", opus, 30 }, Format{ "/a.m4a", m4a, 30 }));

TEST_F(StreamerTransport, playsAnotherItemAtOnceAndForgetsTheFirst)
{
    makeStreamer(Synced);
    const Sound first = Sound::melody(5000, 1);
    const Sound second = Sound::melody(500, 2);
    const TavuRoles a = flacRoles(QStringLiteral("a"), first);
    const TavuRoles b = flacRoles(QStringLiteral("b"), second);
    streamer().play(1, a, {});
    ASSERT_TRUE(ear().hearsState(1, playing));
    streamer().play(2, b, {});
    ear().forget();
    playToEnd(2);
    EXPECT_TRUE(ear().story(1).isEmpty()) << ear().story(1).join(QLatin1Char(' ')).toStdString();
    EXPECT_TRUE(soundsLike(captured().right(second.samples.size()), second.samples));
}

TEST_F(StreamerTransport, tellsNothingAfterStop)
{
    makeStreamer(Synced);
    streamer().play(1, flacRoles(QStringLiteral("a"), Sound::melody(1000, 1)), {});
    ASSERT_TRUE(ear().hearsState(1, playing));
    streamer().stop();
    ear().forget();
    const QByteArray before = captured();
    EXPECT_FALSE(waitUntil([&] { return !ear().all().isEmpty(); }, 300));
    EXPECT_LT(captured().size() - before.size(), 44100 * 4 / 5);
}

TEST_F(StreamerTransport, commandsWithoutAnItemDoNothing)
{
    streamer().pause();
    streamer().resume();
    streamer().seekTime(5);
    streamer().setNoNextMedia();
    streamer().setNextMedia(2, flacRoles(QStringLiteral("b"), Sound::melody(200, 2)), {});
    streamer().stop();
    EXPECT_FALSE(waitUntil([&] { return !ear().all().isEmpty(); }, 200));
    EXPECT_TRUE(server.asked().isEmpty());
}

TEST_F(StreamerTransport, takesCommandsFromAnotherThreadInTheirOrder)
{
    const Sound song = Sound::melody(800, 3);
    const TavuRoles a = flacRoles(QStringLiteral("a"), Sound::melody(5000, 1));
    const TavuRoles b = flacRoles(QStringLiteral("b"), song);
    Streamer& commands = streamer();
    const std::unique_ptr<QThread> other(QThread::create([&] {
        commands.play(1, a, {});
        commands.pause();
        commands.stop();
        commands.play(2, b, {});
        commands.pause();
        commands.resume();
        commands.setNoNextMedia();
    }));
    other->start();
    other->wait();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 2));
    EXPECT_EQ(ear().count(QStringLiteral("started"), 1), 0);
    EXPECT_TRUE(soundsLike(captured(), song.samples));
}

TEST_F(StreamerTransport, anItemPlayedWhilePausedByTheUserBeginsToPlay)
{
    makeStreamer(Synced);
    streamer().play(1, flacRoles(QStringLiteral("a"), Sound::melody(2000, 1)), {});
    ASSERT_TRUE(ear().hearsState(1, playing));
    streamer().pause();
    ASSERT_TRUE(ear().hearsState(1, paused));
    streamer().play(2, flacRoles(QStringLiteral("b"), Sound::melody(300, 2)), {});
    playToEnd(2);
}

TEST_F(StreamerTransport, keepsAPauseGivenBeforeTheStart)
{
    makeStreamer(Synced);
    const Sound song = Sound::melody(500, 1);
    streamer().play(1, flacRoles(QStringLiteral("a"), song), {});
    streamer().pause();
    ASSERT_TRUE(ear().hearsState(1, paused));
    EXPECT_FALSE(ear().hears(QStringLiteral("started"), 1, 300));
    EXPECT_TRUE(captured().isEmpty());
    streamer().resume();
    playToEnd(1);
    EXPECT_TRUE(soundsLike(captured(), song.samples));
}

TEST_F(StreamerTransport, tellsPositionsAboutFourTimesASecond)
{
    makeStreamer(Synced);
    streamer().play(1, flacRoles(QStringLiteral("a"), Sound::melody(2000, 1)), {});
    const Lag lag;
    playToEnd(1);
    const int told = ear().count(QStringLiteral("position"), 1);
    EXPECT_GE(told, 6 - lag.sumMs() / 250);
    EXPECT_LE(told, 12);
}

} // namespace
