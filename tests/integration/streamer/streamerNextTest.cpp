#include "lag.h"
#include "streamertest.h"
#include "watchdog.h"

namespace {

class StreamerNext : public StreamerTest
{
protected:
    /// The first sound, whose end comes when letFirstEnd() is called: it cannot pass meanwhile.
    TavuRoles endlessFirst()
    {
        const QByteArray file = flac(first);
        server.setHandler(QStringLiteral("/first.flac"),
            [this, file](const http::Request&, const http::Responder& responder) {
                http::Response head;
                head.headers.append("Content-Length", QByteArray::number(file.size()));
                responder.begin(head);
                const int most = file.size() * 3 / 4;
                responder.write(file.left(most));
                m_letFirstEnd = [responder, rest = file.mid(most)] {
                    responder.write(rest);
                    responder.end();
                };
            });
        return roles(QStringLiteral("/first.flac"), first.durationMs());
    }

    void letFirstEnd()
    {
        settle(); // Commands are followed before it passes.
        m_letFirstEnd();
    }

    Sound first = Sound::melody(1200, 1);
    Sound second = Sound::melody(600, 2);
    Sound third = Sound::melody(600, 3);

private:
    std::function<void()> m_letFirstEnd;
};

TEST_F(StreamerNext, playsWhatWasPreparedLast)
{
    makeStreamer(Synced);
    streamer().play(1, endlessFirst(), {});
    streamer().setNextMedia(2, flacRoles(QStringLiteral("b"), second), {});
    ASSERT_TRUE(ear().hearsPositionFrom(1, 300));
    EXPECT_EQ(server.askedFor(QStringLiteral("/b.flac")), 1);
    streamer().setNextMedia(3, flacRoles(QStringLiteral("c"), third), {});
    letFirstEnd();
    ASSERT_TRUE(ear().hears(QStringLiteral("started"), 3));
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 3));
    EXPECT_TRUE(ear().story(2).isEmpty());
    EXPECT_TRUE(soundsLike(captured(), first.samples + third.samples));
}

TEST_F(StreamerNext, endsWhenWhatWasPreparedIsTakenBack)
{
    makeStreamer(Synced);
    streamer().play(1, endlessFirst(), {});
    streamer().setNextMedia(2, flacRoles(QStringLiteral("b"), second), {});
    ASSERT_TRUE(ear().hearsPositionFrom(1, 300));
    EXPECT_EQ(server.askedFor(QStringLiteral("/b.flac")), 1);
    streamer().setNoNextMedia();
    letFirstEnd();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 1));
    EXPECT_TRUE(soundsLike(captured(), first.samples));
}

// At any time, also while the last samples sound.
TEST_F(StreamerNext, replacesTheNextItemAtTheVeryEnd)
{
    makeStreamer(Synced);
    const TavuRoles a = flacRoles(QStringLiteral("a"), first);
    const TavuRoles b = flacRoles(QStringLiteral("b"), second);
    const TavuRoles c = flacRoles(QStringLiteral("c"), third);
    for (const int early : { 300, 100, 30, 0 }) {
        const int before = captured().size();
        streamer().play(1, a, {});
        streamer().setNextMedia(2, b, {});
        ASSERT_TRUE(waitUntil(
            [&] { return captured().size() - before >= (1200 - early) * 44100 / 1000 * 4; }));
        ear().forget();
        streamer().setNextMedia(3, c, {});
        ASSERT_TRUE(ear().hears(QStringLiteral("started"), 3)) << early;
        streamer().setNoNextMedia();
        ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 3)) << early;
        EXPECT_TRUE(soundsLike(captured().right(third.samples.size()), third.samples)) << early;
        streamer().stop();
    }
}

TEST_F(StreamerNext, isWantedOnceAndWellBeforeTheEnd)
{
    makeStreamer(Synced);
    const Sound song = Sound::melody(24000, 1);
    const Lag lag;
    streamer().play(1, startingAt(flacRoles(QStringLiteral("a"), song), 3000), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("wanted"), 1));
    EXPECT_GE(ear().position(1), 3900 - lag.worstMs());
    EXPECT_LE(ear().position(1), 12000 + lag.sumMs());
    streamer().seekTime(23700);
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 1));
    EXPECT_EQ(ear().count(QStringLiteral("wanted"), 1), 1);
}

TEST_F(StreamerNext, followsWithAGapWhenTheAnswerComesTooLate)
{
    streamer().play(1, flacRoles(QStringLiteral("a"), first), {});
    ASSERT_TRUE(waitUntil([&] { return captured().size() == first.samples.size(); }));
    EXPECT_FALSE(ear().hears(QStringLiteral("ended"), 1, 200)) << "somebody is thinking";
    streamer().setNextMedia(2, flacRoles(QStringLiteral("b"), second), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("started"), 2));
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 2));
    EXPECT_TRUE(soundsLike(captured(), first.samples + second.samples));
}

// The encrypted items of a service are handed over with this attribute.
TEST_F(StreamerNext, beginsAStartPausedItemByItself)
{
    const QVariantHash startPaused{ { QStringLiteral("startPaused"), true } };
    streamer().play(1, flacRoles(QStringLiteral("a"), first), startPaused);
    streamer().setNextMedia(2, flacRoles(QStringLiteral("b"), second), startPaused);
    ASSERT_TRUE(ear().hears(QStringLiteral("started"), 2));
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 2));
    EXPECT_TRUE(soundsLike(captured(), first.samples + second.samples));
}

