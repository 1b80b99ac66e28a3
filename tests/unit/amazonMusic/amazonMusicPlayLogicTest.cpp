#include "playLogicFixture.h"

// Play, next and previous.

namespace {

using serviceDocuments::tracks;

class AmazonMusicPlayLogicTest : public PlayLogicFixture
{
};

constexpr qint64 slack = 2000;

TEST_F(AmazonMusicPlayLogicTest, PlaysARowOnceTheServiceHasTakenTheReport)
{
    offer(tracks(3), 1);
    const Reply reply = playStation();
    const ServiceRequest report = expectReport(QStringLiteral("1"), "START", "TRACK_SELECTED");
    EXPECT_TRUE(isDirected(report));
    EXPECT_EQ(positionOf(report), 0);
    streamer().expectNothing();
    expectPending(reply);

    report.answer(200);
    EXPECT_FALSE(expectValue(reply).isValid());
    const auto command = streamer().expect(Kind::Play);
    EXPECT_EQ(command.roles.title(), QStringLiteral("Title 1"));
    EXPECT_TRUE(command.attributes.isEmpty());
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Buffering);
}

TEST_F(AmazonMusicPlayLogicTest, APlayIsAnsweredAfterItsCommand)
{
    offer(tracks(1));
    const Reply reply = playStation();
    int commandsBefore = -1;
    reply.addWatcher([&](const CMVoidReply&) { commandsBefore = streamer().count(Kind::Play); });
    allowReport(QStringLiteral("0"), "START", "TRACK_SELECTED");
    expectValue(reply);
    EXPECT_EQ(commandsBefore, 1);
}

TEST_F(AmazonMusicPlayLogicTest, AContainerSaysThatItWasChosenAsOne)
{
    offer(tracks(1));
    const Reply reply =
        playRow(TavuRolesAudioType::Tracks, QStringLiteral("/album#p"), TavuRolesType::Folder);
    allowReport(QStringLiteral("0"), "START", "CONTAINER_SELECTED");
    expectValue(reply);
}

TEST_F(AmazonMusicPlayLogicTest, ATrackOfItsOwnIsFetchedByItsPath)
{
    TavuRoles roles;
    roles.setAudioType(TavuRolesAudioType::Tracks);
    roles.setPath(TavuAmazonMusicPrefixPath().addParam(QStringLiteral("trackUrl"),
        m_service.url(QStringLiteral("/tracks/5?a=%2F&b=c")).toString()));
    TavuPlayLogicPlayArgs args;
    args.setMediaRoles(roles);
    const Reply reply = m_logic->play(args);
    m_service.expectRequest("GET", "/tracks/5?a=%2F&b=c");
    m_service.answer(200, serviceDocuments::trackBody(Track{ QStringLiteral("5") }));
    allowReport(QStringLiteral("5"), "START", "TRACK_SELECTED");
    expectValue(reply);
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 5"));
    streamer().startPresent();
    EXPECT_TRUE(m_logic->data().playModesSupported().shuffle());
}

TEST_F(AmazonMusicPlayLogicTest, TheTracksOwnRolesSayWhatPlays)
{
    offer(tracks(1));
    TavuPlayLogicPlayArgs args;
    args.setMediaRoles(row(QStringLiteral("/other#p"), TavuRolesAudioType::Station));
    args.setTrackRoles(row(QStringLiteral("/album#p"), TavuRolesAudioType::Tracks));
    const Reply reply = m_logic->play(args);
    allowReport(QStringLiteral("0"), "START", "TRACK_SELECTED");
    expectValue(reply);
    EXPECT_EQ(m_service.servedCount("GET", "/album"), 1);
}

TEST_F(AmazonMusicPlayLogicTest, EncryptedTracksCarryTheTokenOfThatTime)
{
    Track track{ QStringLiteral("0") };
    track.keyHeaders = { { QStringLiteral("X-Key"), QStringLiteral("1") } };
    offer({ track });
    playStation();
    allowReport(QStringLiteral("0"), "START", "TRACK_SELECTED");
    const auto command = streamer().expect(Kind::Play);
    const QVariantHash crypto = command.roles.mediaData()
                                    .firstResource()
                                    .cryptoData()
                                    .value(QStringLiteral("amazonMusic"))
                                    .toHash();
    EXPECT_EQ(crypto.value(QStringLiteral("token")).toString(), QStringLiteral("token"));
    EXPECT_TRUE(command.attributes.isEmpty());
}

