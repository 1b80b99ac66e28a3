#pragma once

#include "clock.h"

#include <map>

/// A clock that stands still until a test turns it.
class HandClock : public player::Clock
{
public:
    qint64 monotonicMs() const override { return m_now; }
    qint64 wallMs() const override { return m_now + wallOffsetMs; }
    std::unique_ptr<player::Alarm> after(qint64 ms, std::function<void()> function) override;

    /// Turns the clock and calls what becomes due, in order.
    void advance(qint64 ms);
    /// Milliseconds until the next call; -1 when none is waiting.
    qint64 untilNext() const;
    int waiting() const { return int(m_alarms.size()); }

    /// May be changed at any time, as wall clocks are.
    qint64 wallOffsetMs = 1500000000000;

private:
    class HandAlarm;
    struct Call
    {
        qint64 due;
        std::function<void()> function;
    };

    qint64 m_now = 1000;
    int m_lastId = 0;
    std::map<int, Call> m_alarms;
};
