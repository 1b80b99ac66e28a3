#include "curltransfer.h"

#include "httpstatus.h"
#include "urlpolicy.h"

namespace httpclient {

namespace {

// Bodies are reserved for as announced, up to this; what comes beyond it must really come.
constexpr qint64 maxReserve = 1024LL * 1024;

curl_slist* append(curl_slist* list, const QByteArray& line)
{
    return curl_slist_append(list, line.constData());
}

/// The library takes a bare "name:" as a field to leave out, and "name;" as an empty one.
QByteArray line(const HttpClientHeaders::Field& field)
{
    return field.second.isEmpty() ? field.first + ';' : field.first + ": " + field.second;
}

/// Authorities besides the system's stand in the system's hashed folder; without them the bundle
/// file alone is used, which the library parses once and keeps.
void setAuthorities(CURL* easy, const QString& caFile)
{
    if (caFile.isEmpty())
        curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
    else
        curl_easy_setopt(easy, CURLOPT_CAINFO, caFile.toLocal8Bit().constData());
}

} // namespace

CurlTransfer::CurlTransfer(const Attempt& attempt, const HttpClientConfig& config,
    CurlHandles& handles, CurlSockets& sockets, Done done)
    : m_attempt(attempt)
    , m_config(config)
    , m_handles(handles)
    , m_sockets(sockets)
    , m_easy(handles.take())
    , m_done(std::move(done))
{
    setUpTarget();
    setUpRequest();
    setUpSecurity();
    setUpCallbacks();
}

CurlTransfer::~CurlTransfer()
{
    m_handles.giveBack(m_easy);
    curl_slist_free_all(m_fields);
    curl_slist_free_all(m_connectTo);
}

template <class T>
void CurlTransfer::set(CURLoption option, T value)
{
    curl_easy_setopt(m_easy, option, value);
}

void CurlTransfer::setUpTarget()
{
    set(CURLOPT_URL, m_attempt.url.constData());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_1_1));
    set(CURLOPT_PROXY, "");
    for (const QByteArray& mapping : m_config.connectTo)
        m_connectTo = append(m_connectTo, mapping);
    set(CURLOPT_CONNECT_TO, m_connectTo);
    set(CURLOPT_CONNECTTIMEOUT_MS, long(m_config.connectTimeoutMs));
    set(CURLOPT_FRESH_CONNECT, long(m_attempt.fresh));
    set(CURLOPT_TCP_NODELAY, 1L);
    set(CURLOPT_NOSIGNAL, 1L);
    // A name lookup that hangs would hold up the thread at the transfer's end.
    set(CURLOPT_QUICK_EXIT, 1L);
}

void CurlTransfer::setUpRequest()
{
    set(CURLOPT_USERAGENT, "Tavu/" TAVU_VERSION);
    set(CURLOPT_ACCEPT_ENCODING, "gzip, deflate");
    for (const HttpClientHeaders::Field& field : m_attempt.headers.fields())
        m_fields = append(m_fields, line(field));
    m_fields = append(m_fields, "Expect:");
    if (m_attempt.post) {
        if (!m_attempt.headers.contains("content-type"))
            m_fields = append(m_fields,
                m_attempt.body.isEmpty() ? "Content-Type:" : "Content-Type: application/json");
        set(CURLOPT_POSTFIELDSIZE_LARGE, curl_off_t(m_attempt.body.size()));
        set(CURLOPT_POSTFIELDS, m_attempt.body.constData());
    }
    set(CURLOPT_HTTPHEADER, m_fields);
}

void CurlTransfer::setUpSecurity()
{
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSLVERSION, long(CURL_SSLVERSION_TLSv1_2));
    setAuthorities(m_easy, m_config.caFile);
}

void CurlTransfer::setUpCallbacks()
{
    set(CURLOPT_PRIVATE, this);
    set(CURLOPT_ERRORBUFFER, m_errorText);
    set(CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeader);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_OPENSOCKETFUNCTION, &CurlTransfer::onOpenSocket);
    set(CURLOPT_OPENSOCKETDATA, this);
    set(CURLOPT_CLOSESOCKETFUNCTION, &CurlSockets::onClose);
    set(CURLOPT_CLOSESOCKETDATA, &m_sockets);
    set(CURLOPT_PREREQFUNCTION, &CurlTransfer::onRequest);
    set(CURLOPT_PREREQDATA, this);
    set(CURLOPT_MAXFILESIZE_LARGE, curl_off_t(m_attempt.readSizeLimit));
}

