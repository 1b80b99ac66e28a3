#pragma once

#include "httpeventstream.h"
#include "httpmessage.h"

#include <functional>
#include <memory>

class QIODevice;

namespace http {

class Exchange;

/// Bends the delivery of one answer; for emulators of bad networks. Counts bytes of the body,
/// before chunk framing.
struct Shaping
{
    enum class Stop {
        Close, ///< an orderly end of the connection
        Reset, ///< TCP reset
        Hang ///< nothing more, connection left open
    };

    qint64 bytesPerSecond = 0; ///< 0: as fast as the peer takes them
    qint64 stopAfterBytes = -1; ///< -1: never. At the body's exact size, chunked: no last chunk
    Stop stop = Stop::Close;
};

/// What a representation is, for conditional and range requests.
struct ContentInfo
{
    QByteArray contentType = "application/octet-stream";
    QByteArray etag; ///< with its quotes; empty: none
    QByteArray lastModified; ///< HTTP date; empty: none
    Headers headers; ///< further fields
    bool ranges = true; ///< false: always whole, no Accept-Ranges
};

/// The right to answer one request, now or later. A copyable handle; every copy stands for the same
/// answer. Used in the server's thread only.
///
/// Once the peer has gone, or the answer is complete, every call does nothing. When the last copy
/// goes without an answer, the server answers 500; when it goes with a streamed answer unfinished,
/// the connection is closed, so that the peer sees the answer as cut. Keeping a copy and doing
/// nothing therefore hangs the peer.
class Responder
{
public:
    explicit Responder(std::shared_ptr<Exchange> exchange);

    /// Whether the peer is there and waits for more of this answer.
    bool isOpen() const;
    /// `closed` runs once, when the peer goes before the answer is complete. A second call replaces
    /// the first.
    void onClosed(std::function<void()> closed) const;

    /// Applies to what follows; call it before send or begin.
    void shape(const Shaping& shaping) const;

    /// The complete answer.
    void send(const Response& response) const;

    /// A file, read piece by piece as the peer takes it: 200, 206, 304, 416 by the request's
    /// conditions, 404 when it cannot be opened. Only single ranges are honoured; a request for
    /// several gets the whole. The type comes from `info`.
    void sendFile(const QString& file, const ContentInfo& info) const;
    /// The same from an open random-access device, or from bytes.
    void sendDevice(std::unique_ptr<QIODevice> device, const ContentInfo& info) const;
    void sendBytes(const QByteArray& bytes, const ContentInfo& info) const;

    /// A streamed answer: the status and fields of `head` (its body is the first piece), then
    /// pieces. With a Content-Length field in `head` the body goes unframed and the caller keeps to
    /// the length; otherwise it is chunked (HTTP/1.0: until the connection's end).
    void begin(const Response& head) const;
    void write(const QByteArray& piece) const;
    void end() const;
    /// Bytes that wait for the peer; for pacing a stream.
    qint64 pending() const;
    /// `drained` runs each time after pending() has come down to 0.
    void onDrained(std::function<void()> drained) const;

    /// Answers with an event stream. Further fields may be given.
    EventStream events(const Headers& headers = {}) const;

    /// Bytes onto the wire as they are, in place of or behind an answer. After it the connection is
    /// not used again: finish with close() or reset().
    void writeRaw(const QByteArray& bytes) const;
    /// Delivers what is written, then ends the connection.
    void close() const;
    /// Ends the connection at once by a TCP reset.
    void reset() const;

private:
    std::shared_ptr<Exchange> m_exchange;
};

/// Takes a request. Runs in the server's thread; must not block.
using Handler = std::function<void(const Request&, const Responder&)>;

} // namespace http
