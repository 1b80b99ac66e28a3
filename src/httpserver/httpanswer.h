#pragma once

#include "httpresponder.h"

#include <QElapsedTimer>
#include <QIODevice>
#include <QObject>
#include <QTimer>

#include <memory>

namespace http {

class Connection;

/// The writing side of one request: head, framing, shaping, files, events. Owned by its connection;
/// the operations are those of Responder and EventStream.
class Answer : public QObject
{
    Q_OBJECT

public:
    /// What the answer must know of its request.
    struct Terms
    {
        bool head = false; ///< no body, whatever the answer
        bool http10 = false;
        bool keepAlive = true;
        Headers request;
    };

    Answer(Connection* connection, Terms terms);

    bool isOpen() const;
    bool isEventStream() const { return m_phase == Phase::Events; }
    void onClosed(std::function<void()> closed) { m_closed = std::move(closed); }
    void onDrained(std::function<void()> drained) { m_drained = std::move(drained); }
    void shape(const Shaping& shaping) { m_shaping = shaping; }

    void send(const Response& response);
    void sendDevice(std::unique_ptr<QIODevice> device, const ContentInfo& info);
    void begin(const Response& head);
    void write(const QByteArray& piece);
    void end();
    qint64 pending() const;

    void beginEvents(const Headers& headers);
    bool sendEvent(const QByteArray& formatted);

    void writeRaw(const QByteArray& bytes);
    void close();
    void reset();

    // From the handles and the connection.

    /// The last handle has gone.
    void abandon();
    /// The peer has taken bytes.
    void advance();
    /// The connection is over.
    void peerGone();

private:
    enum class Phase { Waiting, Streaming, Events, Raw, Hung, Cut, Done };
    enum class Framing { Length, Chunked, UntilClose };

    void start(int status, Headers headers, Framing framing);
    void deliver(const QByteArray& piece);
    void emitBody(QByteArray piece);
    void stopAsShaped();
    void pumpSource();
    bool mayRead() const;
    void pace();
    void finishWhenComplete();
    void cut();
    void heartbeat();

    Connection* m_connection;
    Terms m_terms;
    Phase m_phase = Phase::Waiting;
    Framing m_framing = Framing::Length;
    Shaping m_shaping;
    bool m_bodyless = false;
    bool m_ended = false;
    qint64 m_announced = -1; ///< Content-Length, -1 without one
    qint64 m_sent = 0; ///< bytes of the body that are on their way
    QByteArray m_queue; ///< bytes of the body that wait for their turn by bytesPerSecond
    std::unique_ptr<QIODevice> m_source;
    qint64 m_sourceLeft = 0;
    std::function<void()> m_closed;
    std::function<void()> m_drained;
    QElapsedTimer m_lastEvent; ///< since the last event or heartbeat was sent
    QTimer m_timer; ///< pace of a shaped answer, heartbeat of an event stream
    QElapsedTimer m_clock;
    qint64 m_paced = 0; ///< bytes that the pace has let through
};

} // namespace http
