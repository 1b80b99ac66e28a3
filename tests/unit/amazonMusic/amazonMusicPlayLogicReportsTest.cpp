#include "playLogicFixture.h"

#include <QTimer>

#include <algorithm>

// Underruns, ratings and play modes.

namespace {

using serviceDocuments::tracks;

class AmazonMusicPlayLogicReportsTest : public PlayLogicFixture
{
protected:
    static Track rateable(const QString& id)
    {
        Track track{ id };
        track.rateable = true;
        return track;
    }

    /// Playing, and past the time in which a drop of the buffer is no underrun.
    void settleIn()
    {
        startStation(tracks(3));
        streamer().tellPosition(10000);
    }

    /// By a timer, which comes behind those that were due before it, however late they all are.
    void waitMs(int ms)
    {
        bool due = false;
        QTimer::singleShot(ms, Qt::PreciseTimer, m_logic, [&due] { due = true; });
        ASSERT_TRUE(waitUntil([&due] { return due; }));
    }

    int underruns(const LogCapture& log) const
    {
        return log.count(log4cplus::WARN_LOG_LEVEL, QStringLiteral("Underrun occured"));
    }

    /// The service's answer to a rating.
    static QByteArray ratingBody(const char* message, bool skip)
    {
        return QByteArray(R"({"result":"#r","trackRatingResponses":{"r":{"message":")") + message
            + R"(","shouldSkip":)" + (skip ? "true" : "false") + "}}}";
    }
};

TEST_F(AmazonMusicPlayLogicReportsTest, AnUnderrunIsReportedOnceUntilPlaybackRunsAgain)
{
    const LogCapture log;
    settleIn();
    streamer().tellBufferLevel(99.9);
    EXPECT_EQ(underruns(log), 1);
    const ServiceRequest stop = expectReport(QStringLiteral("0"), "STOP", "BUFFER_UNDERFLOW");
    EXPECT_EQ(stop.json().value(QStringLiteral("rebufferCount")).toInt(), 1);
    EXPECT_GE(positionOf(stop), 10000);
    streamer().tellBufferLevel(50.0);
    streamer().tellBufferLevel(0.0);
    EXPECT_EQ(underruns(log), 1);
    m_service.expectNoRequest();

    streamer().tellState(TavuPlayLogicState::Playing);
    EXPECT_TRUE(log.has(log4cplus::INFO_LOG_LEVEL, QStringLiteral("Underrun ended")));
    const ServiceRequest start = expectReport(QStringLiteral("0"), "START", "BUFFER_UNDERFLOW");
    EXPECT_EQ(start.json().value(QStringLiteral("rebufferCount")).toInt(), 1);
    streamer().tellState(TavuPlayLogicState::Playing);

    streamer().tellBufferLevel(10.0);
    EXPECT_EQ(expectReport(QStringLiteral("0"), "STOP", "BUFFER_UNDERFLOW")
                  .json()
                  .value(QStringLiteral("rebufferCount"))
                  .toInt(),
        2);
    EXPECT_EQ(underruns(log), 2);
}

TEST_F(AmazonMusicPlayLogicReportsTest, AFullBufferIsNoUnderrun)
{
    const LogCapture log;
    settleIn();
    streamer().tellState(TavuPlayLogicState::Buffering);
    streamer().tellBufferLevel(100.0);
    streamer().tellBufferLevel(250.0);
    EXPECT_EQ(underruns(log), 0);
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicPlayLogicReportsTest, ALowBufferThatStillPlaysIsNoUnderrun)
{
    const LogCapture log;
    settleIn();
    Q_EMIT streamer().bufferLevelChanged(streamer().presentId(), 20.0);
    EXPECT_EQ(underruns(log), 0);
    EXPECT_EQ(log.countContaining(log4cplus::TRACE_LOG_LEVEL,
                  QStringLiteral("Buffering level: 20 state: playing waitForPlaying 0")),
        1);
}

