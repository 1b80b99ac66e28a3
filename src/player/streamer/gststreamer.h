#pragma once

#include "httpoptions.h"
#include "pipelinewatcher.h"
#include "soundformat.h"
#include "streamer.h"
#include "streamremains.h"
#include "streamrequest.h"

#include <QTimer>

#include <atomic>
#include <memory>
#include <optional>
#include <utility>

namespace player {

class Branch;
class Pipeline;
class TransferLoop;

/// What the streamer is set to.
struct StreamerOptions
{
    HttpOptions http;
    /// Where the sound goes; makeOutput() says what it may be. Looked at when something is played.
    QString output = QStringLiteral("auto");
};

/// The streamer on GStreamer. Every item is pre-rolled before it sounds, so the attribute
/// TavuStreamerAttributesStartPaused() asks for nothing more. The failure of an item that was cut
/// off is told when what had come of it has been heard. Errors carry an HTTP status as
/// streamError() says.
///
/// To play the item that plays already, by its id, means another address for it: what has come
/// sounds on without a gap, and what is missing is asked for there. Where that is too late it
/// begins anew with what has come.
///
/// It lives in the thread that made it, which needs an event loop; GStreamer's threads only post to
/// it. When nothing plays it holds neither a device nor a timer.
class GstStreamer : public Streamer, public PipelineWatcher
{
    Q_OBJECT

public:
    explicit GstStreamer(const StreamerOptions& options, QObject* parent = nullptr);
    ~GstStreamer() override;

    // Commands, on any thread.

    void play(quint64 id, const TavuRoles& roles, const QVariantHash& attributes) override;
    void setNextMedia(quint64 id, const TavuRoles& roles, const QVariantHash& attributes) override;
    void setNoNextMedia() override;
    void pause() override;
    void resume() override;
    void stop() override;
    void seekTime(qint64 position) override;

    // On the streamer's thread.

    /// Sends the sound elsewhere. What plays goes on there at its position. On an error, which is
    /// returned, nothing has changed.
    CMError setOutput(const QString& setting);
    QString output() const { return m_options.output; }
    /// 0 to 100, by the ear's scale.
    void setVolume(int percent);
    void setMuted(bool muted);
    /// The part of the volume that sounds, 1.0 to 0.0, by the ear's scale.
    void setFade(double part);
    /// Of the item that sounds or is paused, as far as it is known; nothing while none is.
    std::optional<SoundPath> soundPath() const;

Q_SIGNALS:
    /// soundPath() may have changed.
    void soundPathChanged();
    /// The output was lost while something played, which is paused now; resume() tries anew.
    void outputLost(const CMError& error);

private:
    struct Item
    {
        quint64 id = 0;
        QString title;
        StreamRequest request;
        bool renewed = false;
        qint64 startMs = 0;
        bool randomAccess = false; // It is sought in pieces rather than read on.
        bool goesOn = false; // What was fetched before it got its address is used.
        bool started = false; // mediaStarted() was sent.
        bool nextWanted = false; // nextMediaWanted() was sent.
    };

    /// Of an item that may be begun anew.
    struct Kept
    {
        quint64 id = 0;
        bool randomAccess = false;
        StreamRemains remains;
    };

    // Sound that must lie ready at a start.
    static constexpr qint64 startTargetMs = 500;

    // What the next item is to be, once it has been asked for.
    enum class Next { Undecided, None, Item };

    // PipelineWatcher, in GStreamer's threads.
    void prerolled(int epoch) override;
    void playing(int epoch) override;
    void ended(int epoch) override;
    void outputFailed(int epoch, const QString& text) override;
    void outputFormatChanged(int epoch) override;
    void branchDry(quint64 branch) override;
    void branchDrained(quint64 branch) override;
    void branchCutOff(quint64 branch) override;
    void branchFormatChanged(quint64 branch) override;
    void branchFailed(quint64 branch, const StreamFailure& failure) override;

    // Commands, on the streamer's thread.
    void doPlay(quint64 id, const TavuRoles& roles, const QVariantHash& attributes);
    void doSetNext(quint64 id, const TavuRoles& roles, const QVariantHash& attributes);
    void doSetNoNext();
    void doPause();
    void doResume();
    void doSeek(qint64 position);

