#include "amazonMusicPlayLogic.h"

#include "amazonMusicLog.h"
#include "amazonMusicPlayQueue.h"
#include "amazonMusicRetriever.h"
#include "amazonMusicTimes.h"
#include "cmactivatenode.h"
#include "cmvalueitem.h"
#include "tavuconnect.h"
#include "tavupaths.h"

// The bits of a play mode.
namespace {

constexpr int shuffleBit = 1;
constexpr int repeatOneBit = 2;
constexpr int repeatAllBit = 4;

} // namespace

AmazonMusicPlayLogic::AmazonMusicPlayLogic(CMNodes* nodes, const CMPath& path,
    AmazonMusicConnect* connect, AmazonMusicRetriever* retriever, AmazonMusicReporter* reporter)
    : StreamerPlayLogic(nodes, path)
    , m_connect(connect)
    , m_retriever(retriever)
    , m_reporter(reporter)
    , m_waitForPlayingTimer(this)
{
    AMAZON_MUSIC_ENTER();
    m_waitForPlayingTimer.setSingleShot(true);
    m_waitForPlayingTimer.setInterval(amazonMusicTimes::waitForPlaying);
    tavuConnect(&m_waitForPlayingTimer, SIGNAL(timeout()), this,
        SLOT(on_waitForPlayingTimer_timeout()), Qt::AutoConnection);
    tavuConnect(this, SIGNAL(bufferLevelChanged(double)), this,
        SLOT(on_bufferingLevelChanged(double)), Qt::AutoConnection);
    tavuConnect(this, SIGNAL(playbackDataChanged(TavuPlayLogicData)), this,
        SLOT(on_playbackDataChanged(TavuPlayLogicData)), Qt::AutoConnection);
    new CMValueItem(this, TavuPlayerPlayModePath(), this,
        SLOT(on_playerModeItem_changed(TavuValue)), Qt::AutoConnection);
    CMActivateNode* prePlay = CMActivateNode::create(nodes, TavuAmazonMusicPrePlayPath(), this,
        SLOT(on_prePlay_activated(CMSetDataRequest)), Qt::QueuedConnection);
    prePlay->setActivateRole(TavuRoles::PrePlay());
}

AmazonMusicPlayLogic::~AmazonMusicPlayLogic()
{
    AMAZON_MUSIC_ENTER();
}

void AmazonMusicPlayLogic::playInternal(
    const CMSetDataRequest& request, const TavuPlayLogicPlayArgs& args)
{
    AMAZON_MUSIC_ENTER();
    const TavuRoles mediaRoles = args.mediaRoles();
    const TavuRoles roles = args.trackRoles().isEmpty() ? mediaRoles : args.trackRoles();
    const bool playable = mediaRoles.audioType() == TavuRolesAudioType::Station;
    const QString url = playable ? roles.mediaData().firstResource().uri()
                                 : roles.path().param(QStringLiteral("trackUrl"));
    ++m_playCount;
    declineNextMedia();
    m_retriever->init(TavuUrl::fromEncoded(url.toUtf8()),
        playable ? AmazonMusicRetriever::Playable : AmazonMusicRetriever::Track);
    // Kept to the end: it cancels its replies when it goes, and whoever hears of that may play.
    const QSharedPointer<AmazonMusicPlayQueue> before = m_playQueue;
    m_playQueue = QSharedPointer<AmazonMusicPlayQueue>::create(m_retriever, roles.audioType());
    m_autoNextPending = false;
    m_underrunCount = 0;
    m_underrunActive = false;
    waitForPlaying();
    m_currentTrack.clear();
    m_pendingTrack.clear();
    playFetched(getTrack(Current, false, false), request.reply(),
        roles.type() == TavuRolesType::Folder ? Reason::ContainerSelected : Reason::TrackSelected);
}

void AmazonMusicPlayLogic::playFetched(
    const CMReply<AmazonMusicTrack>& track, const CMReply<QVariant>& reply, Reason::Enum reason)
{
    AMAZON_MUSIC_ENTER();
    cmchain::whenFinished(
        track, m_context, [this, reply, reason](const CMReply<AmazonMusicTrack>& received) {
            userPlayTrackReceived(reply, received, reason);
        });
}

void AmazonMusicPlayLogic::userPlayTrackReceived(
    const CMReply<QVariant>& reply, const CMReply<AmazonMusicTrack>& track, Reason::Enum reason)
{
    AMAZON_MUSIC_ENTER();
    if (track.error().isSet())
        return failCommand(reply, track.error());
    const AmazonMusicTrack received = track.value();
    afterReport(m_reporter->userReportPlay(received.eventCollectorUrl(), reason, true, 0),
        [this, reply, received](bool aborted, const ErrorReport& errorReport) {
            startPlayback(reply, received, aborted, errorReport);
        });
}