TEST_F(AmazonMusicPlayLogicReportsTest, BeforePlaybackRunsThereIsNoUnderrun)
{
    const LogCapture log;
    offer(tracks(1));
    playStation();
    allowReport(QStringLiteral("0"), "START", "TRACK_SELECTED");
    streamer().expect(Kind::Play);
    streamer().tellBufferLevel(0.0);
    streamer().tellBufferLevel(40.0);
    EXPECT_EQ(underruns(log), 0);
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicPlayLogicReportsTest, ADropRightAfterASeekIsNoUnderrun)
{
    const LogCapture log;
    settleIn();
    expectValue(m_logic->seekTime(50000));
    streamer().expect(Kind::SeekTime);
    allowReport(QStringLiteral("0"), "STOP", "SEEK");
    allowReport(QStringLiteral("0"), "START", "SEEK");
    streamer().tellBufferLevel(30.0);
    EXPECT_EQ(underruns(log), 0);
    // The state says that it plays: from now on a drop counts.
    streamer().tellState(TavuPlayLogicState::Playing);
    streamer().tellBufferLevel(30.0);
    EXPECT_EQ(underruns(log), 1);
    allowReport(QStringLiteral("0"), "STOP", "BUFFER_UNDERFLOW");
}

TEST_F(AmazonMusicPlayLogicReportsTest, ASecondOfPlayingEndsTheGraceOfASeek)
{
    const LogCapture log;
    settleIn();
    expectValue(m_logic->seekTime(50000));
    streamer().expect(Kind::SeekTime);
    allowReport(QStringLiteral("0"), "STOP", "SEEK");
    allowReport(QStringLiteral("0"), "START", "SEEK");
    waitMs(1100);
    streamer().tellBufferLevel(30.0);
    EXPECT_EQ(underruns(log), 1);
    allowReport(QStringLiteral("0"), "STOP", "BUFFER_UNDERFLOW");
}

TEST_F(AmazonMusicPlayLogicReportsTest, ADropThatOutlastsTheGraceIsNoUnderrunEither)
{
    const LogCapture log;
    settleIn();
    expectValue(m_logic->seekTime(50000));
    streamer().expect(Kind::SeekTime);
    allowReport(QStringLiteral("0"), "STOP", "SEEK");
    allowReport(QStringLiteral("0"), "START", "SEEK");
    streamer().tellBufferLevel(30.0);
    waitMs(1100); // The time runs out while buffering.
    streamer().tellBufferLevel(20.0);
    EXPECT_EQ(underruns(log), 0);
}

TEST_F(AmazonMusicPlayLogicReportsTest, ADropRightAfterAnUnpauseIsNoUnderrun)
{
    const LogCapture log;
    Track lasting{ QStringLiteral("0") };
    lasting.expires = QStringLiteral("2130-01-01T00:00:00.000Z");
    startAlbum({ lasting });
    for (const int pauseBeforeDropMs : { 0, 1100 }) {
        pause();
        allowReport(QStringLiteral("0"), "STOP", "PAUSE");
        const Reply reply = m_logic->pause();
        allowReport(QStringLiteral("0"), "START", "UNPAUSE");
        expectValue(reply);
        streamer().expect(Kind::Resume);
        waitMs(pauseBeforeDropMs);
        streamer().tellBufferLevel(30.0);
        EXPECT_EQ(underruns(log), pauseBeforeDropMs == 0 ? 0 : 1);
        streamer().tellState(TavuPlayLogicState::Playing);
    }
    allowReport(QStringLiteral("0"), "STOP", "BUFFER_UNDERFLOW");
    allowReport(QStringLiteral("0"), "START", "BUFFER_UNDERFLOW");
}

TEST_F(AmazonMusicPlayLogicReportsTest, APlayStartsTheCountAnew)
{
    settleIn();
    streamer().tellBufferLevel(10.0);
    allowReport(QStringLiteral("0"), "STOP", "BUFFER_UNDERFLOW");
    offer(tracks(1, 7));
    finishStart(playStation(), Track{ QStringLiteral("7") });
    m_service.expectNoRequest(); // The underrun of the play before is not ended.
    streamer().tellBufferLevel(10.0);
    EXPECT_EQ(expectReport(QStringLiteral("7"), "STOP", "BUFFER_UNDERFLOW")
                  .json()
                  .value(QStringLiteral("rebufferCount"))
                  .toInt(),
        1);
}

