#include "httpstatus.h"

#include "tavulog.h"

#include <ostream>

namespace httpclient {

HttpClientStatus statusOf(CURLcode code)
{
    switch (code) {
    case CURLE_OK:
        return HttpClientStatus::Ok;
    case CURLE_URL_MALFORMAT:
        return HttpClientStatus::InvalidUrl;
    case CURLE_COULDNT_RESOLVE_HOST:
        return HttpClientStatus::NameNotResolved;
    case CURLE_COULDNT_CONNECT:
        return HttpClientStatus::ConnectFailed;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_SHUTDOWN_FAILED:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
        return HttpClientStatus::TlsFailed;
    case CURLE_OPERATION_TIMEDOUT:
        return HttpClientStatus::Timeout;
    case CURLE_FILESIZE_EXCEEDED:
    case CURLE_OUT_OF_MEMORY: // A header line beyond the library's own limit.
        return HttpClientStatus::ReadLimitExceeded;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
        return HttpClientStatus::ConnectionClosed;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_UNSUPPORTED_PROTOCOL: // An answer in HTTP/0.9; targets were looked at before.
    case CURLE_BAD_CONTENT_ENCODING:
        return HttpClientStatus::ProtocolError;
    default:
        return HttpClientStatus::Failed;
    }
}

} // namespace httpclient

QString HttpClient::toString(HttpClientStatus status)
{
    switch (status) {
    case HttpClientStatus::Ok:
        return QStringLiteral("OK");
    case HttpClientStatus::InvalidUrl:
        return QStringLiteral("Invalid URL");
    case HttpClientStatus::NameNotResolved:
        return QStringLiteral("Name not resolved");
    case HttpClientStatus::ConnectFailed:
        return QStringLiteral("Connection failed");
    case HttpClientStatus::TlsFailed:
        return QStringLiteral("TLS failed");
    case HttpClientStatus::Timeout:
        return QStringLiteral("Timeout");
    case HttpClientStatus::ReadLimitExceeded:
        return QStringLiteral("Read limit exceeded");
    case HttpClientStatus::ConnectionClosed:
        return QStringLiteral("Connection closed");
    case HttpClientStatus::ProtocolError:
        return QStringLiteral("Protocol error");
    case HttpClientStatus::TooManyRedirects:
        return QStringLiteral("Too many redirects");
    case HttpClientStatus::Cancelled:
        return QStringLiteral("Cancelled");
    case HttpClientStatus::Failed:
        return QStringLiteral("Failed");
    }
    return QStringLiteral("Status %1").arg(static_cast<int>(status));
}

std::ostream& operator<<(std::ostream& out, HttpClientStatus status)
{
    return out << HttpClient::toString(status);
}
