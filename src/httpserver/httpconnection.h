#pragma once

#include "httpanswer.h"
#include "httprequestparser.h"
#include "httpserver.h"

#include <QPointer>
#include <QTcpSocket>
#include <QTimer>

namespace http {

/// What every connection of a server shares. Outlives them.
struct Setup
{
    Limits limits;
    Handler handler;
    Server::Guard guard;
    Server::Refusal refusal;
};

/// One peer: reads requests, has them answered one at a time, keeps the time limits.
class Connection : public QObject
{
    Q_OBJECT

public:
    /// Takes an accepted socket, which becomes its child. A TLS socket may still be shaking hands.
    Connection(const Setup& setup, QTcpSocket* socket, bool secure, QObject* parent);
    ~Connection() override;
    Q_DISABLE_COPY_MOVE(Connection)

    const Limits& limits() const { return m_setup.limits; }
    Response refusal(int status) const;

    /// Bytes that wait for the peer.
    qint64 backlog() const;
    void write(const QByteArray& bytes);
    /// The same, without waiting for the event loop if the peer takes it at once.
    void writeNow(const QByteArray& bytes);
    void flush();
    /// Keeps the system from storing much for a slow peer, so that the backlog tells the truth.
    void limitSendBuffer();

    /// The present answer is written.
    void answered(bool keepAlive);
    /// Delivers what is written, then ends the connection.
    void hangUp();
    /// Ends the connection at once, from the event loop.
    void cut();
    /// Ends the connection at once by a TCP reset.
    void reset();
    void resetWhenDelivered();

Q_SIGNALS:
    /// Once; the connection deletes itself after it.
    void gone();

private:
    enum class Phase { Idle, Head, Body, Answering, Closing, Gone };

    void process();
    void processLater();
    bool takesRequests() const;
    bool hasInput() const;
    void readSocket();
    /// Returns false when there is nothing more to do for now.
    bool step();
    void waitForBytes();
    bool takeHead();
    void makeAnswer(bool keepAlive);
    void dispatch();
    void refuse(int status);
    bool hostIsClear() const;

    void onReadyRead();
    void onBytesWritten(qint64 count);
    void onDisconnected();
    void onTimeout();
    void onWriteTimeout();
    void enter(Phase phase, int timeoutMs);
    void finishClosing();

    const Setup& m_setup;
    QTcpSocket* m_socket;
    const bool m_secure;
    Phase m_phase = Phase::Head;
    RequestParser m_parser;
    QByteArray m_input;
    int m_offset = 0; ///< bytes of m_input that are used up
    QPointer<Answer> m_answer;
    QTimer m_timer; ///< the present phase's limit
    QTimer m_writeTimer; ///< runs while bytes wait for the peer
    qint64 m_taken = 0; ///< bytes that the peer has taken since m_writeTimer started
    bool m_processing = false;
    bool m_resetWhenDelivered = false;
};

} // namespace http
