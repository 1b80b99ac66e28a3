#pragma once

#include "streamfailure.h"

namespace player {

/// Takes the pipeline's news. Called in GStreamer's threads, and in the caller's of a command; it
/// must not wait for anything. `epoch` is that of Pipeline::epoch() at the time of the news.
class PipelineWatcher
{
public:
    virtual ~PipelineWatcher() = default;

    /// The sink holds its first data since the start or since a seek.
    virtual void prerolled(int epoch) = 0;
    virtual void playing(int epoch) = 0;
    /// The last sample has sounded.
    virtual void ended(int epoch) = 0;
    virtual void outputFailed(int epoch, const QString& text) = 0;
    /// What the output is given has another format.
    virtual void outputFormatChanged(int epoch) = 0;

    // Branches have numbers that are never used again.

    /// The decoded data ran out; the stream goes on.
    virtual void branchDry(quint64 branch) = 0;
    /// The last data has gone to the sink.
    virtual void branchDrained(quint64 branch) = 0;
    /// The same, but the stream failed there.
    virtual void branchCutOff(quint64 branch) = 0;
    /// More is known of the sound's format, or it has changed.
    virtual void branchFormatChanged(quint64 branch) = 0;
    /// What came cannot be decoded.
    virtual void branchFailed(quint64 branch, const StreamFailure& failure) = 0;
};

} // namespace player
