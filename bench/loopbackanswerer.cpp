#include "loopbackanswerer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

/// Bytes of the first request in `received`, 0 while it is not whole.
int requestSize(const QByteArray& received)
{
    const int end = received.indexOf("\r\n\r\n");
    if (end < 0)
        return 0;
    const QByteArray head = received.left(end).toLower();
    const QByteArray name = "\r\ncontent-length:";
    const int field = head.indexOf(name);
    const int body = field < 0
        ? 0
        : head.mid(field + name.size(), head.indexOf('\r', field + 2) - field - name.size())
              .trimmed()
              .toInt();
    return received.size() >= end + 4 + body ? end + 4 + body : 0;
}

} // namespace

LoopbackAnswerer::LoopbackAnswerer(const QByteArray& body, const QByteArray& type)
    : m_answer("HTTP/1.1 200 OK\r\nContent-Type: " + type
        + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body)
    , m_listener(::socket(AF_INET, SOCK_STREAM, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const where = reinterpret_cast<sockaddr*>(&address);
    const bool listens = ::bind(m_listener, where, size) == 0 && ::listen(m_listener, 16) == 0;
    Q_ASSERT_X(listens, "LoopbackAnswerer", "cannot listen on loopback");
    ::getsockname(m_listener, where, &size);
    m_port = ntohs(address.sin_port);
    m_accepting = std::thread([this] { accept(); });
}

LoopbackAnswerer::~LoopbackAnswerer()
{
    m_ending = true;
    ::shutdown(m_listener, SHUT_RDWR);
    m_accepting.join();
    for (std::thread& connection : m_connections)
        connection.join();
    ::close(m_listener);
}

QByteArray LoopbackAnswerer::url() const
{
    return "http://127.0.0.1:" + QByteArray::number(m_port) + "/page?of=rows";
}

void LoopbackAnswerer::accept()
{
    while (!m_ending) {
        const int socket = ::accept(m_listener, nullptr, nullptr);
        if (socket >= 0)
            m_connections.emplace_back([this, socket] { serve(socket); });
    }
}

void LoopbackAnswerer::serve(int socket) const
{
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    QByteArray received;
    char buffer[64 * 1024];
    for (;;) {
        const ssize_t size = ::recv(socket, buffer, sizeof buffer, 0);
        if (size <= 0)
            break;
        received.append(buffer, int(size));
        for (int request = requestSize(received); request > 0; request = requestSize(received)) {
            received.remove(0, request);
            if (::send(socket, m_answer.constData(), size_t(m_answer.size()), MSG_NOSIGNAL) < 0)
                break;
        }
    }
    ::close(socket);
}
