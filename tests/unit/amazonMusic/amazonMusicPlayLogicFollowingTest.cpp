#include "playLogicFixture.h"

// The automatic change of tracks.

namespace {

using serviceDocuments::tracks;

class AmazonMusicPlayLogicFollowingTest : public PlayLogicFixture
{
};

TEST_F(AmazonMusicPlayLogicFollowingTest, TheNextTrackIsHandedOverAheadAndReportedWhenItStarts)
{
    startAlbum(tracks(3));
    prepareNext(QStringLiteral("1"));
    m_service.expectNoRequest();
    streamer().startNext();
    const ServiceRequest stop = expectReport(QStringLiteral("0"), "STOP", "TRACK_END");
    EXPECT_FALSE(isDirected(stop));
    EXPECT_EQ(positionOf(stop), 180000);
    const ServiceRequest start = expectReport(QStringLiteral("1"), "START", "AUTO_NEXT");
    EXPECT_FALSE(isDirected(start));
    EXPECT_EQ(positionOf(start), 0);
    EXPECT_EQ(playing(), QStringLiteral("Title 1"));
    prepareNext(QStringLiteral("2"));
}

TEST_F(AmazonMusicPlayLogicFollowingTest, AnEncryptedNextTrackStartsPaused)
{
    Track encrypted{ QStringLiteral("1") };
    encrypted.keyHeaders = { { QStringLiteral("X-Key"), QStringLiteral("1") } };
    startAlbum({ Track{ QStringLiteral("0") }, encrypted, Track{ QStringLiteral("2") } });
    streamer().wantNextMedia();
    EXPECT_EQ(streamer().expect(Kind::SetNextMedia).attributes,
        (QVariantHash{ { TavuStreamerAttributesStartPaused(), true } }));
    streamer().startNext();
    allowReport(QStringLiteral("0"), "STOP", "TRACK_END");
    allowReport(QStringLiteral("1"), "START", "AUTO_NEXT");
    streamer().wantNextMedia();
    EXPECT_TRUE(streamer().expect(Kind::SetNextMedia).attributes.isEmpty());
}

TEST_F(AmazonMusicPlayLogicFollowingTest, ATracksEndReplaysARepeatedTrack)
{
    startAlbum(tracks(2));
    setPlayMode(TavuPlayerPlayMode::RepeatOne);
    prepareNext(QStringLiteral("0"));
    streamer().startNext();
    allowReport(QStringLiteral("0"), "STOP", "TRACK_END");
    allowReport(QStringLiteral("0"), "START", "AUTO_NEXT");
    setPlayMode(TavuPlayerPlayMode::ShuffleRepeatOne);
    prepareNext(QStringLiteral("0"));
}

TEST_F(AmazonMusicPlayLogicFollowingTest, ATracksEndWrapsWhenAllRepeats)
{
    startAlbum(tracks(2), 1);
    setPlayMode(TavuPlayerPlayMode::RepeatAll);
    prepareNext(QStringLiteral("0"));
}

TEST_F(AmazonMusicPlayLogicFollowingTest, AnAlbumEndsWithItsLastTrack)
{
    startAlbum(tracks(2), 1);
    streamer().wantNextMedia();
    streamer().expect(Kind::SetNoNextMedia);
    streamer().tellEnded();
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Idle);
    EXPECT_TRUE(m_failures.isEmpty());
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicPlayLogicFollowingTest, AStationFetchesItsNextChunkForTheNextTrack)
{
    startStation(tracks(2), 1, QStringLiteral("/chunks/2"));
    streamer().wantNextMedia();
    m_service.expectRequest("GET", "/chunks/2");
    m_service.answer(200, serviceDocuments::chunkBody(tracks(2, 2)));
    EXPECT_EQ(streamer().expect(Kind::SetNextMedia).roles.title(), QStringLiteral("Title 2"));
}

TEST_F(AmazonMusicPlayLogicFollowingTest, APlayCommandDropsWhatWasToFollow)
{
    startAlbum(tracks(4), 1);
    prepareNext(QStringLiteral("2"));
    m_logic->next();
    allowReport(QStringLiteral("1"), "STOP", "NEXT");
    allowReport(QStringLiteral("2"), "START", "NEXT");
    streamer().expect(Kind::Play);
    streamer().startPresent();
    m_service.expectNoRequest(); // No automatic change was reported.
    EXPECT_EQ(playing(), QStringLiteral("Title 2"));
}

TEST_F(AmazonMusicPlayLogicFollowingTest, ASkipForgetsTheTrackThatWasHandedOver)
{
    startAlbum(tracks(4), 1);
    prepareNext(QStringLiteral("2"));
    m_logic->next();
    allowReport(QStringLiteral("1"), "STOP", "NEXT");
    const ServiceRequest report = expectReport(QStringLiteral("2"), "START", "NEXT");
    streamer().startNext(); // The track ends while the report is under way.
    m_service.expectNoRequest();
    report.answer(200);
    streamer().expect(Kind::Play);
}

