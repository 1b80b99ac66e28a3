#include "httpanswer.h"

#include "httpconditions.h"
#include "httpconnection.h"

#include <utility>

namespace http {

static const qint64 pieceBytes = 64 * 1024LL;
/// A file is read on while less than this waits for the peer.
static const qint64 readAheadBytes = 128 * 1024LL;
static const int paceIntervalMs = 20;

Answer::Answer(Connection* connection, Terms terms)
    : QObject(connection)
    , m_connection(connection)
    , m_terms(std::move(terms))
{
}

bool Answer::isOpen() const
{
    return (m_phase == Phase::Waiting || m_phase == Phase::Streaming || m_phase == Phase::Events
               || m_phase == Phase::Raw)
        && !m_ended;
}

static bool hasNoBody(int status)
{
    return status < 200 || status == 204 || status == 304;
}

static bool asksForClose(const Headers& headers)
{
    return headers.value("Connection").toLower() == "close";
}

void Answer::start(int status, Headers headers, Framing framing)
{
    m_phase = Phase::Streaming;
    m_framing = framing;
    m_bodyless = m_terms.head || hasNoBody(status);
    if (asksForClose(headers) || (framing == Framing::UntilClose && !m_bodyless))
        m_terms.keepAlive = false;
    if (framing == Framing::Chunked && !hasNoBody(status))
        headers.set("Transfer-Encoding", "chunked");
    if (!m_terms.keepAlive)
        headers.set("Connection", "close");
    m_connection->write(serializeHead(status, headers));
    if (!m_bodyless && m_shaping.stopAfterBytes == 0)
        stopAsShaped();
}

void Answer::send(const Response& response)
{
    if (m_phase != Phase::Waiting)
        return;
    Headers headers = response.headers;
    if (!hasNoBody(response.status))
        headers.set("Content-Length", QByteArray::number(response.body.size()));
    start(response.status, headers, Framing::Length);
    deliver(response.body);
    end();
}

static Headers representationFields(const ContentInfo& info, const Selection& part, qint64 size)
{
    Headers headers = info.headers;
    if (!info.etag.isEmpty())
        headers.set("ETag", info.etag);
    if (!info.lastModified.isEmpty())
        headers.set("Last-Modified", info.lastModified);
    if (info.ranges)
        headers.set("Accept-Ranges", "bytes");
    if (part.status != 304)
        headers.set("Content-Length", QByteArray::number(part.length));
    if (part.status == 200 || part.status == 206)
        headers.set("Content-Type", info.contentType);
    const QByteArray all = QByteArray::number(size);
    if (part.status == 416)
        headers.set("Content-Range", "bytes */" + all);
    if (part.status == 206)
        headers.set("Content-Range",
            "bytes " + QByteArray::number(part.offset) + '-'
                + QByteArray::number(part.offset + part.length - 1) + '/' + all);
    return headers;
}

void Answer::sendDevice(std::unique_ptr<QIODevice> device, const ContentInfo& info)
{
    if (m_phase != Phase::Waiting)
        return;
    const qint64 size = device->size();
    const Selection part = select(m_terms.request, info, size);
    start(part.status, representationFields(info, part, size), Framing::Length);
    if (!m_bodyless && part.length > 0 && m_phase == Phase::Streaming) {
        device->seek(part.offset);
        m_source = std::move(device);
        m_sourceLeft = part.length;
        pumpSource();
        return;
    }
    end();
}

void Answer::begin(const Response& head)
{
    if (m_phase != Phase::Waiting)
        return;
    const QByteArray length = head.headers.value("Content-Length");
    if (!length.isEmpty())
        m_announced = length.toLongLong();
    const Framing unknown = m_terms.http10 ? Framing::UntilClose : Framing::Chunked;
    start(head.status, head.headers, length.isEmpty() ? unknown : Framing::Length);
    write(head.body);
}

void Answer::write(const QByteArray& piece)
{
    if (m_phase == Phase::Streaming && !m_ended)
        deliver(piece);
}

void Answer::end()
{
    if (m_phase != Phase::Streaming && m_phase != Phase::Events)
        return;
    m_ended = true;
    finishWhenComplete();
}

qint64 Answer::pending() const
{
    return m_phase == Phase::Done ? 0 : m_queue.size() + m_connection->backlog();
}

void Answer::deliver(const QByteArray& piece)
{
    if (m_bodyless || piece.isEmpty() || m_phase != Phase::Streaming)
        return;
    if (m_shaping.bytesPerSecond <= 0) {
        emitBody(piece);
        return;
    }
    m_queue += piece;
    if (m_timer.isActive())
        return;
    connect(&m_timer, &QTimer::timeout, this, &Answer::pace, Qt::UniqueConnection);
    m_clock.start();
    m_paced = 0;
    m_timer.start(paceIntervalMs);
}

void Answer::pace()
{
    const qint64 due = m_clock.elapsed() * m_shaping.bytesPerSecond / 1000 - m_paced;
    const int size = int(qMin<qint64>(due, m_queue.size()));
    if (size > 0) {
        m_paced += size;
        const QByteArray piece = m_queue.left(size);
        m_queue.remove(0, size);
        emitBody(piece);
    }
    pumpSource();
    if (m_queue.isEmpty())
        m_timer.stop();
    finishWhenComplete();
}

static QByteArray asChunk(const QByteArray& piece)
{
    QByteArray chunk;
    chunk.reserve(piece.size() + 12);
    chunk += QByteArray::number(piece.size(), 16) + "\r\n";
    chunk += piece;
    return chunk += "\r\n";
}

void Answer::emitBody(QByteArray piece)
{
    const qint64 stop = m_shaping.stopAfterBytes;
    if (stop >= 0)
        piece.truncate(int(qMin<qint64>(piece.size(), stop - m_sent)));
    m_sent += piece.size();
    m_connection->write(m_framing == Framing::Chunked ? asChunk(piece) : piece);
    if (stop >= 0 && m_sent >= stop)
        stopAsShaped();
}

void Answer::stopAsShaped()
{
    m_timer.stop();
    m_queue.clear();
    m_source.reset();
    switch (m_shaping.stop) {
    case Shaping::Stop::Hang:
        m_phase = Phase::Hung;
        m_connection->flush();
        break;
    case Shaping::Stop::Close:
        close();
        break;
    case Shaping::Stop::Reset:
        m_phase = Phase::Done;
        m_connection->resetWhenDelivered();
        break;
    }
}

bool Answer::mayRead() const
{
    const qint64 rate = m_shaping.bytesPerSecond;
    const qint64 ahead = rate > 0 ? qMin(rate, readAheadBytes) : readAheadBytes;
    return m_source && m_phase == Phase::Streaming && pending() < ahead;
}

void Answer::pumpSource()
{
    while (mayRead()) {
        const QByteArray piece = m_source->read(qMin(pieceBytes, m_sourceLeft));
        if (piece.isEmpty()) {
            // The file has shrunk; the announced length cannot be kept.
            close();
            return;
        }
        m_sourceLeft -= piece.size();
        if (m_sourceLeft == 0) {
            m_source.reset();
            m_ended = true;
        }
        deliver(piece);
    }
    finishWhenComplete();
}

void Answer::finishWhenComplete()
{
    const bool live = m_phase == Phase::Streaming || m_phase == Phase::Events;
    if (!live || !m_ended || m_source || !m_queue.isEmpty())
        return;
    m_phase = Phase::Done;
    m_timer.stop();
    if (m_framing == Framing::Chunked && !m_bodyless)
        m_connection->write("0\r\n\r\n");
    const bool cutShort = !m_bodyless && m_announced >= 0 && m_sent != m_announced;
    m_connection->answered(m_terms.keepAlive && !cutShort);
}

void Answer::beginEvents(const Headers& headers)
{
    if (m_phase != Phase::Waiting)
        return;
    Headers fields = headers;
    fields.set("Content-Type", "text/event-stream");
    fields.set("Cache-Control", "no-store");
    start(200, fields, m_terms.http10 ? Framing::UntilClose : Framing::Chunked);
    if (m_bodyless) {
        end();
        return;
    }
    m_phase = Phase::Events;
    m_connection->limitSendBuffer();
    connect(&m_timer, &QTimer::timeout, this, &Answer::heartbeat);
    m_timer.setSingleShot(true);
    m_timer.start(m_connection->limits().heartbeatMs);
    m_lastEvent.start();
}

bool Answer::sendEvent(const QByteArray& formatted)
{
    if (m_phase != Phase::Events)
        return false;
    const qint64 backlog = m_connection->backlog();
    if (backlog > 0 && backlog + formatted.size() > m_connection->limits().eventBacklogBytes) {
        cut();
        return false;
    }
    m_connection->writeNow(m_framing == Framing::Chunked ? asChunk(formatted) : formatted);
    m_lastEvent.start();
    return true;
}

/// The timer is not set back by each event: with many clients that would cost more than the event.
void Answer::heartbeat()
{
    const qint64 heartbeatMs = m_connection->limits().heartbeatMs;
    qint64 quietMs = m_lastEvent.elapsed();
    if (quietMs >= heartbeatMs) {
        quietMs = 0;
        if (!sendEvent(":\n\n"))
            return;
    }
    m_timer.start(static_cast<int>(heartbeatMs - quietMs));
}

void Answer::writeRaw(const QByteArray& bytes)
{
    if (!isOpen())
        return;
    m_phase = Phase::Raw;
    m_connection->write(bytes);
}

void Answer::close()
{
    if (m_phase == Phase::Done || m_phase == Phase::Cut)
        return;
    m_phase = Phase::Done;
    m_timer.stop();
    m_connection->hangUp();
}

void Answer::reset()
{
    if (m_phase == Phase::Done || m_phase == Phase::Cut)
        return;
    m_phase = Phase::Done;
    m_timer.stop();
    m_connection->reset();
}

void Answer::cut()
{
    m_phase = Phase::Cut;
    m_timer.stop();
    m_connection->cut();
}

void Answer::abandon()
{
    if (m_ended)
        return;
    switch (m_phase) {
    case Phase::Waiting:
        send(m_connection->refusal(500));
        break;
    case Phase::Streaming:
        if (!m_source)
            close();
        break;
    case Phase::Events:
        end();
        break;
    case Phase::Raw:
        close();
        break;
    case Phase::Hung:
    case Phase::Cut:
    case Phase::Done:
        break;
    }
}

void Answer::advance()
{
    pumpSource();
    const bool fed = m_phase == Phase::Streaming || m_phase == Phase::Raw;
    if (!fed || !m_drained || pending() > 0)
        return;
    const std::function<void()> drained = m_drained;
    drained();
}

void Answer::peerGone()
{
    const bool unfinished = m_phase != Phase::Done;
    m_phase = Phase::Done;
    m_timer.stop();
    m_source.reset();
    if (unfinished && m_closed)
        std::exchange(m_closed, nullptr)();
}

} // namespace http
