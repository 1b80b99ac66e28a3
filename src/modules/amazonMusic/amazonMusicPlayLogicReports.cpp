#include "amazonMusicPlayLogic.h"

#include "amazonMusicDialog.h"
#include "amazonMusicLog.h"
#include "amazonMusicParser.h"
#include "amazonMusicPlayQueue.h"
#include "amazonMusicTimes.h"

// What the service hears of playback and what it answers: underruns, refusals, ratings; and the
// play mode.

void AmazonMusicPlayLogic::afterReport(
    const CMReply<Response>& report, const ReportOutcome& outcome)
{
    AMAZON_MUSIC_ENTER();
    const int play = m_playCount;
    cmchain::whenFinished(
        report, m_context, [this, play, outcome](const CMReply<Response>& finished) {
            const bool aborted = finished.error().isSet() || play != m_playCount;
            outcome(aborted, finished.value().errorReport);
        });
}

void AmazonMusicPlayLogic::waitForPlaying()
{
    AMAZON_MUSIC_ENTER();
    m_waitForPlaying = true;
    if (state() == TavuPlayLogicState::Playing)
        m_waitForPlayingTimer.start();
}

void AmazonMusicPlayLogic::on_waitForPlayingTimer_timeout()
{
    AMAZON_MUSIC_ENTER();
    if (state() == TavuPlayLogicState::Playing)
        m_waitForPlaying = false;
}

void AmazonMusicPlayLogic::on_playbackDataChanged(const TavuPlayLogicData& data)
{
    AMAZON_MUSIC_ENTER();
    if (data.state() != TavuPlayLogicState::Playing)
        return;
    m_waitForPlayingTimer.stop();
    m_waitForPlaying = false;
    if (!m_underrunActive)
        return;
    LOG4CPLUS_INFO(logger(), "Underrun ended");
    m_underrunActive = false;
    reportUnderrunEnded();
}

void AmazonMusicPlayLogic::on_bufferingLevelChanged(double level)
{
    AMAZON_MUSIC_ENTER_WITH(
        "Buffering level: " << level << " state: " << TavuPlayLogicState::toString(state())
                            << " waitForPlaying " << m_waitForPlaying);
    constexpr double full = 100.0;
    if (!(level < full) || m_underrunActive)
        return;
    if (state() != TavuPlayLogicState::Buffering || m_waitForPlaying)
        return;
    LOG4CPLUS_WARN(logger(), "Underrun occured");
    m_underrunActive = true;
    ++m_underrunCount;
    reportUnderrunStarted(m_underrunCount);
}

void AmazonMusicPlayLogic::reportUnderrunStarted(int count)
{
    AMAZON_MUSIC_ENTER();
    m_reporter->userReportUnderrun(m_currentEventUrl, true, playTime(), count);
}

void AmazonMusicPlayLogic::reportUnderrunEnded()
{
    AMAZON_MUSIC_ENTER();
    m_reporter->userReportUnderrun(m_currentEventUrl, false, playTime(), m_underrunCount);
}

bool AmazonMusicPlayLogic::overtakePlayback(const ErrorReport& errorReport)
{
    AMAZON_MUSIC_ENTER_WITH("Error: " << !errorReport.isEmpty());
    const TavuList<TavuAmazonMusicGeneralErrorReportOption> options = errorReport.options();
    for (int i = 0; i < options.size(); ++i) {
        const TavuAmazonMusicGeneralErrorReportOption option = options.record(i);
        if (!option.resume() || option.action() != QLatin1String("post"))
            continue;
        const QString uri = option.uri();
        if (!uri.isEmpty())
            m_reporter->userSelectAction(TavuUrl::fromEncoded(uri.toUtf8()));
        return true;
    }
    return false;
}

void AmazonMusicPlayLogic::autoNextReportFinished(bool aborted, const ErrorReport& errorReport)
{
    AMAZON_MUSIC_ENTER_WITH("Report error: " << !errorReport.isEmpty());
    if (aborted || errorReport.isEmpty())
        return;
    LOG4CPLUS_WARN(
        logger(), "Do not overtake playback on auto next, stopping, error: " << errorReport);
    sendStopCommand();
    Q_EMIT playbackFailed(refusal(errorReport));
}

void AmazonMusicPlayLogic::seekTimeReportFinished(bool aborted, const ErrorReport& errorReport)
{
    AMAZON_MUSIC_ENTER_WITH("Report error: " << !errorReport.isEmpty());
    if (!aborted && !errorReport.isEmpty() && !overtakePlayback(errorReport))
        stopRefused(errorReport);
}

