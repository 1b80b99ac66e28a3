#include "curlsockets.h"

#include <algorithm>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace httpclient {

namespace {

int localPortOf(curl_socket_t socket)
{
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return 0;
    if (address.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6*>(&address)->sin6_port);
    return ntohs(reinterpret_cast<const sockaddr_in*>(&address)->sin_port);
}

bool isReadable(curl_socket_t socket)
{
    pollfd look{ socket, POLLIN, 0 };
    return poll(&look, 1, 0) > 0;
}

} // namespace

curl_socket_t CurlSockets::onOpen(void* self, curlsocktype, curl_sockaddr* address)
{
    const curl_socket_t made =
        socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
    if (made != CURL_SOCKET_BAD)
        static_cast<CurlSockets*>(self)->m_open.insert(made);
    return made;
}

int CurlSockets::onClose(void* self, curl_socket_t socket)
{
    static_cast<CurlSockets*>(self)->m_open.erase(socket);
    return close(socket);
}

bool CurlSockets::hasUnasked(int localPort) const
{
    return std::any_of(m_open.begin(), m_open.end(), [localPort](curl_socket_t socket) {
        return localPortOf(socket) == localPort && isReadable(socket);
    });
}

} // namespace httpclient
