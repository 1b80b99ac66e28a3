#pragma once

#include "gstpointer.h"
#include "httpsource.h"
#include "httpstream.h"
#include "pipelinewatcher.h"
#include "soundformatprobe.h"

#include <atomic>

namespace player {

/// One item's way from the network to samples: source, decoder, and a queue of decoded sound. It
/// begins to fetch when it is made, and to decode when it has been started.
///
/// It is no part of the pipeline that its pad is linked to, and changes its state by itself: as a
/// part it would hold up the pipeline's changes of state until it has found its decoder, and with
/// them the item that plays.
class Branch
{
public:
    /// `number` is unique in the process. `watcher` is told as long as the branch lives.
    Branch(quint64 number, TransferLoop& loop, const StreamRequest& request,
        const HttpOptions& options, Access access, StreamRemains remains, PipelineWatcher& watcher);
    ~Branch();
    Q_DISABLE_COPY_MOVE(Branch)

    quint64 number() const { return m_number; }
    /// Where its samples come out.
    GstPointer<GstPad> output() const;
    void start();
    /// Ends it; nothing is notified any more when this returns. The pad behind its output must have
    /// been released by then.
    void stop();

    /// Milliseconds of sound that lie ready, received and decoded. The rest of a stream that has
    /// come whole counts as endless.
    qint64 bufferedMs() const;
    /// Whether no decoded sound is in hand although more is to come.
    bool isDry() const;
    /// How many buffers of sound have left it; 0 before the first.
    quint64 passedBuffers() const { return m_passed; }
    /// Whether everything has left it, up to the end or to where the stream failed.
    bool isDrained() const { return m_drained; }
    /// Whether what has left it ends before the item's end.
    bool isCutOff() const;
    /// Whether it can be sought only after it has been made anew for random access.
    bool needsRandomAccess() const { return m_needsRandomAccess; }
    /// While it is sought, what lies behind it follows its flushes.
    void setSeeking(bool seeking);
    bool isDownloaded() const { return m_stream->progress().complete; }
    /// From the stream itself, in milliseconds; 0 when it does not tell.
    qint64 streamDurationMs() const;
    SoundFormat format() const { return m_format.format(); }
    /// Why the stream was cut off; `otherwise` when the stream itself is whole.
    StreamFailure failure(StreamFailure otherwise) const;
    /// What has been fetched, for another branch of the same item; this one ends where it is.
    StreamRemains takeRemains() { return m_stream->closeForAnother(); }
    /// Goes on with another address; false when it is too late.
    bool renew(const StreamRequest& request) { return m_stream->renew(request); }

private:
    void build();
    void watchQueue();
    void linkDecoded(GstPad* pad);
    void takeError(GstMessage* message);
    void takeMissing(GstMessage* message);
    StreamFailure missing() const;
    void namePart(GstPadProbeInfo* info) const;
    void takeSegment(GstEvent* event);
    GstPadProbeReturn eventPassed(GstPadProbeInfo* info);
    GstPadProbeReturn bufferPassed(GstBuffer* buffer);

    static GstPadProbeReturn onPassed(GstPad* pad, GstPadProbeInfo* info, gpointer self);
    static GstBusSyncReply onMessage(GstBus* bus, GstMessage* message, gpointer self);
    static void onElementAdded(GstBin* decoder, GstElement* part, gpointer self);
    static void onLinearPart(GstBin* decoder, GstElement* part, gpointer self);
    static void onPadAdded(GstElement* decoder, GstPad* pad, gpointer self);
    static void onUnderrun(GstElement* queue, gpointer self);

    const quint64 m_number;
    const Access m_access;
    const std::shared_ptr<HttpStream> m_stream;
    PipelineWatcher& m_watcher;
    GstPointer<GstBus> m_bus;
    GstPointer<GstElement> m_bin;
    GstElement* m_source = nullptr; // These are owned by the bin.
    GstElement* m_queue = nullptr;
    SoundFormatProbe m_format;
    std::atomic<bool> m_seeking{ false };
    std::atomic<bool> m_needsRandomAccess{ false };

    mutable std::mutex m_mutex;
    QString m_missingName; // What no decoder was found for; guarded by m_mutex.
    QString m_missingType; // Its media type; guarded by m_mutex.

    // Written by the streaming threads.
    std::atomic<qint64> m_end{ 0 }; // Nanoseconds into the item up to which sound has passed.
    std::atomic<quint64> m_passed{ 0 };
    std::atomic<bool> m_drained{ false };
};

/// How a branch marks what it sends down the pipeline.
QByteArray branchStreamId(quint64 number);
/// The number in such a mark; 0 for another one.
quint64 branchOfStreamId(const char* streamId);

} // namespace player
