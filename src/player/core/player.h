#pragma once

#include "agedqueue.h"
#include "audiocontrol.h"
#include "cmchain.h"
#include "messagelog.h"
#include "playerfacade.h"
#include "playhistory.h"
#include "ratinglog.h"
#include "recenterrors.h"
#include "rowsearch.h"
#include "rowsource.h"
#include "service.h"
#include "skippedtracks.h"
#include "sleeptimer.h"
#include "tavuoauth2devicecode.h"
#include "tavuplaylogic.h"
#include "tavuvalue.h"

#include <QElapsedTimer>
#include <QSet>

#include <functional>
#include <optional>

class PlayLogicInterface;

namespace player {

/// The player as its faces see it: browsing and playing through the host's root worker, what the
/// play logics tell, and the messages for people.
class Player : public PlayerFacade
{
    Q_OBJECT

public:
    /// `audio` is not owned and must outlive the player.
    explicit Player(AudioControl* audio, QObject* parent = nullptr);
    ~Player() override;

    /// What must be done before playback goes on after a pause; it calls back with an error if that
    /// failed. Set by the one who owns the streamer.
    using BeforeResume = std::function<void(const std::function<void(const CMError&)>&)>;
    void setBeforeResume(BeforeResume beforeResume) { m_beforeResume = std::move(beforeResume); }

    /// Starts the next item, if it is this track, at a position, ms. Set by the one who owns the
    /// streamer.
    using StartAt = std::function<void(const TavuRoles&, qint64)>;
    void setStartAt(StartAt startAt) { m_startAt = std::move(startAt); }

    /// What follows what plays, once it is prepared; empty for nothing.
    void setNextTrack(const TavuRoles& track) { m_history.setNext(track); }

    /// Whether what follows is being fetched at the streamer's wish. Set by the one who owns the
    /// streamer.
    using AwaitsNext = std::function<bool()>;
    void setAwaitsNext(AwaitsNext awaitsNext) { m_awaitsNext = std::move(awaitsNext); }

    /// Shows the row as paused at the position, as if it had been played up to there; going on
    /// plays it from there, and then what follows it at `source`. Whatever is played instead takes
    /// its place.
    void restore(const TavuRoles& row, qint64 position, const RowSource& source = {});
    /// Where the row is from that plays, is paused or is restored; empty when that is not known.
    RowSource source() const { return m_source; }
    /// What plays or is paused, restored or not, with what it takes to play it again.
    TavuRoles track() const { return shown().trackRoles(); }
    /// Milliseconds into it, now.
    qint64 position() const;

    /// From now on this is the service that is browsed and played, and its play logic and login are
    /// followed. Call it once, when the plug-in is ready.
    void followService(const Service& service);
    /// Tells people of something that concerns the player as a whole.
    void addMessage(const QString& kind, const QString& title, const QString& text,
        const QString& source, const QVariantList& rows = {});