TEST_F(AmazonMusicPlayLogicReportsTest, APlayLeavesTheUnderrunBeforeItUnended)
{
    const LogCapture log;
    settleIn();
    streamer().tellBufferLevel(10.0);
    allowReport(QStringLiteral("0"), "STOP", "BUFFER_UNDERFLOW");
    playRow(TavuRolesAudioType::Station, QStringLiteral("/second#p"));
    m_service.expectRequest("GET", "/second");
    streamer().tellState(TavuPlayLogicState::Playing); // While the play is under way.
    m_service.expectNoRequest();
    EXPECT_FALSE(log.has(log4cplus::INFO_LOG_LEVEL, QStringLiteral("Underrun ended")));
}

TEST_F(AmazonMusicPlayLogicReportsTest, ADropWhileAPlayIsUnderWayIsNoUnderrun)
{
    const LogCapture log;
    settleIn();
    playRow(TavuRolesAudioType::Station, QStringLiteral("/second#p"));
    m_service.expectRequest("GET", "/second");
    streamer().tellBufferLevel(10.0);
    EXPECT_EQ(underruns(log), 0);
}

TEST_F(AmazonMusicPlayLogicReportsTest, TheGraceIsOneSecondOnce)
{
    const QList<QTimer*> timers = m_logic->findChildren<QTimer*>();
    const auto grace = std::find_if(timers.begin(), timers.end(),
        [](const QTimer* timer) { return timer->interval() == 1000; });
    ASSERT_NE(grace, timers.end());
    EXPECT_TRUE((*grace)->isSingleShot());
}

TEST_F(AmazonMusicPlayLogicReportsTest, AnUnderrunDoesNotOutliveItsTrack)
{
    const LogCapture log;
    startAlbum(tracks(2));
    prepareNext(QStringLiteral("1"));
    streamer().tellBufferLevel(10.0);
    allowReport(QStringLiteral("0"), "STOP", "BUFFER_UNDERFLOW");
    streamer().startNext();
    allowReport(QStringLiteral("0"), "STOP", "TRACK_END");
    allowReport(QStringLiteral("1"), "START", "AUTO_NEXT");
    streamer().tellState(TavuPlayLogicState::Playing);
    EXPECT_FALSE(log.has(log4cplus::INFO_LOG_LEVEL, QStringLiteral("Underrun ended")));
}

TEST_F(AmazonMusicPlayLogicReportsTest, LikeShowsTheServicesMessage)
{
    const LogCapture log;
    startAlbum({ rateable(QStringLiteral("0")) });
    streamer().tellPosition(20000);
    const Reply reply = m_logic->like();
    const ServiceRequest request = m_service.expectRequest("POST", "/ratings/0");
    EXPECT_EQ(request.json().value(QStringLiteral("thumbRating")).toString(), QStringLiteral("UP"));
    EXPECT_GE(positionOf(request), 20000);
    request.answer(200, ratingBody("Noted %1", false));
    const QVariantHash answer = expectValue(reply).toHash();
    EXPECT_EQ(screenRows(answer, TavuRoles::Title()), QStringList{ QStringLiteral("Noted %1") });
    EXPECT_EQ(screenRows(answer, TavuRoles::Type()), QStringList{ QStringLiteral("6") });
    EXPECT_TRUE(log.has(log4cplus::INFO_LOG_LEVEL, QStringLiteral("User rating msg: Noted %1")));
    EXPECT_EQ(log.countContaining(log4cplus::TRACE_LOG_LEVEL, QStringLiteral("Rating: 3")), 1);
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicReportsTest, DislikeMaySkipTheTrack)
{
    const LogCapture log;
    startAlbum({ rateable(QStringLiteral("0")), Track{ QStringLiteral("1") } });
    const Reply reply = m_logic->dislike();
    const ServiceRequest request = m_service.expectRequest("POST", "/ratings/0");
    EXPECT_EQ(
        request.json().value(QStringLiteral("thumbRating")).toString(), QStringLiteral("DOWN"));
    request.answer(200, ratingBody("Skipped", true));
    EXPECT_EQ(screenRows(expectValue(reply).toHash(), TavuRoles::Title()),
        QStringList{ QStringLiteral("Skipped") });
    EXPECT_TRUE(log.has(log4cplus::INFO_LOG_LEVEL, QStringLiteral("Skipping to next track")));
    allowReport(QStringLiteral("0"), "STOP", "NEXT");
    allowReport(QStringLiteral("1"), "START", "NEXT");
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 1"));
}

