#include "clock.h"

#include <QDateTime>
#include <QTimer>

#include <chrono>
#include <limits>

namespace player {

namespace {

class TimerAlarm : public Alarm
{
public:
    TimerAlarm(int ms, const std::function<void()>& function)
    {
        // Others may ring early, and who polls too early is told to slow down.
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, function);
        m_timer.start(ms);
    }

private:
    QTimer m_timer;
};

} // namespace

qint64 SystemClock::monotonicMs() const
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

qint64 SystemClock::wallMs() const
{
    return QDateTime::currentMSecsSinceEpoch();
}

std::unique_ptr<Alarm> SystemClock::after(qint64 ms, std::function<void()> function)
{
    const qint64 longest = std::numeric_limits<int>::max();
    return std::make_unique<TimerAlarm>(int(qBound<qint64>(0, ms, longest)), function);
}

} // namespace player
