#pragma once

#include "tavuplaylogic.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QVariant>

#include <functional>

namespace player {

/// Sends the listener to sleep: when its time has come the sound fades away and playback pauses; on
/// demand only when the track that plays then ends. The volume itself is not touched. Somebody who
/// pauses or stops meanwhile has no more need of it.
class SleepTimer : public QObject
{
    Q_OBJECT

public:
    /// What it asks of the player. `fade` gets the part of the volume that is left, 1.0 to 0.0;
    /// `remaining` answers the milliseconds that are left of the track, -1 while unknown.
    struct Hands
    {
        std::function<void(double)> fade;
        std::function<void()> pause;
        std::function<qint64()> remaining;
    };

    /// In ms.
    struct Pace
    {
        int fade = 8000; ///< How long a sound takes to fade away.
        int quiet = 500; ///< How long a pause takes, once it is told, until nothing sounds.
        int patience = 10000; ///< A pause that fails must not leave silence behind.
    };

    explicit SleepTimer(Hands hands);
    SleepTimer(Hands hands, const Pace& pace);

    /// Begins anew; `finishTrack` lets the track end that plays when the time has come.
    void start(qint64 ms, bool finishTrack);
    void cancel();
    /// "at" (ms since the epoch), "remaining" (ms from now), "finishTrack"; empty while it is off.
    QVariantHash state() const;

    /// What plays now, and how.
    void follow(const TavuPlayLogicData& shown);

Q_SIGNALS:
    void changed();

private:
    // Ending: it has paused, or somebody else has; the volume is back when that is done.
    enum class Stage { Off, Waiting, Finishing, Fading, Ending };

    void on_due();
    void tick();
    void fadeTo(double part);
    void pause();
    void end(int restoreMs);

    const Hands m_hands;
    const Pace m_pace;
    Stage m_stage = Stage::Off;
    bool m_finishTrack = false;
    QTimer m_due;
    QTimer m_tick;
    QElapsedTimer m_fading;
    double m_part = 1.0;
    TavuPlayLogicData m_shown;
};

} // namespace player