TEST_F(StreamerNext, waitsForASlowNextItemAndLosesNothingOfIt)
{
    makeStreamer(Synced);
    const QByteArray file = flac(second);
    bool isReady = false;
    QVector<http::Responder> held;
    server.setHandler(
        QStringLiteral("/b.flac"), [&](const http::Request&, const http::Responder& responder) {
            if (isReady)
                return responder.sendBytes(file, {});
            held.append(responder);
        });
    streamer().play(1, flacRoles(QStringLiteral("a"), first), {});
    streamer().setNextMedia(2, roles(QStringLiteral("/b.flac"), 600), {});
    ASSERT_TRUE(ear().hearsState(2, buffering))
        << ear().story(1).join(QLatin1Char(';')).toStdString() << ear().position(1);
    EXPECT_FALSE(waitUntil([&] { return captured().size() > first.samples.size(); }, 300));
    isReady = true;
    for (const http::Responder& responder : held)
        responder.sendBytes(file, {});
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 2));
    EXPECT_TRUE(soundsLike(captured(), first.samples + second.samples));
    EXPECT_EQ(ear().story(2).first(), QStringLiteral("started"));
}

TEST_F(StreamerNext, sendsEachItemItsOwnKeyHeaders)
{
    SoundServer::Manner keyed;
    keyed.requiredHeader = "X-Key: one";
    server.add(QStringLiteral("/a.flac"), flac(first), keyed);
    keyed.requiredHeader = "X-Key: two";
    server.add(QStringLiteral("/b.flac"), flac(second), keyed);
    const TavuRoles a = withKeys(roles(QStringLiteral("/a.flac"), 1200),
        { QStringLiteral("X-Key: one"), QStringLiteral("X-Other: 1") });
    const TavuRoles b =
        withKeys(roles(QStringLiteral("/b.flac"), 600), { QStringLiteral("X-Key: two") });
    streamer().play(1, a, {});
    streamer().setNextMedia(2, b, {});
    ASSERT_TRUE(ear().hears(QStringLiteral("started"), 2));
    streamer().setNextMedia(3, flacRoles(QStringLiteral("c"), third), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("started"), 3));
    const auto requests = server.requests(QStringLiteral("/b.flac"));
    EXPECT_FALSE(requests.first().headers.contains("X-Other"));
    EXPECT_FALSE(server.requests(QStringLiteral("/c.flac")).first().headers.contains("X-Key"));
    EXPECT_FALSE(requests.first().headers.contains("token"));
}

TEST_F(StreamerNext, keepsTheConnectionForTheNextItem)
{
    streamer().play(1, flacRoles(QStringLiteral("a"), first), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("wanted"), 1));
    streamer().setNextMedia(2, flacRoles(QStringLiteral("b"), second), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("started"), 2));
    ASSERT_EQ(server.asked().size(), 2);
    EXPECT_EQ(server.asked().at(0).peerPort, server.asked().at(1).peerPort);
}

TEST_F(StreamerNext, findsAConnectionAlthoughThePresentItemOccupiesItsOwn)
{
    player::HttpOptions options;
    options.aheadBytesAtLeast = 16384;
    options.aheadBytesAtMost = 16384;
    makeStreamer(Synced, 44100, options);
    streamer().play(1, flacRoles(QStringLiteral("a"), Sound::melody(10000, 1)), {});
    ASSERT_TRUE(waitUntil([this] { return server.asked().size() == 2; }));
    EXPECT_EQ(server.asked().at(1).method, QByteArray("HEAD"));
    streamer().play(2, flacRoles(QStringLiteral("b"), second), {});
    ASSERT_TRUE(waitUntil([this] { return server.askedFor(QStringLiteral("/b.flac")) > 0; }));
    EXPECT_EQ(server.asked().at(2).peerPort, server.asked().at(1).peerPort);
    EXPECT_NE(server.asked().at(2).peerPort, server.asked().at(0).peerPort);
}

TEST_F(StreamerNext, aFailedPreparedItemIsToldAtOnceAndThePresentOnePlaysOn)
{
    makeStreamer(Synced);
    streamer().play(1, endlessFirst(), {});
    ASSERT_TRUE(ear().hearsState(1, playing));
    streamer().setNextMedia(2, roles(QStringLiteral("/none.flac"), 600), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("failed"), 2));
    EXPECT_EQ(ear().error(2).__value(QStringLiteral("httpCode")), 404);
    letFirstEnd();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 1));
    EXPECT_TRUE(soundsLike(captured(), first.samples));
}

TEST_F(StreamerNext, anotherItemCanBePreparedAfterAFailedOne)
{
    makeStreamer(Synced);
    streamer().play(1, endlessFirst(), {});
    streamer().setNextMedia(2, roles(QStringLiteral("/none.flac"), 600), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("failed"), 2));
    streamer().setNextMedia(3, flacRoles(QStringLiteral("c"), third), {});
    letFirstEnd();
    ASSERT_TRUE(ear().hears(QStringLiteral("started"), 3));
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 3));
    EXPECT_TRUE(soundsLike(captured(), first.samples + third.samples));
}

} // namespace