size_t CurlTransfer::onHeader(char* data, size_t, size_t count, void* self)
{
    return static_cast<CurlTransfer*>(self)->takeHeader(data, int(count)) ? count : 0;
}

size_t CurlTransfer::onBody(char* data, size_t, size_t count, void* self)
{
    return static_cast<CurlTransfer*>(self)->takeBody(data, int(count)) ? count : 0;
}

int CurlTransfer::onRequest(void* self, char*, char*, int, int localPort)
{
    return static_cast<CurlTransfer*>(self)->allowRequest(localPort);
}

int CurlTransfer::allowRequest(int localPort)
{
    m_unsent = m_requests == 0 && isReused() && m_sockets.hasUnasked(localPort);
    if (m_unsent)
        return CURL_PREREQFUNC_ABORT;
    // The library makes up for a dead kept connection by itself, also for a POST, which the server
    // may have carried out by then.
    if (m_requests++ <= m_attempt.resends) {
        m_refusal = HttpClientStatus::Ok; // Another of the host's addresses served.
        return CURL_PREREQFUNC_OK;
    }
    refuse(HttpClientStatus::ConnectionClosed,
        QStringLiteral("The connection was closed before an answer came."));
    return CURL_PREREQFUNC_ABORT;
}

bool CurlTransfer::isReused() const
{
    long connected = 0;
    curl_easy_getinfo(m_easy, CURLINFO_NUM_CONNECTS, &connected);
    return connected == 0;
}

curl_socket_t CurlTransfer::onOpenSocket(void* self, curlsocktype type, curl_sockaddr* address)
{
    auto* transfer = static_cast<CurlTransfer*>(self);
    if (!refusesLocalAddresses(transfer->m_config) || !isLocalAddress(&address->addr))
        return CurlSockets::onOpen(&transfer->m_sockets, type, address);
    transfer->refuse(HttpClientStatus::ConnectFailed,
        QStringLiteral("A public service may not lead to this machine or its link."));
    return CURL_SOCKET_BAD;
}

bool CurlTransfer::takeHeader(const char* line, int size)
{
    switch (m_head.take(line, size)) {
    case HeaderBlock::Verdict::Fine:
        return true;
    case HeaderBlock::Verdict::TooLong:
        return refuse(HttpClientStatus::ReadLimitExceeded,
            QStringLiteral("The answer's header block is too long."));
    case HeaderBlock::Verdict::Malformed:
        break;
    }
    return refuse(HttpClientStatus::ProtocolError,
        QStringLiteral("The answer's header fields are malformed or contradict each other."));
}

bool CurlTransfer::takeBody(const char* data, int size)
{
    // Decoded bytes, which an announced length says nothing about.
    const int limit = m_attempt.readSizeLimit;
    if (limit > 0 && size > limit - m_data.size())
        return refuse(
            HttpClientStatus::ReadLimitExceeded, QStringLiteral("The answer's body is too long."));
    if (m_data.isEmpty())
        m_data.reserve(int(qBound(qint64(size), m_head.contentLength(), maxReserve)));
    m_data.append(data, size);
    return true;
}

bool CurlTransfer::refuse(HttpClientStatus status, const QString& reason)
{
    m_refusal = status;
    m_refusalReason = reason;
    return false;
}

void CurlTransfer::done(CURLcode code)
{
    const Done finished = std::move(m_done);
    finished(outcome(code));
}

Outcome CurlTransfer::outcome(CURLcode code) const
{
    Outcome outcome;
    outcome.resends = qMax(0, m_requests - 1);
    outcome.unsent = m_unsent;
    if (code == CURLE_OK) {
        long status = 0;
        curl_easy_getinfo(m_easy, CURLINFO_RESPONSE_CODE, &status);
        outcome.code = int(status);
        outcome.data = m_data;
        outcome.headers = m_head.headers();
        return outcome;
    }
    const bool refused = m_refusal != HttpClientStatus::Ok;
    outcome.status = refused ? m_refusal : statusOf(code);
    outcome.reason = refused ? m_refusalReason : reasonFor(code);
    return outcome;
}

QString CurlTransfer::reasonFor(CURLcode code) const
{
    if (code == CURLE_OUT_OF_MEMORY)
        return QStringLiteral("The answer's header line is too long.");
    return QString::fromUtf8(m_errorText[0] ? m_errorText : curl_easy_strerror(code));
}

} // namespace httpclient