TEST_F(AmazonMusicPlayLogicTest, APlayThatFindsNothingFails)
{
    m_service.always("GET", "/album", 404);
    expectError(playStation(),
        QStringLiteral("Failed to fetch playable, error: 404, status: ")
            + HttpClient::toString(HttpClientStatus::Ok));
    EXPECT_TRUE(m_failures.isEmpty());
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicTest, ARefusedStationLeadsToTheServicesMessage)
{
    m_service.always(
        "GET", "/album", 200, serviceDocuments::playableBody(QStringLiteral("/chunk"), 0));
    m_service.always("GET", "/chunk", 409, refusal());
    const CMError error = expectError(playStation());
    EXPECT_EQ(error.message(), QStringLiteral("Stop it there first."));
    EXPECT_EQ(screenRows(error.actionReply(), TavuRoles::Title()),
        QStringList{ QStringLiteral("Another device plays %1") });
}

TEST_F(AmazonMusicPlayLogicTest, ATrackWithoutCollectorPlaysUnreported)
{
    Track track{ QStringLiteral("0") };
    track.reports = false;
    offer({ track });
    expectValue(playStation());
    streamer().expect(Kind::Play);
}

TEST_F(AmazonMusicPlayLogicTest, ARefusedReportPlaysNothingAndShowsTheServicesWords)
{
    const LogCapture log;
    offer(tracks(1));
    const Reply reply = playStation();
    expectReport(QStringLiteral("0"), "START", "TRACK_SELECTED")
        .answer(409, refusal({ { QStringLiteral("OK"), {}, {}, false } }));
    const CMError error = expectError(reply);
    EXPECT_EQ(error.message(), QStringLiteral("Reporting failed: Another device plays %1"));
    EXPECT_TRUE(log.has(log4cplus::ERROR_LOG_LEVEL, error.message()));
    EXPECT_EQ(screenRows(error.actionReply(), TavuRoles::Title()),
        (QStringList{ QStringLiteral("Another device plays %1"), QStringLiteral("OK") }));
    streamer().expectNothing();
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(AmazonMusicPlayLogicTest, ARefusalThatOffersToGoOnIsOvertaken)
{
    offer(tracks(1));
    const Reply reply = playStation();
    expectReport(QStringLiteral("0"), "START", "TRACK_SELECTED")
        .answer(409,
            refusal({ { QStringLiteral("Cancel"), {}, {}, false },
                resumeOption(QStringLiteral("/resume?a=1")) }));
    m_service.expectRequest("POST", "/resume?a=1");
    expectValue(reply);
    streamer().expect(Kind::Play);
}

TEST_F(AmazonMusicPlayLogicTest, AFailedReportStopsNoMusic)
{
    offer(tracks(1));
    const Reply reply = playStation();
    expectReport(QStringLiteral("0"), "START", "TRACK_SELECTED").answer(500);
    expectValue(reply);
    streamer().expect(Kind::Play);
}

TEST_F(AmazonMusicPlayLogicTest, StartedPlaybackOffersEveryControl)
{
    Track rateable{ QStringLiteral("0") };
    rateable.rateable = true;
    startAlbum({ rateable, Track{ QStringLiteral("1") } });
    TavuPlayLogicControls controls = m_logic->data().controls();
    EXPECT_TRUE(controls.pause());
    EXPECT_TRUE(controls.next());
    EXPECT_TRUE(controls.previous());
    EXPECT_TRUE(controls.seekTime());
    EXPECT_TRUE(controls.like());
    EXPECT_TRUE(controls.dislike());
    const TavuPlayLogicPlayModesSupported modes = m_logic->data().playModesSupported();
    EXPECT_TRUE(modes.repeatOne());
    EXPECT_TRUE(modes.shuffle());
    EXPECT_TRUE(modes.shuffleRepeatOne());
    EXPECT_TRUE(modes.shuffleRepeatAll());
    EXPECT_TRUE(modes.repeatAll());

    prepareNext(QStringLiteral("1"));
    streamer().startNext();
    allowReport(QStringLiteral("0"), "STOP", "TRACK_END");
    allowReport(QStringLiteral("1"), "START", "AUTO_NEXT");
    controls = m_logic->data().controls();
    EXPECT_TRUE(controls.next());
    EXPECT_FALSE(controls.like());
    EXPECT_FALSE(controls.dislike());
}

TEST_F(AmazonMusicPlayLogicTest, AStationSupportsNoPlayModes)
{
    startStation(tracks(1));
    const TavuPlayLogicPlayModesSupported modes = m_logic->data().playModesSupported();
    EXPECT_FALSE(modes.repeatOne());
    EXPECT_FALSE(modes.shuffle());
    EXPECT_FALSE(modes.shuffleRepeatOne());
    EXPECT_FALSE(modes.shuffleRepeatAll());
    EXPECT_FALSE(modes.repeatAll());
}

TEST_F(AmazonMusicPlayLogicTest, NextIsAnsweredAtOnceAndPlaysAfterItsReport)
{
    startAlbum(tracks(3));
    streamer().tellPosition(60000);
    const Reply reply = m_logic->next();
    ASSERT_TRUE(reply.isFinished());
    EXPECT_FALSE(reply.error().isSet());
    const ServiceRequest stop = expectReport(QStringLiteral("0"), "STOP", "NEXT");
    EXPECT_TRUE(isDirected(stop));
    EXPECT_GE(positionOf(stop), 60000);
    EXPECT_LE(positionOf(stop), 60000 + slack);
    const ServiceRequest start = expectReport(QStringLiteral("1"), "START", "NEXT");
    EXPECT_TRUE(isDirected(start));
    EXPECT_EQ(positionOf(start), 0);
    streamer().expectNothing();
    start.answer(200);
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 1"));
    streamer().startPresent();
    EXPECT_EQ(playing(), QStringLiteral("Title 1"));
}

TEST_F(AmazonMusicPlayLogicTest, NextIsAnsweredThoughNothingFollows)
{
    startAlbum(tracks(1));
    const Reply reply = m_logic->next();
    EXPECT_FALSE(expectValue(reply).isValid());
    allowReport(QStringLiteral("0"), "STOP", "NEXT");
    ASSERT_EQ(m_failures.size(), 1);
    EXPECT_EQ(m_failures.first().message(), QStringLiteral("End of queue reached"));
    streamer().expectNothing();
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Playing);
}

