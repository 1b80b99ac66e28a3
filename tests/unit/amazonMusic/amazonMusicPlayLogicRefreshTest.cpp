#include "playLogicFixture.h"

#include "cmerror.h"

#include <QDateTime>

#include <sstream>

// Fresh resources: before a play and on unpause.

namespace {

const QString format = QStringLiteral("yyyy-MM-dd'T'HH:mm:ss.zzz'Z'");

class AmazonMusicPlayLogicRefreshTest : public PlayLogicFixture
{
protected:
    static QString inMs(qint64 ms)
    {
        return QDateTime::currentDateTimeUtc().addMSecs(ms).toString(format);
    }

    /// A track that needs a new resource in an hour.
    static Track lasting(const QString& id)
    {
        Track track{ id };
        track.expires = inMs(3600000);
        return track;
    }

    TavuRoles rolesUntil(qint64 validUntil) const
    {
        TavuRoles roles = row(QStringLiteral("/stream"), TavuRolesAudioType::Tracks);
        roles.setTitle(QStringLiteral("Kept"));
        TavuMediaData mediaData = roles.mediaData();
        TavuResource resource = mediaData.firstResource();
        resource.setValidUntil(validUntil);
        TavuList<TavuResource> resources;
        resources.append(resource);
        mediaData.setResources(resources);
        TavuMetaData metaData;
        metaData.setPrePlayTimeOffset(42000);
        metaData.setPrePlayData(
            TavuAmazonMusicPrefixPath()
                .addParam(QStringLiteral("url"),
                    m_service.url(QStringLiteral("/tracks/7?a=%2B&b#inst-7")).toString())
                .toEncoded());
        mediaData.setMetaData(metaData);
        roles.setMediaData(mediaData);
        return roles;
    }

    Reply prePlay(const TavuRoles& roles)
    {
        TavuHash value;
        value.__set(TavuRoles::PrePlay(), roles.__variant());
        const CMSetDataRequest request(TavuAmazonMusicPrePlayPath(), value.__variant());
        m_nodes.find(TavuAmazonMusicPrePlayPath())->setDataRequest(request);
        return request.reply();
    }

    /// Replaces the resource that the player holds by one that is valid until then.
    void renewCurrent(qint64 validUntil)
    {
        TavuRoles roles = m_logic->data().trackRoles();
        TavuMediaData mediaData = roles.mediaData();
        TavuResource resource = mediaData.firstResource();
        resource.setValidUntil(validUntil);
        TavuList<TavuResource> resources;
        resources.append(resource);
        mediaData.setResources(resources);
        roles.setMediaData(mediaData);
        streamer().tellRenewed(roles);
    }