TEST_F(AmazonMusicPlayLogicReportsTest, AnAbortedRatingShowsItsScreenAndSkipsNothing)
{
    startAlbum({ rateable(QStringLiteral("0")), Track{ QStringLiteral("1") } });
    const Reply reply = m_logic->dislike();
    const ServiceRequest request = m_service.expectRequest("POST", "/ratings/0");
    m_reporter->cancel();
    EXPECT_EQ(
        screenRows(expectValue(reply).toHash(), TavuRoles::Title()), QStringList{ QString() });
    request.answer(200, ratingBody("Skipped", true));
    m_service.expectNoRequest();
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicReportsTest, ARatingOfThePlayBeforeSkipsNothing)
{
    startAlbum({ rateable(QStringLiteral("0")), Track{ QStringLiteral("1") } });
    const Reply reply = m_logic->dislike();
    const ServiceRequest request = m_service.expectRequest("POST", "/ratings/0");
    offer(tracks(2, 7));
    finishStart(playAlbum(), Track{ QStringLiteral("7") });
    request.answer(200, ratingBody("Skipped", true));
    EXPECT_EQ(screenRows(expectValue(reply).toHash(), TavuRoles::Title()),
        QStringList{ QStringLiteral("Skipped") });
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicReportsTest, AFailedRatingShowsCodeAndStatus)
{
    startAlbum({ rateable(QStringLiteral("0")) });
    const Reply reply = m_logic->like();
    m_service.expectRequest("POST", "/ratings/0").answer(500);
    EXPECT_EQ(screenRows(expectValue(reply).toHash(), TavuRoles::Title()),
        QStringList{ QStringLiteral("Server response with code: 500, status: ")
            + HttpClient::toString(HttpClientStatus::Ok) });
}

TEST_F(AmazonMusicPlayLogicReportsTest, ATrackThatTakesNoRatingAnswersAndSendsNothing)
{
    const LogCapture log;
    startAlbum(tracks(1));
    EXPECT_FALSE(expectValue(m_logic->like()).isValid());
    EXPECT_FALSE(expectValue(m_logic->dislike()).isValid());
    EXPECT_EQ(log.count(log4cplus::INFO_LOG_LEVEL,
                  QStringLiteral("Operation not supported for current track")),
        2);
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicPlayLogicReportsTest, AModeChangeReplacesTheTrackThatWasHandedOver)
{
    const LogCapture log;
    startAlbum(tracks(10), 3);
    prepareNext(QStringLiteral("4"));
    std::srand(1);
    setPlayMode(TavuPlayerPlayMode::Shuffle);
    EXPECT_EQ(streamer().expect(Kind::SetNextMedia).roles.title(), QStringLiteral("Title 4"));
    setPlayMode(TavuPlayerPlayMode::RepeatOne);
    EXPECT_EQ(streamer().expect(Kind::SetNextMedia).roles.title(), QStringLiteral("Title 3"));
    EXPECT_TRUE(log.has(log4cplus::INFO_LOG_LEVEL, QStringLiteral("New play mode: shuffle")));
    EXPECT_TRUE(log.has(log4cplus::INFO_LOG_LEVEL, QStringLiteral("New play mode: repeat one")));
    EXPECT_EQ(log.countContaining(
                  log4cplus::TRACE_LOG_LEVEL, QStringLiteral("Play mode changed: shuffle")),
        1);
}

