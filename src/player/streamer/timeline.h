#pragma once

#include <QtGlobal>

#include <mutex>
#include <optional>
#include <vector>

namespace player {

/// What reaches the sink, by running time: which item sounds when, and at which of its positions.
/// Times are nanoseconds. Written by the streaming thread, read by any.
class Timeline
{
public:
    struct Place
    {
        quint64 branch = 0;
        qint64 position = 0; ///< From the start of the item.
    };

    /// The data that follows is of `branch`.
    void streamStarted(quint64 branch);
    /// The position `time` of the item sounds at `running`.
    void segmentStarted(qint64 running, qint64 time);
    /// A buffer that sounds until `running`.
    void bufferPassed(qint64 running);
    /// Everything that has not sounded yet is void, and running time starts anew.
    void flushed();
    void clear();
    /// How often flushed() was called.
    int flushes() const;

    /// What sounds at a running time; nothing when no buffer has come since the last flush.
    std::optional<Place> at(qint64 running) const;
    /// Where the last buffer ends.
    std::optional<Place> last() const;
    /// The running time at which the last buffer of `branch` ends; -1 when none has come.
    qint64 endOf(quint64 branch) const;
    /// Whether data of `branch` has come since the last flush.
    bool hasReached(quint64 branch) const { return endOf(branch) >= 0; }

private:
    struct Segment
    {
        quint64 branch;
        qint64 running;
        qint64 time;
    };

    Place place(qint64 running) const;

    mutable std::mutex m_mutex;
    // All guarded by m_mutex.
    quint64 m_branch = 0;
    std::vector<Segment> m_segments;
    qint64 m_end = -1;
    int m_flushes = 0;
};

} // namespace player