    // The present item's course.
    void startPresent(qint64 positionMs);
    void startPresent(std::unique_ptr<Branch> branch, qint64 positionMs);
    void reopen(qint64 positionMs);
    void beginAnew(qint64 positionMs);
    void keepFetched();
    bool goOnWith(const Item& renewed);
    void seekPresent();
    void onPrerolled();
    void onPlaying();
    void onEnded();
    void finishPresent();
    void failPresent(const StreamFailure& failure);
    void tellStarted();

    // The next item, and how it takes over.
    void prepareNext();
    void dropNext();
    void failNext(const StreamFailure& failure);
    void planTurn();
    void onTurn();
    void takeOver();
    void startNextAfresh();
    void wantNext();
    void checkNextWanted();

    // Buffering.
    void onDry();
    void checkDry();
    void beginBuffering(qint64 targetMs);
    void checkBuffer();

    // The output.
    StreamFailure openOutput();
    void onOutputFailed(const QString& text);
    void loseOutput(const StreamFailure& failure);
    void applyVolume();

    void applyState();
    void setPlaying(bool plays);
    void report(int state);
    void tick();
    qint64 position() const;
    qint64 durationMs() const;
    qint64 untilSilenceMs() const;
    void closeBranches();
    void close();
    void forget();

    std::unique_ptr<Branch> makeBranch(Item& item);
    static Item itemOf(
        quint64 id, const TavuRoles& roles, const QVariantHash& attributes, StreamFailure& failure);
    bool isPresent(quint64 branch) const;
    /// Runs a function on the streamer's thread, later.
    template <class Function>
    void post(Function function)
    {
        QMetaObject::invokeMethod(this, std::move(function), Qt::QueuedConnection);
    }
    /// Emits, unless what plays is to end by a command that waits.
    template <class Signal, class... Args>
    void tell(Signal signal, Args... args)
    {
        if (m_endsGiven == m_endsDone)
            Q_EMIT(this->*signal)(args...);
    }

    StreamerOptions m_options;
    int m_volume = 100;
    bool m_muted = false;
    double m_fade = 1.0;

    // Commands that end what plays, given and executed. While they differ nothing is told.
    std::atomic<int> m_endsGiven{ 0 };
    int m_endsDone = 0;

    std::unique_ptr<TransferLoop> m_loop;
    std::unique_ptr<Pipeline> m_pipeline;
    quint64 m_lastBranch = 0;

    std::optional<Item> m_item; // The present one.
    std::unique_ptr<Branch> m_branch;
    Kept m_kept;
    Next m_nextDecision = Next::Undecided;
    std::optional<Item> m_next;
    std::unique_ptr<Branch> m_nextBranch; // Null while it cannot be prepared.
    std::unique_ptr<Branch> m_strayBranch; // Had its turn already when it was dropped.

    bool m_pausedByUser = false;
    bool m_prerolled = false; // The sink holds data.
    bool m_buffering = false; // Sound is held back until more of it lies ready.
    bool m_wantsPlaying = false; // What the pipeline was told last.
    bool m_plays = false; // And it does.
    bool m_waitsForNext = false; // The present item has ended.
    bool m_outputLost = false;
    std::optional<qint64> m_seekTo; // Asked for, not yet begun.
    std::optional<qint64> m_seeking; // Begun.
    int m_flushesBefore = 0; // The seek that has begun.
    qint64 m_restingPosition = 0; // While the pipeline does not tell it.
    qint64 m_bufferTargetMs = 0;
    int m_levelTold = -1; // -1 is none.
    int m_stateTold = 0; // 0 is none.
    quint64 m_passedWhenDry = 0;

    QTimer m_tick; // Positions.
    QTimer m_fill; // Looks at the buffer while it fills.
    QTimer m_dry; // Confirms that the sound ran dry.
    QTimer m_turn; // The present item's last sample sounds.
    QTimer m_nextDeadline;
};

} // namespace player
