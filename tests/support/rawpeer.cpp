#include "rawpeer.h"

#include "watchdog.h"

#include <QHostAddress>
#include <QSslSocket>

QByteArray RawPeer::Answer::field(const QByteArray& name) const
{
    for (const auto& field : fields)
        if (field.first.toLower() == name.toLower())
            return field.second;
    return {};
}

RawPeer::RawPeer(quint16 port)
    : m_socket(std::make_unique<QTcpSocket>())
    , m_port(port)
{
    m_socket->connectToHost(QHostAddress(QHostAddress::LocalHost), port);
    waitUntil([this] { return m_socket->state() != QAbstractSocket::ConnectingState; });
}

RawPeer::RawPeer(std::unique_ptr<QTcpSocket> socket)
    : m_socket(std::move(socket))
{
}

RawPeer RawPeer::tls(quint16 port)
{
    auto socket = std::make_unique<QSslSocket>();
    socket->setPeerVerifyMode(QSslSocket::VerifyNone);
    QSslSocket* const raw = socket.get();
    raw->connectToHostEncrypted(QStringLiteral("127.0.0.1"), port);
    waitUntil(
        [raw] { return raw->isEncrypted() || raw->state() == QAbstractSocket::UnconnectedState; });
    RawPeer peer(std::move(socket));
    peer.m_port = port;
    return peer;
}

bool RawPeer::connected() const
{
    return m_socket->state() == QAbstractSocket::ConnectedState;
}

void RawPeer::send(const QByteArray& bytes)
{
    m_socket->write(bytes);
    m_socket->flush();
}

void RawPeer::request(const QByteArray& method, const QByteArray& target, const QByteArray& body,
    const QByteArray& fields)
{
    QByteArray bytes = method + ' ' + target + " HTTP/1.1\r\n" + fields;
    if (!fields.contains("Host:"))
        bytes += "Host: 127.0.0.1:" + QByteArray::number(m_port) + "\r\n";
    if (!body.isEmpty()) {
        bytes += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
        if (!fields.contains("Content-Type:"))
            bytes += "Content-Type: application/json\r\n";
    }
    send(bytes + "\r\n" + body);
}

static QList<QPair<QByteArray, QByteArray>> parseFields(const QByteArray& head)
{
    QList<QPair<QByteArray, QByteArray>> fields;
    for (const QByteArray& line : head.split('\n')) {
        const int colon = line.indexOf(':');
        if (colon > 0)
            fields += qMakePair(line.left(colon), line.mid(colon + 1).trimmed());
    }
    return fields;
}

bool RawPeer::takeChunked(Answer* answer, int position)
{
    answer->body.clear();
    for (;;) {
        const int lineEnd = m_received.indexOf("\r\n", position);
        if (lineEnd < 0)
            return false;
        const int size = m_received.mid(position, lineEnd - position).toInt(nullptr, 16);
        const int next = lineEnd + 2 + size + 2;
        if (m_received.size() < next)
            return false;
        answer->body += m_received.mid(lineEnd + 2, size);
        position = next;
        if (size == 0)
            break;
    }
    m_received.remove(0, position);
    return true;
}

/// Returns whether the answer is whole; otherwise `answer` holds what there is.
bool RawPeer::takeAnswer(Answer* answer, bool toHead)
{
    m_received += m_socket->readAll();
    const int headEnd = m_received.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return false;
    answer->status = m_received.mid(9, 3).toInt();
    answer->fields = parseFields(m_received.left(headEnd));
    const int bodyStart = headEnd + 4;
    const bool bodyless =
        toHead || answer->status < 200 || answer->status == 204 || answer->status == 304;
    if (!bodyless && answer->field("Transfer-Encoding") == "chunked")
        return takeChunked(answer, bodyStart);
    const QByteArray length = answer->field("Content-Length");
    if (!bodyless && length.isEmpty()) {
        answer->body = m_received.mid(bodyStart);
        return !connected();
    }
    const int size = bodyless ? 0 : length.toInt();
    answer->body = m_received.mid(bodyStart, size);
    if (answer->body.size() < size)
        return false;
    m_received.remove(0, bodyStart + size);
    return true;
}

RawPeer::Answer RawPeer::answer(bool toHead, int watchdogMs)
{
    Answer answer;
    waitUntil(
        [&] {
            answer.complete = takeAnswer(&answer, toHead);
            return answer.complete || (!connected() && m_socket->bytesAvailable() == 0);
        },
        watchdogMs);
    return answer;
}

RawPeer::Answer RawPeer::ask(const QByteArray& method, const QByteArray& target,
    const QByteArray& body, const QByteArray& fields)
{
    request(method, target, body, fields);
    return answer(method == "HEAD");
}

QByteArray RawPeer::received()
{
    m_received += m_socket->readAll();
    return m_received;
}

bool RawPeer::waitFor(const QByteArray& text, int watchdogMs)
{
    return waitUntil([&] { return received().contains(text); }, watchdogMs);
}

bool RawPeer::waitForEnd(int watchdogMs)
{
    return waitUntil(
        [this] {
            received();
            return !connected();
        },
        watchdogMs);
}
