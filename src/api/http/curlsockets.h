#pragma once

#include <curl/curl.h>

#include <set>

namespace httpclient {

/// The sockets of one client's connections. A kept connection that its server has closed must not
/// carry a request: over TLS the library takes the unread farewell for a sign of life, sends, and
/// cannot say afterwards whether the request was carried out.
class CurlSockets
{
public:
    /// To be the library's functions for opening and closing sockets; `self` is the CurlSockets,
    /// which must outlive the connections.
    static curl_socket_t onOpen(void* self, curlsocktype purpose, curl_sockaddr* address);
    static int onClose(void* self, curl_socket_t socket);

    /// Whether the idle connection of this local port has something to read, be it the end: between
    /// an answer and the next request a server has nothing else to say than that it leaves.
    bool hasUnasked(int localPort) const;

private:
    std::set<curl_socket_t> m_open;
};

} // namespace httpclient
