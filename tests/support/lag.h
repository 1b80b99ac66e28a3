#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>

/// By how much the event loop of the thread that made it has been late since then: what this thread
/// times is as late, for the machine's sake.
class Lag
{
public:
    Lag()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { note(); });
        m_clock.start();
        m_timer.start(tickMs);
    }

    qint64 worstMs() const { return std::max(m_worstMs, pendingMs()); }
    qint64 sumMs() const { return m_sumMs + pendingMs(); }

private:
    static constexpr int tickMs = 10;

    qint64 pendingMs() const { return std::max<qint64>(0, m_clock.elapsed() - tickMs); }

    void note()
    {
        m_worstMs = worstMs();
        m_sumMs = sumMs();
        m_clock.restart();
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_worstMs = 0;
    qint64 m_sumMs = 0;
};
