#pragma once

#include <QtGlobal>

namespace player::mpris {

/// Knows where playback stands between two reports, and tells a jump from its even flow. All times
/// are milliseconds.
class PositionTracker
{
public:
    /// The flow goes on, or stands still, from where it is at `now`.
    void setFlowing(bool flowing, qint64 now);
    /// Another item has begun.
    void restart(qint64 now);
    /// Playback was at `position` at the time `at`. Returns whether that is a jump.
    bool report(qint64 position, qint64 at);

    qint64 positionAt(qint64 now) const;

private:
    bool m_flowing = false;
    qint64 m_position = 0;
    qint64 m_at = 0;
};

} // namespace player::mpris
