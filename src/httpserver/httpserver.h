#pragma once

#include "httplimits.h"
#include "httpresponder.h"

#include <QHostAddress>
#include <QObject>
#include <QSslConfiguration>

#include <functional>
#include <memory>
#include <optional>

namespace http {

class Listener;

/// An HTTP/1.1 server on the event loop of its thread. One server may listen on several addresses,
/// with and without TLS. Requests of one connection are answered in order, one at a time; what a
/// peer pipelines behind waits in bounded buffers.
///
/// Refused with 400 and a closed connection: Content-Length with Transfer-Encoding, either of them
/// twice, any coding but chunked, bare LF or CR, folded fields, space before a colon, control
/// characters, broken percent escapes, NUL in the path.
class Server : public QObject
{
    Q_OBJECT

public:
    /// Looks at a request whose head has come and whose body has not. An answer refuses it: it is
    /// sent, and the connection closes.
    using Guard = std::function<std::optional<Response>(const Request& head)>;
    /// Makes the body of a refusal by the server itself (400, 408, 413, ...).
    using Refusal = std::function<Response(int status)>;

    explicit Server(QObject* parent = nullptr);
    ~Server() override;
    Q_DISABLE_COPY_MOVE(Server)

    /// Set before the first listen().
    void setHandler(Handler handler);
    /// Without a guard, requests with no or several Host fields are refused with 400.
    void setGuard(Guard guard);
    void setRefusal(Refusal refusal);
    void setLimits(const Limits& limits);

    /// Listens; port 0 takes a free one. Returns the port, 0 on failure (see errorString).
    quint16 listen(const QHostAddress& address = QHostAddress::LocalHost, quint16 port = 0);
    /// The same over TLS with the configuration's certificate chain and key.
    quint16 listen(const QHostAddress& address, quint16 port, const QSslConfiguration& tls);

    QString errorString() const;
    int connectionCount() const;

    /// Stops listening and cuts every connection. A second call does nothing; listen() may follow.
    void close();

private:
    friend class Listener;
    struct Private;
    std::unique_ptr<Private> d;
};

/// The TLS side of a listener from PEM texts; the chain begins with the server's certificate.
QSslConfiguration tlsConfiguration(const QByteArray& certificateChainPem, const QByteArray& keyPem);

} // namespace http
