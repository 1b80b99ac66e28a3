#pragma once

#include "httptransfer.h"
#include "spareconnection.h"
#include "streamremains.h"
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
/// Some of what has been read stays at hand, the beginning of the resource before all, so that a
/// reader who looks about in it does not ask again for what was here a moment ago. A server that
/// has refused the address (401, 403, 404 or 410) is not asked again.
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

    /// `loop` must live until the stream has been closed. `remains` are of another stream of the
    /// same item, be it one with another address.
    HttpStream(TransferLoop& loop, StreamRequest request, const HttpOptions& options,
        StreamRemains remains = {});
    ~HttpStream() override;
    Q_DISABLE_COPY_MOVE(HttpStream)

    /// Begins to fetch, where nothing is at hand. A second call does nothing.
    void open();
    /// Ends the transfer; what was fetched is given back soon. Required before the last reference
    /// goes.
    void close();
    /// Closes the stream and takes out what another one may go on with.
    StreamRemains closeForAnother();
    /// Goes on with another address of the same resource. False when it is too late: the reader has
    /// met the end.
    bool renew(const StreamRequest& request);

    /// Waits for the next bytes, at most so many. A failed stream ends, after what came before the
    /// failure.
    Read read(ByteChunk& chunk, std::size_t atMost = std::size_t(-1));
    /// Where the next read() goes on. After a failure other than a refusal the stream tries anew.
    /// What has to be fetched is fetched from `lead` bytes before.
    void seek(qint64 offset, qint64 lead = 0);
    /// While interrupted, read() does not wait.
    void setInterrupted(bool interrupted);

    bool isSeekable() const;
    /// Whether the server has said that it hands out parts.
    bool servesRanges() const;
    Progress progress() const;
    qint64 durationMs() const { return m_durationMs; }

private:
    using Lock = std::unique_lock<std::mutex>;

    bool headArrived(const HttpTransfer::Head& head) override;
    bool dataArrived(const char* bytes, std::size_t size) override;
    void transferFinished(CURLcode code) override;

    // In the loop's thread, without the lock.
    void restart();
    void abandon();
    void leave();
    void begin(const QByteArray& url);
    void watchForStall();
    void checkForStall();
    void unpause();
    void keepSpare();
    void endStart();
    QList<QByteArray> headersFor(const QByteArray& url) const;
    void follow(const QByteArray& location);
    bool mayFollow(const QByteArray& url);

    // With the lock.
    bool isStale() const { return m_transferGeneration != m_generation; }
    qint64 ahead() const { return m_fetchOffset - m_readOffset; }
    qint64 capacity() const;
    qint64 wantedAhead() const;
    void leapTo(qint64 offset, qint64 lead);
    void placeReader(qint64 offset, qint64 endOfRun);
    void fetch();
    void take(const char* bytes, qint64 size);
    void keepInBounds();
    bool isEndAtHand() const { return m_size >= 0 && m_fetchOffset >= m_size; }
    bool accept(const HttpTransfer::Head& head);
    bool acceptWhole(const HttpTransfer::Head& head);
    bool acceptPart(const HttpTransfer::Head& head);
    bool refuse(const HttpTransfer::Head& head);
    bool takeResource(const HttpTransfer::Head& head, qint64 size);
    void bodyEnded();
    void brokenOff(StreamFailure::Kind kind, const QString& detail);
    void retry(StreamFailure::Kind trouble);
    void end(bool confirmed);
    bool fail(StreamFailure::Kind kind, const QString& detail = QString(), int httpStatus = 0);
    void post(void (HttpStream::*task)());
    void resumeTransfer(Lock& lock);
    bool isOver() const { return m_ended || m_failure.isSet(); }

    TransferLoop& m_loop;
    const HttpOptions m_options;
    const qint64 m_durationMs;

    // The loop's thread only.
    StreamRequest m_asked; // What the transfer is of.
    std::unique_ptr<HttpTransfer> m_transfer;
    QByteArray m_transferUrl;
    std::unique_ptr<SpareConnection> m_spare;
    std::chrono::steady_clock::time_point m_spareDue; // When it is to be used, lest it be closed.
    int m_transferGeneration = 0;
    int m_redirects = 0;
    bool m_bodyWanted = false; // Of the present answer.
    bool m_watching = false; // For a stall.
    bool m_startTimed = false;
    std::chrono::steady_clock::time_point m_lastNews; // When something came.

    mutable std::mutex m_mutex;
    // The rest is guarded by m_mutex.
    std::condition_variable m_changed;
    StreamRequest m_request;
    FetchedBytes m_bytes;
    qint64 m_readOffset = 0;
    qint64 m_fetchOffset = 0; // What lies from the reader up to here is at hand.
    qint64 m_transferOffset = 0; // Of the next byte that arrives.
    qint64 m_putFrom = 0; // What arrives from before would take the place of what lies ahead.
    qint64 m_lead = 0;
    qint64 m_size = -1;
    QByteArray m_entityTag;
    QByteArray m_entityTagUrl; // Where it was given.
    int m_generation = 0; // Of the wanted transfer; another one's news is stale.
    int m_attempts = 0; // Since the last byte.
    StreamFailure::Kind m_trouble = StreamFailure::Stalled; // What the last attempt met.
    bool m_starting = true; // Little is fetched ahead, lest the first sound wait for later ones.
    bool m_opened = false;
    bool m_fetching = false; // A transfer is under way, or will be.
    bool m_endTold = false; // To the reader, since the last leap.
    bool m_closed = false;
    bool m_answered = false; // A usable answer came once.
    bool m_seekable = false;
    bool m_servesRanges = false;
    bool m_probesEnd = false; // The transfer is to find out whether a silent end was the real one.
    bool m_held = false; // The transfer waits for room.
    bool m_interrupted = false;
    bool m_ended = false;
    bool m_endConfirmed = false;
    StreamFailure m_failure;
};

} // namespace player
