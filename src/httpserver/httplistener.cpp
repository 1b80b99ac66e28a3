#include "httplistener.h"

#include <QSslSocket>
#include <QTimer>

#include <sys/socket.h>
#include <unistd.h>

namespace http {

namespace {

/// Connections that wait to be accepted. Qt asks for 50, which a burst of clients overflows; each
/// of those left out tries again a second later.
constexpr int waitingConnections = 1024;
constexpr int retryAfterMs = 50;

QHostAddress peerOf(int descriptor)
{
    sockaddr_storage address = {};
    socklen_t size = sizeof(address);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    return ::getpeername(descriptor, generic, &size) == 0 ? QHostAddress(generic) : QHostAddress();
}

} // namespace

Listener::Listener(
    std::optional<QSslConfiguration> tls, MayAccept mayAccept, Accept accept, QObject* parent)
    : QTcpServer(parent)
    , m_tls(std::move(tls))
    , m_mayAccept(std::move(mayAccept))
    , m_accept(std::move(accept))
{
    // Qt stops accepting after an error such as having no descriptors left.
    connect(this, &QTcpServer::acceptError, this,
        [this] { QTimer::singleShot(retryAfterMs, this, &QTcpServer::resumeAccepting); });
}

bool Listener::start(const QHostAddress& address, quint16 port)
{
    if (!listen(address, port))
        return false;
    ::listen(int(socketDescriptor()), waitingConnections);
    return true;
}

void Listener::incomingConnection(qintptr descriptor)
{
    if (!m_mayAccept(peerOf(int(descriptor)))) {
        turnAway(int(descriptor));
        return;
    }
    if (!m_tls) {
        auto* socket = new QTcpSocket;
        socket->setSocketDescriptor(descriptor);
        m_accept(socket, false);
        return;
    }
    auto* socket = new QSslSocket;
    socket->setSocketDescriptor(descriptor);
    socket->setSslConfiguration(*m_tls);
    m_accept(socket, true);
    socket->startServerEncryption();
}

void Listener::turnAway(int descriptor) const
{
    static const QByteArray busy = "HTTP/1.1 503 Service Unavailable\r\nConnection: close\r\n"
                                   "Retry-After: 1\r\nContent-Length: 0\r\n\r\n";
    if (!m_tls)
        ::send(descriptor, busy.constData(), std::size_t(busy.size()), MSG_DONTWAIT | MSG_NOSIGNAL);
    ::close(descriptor);
}

} // namespace http
