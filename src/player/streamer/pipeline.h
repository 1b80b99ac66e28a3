#pragma once

#include "gstpointer.h"
#include "pipelinewatcher.h"
#include "soundformat.h"
#include "timeline.h"

#include <atomic>
#include <memory>

namespace player {

class Branch;

/// What joins the items and sends them out: concat, conversion, volume, sink. The items come in the
/// order in which they are added, each beginning where the one before ends.
class Pipeline
{
public:
    /// Takes the sink over, a floating reference.
    Pipeline(GstElement* sink, PipelineWatcher& watcher);
    ~Pipeline();
    Q_DISABLE_COPY_MOVE(Pipeline)

    /// Appends an item and starts it; the pipeline must have been paused or playing before. The
    /// branch must be removed before it goes.
    void add(Branch& branch);
    /// Only an item whose turn is over or has not come, or after reset().
    void remove(Branch& branch);

    /// Pre-rolls: the first data waits in the sink.
    void pause();
    /// True when it plays already, else the watcher will be told.
    bool play();
    /// Silence: data on its way is void, and news of the old epoch is stale.
    void reset();
    int epoch() const { return m_epoch; }
    /// Whether it could not play now, since the sink has nothing in hand.
    bool isStarved() const;

    /// Milliseconds into the item whose turn it is. False when that cannot be sought.
    bool seek(qint64 positionMs);

    const Timeline& timeline() const { return m_timeline; }
    /// Nanoseconds; what sounds now, by the clock that the sink keeps to.
    qint64 runningTime() const;
    /// Whether the sink keeps to a clock. One that does not takes data as fast as it comes.
    bool isSynced() const { return m_synced; }
    /// What the very end of the output is given; zeros before the first sound.
    RawFormat outputFormat() const;
    /// What stands at that end, for people.
    QString outputElement() const;
    /// 0.0 to 1.0, the factor for the samples.
    void setVolume(double factor, bool muted);

private:
    void build(GstElement* sink);
    void watchSink();
    void watchOutput();
    void passed(GstPadProbeInfo* info);
    void eventPassed(GstEvent* event);
    void bufferPassed(GstBuffer* buffer);
    void take(GstMessage* message);
    void takeError(GstMessage* message);

    static GstPadProbeReturn onPassed(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    static void onOutputCaps(GstPad* pad, GParamSpec* caps, gpointer self);
    static GstBusSyncReply onMessage(GstBus* bus, GstMessage* message, gpointer self);

    PipelineWatcher& m_watcher;
    GstPointer<GstElement> m_pipeline;
    GstElement* m_concat = nullptr; // These are owned by the pipeline.
    GstElement* m_volume = nullptr;
    const GstPointer<GstElement> m_last; // Of the output.
    const GstPointer<GstPad> m_output; // Its input.
    gulong m_outputWatch = 0;
    std::atomic<int> m_epoch{ 0 };
    bool m_playing = false;
    bool m_synced = true;
    Timeline m_timeline;
    GstSegment m_segment{}; // The streaming thread's.
};

} // namespace player
