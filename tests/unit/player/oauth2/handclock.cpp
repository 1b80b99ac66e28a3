#include "handclock.h"

#include <algorithm>

class HandClock::HandAlarm : public player::Alarm
{
public:
    HandAlarm(HandClock& clock, int id)
        : m_clock(clock)
        , m_id(id)
    {
    }
    ~HandAlarm() override { m_clock.m_alarms.erase(m_id); }

private:
    HandClock& m_clock;
    const int m_id;
};

std::unique_ptr<player::Alarm> HandClock::after(qint64 ms, std::function<void()> function)
{
    m_alarms.emplace(++m_lastId, Call{ m_now + ms, std::move(function) });
    return std::make_unique<HandAlarm>(*this, m_lastId);
}

qint64 HandClock::untilNext() const
{
    qint64 next = -1;
    for (const auto& [id, call] : m_alarms)
        next = next < 0 ? call.due - m_now : std::min(next, call.due - m_now);
    return next;
}

void HandClock::advance(qint64 ms)
{
    const qint64 end = m_now + ms;
    for (;;) {
        const auto next = std::min_element(m_alarms.begin(), m_alarms.end(),
            [](const auto& a, const auto& b) { return a.second.due < b.second.due; });
        if (next == m_alarms.end() || next->second.due > end)
            break;
        m_now = std::max(m_now, next->second.due);
        const std::function<void()> function = std::move(next->second.function);
        m_alarms.erase(next);
        function();
    }
    m_now = end;
}
