#include "httpconnection.h"

#include "httpexchange.h"

#include <QScopedValueRollback>
#include <QSslSocket>

#include <sys/socket.h>

namespace http {

static const int readBytes = 64 * 1024;
/// Requests of one peer that are answered before the event loop turns.
static const int requestsPerTurn = 32;
/// No further request is taken while more than this waits for the peer.
static const qint64 maximumBacklog = 256 * 1024LL;
static const int lingerMs = 2000;
static const qint64 leastProgress = 16 * 1024LL;

Connection::Connection(const Setup& setup, QTcpSocket* socket, bool secure, QObject* parent)
    : QObject(parent)
    , m_setup(setup)
    , m_socket(socket)
    , m_secure(secure)
    , m_parser(setup.limits)
{
    m_socket->setParent(this);
    m_socket->setReadBufferSize(readBytes);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_timer.setSingleShot(true);
    m_writeTimer.setSingleShot(true);
    connect(m_socket, &QTcpSocket::readyRead, this, &Connection::onReadyRead);
    connect(m_socket, &QTcpSocket::disconnected, this, &Connection::onDisconnected);
    if (auto* tls = qobject_cast<QSslSocket*>(m_socket))
        connect(tls, &QSslSocket::encryptedBytesWritten, this, &Connection::onBytesWritten);
    else
        connect(m_socket, &QTcpSocket::bytesWritten, this, &Connection::onBytesWritten);
    connect(&m_timer, &QTimer::timeout, this, &Connection::onTimeout);
    connect(&m_writeTimer, &QTimer::timeout, this, &Connection::onWriteTimeout);
    enter(Phase::Head, limits().headTimeoutMs);
}

Connection::~Connection()
{
    m_socket->disconnect(this);
    if (m_answer)
        m_answer->peerGone();
}

Response Connection::refusal(int status) const
{
    if (m_setup.refusal)
        return m_setup.refusal(status);
    return Response::text(status, QByteArray::number(status) + ' ' + reasonPhrase(status) + '\n');
}

void Connection::enter(Phase phase, int timeoutMs)
{
    m_phase = phase;
    if (timeoutMs > 0)
        m_timer.start(timeoutMs);
    else
        m_timer.stop();
}

// Reading

void Connection::onReadyRead()
{
    if (m_phase == Phase::Closing)
        m_socket->readAll();
    else
        process();
}

void Connection::processLater()
{
    QMetaObject::invokeMethod(
        this, [this] { process(); }, Qt::QueuedConnection);
}

bool Connection::takesRequests() const
{
    const bool reading = m_phase == Phase::Idle || m_phase == Phase::Head || m_phase == Phase::Body;
    return reading && backlog() <= maximumBacklog;
}

bool Connection::hasInput() const
{
    return m_offset < m_input.size() || m_socket->bytesAvailable() > 0;
}

void Connection::process()
{
    if (m_processing)
        return;
    const QScopedValueRollback<bool> processing(m_processing, true);
    for (int requests = 0; takesRequests();) {
        readSocket();
        if (!step())
            return;
        if (m_phase == Phase::Idle && ++requests == requestsPerTurn) {
            processLater();
            return;
        }
    }
}

void Connection::readSocket()
{
    // Bytes of the next requests stay in the socket, and so with the peer. A head that needs more
    // is shorter than this.
    if (m_input.size() - m_offset > qMax(readBytes, limits().headerBytes))
        return;
    // Asked for more, it would make room for it.
    const QByteArray bytes = m_socket->read(qMin<qint64>(readBytes, m_socket->bytesAvailable()));
    if (bytes.isEmpty())
        return;
    m_input.remove(0, m_offset);
    m_offset = 0;
    m_input += bytes;
}

bool Connection::step()
{
    const int size = m_input.size() - m_offset;
    if (size == 0 && m_phase != Phase::Body)
        return false;
    if (m_phase == Phase::Idle)
        enter(Phase::Head, limits().headTimeoutMs);
    int used = 0;
    const RequestParser::State state = m_parser.feed(m_input.constData() + m_offset, size, &used);
    m_offset += used;
    switch (state) {
    case RequestParser::State::NeedMore:
        return m_socket->bytesAvailable() > 0;
    case RequestParser::State::Head:
        return takeHead();
    case RequestParser::State::Complete:
        dispatch();
        return true;
    case RequestParser::State::Refused:
        break;
    }
    refuse(m_parser.status());
    return false;
}

/// An intermediary would pick one of several Host fields; so every one but a single one is unclear.
bool Connection::hostIsClear() const
{
    const int hosts = m_parser.request().headers.values("Host").size();
    return hosts == 1 || (hosts == 0 && m_parser.isHttp10());
}

bool Connection::takeHead()
{
    Request& request = m_parser.request();
    request.peer = m_socket->peerAddress();
    request.peerPort = m_socket->peerPort();
    request.localAddress = m_socket->localAddress();
    request.localPort = m_socket->localPort();
    request.secure = m_secure;
    std::optional<Response> refused;
    if (m_setup.guard)
        refused = m_setup.guard(request);
    else if (!hostIsClear())
        refused = refusal(400);
    if (refused) {
        makeAnswer(false);
        m_answer->send(*refused);
        return false;
    }
    enter(Phase::Body, limits().bodyTimeoutMs);
    if (m_parser.expectsContinue() && m_offset == m_input.size())
        write("HTTP/1.1 100 Continue\r\n\r\n");
    return true;
}

void Connection::makeAnswer(bool keepAlive)
{
    const Request& request = m_parser.request();
    Answer::Terms terms;
    terms.head = request.method == "HEAD";
    terms.http10 = m_parser.isHttp10();
    terms.keepAlive = keepAlive;
    if (request.method == "GET" || terms.head)
        terms.request = request.headers;
    enter(Phase::Answering, 0);
    m_answer = new Answer(this, terms);
}

void Connection::dispatch()
{
    makeAnswer(m_parser.keepsAlive());
    const Request request = std::move(m_parser.request());
    m_parser.reset();
    m_setup.handler(request, Responder(std::make_shared<Exchange>(m_answer)));
}

/// The request is not understood well enough to go on behind it.
void Connection::refuse(int status)
{
    Response response = refusal(status);
    response.headers.set("Connection", "close");
    write(serialize(response));
    hangUp();
}

// Writing

qint64 Connection::backlog() const
{
    const auto* tls = qobject_cast<const QSslSocket*>(m_socket);
    return m_socket->bytesToWrite() + (tls ? tls->encryptedBytesToWrite() : 0);
}

void Connection::write(const QByteArray& bytes)
{
    if (m_phase == Phase::Gone || bytes.isEmpty())
        return;
    m_socket->write(bytes);
    if (!m_writeTimer.isActive() && limits().writeTimeoutMs > 0) {
        m_taken = 0;
        m_writeTimer.start(limits().writeTimeoutMs);
    }
}

/// The socket would have its descriptor watched and no longer watched for each write, and each of
/// that costs the more the more connections there are.
void Connection::writeNow(const QByteArray& bytes)
{
    if (m_phase == Phase::Gone || m_secure || backlog() > 0) {
        write(bytes);
        return;
    }
    const ssize_t sent = ::send(int(m_socket->socketDescriptor()), bytes.constData(),
        std::size_t(bytes.size()), MSG_DONTWAIT | MSG_NOSIGNAL);
    // What failed fails again there, and is dealt with.
    write(bytes.mid(sent > 0 ? int(sent) : 0));
}

/// Saves a turn of the event loop. A TLS socket must not be flushed or closed while it reads, which
/// is where answers are written; it sends by itself.
void Connection::flush()
{
    if (!m_secure)
        m_socket->flush();
}

void Connection::limitSendBuffer()
{
    m_socket->setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, 64 * 1024);
}