TEST_F(AmazonMusicPlayLogicTest, ARefusedNextIsNotSilent)
{
    startAlbum(tracks(2));
    m_logic->next();
    allowReport(QStringLiteral("0"), "STOP", "NEXT");
    expectReport(QStringLiteral("1"), "START", "NEXT").answer(409, refusal());
    ASSERT_TRUE(waitUntil([this] { return !m_failures.isEmpty(); }));
    EXPECT_EQ(
        m_failures.first().message(), QStringLiteral("Reporting failed: Another device plays %1"));
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicTest, NextGoesOnFromARepeatedTrackAndWraps)
{
    startAlbum(tracks(2), 1);
    for (const auto mode : { TavuPlayerPlayMode::RepeatOne, TavuPlayerPlayMode::RepeatAll }) {
        setPlayMode(mode);
        const QString from = playing().mid(6);
        const QString to = from == QStringLiteral("1") ? QStringLiteral("0") : QStringLiteral("1");
        m_logic->next();
        allowReport(from, "STOP", "NEXT");
        allowReport(to, "START", "NEXT");
        EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title ") + to);
        streamer().startPresent();
    }
}

TEST_F(AmazonMusicPlayLogicTest, NextFollowsTheShuffledOrder)
{
    startAlbum(tracks(10), 3);
    std::srand(1);
    setPlayMode(TavuPlayerPlayMode::Shuffle);
    QString from = QStringLiteral("3");
    for (const int id : { 4, 7, 8, 0, 5, 2, 1, 6, 9 }) {
        const QString to = QString::number(id);
        m_logic->next();
        allowReport(from, "STOP", "NEXT");
        allowReport(to, "START", "NEXT");
        EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title ") + to);
        streamer().startPresent();
        from = to;
    }
    m_logic->next();
    allowReport(from, "STOP", "NEXT");
    ASSERT_EQ(m_failures.size(), 1);
    EXPECT_EQ(m_failures.first().message(), QStringLiteral("End of queue reached"));
}

