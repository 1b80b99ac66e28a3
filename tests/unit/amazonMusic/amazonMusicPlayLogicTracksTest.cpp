#include "playLogicFixture.h"

// Which track plays: the check of each one and the walk past those that do not play.

namespace {

using serviceDocuments::tracks;

class AmazonMusicPlayLogicTracksTest : public PlayLogicFixture
{
protected:
    static Track unplayable(int id, bool autoSkip = true)
    {
        Track track{ QString::number(id) };
        track.uri.clear();
        track.autoSkip = autoSkip;
        return track;
    }
    static Track expired(int id, bool autoSkip = true)
    {
        Track track{ QString::number(id) };
        track.expires = QStringLiteral("2020-01-01T00:00:00.000Z");
        track.autoSkip = autoSkip;
        return track;
    }
    static Track withError(int id, const QString& brief, bool autoSkip = true)
    {
        Track track{ QString::number(id) };
        track.error = brief;
        track.autoSkip = autoSkip;
        return track;
    }
    /// The error of a play of this one track.
    CMError playError(const Track& track)
    {
        offer({ track });
        return expectError(playStation());
    }
    void nextPlays(const QString& from, const QString& to)
    {
        m_logic->next();
        allowReport(from, "STOP", "NEXT");
        allowReport(to, "START", "NEXT");
        EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title ") + to);
        streamer().startPresent();
    }
};

TEST_F(AmazonMusicPlayLogicTracksTest, ATrackWithoutDefinitionFails)
{
    const LogCapture log;
    Track track{ QStringLiteral("0") };
    track.defined = false;
    track.autoSkip = true;
    EXPECT_EQ(playError(track).message(), QStringLiteral("Missing track definition"));
    EXPECT_TRUE(log.has(log4cplus::ERROR_LOG_LEVEL, QStringLiteral("Missing track definition")));
}

TEST_F(AmazonMusicPlayLogicTracksTest, ATrackWithAnErrorFailsWithItsBrief)
{
    const LogCapture log;
    EXPECT_EQ(playError(withError(0, QStringLiteral("Not in %1 your country"), false)).message(),
        QStringLiteral("Error: Not in %1 your country"));
    EXPECT_TRUE(log.has(log4cplus::WARN_LOG_LEVEL,
        QStringLiteral("Cannot play current track: Not in %1 your country")));
    EXPECT_TRUE(
        log.has(log4cplus::ERROR_LOG_LEVEL, QStringLiteral("Error: Not in %1 your country")));
}

TEST_F(AmazonMusicPlayLogicTracksTest, ATrackWithoutUriFails)
{
    const LogCapture log;
    EXPECT_EQ(
        playError(unplayable(0, false)).message(), QStringLiteral("Error: Missing track uri"));
    EXPECT_TRUE(log.has(
        log4cplus::WARN_LOG_LEVEL, QStringLiteral("Cannot play current track: Missing track uri")));
    EXPECT_TRUE(log.has(log4cplus::ERROR_LOG_LEVEL, QStringLiteral("Error: Missing track uri")));
}

TEST_F(AmazonMusicPlayLogicTracksTest, AnExpiredTrackFails)
{
    const LogCapture log;
    EXPECT_EQ(
        playError(expired(0, false)).message(), QStringLiteral("Error: Track already expired"));
    EXPECT_TRUE(log.has(
        log4cplus::WARN_LOG_LEVEL, QStringLiteral("Cannot play current track: Track uri expired")));
    EXPECT_TRUE(
        log.has(log4cplus::ERROR_LOG_LEVEL, QStringLiteral("Error: Track already expired")));
}

TEST_F(AmazonMusicPlayLogicTracksTest, OnlyTheFirstProblemIsTold)
{
    const LogCapture log;
    Track track = withError(0, QStringLiteral("No"), false);
    track.uri.clear();
    track.expires = QStringLiteral("2020-01-01T00:00:00.000Z");
    EXPECT_EQ(playError(track).message(), QStringLiteral("Error: No"));
    track.error.clear();
    EXPECT_EQ(playError(track).message(), QStringLiteral("Error: Missing track uri"));
    EXPECT_EQ(log.countContaining(
                  log4cplus::WARN_LOG_LEVEL, QStringLiteral("Cannot play current track: ")),
        2);
}

TEST_F(AmazonMusicPlayLogicTracksTest, TheTrackThatWasAskedForIsNeverSkipped)
{
    offer({ unplayable(0), Track{ QStringLiteral("1") } });
    expectError(playStation(), QStringLiteral("Error: Missing track uri"));
    EXPECT_TRUE(m_skipped.isEmpty());
}

TEST_F(AmazonMusicPlayLogicTracksTest, NextSkipsTracksThatAllowIt)
{
    const LogCapture log;
    startAlbum({ Track{ QStringLiteral("0") }, unplayable(1), expired(2),
        withError(3, QStringLiteral("No")), Track{ QStringLiteral("4") } });
    nextPlays(QStringLiteral("0"), QStringLiteral("4"));
    EXPECT_EQ(m_skipped,
        (QStringList{
            QStringLiteral("Title 1"), QStringLiteral("Title 2"), QStringLiteral("Title 3") }));
    EXPECT_EQ(log.count(log4cplus::WARN_LOG_LEVEL,
                  QStringLiteral("Cannot play current track, skipping to next track")),
        3);
}

TEST_F(AmazonMusicPlayLogicTracksTest, PreviousSkipsBackwards)
{
    startAlbum({ Track{ QStringLiteral("0") }, unplayable(1), unplayable(2),
                   Track{ QStringLiteral("3") } },
        3);
    m_logic->previous();
    allowReport(QStringLiteral("3"), "STOP", "PREVIOUS");
    allowReport(QStringLiteral("0"), "START", "PREVIOUS");
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 0"));
}

TEST_F(AmazonMusicPlayLogicTracksTest, TheNextTrackAheadSkipsToo)
{
    startAlbum({ Track{ QStringLiteral("0") }, unplayable(1), Track{ QStringLiteral("2") } });
    prepareNext(QStringLiteral("2"));
}

TEST_F(AmazonMusicPlayLogicTracksTest, ATrackThatForbidsSkippingEndsTheWalk)
{
    startAlbum({ Track{ QStringLiteral("0") }, unplayable(1), unplayable(2, false),
        Track{ QStringLiteral("3") } });
    m_logic->next();
    allowReport(QStringLiteral("0"), "STOP", "NEXT");
    ASSERT_EQ(m_failures.size(), 1);
    EXPECT_EQ(m_failures.first().message(), QStringLiteral("Error: Missing track uri"));
    EXPECT_EQ(m_skipped, QStringList{ QStringLiteral("Title 1") });
}

TEST_F(AmazonMusicPlayLogicTracksTest, SkippingEndsWithTheQueue)
{
    startAlbum({ Track{ QStringLiteral("0") }, unplayable(1), unplayable(2) });
    m_logic->next();
    allowReport(QStringLiteral("0"), "STOP", "NEXT");
    ASSERT_EQ(m_failures.size(), 1);
    EXPECT_EQ(m_failures.first().message(), QStringLiteral("End of queue reached"));
}

TEST_F(AmazonMusicPlayLogicTracksTest, SkippingGoesOnceRoundARepeatedQueue)
{
    startAlbum({ unplayable(0), unplayable(1), Track{ QStringLiteral("2") }, unplayable(3) }, 2);
    setPlayMode(TavuPlayerPlayMode::RepeatAll);
    nextPlays(QStringLiteral("2"), QStringLiteral("2"));
    EXPECT_EQ(m_skipped,
        (QStringList{
            QStringLiteral("Title 3"), QStringLiteral("Title 0"), QStringLiteral("Title 1") }));
}

/// The one track that plays expires while it plays, so that nothing of the queue plays any more.
TEST_F(AmazonMusicPlayLogicTracksTest, ARoundWithoutATrackThatPlaysEndsWithTheLastError)
{
    Track soonExpired{ QStringLiteral("2") };
    soonExpired.autoSkip = true;
    soonExpired.expires = QDateTime::currentDateTimeUtc().addMSecs(700).toString(
        QStringLiteral("yyyy-MM-dd'T'HH:mm:ss.zzz'Z'"));
    startAlbum({ unplayable(0), unplayable(1), soonExpired, unplayable(3) }, 2);
    setPlayMode(TavuPlayerPlayMode::RepeatAll);
    const QDateTime start = QDateTime::currentDateTimeUtc();
    ASSERT_TRUE(waitUntil([&] { return start.msecsTo(QDateTime::currentDateTimeUtc()) > 800; }));
    m_logic->next();
    allowReport(QStringLiteral("2"), "STOP", "NEXT");
    ASSERT_EQ(m_failures.size(), 1);
    EXPECT_EQ(m_failures.first().message(), QStringLiteral("Error: Track already expired"));
    EXPECT_EQ(m_skipped,
        (QStringList{
            QStringLiteral("Title 3"), QStringLiteral("Title 0"), QStringLiteral("Title 1") }));
}

TEST_F(AmazonMusicPlayLogicTracksTest, ALongRunOfUnplayableTracksNestsNoCalls)
{
    constexpr int run = 4000;
    QList<Track> list{ Track{ QStringLiteral("0") } };
    for (int id = 1; id <= run; ++id)
        list.append(unplayable(id));
    list.append(Track{ QStringLiteral("last") });
    startAlbum(list);
    nextPlays(QStringLiteral("0"), QStringLiteral("last"));
    EXPECT_EQ(m_skipped.size(), run);
}

TEST_F(AmazonMusicPlayLogicTracksTest, SkippingFetchesTheStationsNextChunk)
{
    startStation({ Track{ QStringLiteral("0") }, unplayable(1) }, 0, QStringLiteral("/chunks/2"));
    m_logic->next();
    allowReport(QStringLiteral("0"), "STOP", "NEXT");
    m_service.expectRequest("GET", "/chunks/2");
    m_service.answer(
        200, serviceDocuments::chunkBody({ unplayable(2), Track{ QStringLiteral("3") } }));
    allowReport(QStringLiteral("3"), "START", "NEXT");
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 3"));
}

TEST_F(AmazonMusicPlayLogicTracksTest, AStationOfUnplayableTracksIsNotWalkedForEver)
{
    m_host.setMaxQueueSize(3);
    startStation(
        { Track{ QStringLiteral("0") }, unplayable(1) }, 0, QStringLiteral("/chunks/next"));
    m_service.always("GET", "/chunks/next", 200,
        serviceDocuments::chunkBody(
            { unplayable(2), unplayable(3) }, QStringLiteral("/chunks/next")));
    m_logic->next();
    allowReport(QStringLiteral("0"), "STOP", "NEXT");
    ASSERT_TRUE(waitUntil([this] { return !m_failures.isEmpty(); }));
    EXPECT_EQ(m_failures.first().message(), QStringLiteral("Error: Missing track uri"));
    EXPECT_LE(m_service.servedCount("GET", "/chunks/next"), 6);
}

TEST_F(AmazonMusicPlayLogicTracksTest, AWalkThatWaitsForAChunkEndsWithItsPlay)
{
    startStation({ Track{ QStringLiteral("0") }, unplayable(1) }, 0, QStringLiteral("/chunks/2"));
    m_logic->next();
    allowReport(QStringLiteral("0"), "STOP", "NEXT");
    const ServiceRequest chunk = m_service.expectRequest("GET", "/chunks/2");
    expectValue(m_logic->stop(TavuPlayLogicStopReason::User));
    allowReport(QStringLiteral("0"), "STOP", "STOP");
    streamer().expect(Kind::Stop);
    chunk.answer(200, serviceDocuments::chunkBody(tracks(1, 2)));
    m_service.expectNoRequest();
    streamer().expectNothing();
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(AmazonMusicPlayLogicTracksTest, StepsBeginAtTheTrackThatPlays)
{
    startAlbum(tracks(4));
    prepareNext(QStringLiteral("1"));
    nextPlays(QStringLiteral("0"), QStringLiteral("1"));
}

TEST_F(AmazonMusicPlayLogicTracksTest, TracksGetTheTokenOfTheirTime)
{
    Track encrypted{ QStringLiteral("1") };
    encrypted.keyHeaders = { { QStringLiteral("X-Key"), QStringLiteral("1") } };
    startAlbum({ Track{ QStringLiteral("0") }, encrypted });
    m_host.setToken(QStringLiteral("renewed"));
    settle();
    streamer().wantNextMedia();
    const QVariantHash crypto = streamer()
                                    .expect(Kind::SetNextMedia)
                                    .roles.mediaData()
                                    .firstResource()
                                    .cryptoData()
                                    .value(QStringLiteral("amazonMusic"))
                                    .toHash();
    EXPECT_EQ(crypto.value(QStringLiteral("token")).toString(), QStringLiteral("renewed"));
}

} // namespace
