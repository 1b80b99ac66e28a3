#include "sleeptimer.h"

#include <QDateTime>

#include <algorithm>

namespace player {

namespace {

constexpr int tickMs = 100;
constexpr double nearlySilent = 0.1;

bool plays(const TavuPlayLogicData& data)
{
    return data.state() == TavuPlayLogicState::Playing
        || data.state() == TavuPlayLogicState::Buffering;
}

} // namespace

SleepTimer::SleepTimer(Hands hands)
    : SleepTimer(std::move(hands), Pace())
{
}

SleepTimer::SleepTimer(Hands hands, const Pace& pace)
    : m_hands(std::move(hands))
    , m_pace(pace)
{
    m_due.setSingleShot(true);
    m_due.setTimerType(Qt::PreciseTimer);
    m_tick.setInterval(tickMs);
    connect(&m_due, &QTimer::timeout, this, &SleepTimer::on_due);
    connect(&m_tick, &QTimer::timeout, this, &SleepTimer::tick);
}

void SleepTimer::start(qint64 ms, bool finishTrack)
{
    m_tick.stop();
    fadeTo(1.0);
    m_stage = Stage::Waiting;
    m_finishTrack = finishTrack;
    m_due.start(static_cast<int>(ms));
    Q_EMIT changed();
}

void SleepTimer::cancel()
{
    if (m_stage == Stage::Off)
        return;
    m_stage = Stage::Off;
    m_due.stop();
    m_tick.stop();
    fadeTo(1.0);
    Q_EMIT changed();
}

QVariantHash SleepTimer::state() const
{
    if (m_stage == Stage::Off || m_stage == Stage::Ending)
        return {};
    // The wall clock may have been set meanwhile.
    const qint64 remaining = m_stage == Stage::Waiting ? qMax(0, m_due.remainingTime()) : 0;
    return { { QStringLiteral("at"), QDateTime::currentMSecsSinceEpoch() + remaining },
        { QStringLiteral("remaining"), remaining },
        { QStringLiteral("finishTrack"), m_finishTrack } };
}

void SleepTimer::on_due()
{
    if (m_stage == Stage::Ending || !plays(m_shown))
        return cancel();
    m_stage = m_finishTrack ? Stage::Finishing : Stage::Fading;
    m_fading.start();
    m_tick.start();
}

void SleepTimer::tick()
{
    const bool finishing = m_stage == Stage::Finishing;
    const qint64 left = finishing ? m_hands.remaining() : m_pace.fade - m_fading.elapsed();
    const double part = double(left) / double(m_pace.fade);
    const bool startedAgain = finishing && m_part < nearlySilent && part > m_part + nearlySilent;
    if (startedAgain || (!finishing && left <= 0))
        return pause();
    // Of a track whose end is not known the change to the next one tells.
    if (left >= 0)
        fadeTo(std::clamp(part, 0.0, 1.0));
}

void SleepTimer::follow(const TavuPlayLogicData& shown)
{
    const bool otherTrack = shown.trackRoles().path() != m_shown.trackRoles().path();
    m_shown = shown;
    const bool finishing = m_stage == Stage::Finishing;
    if (!finishing && m_stage != Stage::Fading && m_stage != Stage::Ending)
        return;
    if (!plays(shown))
        end(m_pace.quiet);
    else if (finishing && otherTrack)
        pause();
}

void SleepTimer::fadeTo(double part)
{
    if (part == m_part)
        return;
    m_part = part;
    m_hands.fade(part);
}

void SleepTimer::pause()
{
    fadeTo(0.0);
    end(m_pace.patience);
    m_hands.pause();
}

void SleepTimer::end(int restoreMs)
{
    m_stage = Stage::Ending;
    m_tick.stop();
    m_due.start(restoreMs);
    Q_EMIT changed();
}

} // namespace player
