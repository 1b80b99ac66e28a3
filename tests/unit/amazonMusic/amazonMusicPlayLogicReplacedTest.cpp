#include "playLogicFixture.h"

// Plays that are replaced, fail or end while they are under way.

namespace {

using serviceDocuments::tracks;

class AmazonMusicPlayLogicReplacedTest : public PlayLogicFixture
{
};

TEST_F(AmazonMusicPlayLogicReplacedTest, ASecondPlayReplacesTheFirstWhoseChunkIsUnderWay)
{
    m_service.always(
        "GET", "/album", 200, serviceDocuments::playableBody(QStringLiteral("/chunk"), 0));
    const Reply first = playStation();
    const ServiceRequest chunk = m_service.expectRequest("GET", "/chunk");
    m_service.always(
        "GET", "/second", 200, serviceDocuments::playableBody(QStringLiteral("/chunks/second"), 0));
    m_service.always("GET", "/chunks/second", 200, serviceDocuments::chunkBody(tracks(1, 50)));
    const Reply second = playRow(TavuRolesAudioType::Station, QStringLiteral("/second#p"));
    expectCancelled(first);
    allowReport(QStringLiteral("50"), "START", "TRACK_SELECTED");
    expectValue(second);
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 50"));

    chunk.answer(200, serviceDocuments::chunkBody(tracks(3)));
    m_service.expectNoRequest();
    streamer().expectNothing();
    streamer().startPresent();
    streamer().wantNextMedia();
    m_service.expectRequest("GET", "/"); // The second play's empty pointer.
}

TEST_F(AmazonMusicPlayLogicReplacedTest, ATrackThatEndsWhileAPlayFetchesItsChunkDoesNotEndThePlay)
{
    startAlbum(tracks(1));
    m_service.always(
        "GET", "/album", 200, serviceDocuments::playableBody(QStringLiteral("/chunks/2"), 0));
    const Reply reply = playAlbum();
    const ServiceRequest chunk = m_service.expectRequest("GET", "/chunks/2");
    streamer().wantNextMedia();
    streamer().expect(Kind::SetNoNextMedia);
    streamer().tellEnded();
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Buffering);
    chunk.answer(200, serviceDocuments::chunkBody(tracks(1, 50)));
    finishStart(reply, Track{ QStringLiteral("50") });
    EXPECT_TRUE(m_logic->data().playModesSupported().repeatAll());
    streamer().tellEnded();
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Idle);
}

TEST_F(AmazonMusicPlayLogicReplacedTest, ALateReportOfTheFirstPlayStartsNothing)
{
    offer(tracks(1));
    const Reply first = playStation();
    const ServiceRequest late = expectReport(QStringLiteral("0"), "START", "TRACK_SELECTED");
    m_service.always(
        "GET", "/second", 200, serviceDocuments::playableBody(QStringLiteral("/chunks/second"), 0));
    m_service.always("GET", "/chunks/second", 200, serviceDocuments::chunkBody(tracks(1, 50)));
    const Reply second = playRow(TavuRolesAudioType::Station, QStringLiteral("/second#p"));
    allowReport(QStringLiteral("50"), "START", "TRACK_SELECTED");
    expectValue(second);
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 50"));
    late.answer(200);
    expectCancelled(first);
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicReplacedTest, ALateRefusalOfTheFirstPlayStopsNothing)
{
    startAlbum(tracks(2));
    prepareNext(QStringLiteral("1"));
    streamer().startNext();
    allowReport(QStringLiteral("0"), "STOP", "TRACK_END");
    const ServiceRequest late = expectReport(QStringLiteral("1"), "START", "AUTO_NEXT");
    offer(tracks(1, 50));
    playStation();
    allowReport(QStringLiteral("50"), "START", "TRACK_SELECTED");
    streamer().expect(Kind::Play);
    late.answer(409, refusal());
    m_service.expectNoRequest();
    streamer().expectNothing();
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(AmazonMusicPlayLogicReplacedTest, WhoHearsThatAPlayWasReplacedMayPlayAgain)
{
    offer(tracks(1));
    m_service.always(
        "GET", "/album", 200, serviceDocuments::playableBody(QStringLiteral("/chunk"), 0));
    const Reply first = playStation();
    Reply third;
    first.addWatcher([&](const CMVoidReply&) { third = playStation(); });
    const Reply second = playStation();
    expectCancelled(second);
    allowReport(QStringLiteral("0"), "START", "TRACK_SELECTED");
    expectValue(third);
    streamer().expect(Kind::Play);
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicReplacedTest, AfterAFailedPlayTheTrackBeforeStillEnds)
{
    startStation(tracks(1), 0, QStringLiteral("/chunks/2"));
    streamer().wantNextMedia();
    m_service.expectRequest("GET", "/chunks/2");
    m_service.always("GET", "/album", 404);
    expectError(playStation());
    streamer().expect(Kind::SetNoNextMedia);
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Playing);
    streamer().tellEnded();
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Idle);
}

TEST_F(AmazonMusicPlayLogicReplacedTest, ItsEndDisarmsWhatIsUnderWay)
{
    offer(tracks(1));
    const Reply reply = playStation();
    const ServiceRequest report = expectReport(QStringLiteral("0"), "START", "TRACK_SELECTED");
    delete m_logic;
    report.answer(200);
    m_service.expectNoRequest();
    streamer().expectNothing();
    EXPECT_FALSE(reply.isFinished());
}

} // namespace
