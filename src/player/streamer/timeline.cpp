#include "timeline.h"

#include <algorithm>

namespace player {

namespace {

using Guard = std::lock_guard<std::mutex>;

// The present item's, the next one's, and one more where an item comes in pieces.
constexpr std::size_t segmentsKept = 4;

} // namespace

void Timeline::streamStarted(quint64 branch)
{
    const Guard guard(m_mutex);
    m_branch = branch;
}

void Timeline::segmentStarted(qint64 running, qint64 time)
{
    const Guard guard(m_mutex);
    m_segments.push_back({ m_branch, running, time });
    if (m_segments.size() > segmentsKept)
        m_segments.erase(m_segments.begin());
}

void Timeline::bufferPassed(qint64 running)
{
    const Guard guard(m_mutex);
    m_end = std::max(m_end, running);
}

void Timeline::flushed()
{
    const Guard guard(m_mutex);
    m_segments.clear();
    m_end = -1;
    ++m_flushes;
}

void Timeline::clear()
{
    flushed();
    streamStarted(0);
}

std::optional<Timeline::Place> Timeline::at(qint64 running) const
{
    const Guard guard(m_mutex);
    if (m_end < 0 || m_segments.empty())
        return std::nullopt;
    return place(std::min(running, m_end));
}

std::optional<Timeline::Place> Timeline::last() const
{
    const Guard guard(m_mutex);
    if (m_end < 0 || m_segments.empty())
        return std::nullopt;
    return place(m_end);
}

qint64 Timeline::endOf(quint64 branch) const
{
    const Guard guard(m_mutex);
    const auto isOfBranch = [branch](const Segment& segment) { return segment.branch == branch; };
    const auto last = std::find_if(m_segments.rbegin(), m_segments.rend(), isOfBranch);
    if (m_end < 0 || last == m_segments.rend())
        return -1;
    // The next one's sound begins where this one's ends.
    return last == m_segments.rbegin() ? std::max(m_end, last->running) : std::prev(last)->running;
}

int Timeline::flushes() const
{
    const Guard guard(m_mutex);
    return m_flushes;
}

Timeline::Place Timeline::place(qint64 running) const
{
    const Segment* segment = &m_segments.front();
    for (const Segment& candidate : m_segments) {
        if (candidate.running <= running)
            segment = &candidate;
    }
    return { segment->branch, segment->time + std::max<qint64>(0, running - segment->running) };
}

} // namespace player