TEST_F(AmazonMusicPlayLogicFollowingTest, APlayForgetsTheTrackThatWasHandedOver)
{
    startAlbum(tracks(3));
    prepareNext(QStringLiteral("1"));
    const Reply reply = playRow(TavuRolesAudioType::Station, QStringLiteral("/second#p"));
    m_service.expectRequest("GET", "/second");
    streamer().startNext(); // The track ends while the play is under way.
    m_service.expectNoRequest();

    const LogCapture log;
    m_logic->stop(TavuPlayLogicStopReason::User);
    streamer().expect(Kind::Stop);
    expectCancelled(reply);
    EXPECT_TRUE(
        log.has(log4cplus::WARN_LOG_LEVEL, QStringLiteral("userReportStop empty report url")));
}

TEST_F(AmazonMusicPlayLogicFollowingTest, ANextTrackThatComesAfterAPlayCommandIsNotHandedOver)
{
    startStation(tracks(2), 1, QStringLiteral("/chunks/2"));
    streamer().wantNextMedia();
    const ServiceRequest chunk = m_service.expectRequest("GET", "/chunks/2");
    m_logic->previous();
    allowReport(QStringLiteral("1"), "STOP", "PREVIOUS");
    allowReport(QStringLiteral("0"), "START", "PREVIOUS");
    streamer().expect(Kind::Play);
    chunk.answer(200, serviceDocuments::chunkBody(tracks(2, 2)));
    m_service.expectNoRequest();
    streamer().expectNothing();
    streamer().startPresent();
    EXPECT_EQ(playing(), QStringLiteral("Title 0"));
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicPlayLogicFollowingTest, ARefusedAutomaticChangeStopsEvenWithAnOffer)
{
    const LogCapture log;
    startAlbum(tracks(2));
    prepareNext(QStringLiteral("1"));
    streamer().startNext();
    allowReport(QStringLiteral("0"), "STOP", "TRACK_END");
    expectReport(QStringLiteral("1"), "START", "AUTO_NEXT")
        .answer(409, refusal({ resumeOption(QStringLiteral("/resume")) }));
    streamer().expect(Kind::Stop);
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Idle);
    EXPECT_EQ(log.countContaining(log4cplus::WARN_LOG_LEVEL,
                  QStringLiteral("Do not overtake playback on auto next, stopping, error: {")),
        1);
    EXPECT_EQ(log.texts(log4cplus::TRACE_LOG_LEVEL)
                  .filter(QStringLiteral("autoNextReportFinished("))
                  .filter(QStringLiteral("): Report error: 1"))
                  .size(),
        1);
    ASSERT_EQ(m_failures.size(), 1);
    EXPECT_EQ(
        m_failures.first().message(), QStringLiteral("Reporting failed: Another device plays %1"));
    EXPECT_EQ(screenRows(m_failures.first().actionReply(), TavuRoles::Title()).size(), 2);
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicPlayLogicFollowingTest, PlaybackWaitsForAChunkThatComesAfterTheTracksEnd)
{
    startStation(tracks(1), 0, QStringLiteral("/chunks/2"));
    streamer().wantNextMedia();
    const ServiceRequest chunk = m_service.expectRequest("GET", "/chunks/2");
    streamer().tellEnded();
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Buffering);
    chunk.answer(200, serviceDocuments::chunkBody(tracks(1, 1)));
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 1"));
    streamer().startPresent();
    allowReport(QStringLiteral("0"), "STOP", "TRACK_END");
    allowReport(QStringLiteral("1"), "START", "AUTO_NEXT");
}

TEST_F(AmazonMusicPlayLogicFollowingTest, PlaybackThatWaitsForAChunkEndsWhenThereIsNone)
{
    startStation(tracks(1), 0, QStringLiteral("/chunks/2"));
    streamer().wantNextMedia();
    const ServiceRequest chunk = m_service.expectRequest("GET", "/chunks/2");
    streamer().tellEnded();
    chunk.answer(200, serviceDocuments::chunkBody({}));
    ASSERT_TRUE(waitUntil([this] { return m_logic->state() == TavuPlayLogicState::Idle; }));
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicFollowingTest, AStopWhilePlaybackWaitsForAChunkEndsIt)
{
    startStation(tracks(1), 0, QStringLiteral("/chunks/2"));
    streamer().wantNextMedia();
    const ServiceRequest chunk = m_service.expectRequest("GET", "/chunks/2");
    streamer().tellEnded();
    expectValue(m_logic->stop(TavuPlayLogicStopReason::User));
    streamer().expect(Kind::Stop);
    allowReport(QStringLiteral("0"), "STOP", "STOP");
    chunk.answer(200, serviceDocuments::chunkBody(tracks(1, 1)));
    m_service.expectNoRequest();
    streamer().expectNothing();
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Idle);
}

TEST_F(AmazonMusicPlayLogicFollowingTest, APlayWhilePlaybackWaitsForAChunkReplacesIt)
{
    startStation(tracks(1), 0, QStringLiteral("/chunks/2"));
    streamer().wantNextMedia();
    const ServiceRequest chunk = m_service.expectRequest("GET", "/chunks/2");
    streamer().tellEnded();
    offer(tracks(1, 50));
    finishStart(playStation(), Track{ QStringLiteral("50") });
    chunk.answer(200, serviceDocuments::chunkBody(tracks(1, 1)));
    m_service.expectNoRequest();
    streamer().expectNothing();
    EXPECT_EQ(playing(), QStringLiteral("Title 50"));
}

} // namespace
