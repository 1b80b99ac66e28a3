// What was fetched once is not fetched again.
#include "streamertest.h"

#include "watchdog.h"

namespace {

class StreamerAgain : public StreamerTest
{
protected:
    /// How often it was asked for sound.
    int asked() const
    {
        int count = 0;
        for (const SoundServer::Asked& request : server.asked()) {
            if (request.method == "GET")
                ++count;
        }
        return count;
    }

    void playToEnd(quint64 id)
    {
        streamer().setNoNextMedia();
        ASSERT_TRUE(ear().hears(QStringLiteral("ended"), id));
    }

    /// The item at another address, from where it is paused.
    TavuRoles renewed(const QString& address, qint64 durationMs)
    {
        return startingAt(roles(address, durationMs), ear().position(1));
    }

    void pauseAt(qint64 position)
    {
        ASSERT_TRUE(ear().hearsPositionFrom(1, position));
        streamer().pause();
        ASSERT_TRUE(ear().hearsState(1, paused));
    }

    /// Larger than what is fetched ahead.
    const Sound song = Sound::melody(6000, 1);
    const QString path = QStringLiteral("/a.flac");
    const QString other = QStringLiteral("/other.flac");

    static player::HttpOptions little()
    {
        player::HttpOptions options;
        options.aheadBytesAtMost = options.aheadBytesAtLeast = 128 * 1024;
        return options;
    }
};

// Ogg is sought by looking about in it.
TEST_F(StreamerAgain, aSeekInOggAsksForFewPlaces)
{
    makeStreamer(Unsynced, 48000);
    const Sound music = Sound::melody(60000, 1, 48000);
    const QString at = QStringLiteral("/a.opus");
    const QByteArray file = opus(music);
    server.add(at, file);
    streamer().play(1, startingAt(roles(at, music.durationMs()), 50000), {});
    playToEnd(1);
    EXPECT_NEAR(captured().size() / 4, 10 * 48000, 1500);
    EXPECT_LE(asked(), 6);
}

TEST_F(StreamerAgain, anotherAddressInAPauseLosesNoSampleAndNeedsNoRequest)
{
    makeStreamer(Synced, 44100, little());
    const QByteArray file = flac(song);
    server.add(path, file);
    server.add(other, file);
    streamer().play(1, roles(path, song.durationMs()), {});
    pauseAt(500);
    ear().forget();
    const int before = asked();
    streamer().play(1, renewed(other, song.durationMs()), {});
    ASSERT_TRUE(ear().hearsState(1, playing));
    EXPECT_EQ(asked(), before);
    playToEnd(1);
    EXPECT_TRUE(soundsLike(captured(), song.samples));
    EXPECT_EQ(ear().count(QStringLiteral("started"), 1), 0) << "it was the same playback";
}

TEST_F(StreamerAgain, whatIsStillToComeIsAskedForAtTheOtherAddress)
{
    player::HttpOptions patient = little();
    patient.stallTimeoutMs = patient.giveUpMs = 60000;
    makeStreamer(Synced, 44100, patient);
    const QByteArray file = flac(song);
    std::shared_ptr<http::Responder> first;
    server.setHandler(path, [&](const http::Request& request, const http::Responder& responder) {
        if (request.method == "HEAD" || request.headers.contains("Range"))
            return responder.send(http::Response::text(403, "expired"));
        first = std::make_shared<http::Responder>(responder);
        http::Response head;
        head.headers.append("Content-Length", QByteArray::number(file.size()));
        head.headers.append("Accept-Ranges", "bytes");
        first->begin(head);
        first->write(file.left(file.size() / 2));
    });
    server.add(other, file);
    streamer().play(1, roles(path, song.durationMs()), {});
    pauseAt(500);
    streamer().play(1, renewed(other, song.durationMs()), {});
    first->reset();
    playToEnd(1);
    EXPECT_TRUE(soundsLike(captured(), song.samples));
    EXPECT_GE(server.askedFor(other), 1);
    for (const SoundServer::Asked& request : server.requests(path))
        EXPECT_TRUE(request.range.isEmpty()) << request.range.toStdString();
}

TEST_F(StreamerAgain, aRefusedItemGoesOnElsewhereWithWhatHadCome)
{
    const QByteArray file = flac(song);
    const int half = file.size() / 2;
    server.setHandler(
        path, [file, half](const http::Request& request, const http::Responder& responder) {
            if (request.headers.contains("Range"))
                return responder.send(http::Response::text(403, "expired"));
            http::Shaping cut;
            cut.stopAfterBytes = half;
            responder.shape(cut);
            responder.sendBytes(file, {});
        });
    server.add(other, file);
    streamer().play(1, roles(path, song.durationMs()), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("failed"), 1));
    EXPECT_EQ(server.askedFor(path), 2) << "the refusal is believed";
    const qint64 where = ear().position(1);
    streamer().play(1, startingAt(roles(other, song.durationMs()), where), {});
    playToEnd(1);
    const QByteArray expected = song.from(static_cast<int>(44100 * where / 1000));
    EXPECT_TRUE(soundsLike(captured().right(expected.size()), expected));
    ASSERT_GE(server.askedFor(other), 1);
    EXPECT_EQ(server.requests(other).first().range, "bytes=" + QByteArray::number(half) + '-');
}

TEST_F(StreamerAgain, anotherAddressThatLeadsToAnotherFileIsPlayedFromThere)
{
    makeStreamer(Synced, 44100, little());
    server.add(path, flac(song));
    server.add(other, encode(song, QStringLiteral("flacenc quality=0")));
    streamer().play(1, roles(path, song.durationMs()), {});
    pauseAt(300);
    streamer().play(1, renewed(other, song.durationMs()), {});
    ASSERT_TRUE(ear().hearsState(1, playing));
    streamer().seekTime(5000);
    playToEnd(1);
    const QByteArray expected = song.from(5 * 44100);
    EXPECT_TRUE(soundsLike(captured().right(expected.size()), expected));
    EXPECT_EQ(ear().count(QStringLiteral("failed"), 1), 0);
}

} // namespace