    void pauseAt(qint64 position)
    {
        streamer().tellPosition(position);
        pause();
        allowReport(QStringLiteral("0"), "STOP", "PAUSE");
        streamer().tellPosition(position);
    }
};

TEST_F(AmazonMusicPlayLogicRefreshTest, RolesWithoutResourcesCannotBePrepared)
{
    expectError(prePlay(TavuRoles()), QStringLiteral("Missing resources"));
}

TEST_F(AmazonMusicPlayLogicRefreshTest, AValidResourceIsPlayedAsItIs)
{
    const LogCapture log;
    const TavuRoles roles = rolesUntil(QDateTime::currentMSecsSinceEpoch() + 60000);
    const Reply reply = prePlay(roles);
    EXPECT_FALSE(reply.isFinished()); // Delivered by the event loop.
    EXPECT_EQ(TavuRoles(expectValue(reply).toHash()), roles);
    EXPECT_TRUE(log.has(log4cplus::DEBUG_LOG_LEVEL, QStringLiteral("Resource still valid")));
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicPlayLogicRefreshTest, AnExpiredResourceIsFetchedAnew)
{
    const LogCapture log;
    const TavuRoles roles = rolesUntil(QDateTime::currentMSecsSinceEpoch());
    const Reply reply = prePlay(roles);
    m_service.expectRequest("GET", "/tracks/7?a=%2B&b");
    Track track = lasting(QStringLiteral("7"));
    track.uri = QStringLiteral("https://cdn.example/7.flac?signature=hidden");
    track.keyHeaders = { { QStringLiteral("X-Key"), QStringLiteral("hidden") } };
    m_service.answer(200, serviceDocuments::trackBody(track));

    const TavuRoles fresh(expectValue(reply).toHash());
    EXPECT_EQ(fresh.title(), QStringLiteral("Kept"));
    EXPECT_EQ(fresh.audioType(), TavuRolesAudioType::Tracks);
    const TavuResource resource = fresh.mediaData().firstResource();
    EXPECT_EQ(resource.uri(), track.uri);
    EXPECT_GT(resource.validUntil(), QDateTime::currentMSecsSinceEpoch());
    const TavuMetaData metaData = fresh.mediaData().metaData();
    EXPECT_EQ(metaData.prePlayTimeOffset(), 42000);
    EXPECT_EQ(metaData.startTime(), 42000);
    EXPECT_TRUE(metaData.allowSeekTime());
    EXPECT_EQ(metaData.track(), QStringLiteral("Title 7"));
    EXPECT_EQ(metaData.prePlayPath(), TavuAmazonMusicPrePlayPath());
    EXPECT_EQ(
        log.countContaining(log4cplus::DEBUG_LOG_LEVEL, QStringLiteral("New media data: {")), 1);
    EXPECT_FALSE(log.mentions(QStringLiteral("hidden")));
}

TEST_F(AmazonMusicPlayLogicRefreshTest, AFailedFetchFailsThePreparation)
{
    const LogCapture log;
    const Reply reply = prePlay(rolesUntil(1));
    m_service.expectRequest("GET", "/tracks/7?a=%2B&b");
    m_service.answer(404);
    const CMError error = expectError(reply);
    EXPECT_EQ(error.message(),
        QStringLiteral("Failed to fetch track instance, error: 404, status: ")
            + HttpClient::toString(HttpClientStatus::Ok));
    std::ostringstream text;
    text << error;
    EXPECT_TRUE(log.has(log4cplus::ERROR_LOG_LEVEL,
        QStringLiteral("Failed to update track resources: ") + QString::fromStdString(text.str())));
}

TEST_F(AmazonMusicPlayLogicRefreshTest, APlayLeavesAPreparationAlone)
{
    const Reply reply = prePlay(rolesUntil(1));
    settle();
    offer({ lasting(QStringLiteral("0")) });
    finishStart(playAlbum(), lasting(QStringLiteral("0")));
    m_service.expectRequest("GET", "/tracks/7?a=%2B&b");
    m_service.answer(200, serviceDocuments::trackBody(lasting(QStringLiteral("7"))));
    expectValue(reply);
}

TEST_F(AmazonMusicPlayLogicRefreshTest, UnpauseReportsFirstAndGoesOnThen)
{
    const LogCapture log;
    startAlbum({ lasting(QStringLiteral("0")) });
    pauseAt(20000);
    const Reply reply = m_logic->pause();
    const ServiceRequest report = expectReport(QStringLiteral("0"), "START", "UNPAUSE");
    EXPECT_EQ(positionOf(report), 20000);
    EXPECT_TRUE(isDirected(report));
    streamer().expectNothing();
    expectPending(reply);
    report.answer(200);
    expectValue(reply);
    streamer().expect(Kind::Resume);
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Playing);
    EXPECT_EQ(
        log.countContaining(log4cplus::TRACE_LOG_LEVEL, QStringLiteral("Current track changed: 0")),
        1);
    EXPECT_FALSE(log.mentions(QStringLiteral("Current resource expired")));
}

TEST_F(AmazonMusicPlayLogicRefreshTest, ARenewedResourceLetsALongPauseEnd)
{
    startAlbum({ lasting(QStringLiteral("0")) });
    renewCurrent(QDateTime::currentMSecsSinceEpoch() + 60000);
    pauseAt(20000);
    const LogCapture log;
    const Reply reply = m_logic->pause();
    allowReport(QStringLiteral("0"), "START", "UNPAUSE");
    expectValue(reply);
    streamer().expect(Kind::Resume);
    EXPECT_FALSE(log.mentions(QStringLiteral("Current resource expired")));
}