TEST_F(AmazonMusicPlayLogicReportsTest, AModeChangeHandsOverNothingUnasked)
{
    startAlbum(tracks(10), 3);
    setPlayMode(TavuPlayerPlayMode::Shuffle);
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicReportsTest, ShuffledRepeatOfOneShufflesTheQueue)
{
    startAlbum(tracks(10), 3);
    std::srand(1);
    setPlayMode(TavuPlayerPlayMode::ShuffleRepeatOne);
    m_logic->next();
    const ServiceRequest stop = expectReport(QStringLiteral("3"), "STOP", "NEXT");
    EXPECT_FALSE(stop.json().value(QStringLiteral("isShufflePlay")).toBool());
    stop.answer(200);
    allowReport(QStringLiteral("4"), "START", "NEXT");
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 4"));
    streamer().startPresent();
    m_logic->next();
    allowReport(QStringLiteral("4"), "STOP", "NEXT");
    allowReport(QStringLiteral("7"), "START", "NEXT");
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 7"));
}

TEST_F(AmazonMusicPlayLogicReportsTest, AModeChangeBeforeTheTrackSoundsKeepsTheMode)
{
    const LogCapture log;
    offer(tracks(10), 3);
    const Reply reply = playAlbum();
    allowReport(QStringLiteral("3"), "START", "TRACK_SELECTED");
    expectValue(reply);
    streamer().expect(Kind::Play);
    setPlayMode(TavuPlayerPlayMode::Shuffle); // There is no current track yet.
    EXPECT_TRUE(log.has(log4cplus::INFO_LOG_LEVEL, QStringLiteral("New play mode: shuffle")));
    streamer().startPresent();
    streamer().wantNextMedia();
    const auto next = streamer().expect(Kind::SetNextMedia);
    streamer().startNext();
    allowReport(QStringLiteral("3"), "STOP", "TRACK_END");
    EXPECT_TRUE(expectReport(next.roles.title().mid(6), "START", "AUTO_NEXT")
                    .json()
                    .value(QStringLiteral("isShufflePlay"))
                    .toBool());
}

TEST_F(AmazonMusicPlayLogicReportsTest, AModeThatWasSetBeforeThePlayHolds)
{
    m_host.setPlayMode(TavuPlayerPlayMode::RepeatAll);
    settle();
    const LogCapture log;
    startAlbum(tracks(2), 1);
    prepareNext(QStringLiteral("0"));
    EXPECT_FALSE(log.mentions(QStringLiteral("New play mode")));
}

TEST_F(AmazonMusicPlayLogicReportsTest, OvertakingNeedsAnOptionThatResumesByAPost)
{
    startAlbum(tracks(1));
    const auto seekRefusedWith = [this](const QList<serviceDocuments::Option>& options) {
        m_logic->seekTime(1000);
        streamer().expect(Kind::SeekTime);
        allowReport(QStringLiteral("0"), "STOP", "SEEK");
        expectReport(QStringLiteral("0"), "START", "SEEK").answer(409, refusal(options));
    };
    // The first option that does wins; those before it do not count.
    seekRefusedWith({ { {}, QStringLiteral("POST"), QStringLiteral("/wrong/1"), true },
        { {}, QStringLiteral("post"), QStringLiteral("/wrong/2"), false },
        resumeOption(QStringLiteral("/right")), resumeOption(QStringLiteral("/wrong/3")) });
    m_service.expectRequest("POST", "/right").answer(200);
    m_service.expectNoRequest();
    streamer().expectNothing();

    seekRefusedWith({ { {}, QStringLiteral("POST"), QStringLiteral("/wrong"), true },
        { {}, QStringLiteral("post"), QStringLiteral("/wrong"), false } });
    streamer().expect(Kind::Stop);
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicPlayLogicReportsTest, OutcomesTraceWhetherThereWasAReport)
{
    const LogCapture log;
    startAlbum(tracks(1));
    EXPECT_EQ(
        log.countContaining(log4cplus::TRACE_LOG_LEVEL, QStringLiteral("Report error: 0")), 1);
    m_logic->seekTime(1000);
    streamer().expect(Kind::SeekTime);
    allowReport(QStringLiteral("0"), "STOP", "SEEK");
    expectReport(QStringLiteral("0"), "START", "SEEK").answer(409, refusal());
    streamer().expect(Kind::Stop);
    EXPECT_EQ(
        log.countContaining(log4cplus::TRACE_LOG_LEVEL, QStringLiteral("Report error: 1")), 1);
    EXPECT_EQ(log.countContaining(log4cplus::TRACE_LOG_LEVEL, QStringLiteral(": Error: 1")), 1);
}

} // namespace