void AmazonMusicPlayLogic::startPlayback(const CMReply<QVariant>& reply,
    const AmazonMusicTrack& track, bool aborted, const ErrorReport& errorReport)
{
    AMAZON_MUSIC_ENTER_WITH("Report error: " << !errorReport.isEmpty());
    if (aborted)
        return reply.cancel();
    if (!errorReport.isEmpty() && !overtakePlayback(errorReport)) {
        const CMError error = refusal(errorReport);
        LOG4CPLUS_ERROR(logger(), error.message());
        return failCommand(reply, error);
    }
    m_pendingTrack = track;
    // A play command drops the item that was to follow by itself, and the wish for one.
    m_autoNextPending = false;
    m_openWish = 0;
    sendPlayCommand(track.tavuRoles(), QVariantHash());
    reply.setValue(QVariant());
}

/// A request that was answered before its outcome was known does not hear of it.
void AmazonMusicPlayLogic::failCommand(const CMReply<QVariant>& reply, const CMError& error)
{
    AMAZON_MUSIC_ENTER();
    if (reply.isFinished() && error != CMVoidReply::ErrorCancel())
        Q_EMIT playbackFailed(error);
    reply.setError(error);
}

void AmazonMusicPlayLogic::nextInternal(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    skip(Next, Reason::Next, request);
}

void AmazonMusicPlayLogic::previousInternal(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    if (playTime() <= TavuPreviousTrackTimeLimit())
        return skip(Previous, Reason::Previous, request);
    restartTrack();
    request.reply().setValue(QVariant());
}

void AmazonMusicPlayLogic::skip(
    Direction direction, Reason::Enum reason, const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    m_reporter->userReportStop(m_currentEventUrl, reason, true, playTime());
    m_autoNextPending = false;
    // Before the track is there, since a track that is not there must not make the command fail.
    request.reply().setValue(QVariant());
    playFetched(getTrack(direction, shuffleMode(), anyRepeatMode()), request.reply(), reason);
}

void AmazonMusicPlayLogic::restartTrack()
{
    AMAZON_MUSIC_ENTER();
    m_reporter->userReportStop(m_currentEventUrl, Reason::Seek, true, playTime());
    sendSeekTimeCommand(0);
    afterReport(m_reporter->userReportPlay(m_currentEventUrl, Reason::Seek, true, 0),
        [this](bool aborted, const ErrorReport& errorReport) {
            seekTimeReportFinished(aborted, errorReport);
        });
}

void AmazonMusicPlayLogic::prepareNextMedia()
{
    AMAZON_MUSIC_ENTER();
    // The user's own "next" goes on from a repeated track; the track's end does not.
    const bool repeatsOne = m_playMode == TavuPlayerPlayMode::RepeatOne
        || m_playMode == TavuPlayerPlayMode::ShuffleRepeatOne;
    const bool repeatsAll = (m_playMode & repeatAllBit) != 0;
    const int wish = m_openWish = ++m_wishCount;
    cmchain::whenFinished(getTrack(repeatsOne ? Current : Next, shuffleMode(), repeatsAll),
        m_context, [this, wish](const CMReply<AmazonMusicTrack>& track) {
            if (wish == m_openWish)
                prepareNextMediaTrackReceived(track);
        });
}

void AmazonMusicPlayLogic::prepareNextMediaTrackReceived(const CMReply<AmazonMusicTrack>& reply)
{
    AMAZON_MUSIC_ENTER();
    m_openWish = 0;
    m_nextMediaPrepared = true;
    if (reply.error().isSet())
        return sendNoNextMediaCommand();
    m_pendingTrack = reply.value();
    m_autoNextPending = true;
    QVariantHash attributes;
    if (m_pendingTrack.encrypted())
        attributes.insert(TavuStreamerAttributesStartPaused(), true);
    sendSetNextMediaCommand(m_pendingTrack.tavuRoles(), attributes);
}

/// The player may be waiting for the item that it wished for: it is told that none comes.
void AmazonMusicPlayLogic::declineNextMedia()
{
    AMAZON_MUSIC_ENTER();
    if (m_openWish == 0)
        return;
    m_openWish = 0;
    sendNoNextMediaCommand();
}

