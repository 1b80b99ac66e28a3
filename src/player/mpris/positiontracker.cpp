#include "positiontracker.h"

#include <cstdlib>

namespace player::mpris {

namespace {

// Reports of an even flow differ from it by scheduling and decoding; jumps by more.
constexpr qint64 toleranceMs = 500;

} // namespace

void PositionTracker::setFlowing(bool flowing, qint64 now)
{
    m_position = positionAt(now);
    m_at = now;
    m_flowing = flowing;
}

void PositionTracker::restart(qint64 now)
{
    m_position = 0;
    m_at = now;
}

bool PositionTracker::report(qint64 position, qint64 at)
{
    const bool jumped = std::llabs(position - positionAt(at)) > toleranceMs;
    m_position = position;
    m_at = at;
    return jumped;
}

qint64 PositionTracker::positionAt(qint64 now) const
{
    return m_flowing ? m_position + qMax<qint64>(0, now - m_at) : m_position;
}

} // namespace player::mpris