    CMReply<QVariant> rows(const QString& path, int from, int to) override;
    CMReply<QVariant> activateRow(const QVariantHash& row, const QVariant& value) override;
    CMReply<QVariant> activatePath(
        const QString& path, const QString& role, const QVariant& value) override;
    CMReply<QVariant> search(const QString& text, const QString& path) override;
    CMReply<QVariant> play(const QVariantHash& row) override;
    CMReply<QVariant> command(Command command) override;
    CMReply<QVariant> seek(qint64 positionMs) override;
    void setPlayMode(int mode) override;
    void setVolume(int volume) override;
    void setMuted(bool muted) override;
    void setSleep(int ms, bool finishTrack) override;
    QVariantHash player() const override;
    QVariantHash queue() const override { return m_history.queue(); }
    QVariantList outputs() const override;
    bool selectOutput(const QString& id) override;
    QVariantHash login() const override;
    void startLogin() override;
    void logout() override;
    QVariantList messages() const override { return m_messages.messages(); }
    QVariantHash service() const override;

private Q_SLOTS:
    void on_rows_changed(const CMPath& path);
    void on_loggedIn_changed(const TavuValue& value);
    void on_deviceCode_changed(const TavuValue& value);
    void on_playMode_changed(const TavuValue& value);

private:
    static CMReply<QVariant> done();
    CMReply<QVariant> setData(const CMPath& path, const QVariant& value);
    CMReply<QVariant> observed(const CMReply<QVariant>& reply, const QString& source);
    CMReply<QVariant> refused(const CMError& error, const QString& source);
    /// Why there is nothing for it to act on; no error when there is.
    CMError hasNothingFor(Command command) const;
    CMReply<QVariant> transport(Command command);
    CMReply<QVariant> pauseOrResume();
    CMReply<QVariant> resume();
    void giveUpResume();
    bool isResuming() const;
    CMReply<QVariant> rateShown(Command command);
    CMReply<QVariant> rate(const CMReply<QVariant>& reply, Rating rating);
    CMReply<QVariant> playRestored();
    void playRestoredAs(const TavuRoles& row, const CMReply<QVariant>& reply);
    RowSearch::Wanted restoredInList() const;
    void showRestoredPaused();
    void fetchRestoredArtwork();
    bool isRestored() const { return !m_restored.isEmpty(); }
    /// Restored, and nothing has taken its place so far.
    bool waitsRestored() const;
    CMReply<QVariant> playRow(const TavuRoles& row, const RowSource& source, bool alone = false);
    CMReply<QVariant> step(Command command);
    bool isStepping() const;
    bool isAboutToGoOn() const;
    void notePlayed(const TavuPlayLogicData& before);
    void noteEnd(const TavuPlayLogicData& before, qint64 position);
    bool mayGoOnItself() const;
    bool hasLostToAge(const TavuRoles& last, bool stepped) const;
    TavuRoles following(const TavuRoles& last, bool stepped) const;
    void goOn(const TavuRoles& last, bool stepped);
    void goOnWith(const CMReply<QVariant>& found);
    bool isGoingOn() const { return !!m_goingOn.data(); }
    void stopGoingOn();
    void giveUpGoingOn();
    void pauseGoingOn();
    void tellPassedOver();
    TavuPlayLogicData shown() const;
    void forgetRestored();
    void showAnswer(const CMVoidReply& reply, const QString& source);
    void showError(const CMError& error, const QString& source);
    /// Calls back with the rows of a screen; with none when they cannot be had.
    void fetchScreen(const CMPath& screen, const std::function<void(const QVariantList&)>& use);
    bool showsReports(const CMPath& screen) const;
    bool isSignedIn() const { return m_loggedIn || !m_service.needsLogin(); }
    void watchRows(const CMPath& path);
    void followLogin();
    void followPlayLogic();
    PlayLogicInterface* playLogic() const;
    CMPath loginPath(const QString& subpath) const;
    void invokeOAuth(const QString& subpath);
    void tellLoginTrouble();
    SleepTimer::Hands sleepHands();
    qint64 remaining() const;
    void setPlayData(const TavuPlayLogicData& data);
    void setPosition(qint64 position);
    void notePosition(qint64 position);
    void fail(const CMError& error);
    void tellFailure(const CMError& error);

    AudioControl* m_audio;
    Service m_service;
    BeforeResume m_beforeResume;
    CMReply<QVariant> m_resume; // The last one; without data before the first.
    StartAt m_startAt;
    AwaitsNext m_awaitsNext;
    MessageLog m_messages;
    SkippedTracks m_skipped;
    ListedRows m_listed;
    RowSearch m_search;
    RowSource m_source; // Of what plays, or is restored.
    bool m_alone = false; // It plays without what followed it there.
    AgedQueue m_aged;
    CMReply<QVariant> m_goingOn; // The search for what follows; without data when there is none.
    CMError m_stepFailure; // Of the listener's step for which it is looked for.
    bool m_sounded = false; // Since the player went on by itself.
    std::optional<Command> m_step; // The listener's, until something has come of it.
    QElapsedTimer m_stepAge;
    QSet<QString> m_watchedRows;
    PlayHistory m_history;
    SleepTimer m_sleep;
    TavuPlayLogicData m_data;
    TavuPlayLogicData m_restored; // Empty once something has started.
    qint64 m_restoredPosition = 0;
    qint64 m_position = 0;
    qint64 m_positionAt = 0; // Milliseconds since the epoch.
    QElapsedTimer m_positionAge;
    double m_bufferLevel = 100.0;
    CMError m_error;
    RecentErrors m_recentErrors;
    RatingLog m_ratings;
    TavuPlayerPlayMode::Enum m_mode = TavuPlayerPlayMode::Normal;
    bool m_loggedIn = false;
    TavuOAuth2DeviceCode m_deviceCode;
    CMContext m_context; // Last: nothing of the above is touched once it has gone.
};

} // namespace player