TEST_F(AmazonMusicPlayLogicRefreshTest, AnExpiredResourceIsCheckedAgain)
{
    startAlbum({ lasting(QStringLiteral("0")) });
    renewCurrent(1);
    pauseAt(20000);
    const LogCapture log;
    const Reply reply = m_logic->pause();
    EXPECT_TRUE(log.has(log4cplus::INFO_LOG_LEVEL,
        QStringLiteral("Current resource expired, fetching updated track")));
    // The track itself has not expired: playback goes on.
    allowReport(QStringLiteral("0"), "START", "UNPAUSE");
    expectValue(reply);
    streamer().expect(Kind::Resume);
    EXPECT_EQ(
        log.countContaining(log4cplus::TRACE_LOG_LEVEL, QStringLiteral("Current track changed: 1")),
        1);
}

TEST_F(AmazonMusicPlayLogicRefreshTest, AnExpiredTrackStopsOnUnpauseAndSaysSo)
{
    Track track{ QStringLiteral("0") };
    track.expires = inMs(500);
    startAlbum({ track });
    pauseAt(20000);
    const QDateTime start = QDateTime::currentDateTimeUtc();
    ASSERT_TRUE(waitUntil([&] { return start.msecsTo(QDateTime::currentDateTimeUtc()) > 600; }));
    const LogCapture log;
    const Reply reply = m_logic->pause();
    expectError(reply, QStringLiteral("Error: Track already expired"));
    streamer().expect(Kind::Stop);
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Idle);
    EXPECT_TRUE(log.has(log4cplus::ERROR_LOG_LEVEL,
        QStringLiteral("Cannot update current track, stopping, error: error: Error: Track already "
                       "expired")));
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicPlayLogicRefreshTest, AnAbortedUnpauseChangesNothing)
{
    startAlbum({ lasting(QStringLiteral("0")) });
    pauseAt(20000);
    const Reply reply = m_logic->pause();
    expectReport(QStringLiteral("0"), "START", "UNPAUSE");
    m_reporter->cancel();
    expectCancelled(reply);
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Paused);
    streamer().expectNothing();
}

TEST_F(AmazonMusicPlayLogicRefreshTest, ARefusedUnpauseStops)
{
    const LogCapture log;
    startAlbum({ lasting(QStringLiteral("0")) });
    pauseAt(20000);
    const Reply reply = m_logic->pause();
    expectReport(QStringLiteral("0"), "START", "UNPAUSE").answer(409, refusal());
    streamer().expect(Kind::Stop);
    EXPECT_EQ(log.countContaining(log4cplus::WARN_LOG_LEVEL,
                  QStringLiteral("Cannot overtake playback, stoping: {")),
        1);
    EXPECT_EQ(log.texts(log4cplus::TRACE_LOG_LEVEL)
                  .filter(QStringLiteral("unpausePlayback("))
                  .filter(QStringLiteral("): Report error: 1"))
                  .size(),
        1);
    ASSERT_EQ(m_failures.size(), 1);
    EXPECT_EQ(
        m_failures.first().message(), QStringLiteral("Reporting failed: Another device plays %1"));
    expectPending(reply);
}

TEST_F(AmazonMusicPlayLogicRefreshTest, AnUnpauseThatMayResumeOvertakes)
{
    startAlbum({ lasting(QStringLiteral("0")) });
    pauseAt(20000);
    const Reply reply = m_logic->pause();
    expectReport(QStringLiteral("0"), "START", "UNPAUSE")
        .answer(409, refusal({ resumeOption(QStringLiteral("/resume")) }));
    m_service.expectRequest("POST", "/resume").answer(200);
    expectValue(reply);
    streamer().expect(Kind::Resume);
}

TEST_F(AmazonMusicPlayLogicRefreshTest, AnUnpauseThatFindsPlaybackMovedOnDoesNothing)
{
    startAlbum({ lasting(QStringLiteral("0")) });
    pauseAt(20000);
    const Reply reply = m_logic->pause();
    const ServiceRequest report = expectReport(QStringLiteral("0"), "START", "UNPAUSE");
    streamer().tellState(TavuPlayLogicState::Playing);
    report.answer(200);
    m_service.expectNoRequest();
    streamer().expectNothing();
    EXPECT_FALSE(reply.isFinished());
}

} // namespace