TavuPlayLogicData AmazonMusicPlayLogic::mediaPlaybackStarted(
    const TavuRoles& mediaRoles, const TavuRoles& trackRoles)
{
    AMAZON_MUSIC_ENTER();
    Q_UNUSED(mediaRoles)
    Q_UNUSED(trackRoles)
    m_underrunActive = false;
    m_nextMediaPrepared = false;
    waitForPlaying();
    if (m_autoNextPending)
        reportAutoNext();
    m_currentTrack = m_pendingTrack;
    m_currentEventUrl = m_currentTrack.eventCollectorUrl();

    const bool rateable = m_currentTrack.ratingUrl().isValid();
    TavuPlayLogicControls controls;
    controls.setPause(true);
    controls.setNext(true);
    controls.setPrevious(true);
    controls.setSeekTime(true);
    controls.setLike(rateable);
    controls.setDislike(rateable);

    const bool repeat = !m_playQueue.isNull() && m_playQueue->repeatSupported();
    const bool shuffle = !m_playQueue.isNull() && m_playQueue->shuffleSupported();
    TavuPlayLogicPlayModesSupported modes;
    modes.setRepeatOne(repeat);
    modes.setShuffle(shuffle);
    modes.setShuffleRepeatOne(shuffle && repeat);
    modes.setShuffleRepeatAll(shuffle && repeat);
    modes.setRepeatAll(repeat);

    TavuPlayLogicData data;
    data.setControls(controls);
    data.setPlayModesSupported(modes);
    return data;
}

void AmazonMusicPlayLogic::reportAutoNext()
{
    AMAZON_MUSIC_ENTER();
    const qint64 end = m_currentTrack.tavuRoles().mediaData().firstResource().duration();
    m_reporter->userReportStop(m_currentEventUrl, Reason::TrackEnd, false, end);
    afterReport(
        m_reporter->userReportPlay(m_pendingTrack.eventCollectorUrl(), Reason::AutoNext, false, 0),
        [this](bool aborted, const ErrorReport& errorReport) {
            autoNextReportFinished(aborted, errorReport);
        });
    m_autoNextPending = false;
}

void AmazonMusicPlayLogic::pauseInternal(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    if (!isPaused()) {
        StreamerPlayLogic::pauseInternal(request);
        m_reporter->userReportStop(m_currentEventUrl, Reason::Pause, true, playTime());
        return;
    }
    if (isCurrentResourceValid())
        return reportUnpauseEvent(request, false);
    LOG4CPLUS_INFO(logger(), "Current resource expired, fetching updated track");
    cmchain::whenFinished(getTrack(Current, false, false), m_context,
        [this, request](
            const CMReply<AmazonMusicTrack>& track) { userUnpauseTrackReceived(request, track); });
}

void AmazonMusicPlayLogic::unpausePlayback(
    const CMSetDataRequest& request, bool changed, bool aborted, const ErrorReport& errorReport)
{
    AMAZON_MUSIC_ENTER_WITH("Report error: " << !errorReport.isEmpty());
    Q_UNUSED(changed)
    if (aborted)
        return request.reply().cancel();
    if (!errorReport.isEmpty() && !overtakePlayback(errorReport))
        return stopRefused(errorReport);
    if (!isPaused())
        return;
    waitForPlaying();
    StreamerPlayLogic::pauseInternal(request);
    // The command itself set the state to playing; that is not the player's word yet.
    waitForPlaying();
}

void AmazonMusicPlayLogic::seekTimeInternal(
    const CMSetDataRequest& request, const QVariantHash& args)
{
    AMAZON_MUSIC_ENTER();
    if (isPaused()) {
        waitForPlaying();
        return StreamerPlayLogic::seekTimeInternal(request, args);
    }
    m_reporter->userReportStop(m_currentEventUrl, Reason::Seek, true, playTime());
    waitForPlaying();
    StreamerPlayLogic::seekTimeInternal(request, args);
    afterReport(m_reporter->userReportPlay(m_currentEventUrl, Reason::Seek, true, playTime()),
        [this](bool aborted, const ErrorReport& errorReport) {
            seekTimeReportFinished(aborted, errorReport);
        });
}

void AmazonMusicPlayLogic::stopInternal(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    // Held: whoever hears of a cancelled reply may play.
    if (const QSharedPointer<AmazonMusicPlayQueue> queue = m_playQueue)
        queue->cancel();
    m_reporter->cancel();
    m_reporter->userReportStop(m_currentEventUrl, Reason::Stop, true, playTime());
    m_nextMediaPrepared = false;
    StreamerPlayLogic::stopInternal(request);
}

void AmazonMusicPlayLogic::playbackEnded()
{
    AMAZON_MUSIC_ENTER();
    m_playQueue.reset();
    m_underrunActive = false;
    m_nextMediaPrepared = false;
    StreamerPlayLogic::playbackEnded();
}

bool AmazonMusicPlayLogic::isPaused() const
{
    AMAZON_MUSIC_ENTER();
    return state() == TavuPlayLogicState::Paused;
}

bool AmazonMusicPlayLogic::shuffleMode() const
{
    AMAZON_MUSIC_ENTER();
    return (m_playMode & shuffleBit) != 0;
}

bool AmazonMusicPlayLogic::anyRepeatMode() const
{
    AMAZON_MUSIC_ENTER();
    return (m_playMode & (repeatOneBit | repeatAllBit)) != 0;
}
