#include "httpserver.h"

#include "httpconnection.h"
#include "httplistener.h"

#include <QHash>
#include <QSet>
#include <QSslCertificate>
#include <QSslKey>

#include <utility>

namespace http {

struct Server::Private
{
    Setup setup;
    QList<Listener*> listeners;
    QSet<Connection*> connections;
    QHash<QHostAddress, int> perAddress;
    QString error;

    quint16 listen(Server* server, const QHostAddress& address, quint16 port,
        const std::optional<QSslConfiguration>& tls);
    bool mayAccept(const QHostAddress& peer) const;
    void accept(Server* server, QTcpSocket* socket, bool secure);
    void forget(Connection* connection, const QHostAddress& peer);
};

Server::Server(QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{
    d->setup.handler = [](const Request&, const Responder& responder) {
        responder.send(Response::text(404, "404 Not Found\n"));
    };
}

Server::~Server()
{
    qDeleteAll(d->listeners);
    // Those that are being cut included.
    qDeleteAll(findChildren<Connection*>());
}

void Server::setHandler(Handler handler)
{
    d->setup.handler = std::move(handler);
}

void Server::setGuard(Guard guard)
{
    d->setup.guard = std::move(guard);
}

void Server::setRefusal(Refusal refusal)
{
    d->setup.refusal = std::move(refusal);
}

void Server::setLimits(const Limits& limits)
{
    d->setup.limits = limits;
}

quint16 Server::listen(const QHostAddress& address, quint16 port)
{
    return d->listen(this, address, port, std::nullopt);
}

quint16 Server::listen(const QHostAddress& address, quint16 port, const QSslConfiguration& tls)
{
    return d->listen(this, address, port, tls);
}

quint16 Server::Private::listen(Server* server, const QHostAddress& address, quint16 port,
    const std::optional<QSslConfiguration>& tls)
{
    const auto may = [this](const QHostAddress& peer) { return mayAccept(peer); };
    const auto take = [this, server](
                          QTcpSocket* socket, bool secure) { accept(server, socket, secure); };
    auto listener = std::make_unique<Listener>(tls, may, take, server);
    if (!listener->start(address, port)) {
        error = listener->errorString();
        return 0;
    }
    listeners += listener.get();
    return listener.release()->serverPort();
}

bool Server::Private::mayAccept(const QHostAddress& peer) const
{
    const int ofOne = setup.limits.connectionsPerAddress;
    return connections.size() < setup.limits.connections
        && (ofOne == 0 || perAddress.value(peer) < ofOne);
}

void Server::Private::accept(Server* server, QTcpSocket* socket, bool secure)
{
    const QHostAddress peer = socket->peerAddress();
    auto* connection = new Connection(setup, socket, secure, server);
    connections += connection;
    ++perAddress[peer];
    QObject::connect(connection, &Connection::gone, server,
        [this, connection, peer] { forget(connection, peer); });
}

void Server::Private::forget(Connection* connection, const QHostAddress& peer)
{
    if (connections.remove(connection) && --perAddress[peer] <= 0)
        perAddress.remove(peer);
}

QString Server::errorString() const
{
    return d->error;
}

int Server::connectionCount() const
{
    return d->connections.size();
}

void Server::close()
{
    for (Listener* listener : std::exchange(d->listeners, {})) {
        listener->close();
        listener->deleteLater();
    }
    d->perAddress.clear();
    for (Connection* connection : std::exchange(d->connections, {}))
        connection->cut();
}

QSslConfiguration tlsConfiguration(const QByteArray& certificateChainPem, const QByteArray& keyPem)
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificateChain(QSslCertificate::fromData(certificateChainPem));
    QSslKey key(keyPem, QSsl::Rsa);
    if (key.isNull())
        key = QSslKey(keyPem, QSsl::Ec);
    configuration.setPrivateKey(key);
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}

} // namespace http