void Connection::onBytesWritten(qint64 count)
{
    m_taken += count;
    if (backlog() == 0)
        m_writeTimer.stop();
    if (m_phase == Phase::Closing)
        finishClosing();
    else if (m_answer)
        m_answer->advance();
    else if (takesRequests() && hasInput())
        processLater();
}

void Connection::answered(bool keepAlive)
{
    if (m_phase != Phase::Answering)
        return;
    m_answer->deleteLater();
    m_answer = nullptr;
    flush();
    if (!keepAlive) {
        hangUp();
        return;
    }
    enter(Phase::Idle, limits().idleTimeoutMs);
    if (!m_processing && hasInput())
        processLater();
}

// Ends

void Connection::hangUp()
{
    if (m_phase == Phase::Closing || m_phase == Phase::Gone)
        return;
    enter(Phase::Closing, 0);
    m_input.clear();
    m_offset = 0;
    m_socket->readAll();
    if (m_secure)
        QMetaObject::invokeMethod(
            m_socket, [this] { m_socket->disconnectFromHost(); }, Qt::QueuedConnection);
    else
        finishClosing();
}

/// Ends our direction and then reads on for a while: closing with unread bytes would reset the
/// connection, and the peer might lose the answer that tells it why.
void Connection::finishClosing()
{
    flush();
    if (backlog() > 0)
        return;
    if (m_resetWhenDelivered) {
        reset();
        return;
    }
    if (m_secure)
        return;
    ::shutdown(int(m_socket->socketDescriptor()), SHUT_WR);
    m_timer.start(lingerMs);
}

void Connection::cut()
{
    if (m_phase == Phase::Gone)
        return;
    enter(Phase::Closing, 0);
    QMetaObject::invokeMethod(
        m_socket, [this] { m_socket->abort(); }, Qt::QueuedConnection);
}

void Connection::reset()
{
    if (m_phase == Phase::Gone)
        return;
    const linger discard{ 1, 0 };
    ::setsockopt(
        int(m_socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &discard, sizeof discard);
    cut();
}

void Connection::resetWhenDelivered()
{
    if (m_phase == Phase::Closing || m_phase == Phase::Gone)
        return;
    m_resetWhenDelivered = true;
    enter(Phase::Closing, 0);
    finishClosing();
}

void Connection::onDisconnected()
{
    if (m_phase == Phase::Gone)
        return;
    enter(Phase::Gone, 0);
    m_writeTimer.stop();
    if (m_answer)
        m_answer->peerGone();
    Q_EMIT gone();
    deleteLater();
}

void Connection::onTimeout()
{
    const bool silent = m_offset == m_input.size();
    switch (m_phase) {
    case Phase::Head:
        // Nothing was asked: browsers keep spare connections.
        if (silent)
            hangUp();
        else
            refuse(408);
        break;
    case Phase::Body:
        refuse(408);
        break;
    case Phase::Idle:
        hangUp();
        break;
    case Phase::Closing:
        m_socket->abort();
        break;
    case Phase::Answering:
    case Phase::Gone:
        break;
    }
}

void Connection::onWriteTimeout()
{
    const bool stalled = m_taken < leastProgress && backlog() > 0;
    const bool exempt = m_answer != nullptr && m_answer->isEventStream();
    if (stalled && !exempt) {
        cut();
        return;
    }
    m_taken = 0;
    if (backlog() > 0)
        m_writeTimer.start(limits().writeTimeoutMs);
}

} // namespace http