void AmazonMusicPlayLogic::stopRefused(const ErrorReport& errorReport)
{
    AMAZON_MUSIC_ENTER();
    LOG4CPLUS_WARN(logger(), "Cannot overtake playback, stoping: " << errorReport);
    sendStopCommand();
    Q_EMIT playbackFailed(refusal(errorReport));
}

/// The error of a refused report, which leads to a screen with the service's words and buttons.
CMError AmazonMusicPlayLogic::refusal(const ErrorReport& errorReport)
{
    AMAZON_MUSIC_ENTER();
    CMError error(
        TrString(TrCharData(trExtractContext("AmazonMusicPlayLogic"), "Reporting failed: %1"),
            { errorReport.brief() }));
    error.setActionReply(showRows(
        AmazonMusicParser().createErrorReportScreen(errorReport), amazonMusicTimes::refusalDialog)
                             .__hash());
    return error;
}

void AmazonMusicPlayLogic::reportUnpauseEvent(const CMSetDataRequest& request, bool changed)
{
    AMAZON_MUSIC_ENTER_WITH("Current track changed: " << changed);
    afterReport(m_reporter->userReportPlay(m_currentEventUrl, Reason::Unpause, true, playTime()),
        [this, request, changed](bool aborted, const ErrorReport& errorReport) {
            unpausePlayback(request, changed, aborted, errorReport);
        });
}

void AmazonMusicPlayLogic::on_playerModeItem_changed(const TavuValue& value)
{
    AMAZON_MUSIC_ENTER_WITH(
        "Play mode changed: " << TavuPlayerPlayMode::toString(value.playerPlayMode()));
    m_playMode = value.playerPlayMode();
    if (state() == TavuPlayLogicState::Idle)
        return;
    LOG4CPLUS_INFO(
        logger(), "New play mode: " << TavuPlayerPlayMode::toString(value.playerPlayMode()));
    if (const QSharedPointer<AmazonMusicPlayQueue> queue = m_playQueue)
        queue->playModeChanged(m_currentTrack, shuffleMode());
    if (m_nextMediaPrepared)
        prepareNextMedia();
}

void AmazonMusicPlayLogic::likeInternal(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    userRating(request, TavuAmazonMusicThumbRating::Up);
}

void AmazonMusicPlayLogic::dislikeInternal(const CMSetDataRequest& request)
{
    AMAZON_MUSIC_ENTER();
    userRating(request, TavuAmazonMusicThumbRating::Down);
}

void AmazonMusicPlayLogic::userRating(
    const CMSetDataRequest& request, TavuAmazonMusicThumbRating::Enum rating)
{
    AMAZON_MUSIC_ENTER_WITH("Rating: " << rating);
    const TavuUrl url = m_currentTrack.ratingUrl();
    if (url.isEmpty()) {
        LOG4CPLUS_INFO(logger(), "Operation not supported for current track");
        return request.reply().setValue(QVariant());
    }
    const int play = m_playCount;
    cmchain::whenFinished(m_reporter->userRating(url, rating, playTime()), m_context,
        [this, play, reply = request.reply()](const CMReply<Response>& finished) {
            const bool aborted = finished.error().isSet() || play != m_playCount;
            userRatingFinished(reply, aborted, finished.value().ratingResponse);
        });
}

void AmazonMusicPlayLogic::userRatingFinished(const CMReply<QVariant>& reply, bool aborted,
    const TavuAmazonMusicTrackRatingResponse& response)
{
    AMAZON_MUSIC_ENTER();
    LOG4CPLUS_INFO(logger(), "User rating msg: " << response.message());
    TavuRoles row;
    row.setType(TavuRolesType::Message);
    row.setTitle(response.message());
    reply.setValue(showRows({ row }, amazonMusicTimes::ratingDialog).__variant());
    if (aborted || !response.shouldSkip())
        return;
    LOG4CPLUS_INFO(logger(), "Skipping to next track");
    nextInternal(CMSetDataRequest(path(), QVariant()));
}

/// Puts up a screen for `timeout` milliseconds and returns the answer that leads there.
TavuActionReply AmazonMusicPlayLogic::showRows(const QList<TavuRoles>& rows, int timeout)
{
    AMAZON_MUSIC_ENTER();
    // Destroys itself at its end.
    auto* dialog = new AmazonMusicDialog(nodes(), timeout);
    for (const TavuRoles& row : rows)
        dialog->addRow(row);
    TavuRoles screen;
    screen.setPath(dialog->path());
    TavuActionReply reply;
    reply.setXclass(QStringLiteral("TavuActionReply"));
    reply.setResult(screen);
    return reply;
}
