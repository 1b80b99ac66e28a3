#include "playLogicFixture.h"

// Pause, seek and stop, and commands when nothing plays.

namespace {

using serviceDocuments::tracks;

class AmazonMusicPlayLogicCommandsTest : public PlayLogicFixture
{
};

constexpr qint64 slack = 2000;

TEST_F(AmazonMusicPlayLogicCommandsTest, APauseIsReportedAfterIt)
{
    startAlbum(tracks(1));
    streamer().tellPosition(20000);
    pause();
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Paused);
    const ServiceRequest stop = expectReport(QStringLiteral("0"), "STOP", "PAUSE");
    EXPECT_EQ(positionOf(stop), m_logic->playTime());
    EXPECT_TRUE(isDirected(stop));
}

TEST_F(AmazonMusicPlayLogicCommandsTest, SeekingReportsBothEnds)
{
    startAlbum(tracks(1));
    streamer().tellPosition(20000);
    expectValue(m_logic->seekTime(90000));
    EXPECT_EQ(streamer().expect(Kind::SeekTime).position, 90000);
    const ServiceRequest stop = expectReport(QStringLiteral("0"), "STOP", "SEEK");
    EXPECT_TRUE(isDirected(stop));
    EXPECT_GE(positionOf(stop), 20000);
    EXPECT_LE(positionOf(stop), 20000 + slack);
    const ServiceRequest start = expectReport(QStringLiteral("0"), "START", "SEEK");
    EXPECT_TRUE(isDirected(start));
    EXPECT_GE(positionOf(start), 90000);
    EXPECT_LE(positionOf(start), 90000 + slack);
}

TEST_F(AmazonMusicPlayLogicCommandsTest, SeekingWhilePausedReportsNothing)
{
    startAlbum(tracks(1));
    pause();
    allowReport(QStringLiteral("0"), "STOP", "PAUSE");
    expectValue(m_logic->seekTime(90000));
    streamer().expect(Kind::SeekTime);
    m_service.expectNoRequest();
    EXPECT_EQ(m_logic->playTime(), 90000);
}

TEST_F(AmazonMusicPlayLogicCommandsTest, SeekingWhileBufferingReportsBothEnds)
{
    startAlbum(tracks(1));
    streamer().tellState(TavuPlayLogicState::Buffering);
    expectValue(m_logic->seekTime(90000));
    streamer().expect(Kind::SeekTime);
    allowReport(QStringLiteral("0"), "STOP", "SEEK");
    EXPECT_EQ(positionOf(expectReport(QStringLiteral("0"), "START", "SEEK")), 90000);
}

TEST_F(AmazonMusicPlayLogicCommandsTest, ASeekIsReportedWhereItLed)
{
    startAlbum(tracks(1));
    streamer().tellState(TavuPlayLogicState::Buffering);
    expectValue(m_logic->seekTime(999999999));
    streamer().expect(Kind::SeekTime);
    allowReport(QStringLiteral("0"), "STOP", "SEEK");
    EXPECT_EQ(positionOf(expectReport(QStringLiteral("0"), "START", "SEEK")), 180000);
}

TEST_F(AmazonMusicPlayLogicCommandsTest, ARefusedSeekStopsUnlessItIsOvertaken)
{
    const LogCapture log;
    startAlbum(tracks(1));
    m_logic->seekTime(1000);
    streamer().expect(Kind::SeekTime);
    allowReport(QStringLiteral("0"), "STOP", "SEEK");
    expectReport(QStringLiteral("0"), "START", "SEEK")
        .answer(409, refusal({ resumeOption(QString()) }));
    m_service.expectNoRequest();
    streamer().expectNothing();

    m_logic->seekTime(2000);
    streamer().expect(Kind::SeekTime);
    allowReport(QStringLiteral("0"), "STOP", "SEEK");
    expectReport(QStringLiteral("0"), "START", "SEEK").answer(409, refusal());
    streamer().expect(Kind::Stop);
    EXPECT_EQ(log.countContaining(log4cplus::WARN_LOG_LEVEL,
                  QStringLiteral("Cannot overtake playback, stoping: {")),
        1);
    EXPECT_EQ(m_failures.size(), 1);
}

TEST_F(AmazonMusicPlayLogicCommandsTest, StopReportsAndEnds)
{
    startAlbum(tracks(2));
    streamer().tellPosition(10000);
    const Reply reply = m_logic->stop(TavuPlayLogicStopReason::User);
    ASSERT_TRUE(reply.isFinished()); // Before the call returns.
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Idle);
    streamer().expect(Kind::Stop);
    const ServiceRequest stop = expectReport(QStringLiteral("0"), "STOP", "STOP");
    EXPECT_TRUE(isDirected(stop));
    EXPECT_GE(positionOf(stop), 10000);
    EXPECT_LE(positionOf(stop), 10000 + slack);
}

