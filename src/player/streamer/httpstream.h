#pragma once

#include "bytechunk.h"
#include "httptransfer.h"
#include "spareconnection.h"
#include "streamfailure.h"
#include "streamrequest.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace player {

/// The bytes of one item, fetched ahead of their reader into memory. A transfer that stalls, is cut
/// or is reset goes on where it was, over another connection, for as long as the reader does not
/// have to wait too long. Key headers go to the origin of the item's URL only.
///
/// A stream that does not fit into memory occupies its connection for as long as it is played, and
/// takes it with it when it is closed early. So it keeps a spare one to its host for the next.
///
/// The reader may be any one thread; the rest may be called on any thread.
class HttpStream : public std::enable_shared_from_this<HttpStream>, public HttpTransfer::Receiver
{
public:
    enum class Read { Data, End, Interrupted };

    struct Progress
    {
        qint64 size = -1; ///< Of the resource in bytes; -1 while, or when, it is not known.
        qint64 buffered = 0; ///< Bytes ahead of the reader.
        bool complete = false; ///< Nothing more is to come.
        bool endConfirmed = false; ///< The end is the resource's own, not just a silent one.
        StreamFailure failure;
    };

    /// `loop` must live until the stream has been closed.
    HttpStream(TransferLoop& loop, StreamRequest request, const HttpOptions& options);
    ~HttpStream() override;
    Q_DISABLE_COPY_MOVE(HttpStream)

    /// Begins to fetch. A second call does nothing.
    void open();
    /// Ends the transfer; what was fetched is given back soon. Required before the last reference
    /// goes.
    void close();

    /// Waits for the next bytes, at most so many. A failed stream ends, after what came before the
    /// failure.
    Read read(ByteChunk& chunk, std::size_t atMost = std::size_t(-1));
    /// Where the next read() goes on. After a failure the stream tries anew.
    void seek(qint64 offset);
    /// While interrupted, read() does not wait.
    void setInterrupted(bool interrupted);

    bool isSeekable() const;
    Progress progress() const;
    const StreamRequest& request() const { return m_request; }

private:
    using Lock = std::unique_lock<std::mutex>;

    bool headArrived(const HttpTransfer::Head& head) override;
    bool dataArrived(const char* bytes, std::size_t size) override;
    void transferFinished(CURLcode code) override;

    // In the loop's thread, without the lock.
    void restart();
    void leave();
    void begin(const QByteArray& url);
    void watchForStall();
    void checkForStall();
    void unpause();
    void keepSpare();
    QList<QByteArray> headersFor(const QByteArray& url) const;
    void follow(const QByteArray& url);
    bool mayFollow(const QByteArray& url);

    // With the lock.
    bool isStale() const { return m_transferGeneration != m_generation; }
    qint64 fetchOffset() const { return m_readOffset + static_cast<qint64>(m_chunks.size()); }
    qint64 capacity() const;
    bool accept(const HttpTransfer::Head& head);
    bool acceptWhole(const HttpTransfer::Head& head);
    bool acceptPart(const HttpTransfer::Head& head);
    bool refuse(const HttpTransfer::Head& head);
    bool takeSize(qint64 size);
    void bodyEnded();
    void brokenOff(CURLcode code, const QString& detail);
    void retry(StreamFailure::Kind trouble);
    void end(bool confirmed);
    bool fail(StreamFailure::Kind kind, const QString& detail = QString(), int httpStatus = 0);
    void post(void (HttpStream::*task)());
    void resumeTransfer(Lock& lock);
    bool isOver() const { return m_ended || m_failure.isSet(); }

    TransferLoop& m_loop;
    const StreamRequest m_request;
    const HttpOptions m_options;

    // The loop's thread only.
    std::unique_ptr<HttpTransfer> m_transfer;
    QByteArray m_transferUrl;
    std::unique_ptr<SpareConnection> m_spare;
    std::chrono::steady_clock::time_point m_spareDue; // When it is to be used, lest it be closed.
    int m_transferGeneration = 0;
    int m_redirects = 0;
    bool m_bodyWanted = false; // Of the present answer.
    bool m_watching = false; // For a stall.
    std::chrono::steady_clock::time_point m_lastNews; // When something came.

    mutable std::mutex m_mutex;
    // The rest is guarded by m_mutex.
    std::condition_variable m_changed;
    ByteChunks m_chunks;
    qint64 m_readOffset = 0;
    qint64 m_skip = 0; // Bytes to come that were seen before.
    qint64 m_size = -1;
    int m_generation = 0; // Of the wanted transfer; another one's news is stale.
    int m_attempts = 0; // Since the last byte.
    StreamFailure::Kind m_trouble = StreamFailure::Stalled; // What the last attempt met.
    bool m_opened = false;
    bool m_closed = false;
    bool m_answered = false; // A usable answer came once.
    bool m_seekable = false;
    bool m_probesEnd = false; // The transfer is to find out whether a silent end was the real one.
    bool m_held = false; // The transfer waits for room.
    bool m_interrupted = false;
    bool m_ended = false;
    bool m_endConfirmed = false;
    StreamFailure m_failure;
};

} // namespace player
