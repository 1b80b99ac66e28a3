#include "rawserver.h"

#include <QSslSocket>

#include <sys/socket.h>

#include <memory>

QByteArray RawServer::Call::field(const QByteArray& name) const
{
    for (const QByteArray& line : head.split('\n')) {
        const int colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).compare(name, Qt::CaseInsensitive) == 0)
            return line.mid(colon + 1).trimmed();
    }
    return QByteArray();
}

void RawServer::Call::answer(const QByteArray& text, const QByteArray& fields) const
{
    answer(200, text, fields);
}

void RawServer::Call::answer(int status, const QByteArray& text, const QByteArray& fields) const
{
    write("HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\n" + fields
        + "Content-Length: " + QByteArray::number(text.size()) + "\r\n\r\n" + text);
}

void RawServer::Call::close() const
{
    socket->disconnectFromHost();
}

void RawServer::Call::reset() const
{
    socket->flush();
    const linger now{ 1, 0 };
    setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
    socket->abort();
}

RawServer::RawServer(Script script)
    : m_script(std::move(script))
{
    const bool listening = listen(QHostAddress::LocalHost);
    Q_ASSERT(listening);
    Q_UNUSED(listening);
}

RawServer::RawServer(const QSslConfiguration& tls, Script script)
    : RawServer(std::move(script))
{
    m_tls = tls;
}

void RawServer::setOnConnection(std::function<void(QTcpSocket*)> function)
{
    m_onConnection = std::move(function);
}

TavuUrl RawServer::url(const QByteArray& pathAndQuery) const
{
    return url("127.0.0.1", pathAndQuery);
}

TavuUrl RawServer::url(const QByteArray& host, const QByteArray& pathAndQuery) const
{
    return TavuUrl::fromEncoded((m_tls ? "https://" : "http://") + host + ':'
        + QByteArray::number(serverPort()) + pathAndQuery);
}

void RawServer::incomingConnection(qintptr descriptor)
{
    QTcpSocket* socket = m_tls ? new QSslSocket(this) : new QTcpSocket(this);
    socket->setSocketDescriptor(descriptor);
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    const int connection = ++m_connections;
    const auto received = std::make_shared<QByteArray>();
    connect(
        socket, &QTcpSocket::readyRead, this, [=] { read(socket, connection, received.get()); });
    connect(socket, &QTcpSocket::disconnected, this, [=] {
        ++m_ended;
        socket->deleteLater();
    });
    if (m_tls) {
        auto* secure = static_cast<QSslSocket*>(socket);
        secure->setSslConfiguration(*m_tls);
        secure->startServerEncryption();
    }
    if (m_onConnection)
        m_onConnection(socket);
}

void RawServer::read(QTcpSocket* socket, int connection, QByteArray* received)
{
    *received += socket->readAll();
    for (;;) {
        const int end = received->indexOf("\r\n\r\n");
        if (end < 0)
            return;
        Call call{ received->left(end + 4), QByteArray(), socket, connection, m_calls.size() + 1 };
        const int length = call.field("content-length").toInt();
        if (received->size() < end + 4 + length)
            return;
        call.body = received->mid(end + 4, length);
        received->remove(0, end + 4 + length);
        m_calls.append(call);
        m_script(call);
    }
}
