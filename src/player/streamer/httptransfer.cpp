#include "httptransfer.h"

#include "transferloop.h"
#include "urlpolicy.h"

#include <sys/socket.h>

namespace player {

namespace {

using List = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

List listOf(const QList<QByteArray>& lines)
{
    List list(nullptr, &curl_slist_free_all);
    for (const QByteArray& line : lines)
        list.reset(curl_slist_append(list.release(), line.constData()));
    return list;
}

/// A header line as curl takes it: it drops a line that ends in its colon.
QByteArray curlHeader(const QByteArray& line)
{
    const int colon = line.indexOf(':');
    return line.mid(colon + 1).trimmed().isEmpty() ? line.left(colon) + ';' : line;
}

QList<QByteArray> curlHeaders(const QList<QByteArray>& lines)
{
    QList<QByteArray> result;
    for (const QByteArray& line : lines)
        result.append(curlHeader(line));
    return result;
}

qint64 number(const QByteArray& digits)
{
    bool ok = false;
    const qint64 value = digits.trimmed().toLongLong(&ok);
    return ok && value >= 0 ? value : -1;
}

} // namespace

HttpTransfer::HttpTransfer(TransferLoop& loop, Receiver& receiver, const HttpOptions& options,
    Method method, const QByteArray& url, const QList<QByteArray>& headers, qint64 offset)
    : m_loop(loop)
    , m_receiver(receiver)
    , m_handle(curl_easy_init(), &curl_easy_cleanup)
    , m_headers(listOf(curlHeaders(headers)))
    , m_connectTo(listOf(options.connectTo))
{
    curl_easy_setopt(handle(), CURLOPT_URL, url.constData());
    curl_easy_setopt(handle(), CURLOPT_HTTPHEADER, m_headers.get());
    curl_easy_setopt(handle(), CURLOPT_CONNECT_TO, m_connectTo.get());
    curl_easy_setopt(handle(), CURLOPT_NOBODY, method == Method::Head ? 1L : 0L);
    if (offset > 0)
        curl_easy_setopt(handle(), CURLOPT_RANGE, (QByteArray::number(offset) + '-').constData());
    setOptions(options);
    setSecurity(options);
    m_loop.add(*this);
}

HttpTransfer::~HttpTransfer()
{
    m_loop.remove(*this);
}

void HttpTransfer::setOptions(const HttpOptions& options)
{
    curl_easy_setopt(handle(), CURLOPT_PRIVATE, this);
    curl_easy_setopt(handle(), CURLOPT_ERRORBUFFER, m_errorText);
    curl_easy_setopt(handle(), CURLOPT_HEADERFUNCTION, &HttpTransfer::onHeader);
    curl_easy_setopt(handle(), CURLOPT_HEADERDATA, this);
    curl_easy_setopt(handle(), CURLOPT_WRITEFUNCTION, &HttpTransfer::onData);
    curl_easy_setopt(handle(), CURLOPT_WRITEDATA, this);
    curl_easy_setopt(handle(), CURLOPT_USERAGENT, "tavu/" TAVU_VERSION);
    curl_easy_setopt(handle(), CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(handle(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle(), CURLOPT_PROXY, "");
    curl_easy_setopt(handle(), CURLOPT_TCP_KEEPALIVE, 1L);
    // An item's connection waits for the next item's turn.
    curl_easy_setopt(handle(), CURLOPT_MAXAGE_CONN, 600L);
    curl_easy_setopt(
        handle(), CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(options.connectTimeoutMs));
}

void HttpTransfer::setSecurity(const HttpOptions& options)
{
    // Redirects are followed by the owner, who knows which headers may go where.
    curl_easy_setopt(handle(), CURLOPT_FOLLOWLOCATION, 0L);
    if (options.refusesLocalAddresses) {
        curl_easy_setopt(handle(), CURLOPT_OPENSOCKETFUNCTION, &HttpTransfer::onOpenSocket);
        curl_easy_setopt(handle(), CURLOPT_OPENSOCKETDATA, this);
    }
    curl_easy_setopt(handle(), CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle(), CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(handle(), CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(handle(), CURLOPT_SSLVERSION, long{ CURL_SSLVERSION_TLSv1_2 });
    if (!options.caFile.isEmpty())
        curl_easy_setopt(handle(), CURLOPT_CAINFO, options.caFile.toLocal8Bit().constData());
}

void HttpTransfer::unpause()
{
    curl_easy_pause(handle(), CURLPAUSE_CONT);
}

bool HttpTransfer::hasConnected() const
{
    curl_off_t microseconds = 0;
    curl_easy_getinfo(handle(), CURLINFO_PRETRANSFER_TIME_T, &microseconds);
    return microseconds > 0;
}

QByteArray HttpTransfer::errorText() const
{
    return QByteArray(m_errorText).trimmed();
}

HttpTransfer& HttpTransfer::of(CURL* handle)
{
    char* self = nullptr;
    curl_easy_getinfo(handle, CURLINFO_PRIVATE, &self);
    return *reinterpret_cast<HttpTransfer*>(self);
}

curl_socket_t HttpTransfer::onOpenSocket(void* self, curlsocktype, curl_sockaddr* address)
{
    if (!httpclient::isLocalAddress(&address->addr))
        return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
    static_cast<HttpTransfer*>(self)->m_metLocalAddress = true;
    return CURL_SOCKET_BAD;
}

std::size_t HttpTransfer::onHeader(char* bytes, std::size_t size, std::size_t count, void* self)
{
    const std::size_t all = size * count;
    const QByteArray line = QByteArray::fromRawData(bytes, static_cast<int>(all));
    return static_cast<HttpTransfer*>(self)->takeHeaderLine(line) ? all : 0;
}

std::size_t HttpTransfer::onData(char* bytes, std::size_t size, std::size_t count, void* self)
{
    const std::size_t all = size * count;
    Receiver& receiver = static_cast<HttpTransfer*>(self)->m_receiver;
    return receiver.dataArrived(bytes, all) ? all : CURL_WRITEFUNC_PAUSE;
}

bool HttpTransfer::takeHeaderLine(const QByteArray& line)
{
    if (line.startsWith("HTTP/")) {
        m_head = Head();
        return true;
    }
    const int colon = line.indexOf(':');
    if (colon > 0) {
        takeField(line.left(colon).trimmed().toLower(), line.mid(colon + 1).trimmed());
        return true;
    }
    if (!line.trimmed().isEmpty())
        return true;
    long status = 0;
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &status);
    m_head.status = static_cast<int>(status);
    // Interim answers (1xx) are followed by the real one.
    return status < 200 || m_receiver.headArrived(m_head);
}

void HttpTransfer::takeField(const QByteArray& name, const QByteArray& value)
{
    if (name == "content-length") {
        m_head.length = number(value);
    } else if (name == "content-range" && value.toLower().startsWith("bytes ")) {
        const int slash = value.indexOf('/');
        m_head.rangeStart = number(value.mid(6, value.indexOf('-') - 6));
        m_head.rangeTotal = slash < 0 ? -1 : number(value.mid(slash + 1));
    } else if (name == "accept-ranges") {
        m_head.acceptsRanges = value.toLower() == "bytes";
    } else if (name == "etag") {
        m_head.entityTag = value.startsWith("W/") ? QByteArray() : value;
    } else if (name == "content-type") {
        m_head.mediaType = value.left(value.indexOf(';')).trimmed().toLower();
    } else if (name == "location") {
        m_head.location = value;
    }
}

} // namespace player
