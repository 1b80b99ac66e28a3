#pragma once

#include "tavuexport.h"
#include "tavuurl.h"

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QObject>
#include <QPair>

#include <functional>
#include <memory>
#include <utility>

/// How a transfer ended, below HTTP. 0 means that an answer came whole; its HTTP code tells the
/// rest.
enum class HttpClientStatus : int {
    Ok = 0,
    InvalidUrl = 1, ///< No host, or a scheme other than http and https.
    NameNotResolved = 2,
    ConnectFailed = 3,
    TlsFailed = 4,
    Timeout = 5,
    ReadLimitExceeded = 6,
    ConnectionClosed = 7, ///< The answer ended before its end.
    ProtocolError = 8, ///< What came is not HTTP.
    TooManyRedirects = 9,
    Cancelled = 10,
    Failed = 11,
};

/// Header fields; names compare case-insensitively. A value.
class TAVU_EXPORT HttpClientHeaders
{
public:
    using Field = QPair<QByteArray, QByteArray>;

    /// Sets a field; one of the same name is replaced. Names and values with control characters are
    /// refused when the request is sent.
    void insert(const QByteArray& name, const QByteArray& value);
    /// Appends a field, also beside one of the same name.
    void append(const QByteArray& name, const QByteArray& value);
    /// The first field's value.
    QByteArray value(const QByteArray& name, const QByteArray& defaultValue = QByteArray()) const;
    bool contains(const QByteArray& name) const;
    void remove(const QByteArray& name);
    bool isEmpty() const { return m_fields.isEmpty(); }
    const QList<Field>& fields() const& { return m_fields; }
    QList<Field> fields() && { return std::move(m_fields); }

private:
    QList<Field> m_fields;
};

/// How one request is to be sent. A value.
class TAVU_EXPORT HttpClientOptions
{
public:
    void setHeaders(const HttpClientHeaders& headers) { m_headers = headers; }
    const HttpClientHeaders& headers() const { return m_headers; }
    /// Redirects that the client follows by itself; 0, the default, delivers each one.
    void setMaxRedirects(int redirects) { m_maxRedirects = redirects; }
    int maxRedirects() const { return m_maxRedirects; }
    /// Bytes of the decoded body; an answer that exceeds it fails. 0 means no limit.
    void setReadSizeLimit(int bytes) { m_readSizeLimit = bytes; }
    int readSizeLimit() const { return m_readSizeLimit; }
    /// Milliseconds for the whole transfer, name lookup to last byte. 0 means no limit.
    void setTimeoutMs(int ms) { m_timeoutMs = ms; }
    int timeoutMs() const { return m_timeoutMs; }
    /// Whether a POST may be carried out twice without harm. Then it is sent again as a GET is when
    /// its kept connection dies before the first byte of an answer.
    void setRepeatable(bool repeatable) { m_repeatable = repeatable; }
    bool isRepeatable() const { return m_repeatable; }

private:
    HttpClientHeaders m_headers;
    int m_maxRedirects = 0;
    int m_readSizeLimit = 0;
    int m_timeoutMs = 0;
    bool m_repeatable = false;
};

/// What all clients of the process share. Set it before the first client is made.
struct TAVU_EXPORT HttpClientConfig
{
    /// PEM file of certificate authorities trusted in addition to the system's; empty for none.
    QString caFile;
    /// "host:port:address:port" as curl's --connect-to takes it: where connections really go.
    QList<QByteArray> connectTo;
    /// Host of the service's base URL, and the suffix (leading dot included) of its domain. When
    /// the suffix is set, "authorization" leaves for these hosts alone.
    QByteArray baseHost;
    QByteArray domainSuffix;
    /// Milliseconds for name lookup, connection and TLS handshake together.
    int connectTimeoutMs = 5000;

    static void setShared(const HttpClientConfig& config);
    static HttpClientConfig shared();
};

/// An HTTP client on the event loop of its thread (RFC 9110, RFC 9112). Certificates are always
/// verified. Connections are kept and used again; at most 16 are open, and further requests wait
/// for their turn inside their time-outs. Proxies are not used. A GET that fails by 429 or 503 with
/// a Retry-After of at most 2 s, or by a kept connection that died before the first byte, is sent
/// again, at most twice, inside its time-out; a POST never is, unless its options say that a dead
/// connection may be made up for. A kept connection that its server has closed meanwhile carries no
/// request at all: a fresh one does. Destroying the client ends its transfers without a call.
class TAVU_EXPORT HttpClient : public QObject
{
    Q_OBJECT

public:
    /// What to speak; by default what the client finds best, which is HTTP/1.1.
    enum HttpVersion : int { HttpDefault = 0, Http11 = 1 };

    struct Result
    {
        /// As requested, fragment included.
        TavuUrl url;
        HttpClientStatus error = HttpClientStatus::Ok;
        /// The HTTP status code; 0 when the transfer failed.
        int code = 0;
        QByteArray data;
        /// "location" arrives absolute, and empty when it names no place that can be asked.
        HttpClientHeaders headers;
        /// For people: what failed, when the transfer did; names no secrets.
        QString reason = QString();
    };
    using Callback = std::function<void(const Result&)>;

    /// `useCache` is whether answers to GET may be kept as RFC 9111 allows a private cache.
    HttpClient(QObject* parent, HttpVersion version, bool useCache);
    ~HttpClient() override;

    /// Sends a request and returns at once; `callback` is called once, from the event loop, never
    /// from within this call.
    void get(const TavuUrl& url, const HttpClientOptions& options, Callback callback);
    void post(const TavuUrl& url, const QByteArray& body, const HttpClientOptions& options,
        Callback callback);

    /// Bytes of bodies that the cache may hold; 0, the default, keeps nothing.
    void setCacheSize(unsigned long bytes);
    void clearCache();

    /// For people, such as "OK" or "Timeout".
    static QString toString(HttpClientStatus status);

private:
    class Private;
    std::unique_ptr<Private> d;
};

TAVU_EXPORT std::ostream& operator<<(std::ostream& out, HttpClientStatus status);

Q_DECLARE_METATYPE(HttpClient::Result)
