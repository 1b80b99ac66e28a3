#pragma once

#include "cmchain.h"
#include "playlogicbase.h"
#include "streamer.h"

#include <QElapsedTimer>

#include <utility>

/// A play logic that plays through the host's streamer. It keeps its own picture of what the
/// streamer does, so that data() and playTime() answer at once: its commands change the picture
/// when they are given, the streamer's notifications when they arrive. News of items that are no
/// longer the present or the prepared one is dropped. An item that the streamer gives up is passed
/// over as if the user had pressed next. An item that ends or is given up while a play command is
/// under way ends nothing: playback waits for the command's outcome. Everything runs on the node's
/// thread.
class TAVU_EXPORT StreamerPlayLogic : public PlayLogicBase
{
    Q_OBJECT

public:
    StreamerPlayLogic(CMNodes* nodes, const CMPath& path);
    ~StreamerPlayLogic() override;

    /// What plays, and how.
    const TavuPlayLogicData& data() const { return m_data; }
    TavuPlayLogicState::Enum state() const { return m_data.state(); }
    /// Milliseconds into the present item; 0 when idle.
    qint64 playTime() const;

    void setDataRequest(const CMSetDataRequest& request) override;

Q_SIGNALS:
    /// Something in data() changed. The position is not in it.
    void playbackDataChanged(const TavuPlayLogicData& data);
    void bufferLevelChanged(double percent);
    /// Milliseconds; sent on jumps and a few times a second while playing.
    void positionChanged(qint64 position);
    /// The present item failed and nothing could follow it, or something else ended playback that
    /// the user did not ask for.
    void playbackFailed(const CMError& error);
    /// An item failed and the next one is tried.
    void mediaSkipped(const TavuRoles& trackRoles, const CMError& error);

protected:
    void sendPlayCommand(const TavuRoles& roles, const QVariantHash& attributes);
    void sendSetNextMediaCommand(const TavuRoles& roles, const QVariantHash& attributes);
    void sendNoNextMediaCommand();
    /// Ends playback: the streamer falls silent, and playbackEnded() runs before this returns.
    void sendStopCommand();
    void sendSeekTimeCommand(qint64 position);

    /// Pauses or goes on; an error when idle.
    void pauseInternal(const CMSetDataRequest& request) override;
    void stopInternal(const CMSetDataRequest& request) override;
    void seekTimeInternal(const CMSetDataRequest& request, const QVariantHash& args) override;
    /// Playback came to its end, by itself or by a command. The base makes the state idle.
    virtual void playbackEnded();
    /// The streamer wants the item that follows: answer, now or later, with a set-next or a no-next
    /// command. When the present item ends before the answer, playback waits for it.
    virtual void prepareNextMedia() = 0;
    /// An item begins to sound, or is passed over because it failed before it did. Returns the
    /// controls and play modes for it.
    virtual TavuPlayLogicData mediaPlaybackStarted(
        const TavuRoles& mediaRoles, const TavuRoles& trackRoles) = 0;

private Q_SLOTS:
    void on_streamer_mediaStarted(quint64 id);
    void on_streamer_stateChanged(quint64 id, int state);
    void on_streamer_positionChanged(quint64 id, qint64 position);
    void on_streamer_bufferLevelChanged(quint64 id, double percent);
    void on_streamer_nextMediaWanted(quint64 id);
    void on_streamer_ended(quint64 id);
    void on_streamer_failed(quint64 id, const CMError& error);
    void on_streamer_rolesRenewed(quint64 id, const TavuRoles& roles);
    void on_playbackFailed();

private:
    struct Item
    {
        quint64 id = 0; // 0 is no item.
        TavuRoles roles;
        bool started = false;
        CMError failure; // Set once the streamer has given the item up.
    };

    void connectStreamer();
    static Item newItem(const TavuRoles& roles);
    bool isPresent(quint64 id) const { return id != 0 && id == m_present.id; }
    void startPresent();
    void skipPresent(const CMError& error);
    bool hasFailedInARow(const TavuRoles& roles) const;
    void giveUpLater();
    bool isPlayUnderWay() const { return !!m_play.data() && !m_play.isFinished(); }
    void awaitPlay();
    void pausePresent();
    void setPosition(qint64 position);
    void setState(TavuPlayLogicState::Enum state);
    void setData(const TavuPlayLogicData& data);
    void forgetItems();

    TavuPlayLogicData m_data;
    TavuRoles m_mediaRoles; // Of the play command given last.
    Item m_present;
    Item m_next;
    bool m_nextWanted = false; // The logic owes the streamer the item that follows.
    CMReply<QVariant> m_play; // Of the play command given last; without data before the first.
    bool m_playAwaited = false; // Nothing sounds any more, and a play command is under way.
    qint64 m_position = 0; // When m_positionAge was started.
    QElapsedTimer m_positionAge;
    QList<CMPath> m_failedInARow; // The items that failed since one sounded.
    CMError m_lastFailure;
    CMContext m_context;
};
