#include "streamertest.h"
#include "streamrequest.h"
#include "watchdog.h"

namespace {

class StreamerFormat : public StreamerTest
{
protected:
    /// Plays a file of the kind, and waits until its codec is known.
    player::SoundPath play(const QString& path, const QByteArray& file)
    {
        server.add(path, file);
        return play(roles(path, song.durationMs()));
    }
    player::SoundPath play(const TavuRoles& item, const QVariantHash& attributes = {})
    {
        streamer().play(1, item, attributes);
        EXPECT_TRUE(ear().hears(QStringLiteral("started"), 1));
        EXPECT_TRUE(waitUntil([this] {
            const auto path = streamer().soundPath();
            return path && !path->format.codec.isEmpty() && path->output.sampleRate > 0;
        }));
        return streamer().soundPath().value_or(player::SoundPath());
    }

    Sound song = Sound::melody(4000, 1);
};

TEST_F(StreamerFormat, flacIsLosslessWithTheBitsOfItsSamples)
{
    makeStreamer(Synced);
    const player::SoundPath path = play(flacRoles(QStringLiteral("a"), song));
    EXPECT_EQ(path.format.codec, QStringLiteral("FLAC"));
    EXPECT_TRUE(path.format.lossless);
    EXPECT_EQ(path.format.sampleRate, 44100);
    EXPECT_EQ(path.format.channels, 2);
    EXPECT_EQ(path.format.bitDepth, 16);
    EXPECT_EQ(path.format.bitRate, 0);
    EXPECT_EQ(path.format.container, QString());
    EXPECT_TRUE(path.format.decoder.contains(QLatin1String("FLAC"), Qt::CaseInsensitive));
    EXPECT_FALSE(path.encrypted);
    EXPECT_FALSE(path.renewed);
}

TEST_F(StreamerFormat, twentyFourBitsAreNotTakenForTheRoomThatTheyTake)
{
    makeStreamer(Synced);
    const player::SoundPath path = play(QStringLiteral("/a.flac"),
        encode(song, QStringLiteral("audioconvert ! audio/x-raw,format=S24_32LE ! flacenc")));
    EXPECT_EQ(path.format.bitDepth, 24);
}

TEST_F(StreamerFormat, mp3TellsItsBitRateAndNoBitDepth)
{
    makeStreamer(Synced);
    const player::SoundPath path = play(QStringLiteral("/a.mp3"), mp3(song));
    EXPECT_EQ(path.format.codec, QStringLiteral("MP3"));
    EXPECT_FALSE(path.format.lossless);
    EXPECT_EQ(path.format.sampleRate, 44100);
    EXPECT_EQ(path.format.bitDepth, 0);
    EXPECT_TRUE(waitUntil([this] {
        const auto now = streamer().soundPath();
        return now && now->format.bitRate > 32000 && now->format.bitRate <= 320000;
    }));
}

TEST_F(StreamerFormat, opusLiesInAContainerAndHas48kHz)
{
    makeStreamer(Synced);
    const player::SoundPath path =
        play(QStringLiteral("/a.opus"), opus(Sound::melody(4000, 1, 48000)));
    EXPECT_EQ(path.format.codec, QStringLiteral("Opus"));
    EXPECT_FALSE(path.format.lossless);
    EXPECT_EQ(path.format.sampleRate, 48000);
    EXPECT_TRUE(waitUntil([this] {
        const auto now = streamer().soundPath();
        return now && now->format.container == QLatin1String("Ogg");
    }));
}

TEST_F(StreamerFormat, aacIsNamedAsSuch)
{
    makeStreamer(Synced);
    const player::SoundPath path = play(QStringLiteral("/a.m4a"), m4a(song));
    EXPECT_EQ(path.format.codec, QStringLiteral("AAC"));
    EXPECT_FALSE(path.format.lossless);
    EXPECT_EQ(path.format.sampleRate, 44100);
}

TEST_F(StreamerFormat, theOutputSaysWhatItReallyGets)
{
    makeStreamer(Synced, 48000);
    const player::SoundPath path = play(flacRoles(QStringLiteral("a"), song));
    EXPECT_EQ(path.format.sampleRate, 44100);
    EXPECT_EQ(path.output.sampleRate, 48000);
    EXPECT_EQ(path.output.channels, 2);
    EXPECT_EQ(path.output.bitDepth, 16);
    EXPECT_FALSE(path.outputElement.isEmpty());
}

TEST_F(StreamerFormat, keysOfItsOwnAndARenewedAddressAreTold)
{
    makeStreamer(Synced);
    const TavuRoles item =
        withKeys(flacRoles(QStringLiteral("a"), song), { QStringLiteral("x-key: 1") });
    const player::SoundPath path = play(item, { { player::renewedAttribute(), true } });
    EXPECT_TRUE(path.encrypted);
    EXPECT_TRUE(path.renewed);
}

TEST_F(StreamerFormat, theNextItemTellsItsOwnWhenItTakesOver)
{
    makeStreamer(Unsynced);
    // There is none for a moment when the first item ends before the next one is ready.
    QStringList codecs;
    QObject::connect(&streamer(), &player::GstStreamer::soundPathChanged, &streamer(), [&] {
        const auto path = streamer().soundPath();
        const QString codec = path ? path->format.codec : QString();
        if (!codec.isEmpty() && (codecs.isEmpty() || codecs.last() != codec))
            codecs += codec;
    });
    server.add(QStringLiteral("/b.mp3"), mp3(song));
    streamer().play(1, flacRoles(QStringLiteral("a"), song), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("wanted"), 1));
    streamer().setNextMedia(2, roles(QStringLiteral("/b.mp3"), song.durationMs()), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("wanted"), 2));
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 2));
    EXPECT_EQ(codecs, (QStringList{ QStringLiteral("FLAC"), QStringLiteral("MP3") }));
    EXPECT_FALSE(streamer().soundPath());
}

} // namespace