TEST_F(AmazonMusicPlayLogicCommandsTest, TheStopReportLeavesBeforeALogout)
{
    startAlbum(tracks(1));
    m_logic->stop(TavuPlayLogicStopReason::Service);
    m_connect->setLoggedIn(false);
    streamer().expect(Kind::Stop);
    allowReport(QStringLiteral("0"), "STOP", "STOP");
}

TEST_F(AmazonMusicPlayLogicCommandsTest, StopEndsAPlayThatWaitsForItsChunk)
{
    m_service.always(
        "GET", "/album", 200, serviceDocuments::playableBody(QStringLiteral("/chunk"), 0));
    const Reply reply = playStation();
    const ServiceRequest chunk = m_service.expectRequest("GET", "/chunk");
    expectValue(m_logic->stop(TavuPlayLogicStopReason::User));
    expectCancelled(reply);
    chunk.answer(200, serviceDocuments::chunkBody(tracks(3)));
    m_service.expectNoRequest();
    streamer().expect(Kind::Stop);
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicCommandsTest, StopEndsAPlayThatWaitsForItsReport)
{
    offer(tracks(1));
    const Reply reply = playStation();
    const ServiceRequest report = expectReport(QStringLiteral("0"), "START", "TRACK_SELECTED");
    expectValue(m_logic->stop(TavuPlayLogicStopReason::User));
    expectCancelled(reply);
    report.answer(200);
    m_service.expectNoRequest();
    streamer().expect(Kind::Stop);
    streamer().expectNothing();
}

// Without a queue: before the first play and after the end.

TEST_F(AmazonMusicPlayLogicCommandsTest, BeforeTheFirstPlayCommandsEndInNothingOrAnError)
{
    const LogCapture log;
    expectValue(m_logic->stop(TavuPlayLogicStopReason::User));
    streamer().expect(Kind::Stop);
    expectValue(m_logic->next());
    expectValue(m_logic->previous());
    EXPECT_EQ(m_failures.size(), 2);
    for (const CMError& error : m_failures)
        EXPECT_EQ(error.message(), QStringLiteral("Nothing is playing"));
    expectError(m_logic->pause());
    expectError(m_logic->seekTime(1000));
    expectValue(m_logic->like());
    setPlayMode(TavuPlayerPlayMode::ShuffleRepeatAll);
    streamer().expectNothing();
    m_service.expectNoRequest();
    EXPECT_EQ(
        log.count(log4cplus::WARN_LOG_LEVEL, QStringLiteral("userReportStop empty report url")), 5);
}

TEST_F(AmazonMusicPlayLogicCommandsTest, AfterTheEndCommandsEndInNothingOrAnError)
{
    startAlbum(tracks(2));
    streamer().tellEnded();
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Idle);
    expectValue(m_logic->next());
    allowReport(QStringLiteral("0"), "STOP", "NEXT");
    expectValue(m_logic->previous());
    allowReport(QStringLiteral("0"), "STOP", "PREVIOUS");
    EXPECT_EQ(m_failures.size(), 2);
    setPlayMode(TavuPlayerPlayMode::Shuffle);
    expectValue(m_logic->stop(TavuPlayLogicStopReason::User));
    allowReport(QStringLiteral("0"), "STOP", "STOP");
    streamer().expect(Kind::Stop);
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicCommandsTest, AStartedNotificationWithoutAQueueOffersNoPlayModes)
{
    startAlbum(tracks(2));
    m_logic->next();
    allowReport(QStringLiteral("0"), "STOP", "NEXT");
    const ServiceRequest report = expectReport(QStringLiteral("1"), "START", "NEXT");
    streamer().tellEnded(); // While the report is under way.
    report.answer(200);
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 1"));
    streamer().startPresent();
    EXPECT_EQ(playing(), QStringLiteral("Title 1"));
    EXPECT_TRUE(m_logic->data().controls().next());
    EXPECT_FALSE(m_logic->data().playModesSupported().shuffle());
    EXPECT_FALSE(m_logic->data().playModesSupported().repeatAll());
    streamer().wantNextMedia();
    streamer().expect(Kind::SetNoNextMedia);
    setPlayMode(TavuPlayerPlayMode::Shuffle);
}

} // namespace