TEST_F(AmazonMusicPlayLogicTest, PreviousGoesBackUpToTheTimeLimit)
{
    startAlbum(tracks(3), 2);
    pause();
    allowReport(QStringLiteral("2"), "STOP", "PAUSE");
    streamer().tellPosition(3000);
    const Reply reply = m_logic->previous();
    ASSERT_TRUE(reply.isFinished());
    EXPECT_FALSE(reply.error().isSet());
    EXPECT_EQ(positionOf(expectReport(QStringLiteral("2"), "STOP", "PREVIOUS")), 3000);
    const ServiceRequest start = expectReport(QStringLiteral("1"), "START", "PREVIOUS");
    EXPECT_TRUE(isDirected(start));
    EXPECT_EQ(positionOf(start), 0);
    start.answer(200);
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 1"));
}

TEST_F(AmazonMusicPlayLogicTest, PreviousRestartsTheTrackBeyondTheTimeLimit)
{
    startAlbum(tracks(3), 2);
    pause();
    allowReport(QStringLiteral("2"), "STOP", "PAUSE");
    streamer().tellPosition(3001);
    const Reply reply = m_logic->previous();
    ASSERT_TRUE(reply.isFinished());
    EXPECT_FALSE(reply.error().isSet());
    const ServiceRequest stop = expectReport(QStringLiteral("2"), "STOP", "SEEK");
    EXPECT_EQ(positionOf(stop), 3001);
    EXPECT_TRUE(isDirected(stop));
    const ServiceRequest start = expectReport(QStringLiteral("2"), "START", "SEEK");
    EXPECT_EQ(positionOf(start), 0);
    EXPECT_TRUE(isDirected(start));
    EXPECT_EQ(streamer().expect(Kind::SeekTime).position, 0);
    EXPECT_EQ(playing(), QStringLiteral("Title 2"));
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicTest, TheTimeLimitIsTheHosts)
{
    startAlbum(tracks(2), 1);
    m_host.setPreviousTrackTimeLimit(50000);
    streamer().tellPosition(20000);
    m_logic->previous();
    allowReport(QStringLiteral("1"), "STOP", "PREVIOUS");
    allowReport(QStringLiteral("0"), "START", "PREVIOUS");
    streamer().expect(Kind::Play);
}

TEST_F(AmazonMusicPlayLogicTest, PreviousWrapsInARepeatMode)
{
    startAlbum(tracks(3));
    setPlayMode(TavuPlayerPlayMode::RepeatAll);
    m_logic->previous();
    allowReport(QStringLiteral("0"), "STOP", "PREVIOUS");
    allowReport(QStringLiteral("2"), "START", "PREVIOUS");
    EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title 2"));
}

TEST_F(AmazonMusicPlayLogicTest, ARefusedRestartStopsPlayback)
{
    const LogCapture log;
    startAlbum(tracks(1));
    streamer().tellPosition(60000);
    m_logic->previous();
    allowReport(QStringLiteral("0"), "STOP", "SEEK");
    streamer().expect(Kind::SeekTime);
    expectReport(QStringLiteral("0"), "START", "SEEK").answer(409, refusal());
    streamer().expect(Kind::Stop);
    EXPECT_EQ(log.countContaining(log4cplus::WARN_LOG_LEVEL,
                  QStringLiteral("Cannot overtake playback, stoping: {")),
        1);
}

} // namespace
