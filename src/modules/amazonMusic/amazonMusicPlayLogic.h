#pragma once

#include "amazonMusicReporter.h"
#include "amazonMusicTrack.h"
#include "cmchain.h"
#include "streamerplaylogic.h"
#include "tavuactionreply.h"
#include "tavuamazonmusic.h"
#include "tavuamazonmusicvocabulary.h"

#include <QSharedPointer>
#include <QTimer>

#include <functional>

class AmazonMusicConnect;
class AmazonMusicPlayQueue;
class AmazonMusicRetriever;

/// Turns the player's transport commands into track fetches, streamer commands and reports to the
/// service. Each play of a row has a queue of its own, which lives until playback ends; before the
/// first play and after the end there is none, and a command then ends in an error or in nothing.
///
/// What belongs to an earlier play than the present one comes too late: a track, a report or a next
/// item of it changes nothing. A command whose request is answered at once, before its track is
/// there, tells of a later failure by playbackFailed(). Everything runs on the node's thread.
class AmazonMusicPlayLogic : public StreamerPlayLogic
{
    Q_OBJECT

public:
    /// Which track is wanted, seen from the one that the player has confirmed as playing.
    enum Direction : int { Next = 0, Current = 1, Previous = 2 };

    /// The last three are not owned and outlive the play logic.
    AmazonMusicPlayLogic(CMNodes* nodes, const CMPath& path, AmazonMusicConnect* connect,
        AmazonMusicRetriever* retriever, AmazonMusicReporter* reporter);
    ~AmazonMusicPlayLogic() override;

public Q_SLOTS:
    void on_bufferingLevelChanged(double level);
    void on_playbackDataChanged(const TavuPlayLogicData& data);
    void on_playerModeItem_changed(const TavuValue& value);
    void on_waitForPlayingTimer_timeout();
    /// The request carries roles about to be played; it is answered with them, their media data
    /// fetched anew when the first resource has expired.
    void on_prePlay_activated(const CMSetDataRequest& request);

protected:
    void playInternal(const CMSetDataRequest& request, const TavuPlayLogicPlayArgs& args) override;
    void likeInternal(const CMSetDataRequest& request) override;
    void dislikeInternal(const CMSetDataRequest& request) override;
    void nextInternal(const CMSetDataRequest& request) override;
    void previousInternal(const CMSetDataRequest& request) override;
    void pauseInternal(const CMSetDataRequest& request) override;
    void stopInternal(const CMSetDataRequest& request) override;
    void playbackEnded() override;
    void seekTimeInternal(const CMSetDataRequest& request, const QVariantHash& args) override;
    void prepareNextMedia() override;
    TavuPlayLogicData mediaPlaybackStarted(
        const TavuRoles& mediaRoles, const TavuRoles& trackRoles) override;

private:
    using Response = AmazonMusicReporter::Response;
    using ErrorReport = TavuAmazonMusicGeneralErrorReport;
    using Reason = TavuAmazonMusicEventReason;
    /// How to step along the queue until there is a track that plays.
    struct Walk
    {
        Direction direction;
        bool shuffle;
        bool wrap;
        int tried; // Tracks so far.
    };

    // Tracks.
    CMReply<AmazonMusicTrack> getTrack(Direction direction, bool shuffle, bool wrap);
    CMReply<AmazonMusicTrack> stepFrom(const AmazonMusicTrack& track, const Walk& walk);
    void trackReceived(const CMReply<AmazonMusicTrack>& result,
        const CMReply<AmazonMusicTrack>& fetched, Direction direction, bool shuffle, bool wrap);
    void walkTracks(const CMReply<AmazonMusicTrack>& result,
        const CMReply<AmazonMusicTrack>& fetched, Walk walk);
    CMReply<AmazonMusicTrack> tryTrack(const CMReply<AmazonMusicTrack>& result,
        const CMReply<AmazonMusicTrack>& fetched, const Walk& walk);
    bool mayWalkOn(const Walk& walk) const;

    // Transport.
    void playFetched(const CMReply<AmazonMusicTrack>& track, const CMReply<QVariant>& reply,
        Reason::Enum reason);
    void userPlayTrackReceived(const CMReply<QVariant>& reply,
        const CMReply<AmazonMusicTrack>& track, Reason::Enum reason);
    void startPlayback(const CMReply<QVariant>& reply, const AmazonMusicTrack& track, bool aborted,
        const ErrorReport& errorReport);
    void failCommand(const CMReply<QVariant>& reply, const CMError& error);
    void skip(Direction direction, Reason::Enum reason, const CMSetDataRequest& request);
    void restartTrack();
    void prepareNextMediaTrackReceived(const CMReply<AmazonMusicTrack>& reply);
    void declineNextMedia();
    void reportAutoNext();
    void unpausePlayback(const CMSetDataRequest& request, bool changed, bool aborted,
        const ErrorReport& errorReport);
    bool isPaused() const;
    bool shuffleMode() const;
    bool anyRepeatMode() const;

    // Fresh resources.
    void updateMediaData(TavuRoles roles, const CMReply<QVariant>& reply,
        const CMReply<TavuAmazonMusicTrackInstance>& instance);
    void userUnpauseTrackReceived(
        const CMSetDataRequest& request, const CMReply<AmazonMusicTrack>& track);
    bool isCurrentResourceValid() const;

    // Reports.
    using ReportOutcome = std::function<void(bool aborted, const ErrorReport& errorReport)>;
    void afterReport(const CMReply<Response>& report, const ReportOutcome& outcome);
    void reportUnpauseEvent(const CMSetDataRequest& request, bool changed);
    void reportUnderrunStarted(int count);
    void reportUnderrunEnded();
    bool overtakePlayback(const ErrorReport& errorReport);
    void autoNextReportFinished(bool aborted, const ErrorReport& errorReport);
    void seekTimeReportFinished(bool aborted, const ErrorReport& errorReport);
    void stopRefused(const ErrorReport& errorReport);
    CMError refusal(const ErrorReport& errorReport);
    void waitForPlaying();

    // Ratings.
    void userRating(const CMSetDataRequest& request, TavuAmazonMusicThumbRating::Enum rating);
    void userRatingFinished(const CMReply<QVariant>& reply, bool aborted,
        const TavuAmazonMusicTrackRatingResponse& response);
    TavuActionReply showRows(const QList<TavuRoles>& rows, int timeout);

    AmazonMusicConnect* m_connect;
    AmazonMusicRetriever* m_retriever;
    QSharedPointer<AmazonMusicPlayQueue> m_playQueue; // Of the present play; null without one.
    AmazonMusicReporter* m_reporter;
    int m_playMode = 0; // A TavuPlayerPlayMode.
    AmazonMusicTrack m_pendingTrack; // Handed to the player last, not yet confirmed.
    AmazonMusicTrack m_currentTrack; // Confirmed as playing.
    TavuUrl m_currentEventUrl; // Of the current track; every stop report goes there.
    bool m_autoNextPending = false; // The next start of playback is an automatic change.
    int m_underrunCount = 0; // In this play.
    bool m_waitForPlaying = true; // A drop of the buffer is not an underrun yet.
    QTimer m_waitForPlayingTimer;
    bool m_underrunActive = false; // Reported as started and not as ended.
    bool m_nextMediaPrepared = false; // The player's wish for a next item was answered.
    int m_playCount = 0; // Plays of rows; what was begun under a smaller count comes too late.
    int m_wishCount = 0; // The player's wishes for a next item.
    int m_openWish = 0; // The one to be answered; 0 without one.
    CMContext m_context;
};
