#include "hostileports.h"

#include "httpserver.h"

#include <QTcpServer>
#include <QTcpSocket>

#include <algorithm>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace emulator {

namespace {

constexpr long day = 24L * 3600;

QString hostName(const char* name, const QString& domain)
{
    return QLatin1String(name) + QLatin1Char('.') + domain;
}

quint16 listenWith(http::Server& server, const QHostAddress& address, const Identity& identity)
{
    return identity.isEmpty()
        ? quint16(0)
        : server.listen(address, 0, http::tlsConfiguration(identity.certificate, identity.key));
}

sockaddr* generic(sockaddr_in& address)
{
    return reinterpret_cast<sockaddr*>(&address);
}

// A socket bound to a free port of the loopback address; -1 on failure. Port gets the number.
int bindAnywhere(quint16& port)
{
    const int bound = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bound < 0 || bind(bound, generic(address), size) != 0
        || getsockname(bound, generic(address), &size) != 0) {
        if (bound >= 0)
            ::close(bound);
        return -1;
    }
    port = ntohs(address.sin_port);
    return bound;
}

// A connection that stays in the queue of a socket that nobody accepts from.
int connectAndStay(quint16 port)
{
    const int filler = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    (void)connect(filler, generic(address), sizeof address);
    return filler;
}

} // namespace

HostilePorts::HostilePorts() = default;

HostilePorts::~HostilePorts()
{
    for (const int socket : m_sockets)
        ::close(socket);
}

void HostilePorts::note(const char* name, const QString& domain, quint16 port)
{
    m_ports[hostName(name, domain)] = port;
}

QString HostilePorts::open(http::Server& server, const QHostAddress& address,
    const Identity& authority, const QString& domain)
{
    const bool opened = openBad(server, address, authority, domain)
        && openOldTls(server, address, authority, domain) && openStall(address, domain)
        && openRefused(domain) && openBlackHole(domain);
    return opened ? QString() : QStringLiteral("The hostile ports cannot be opened.");
}

bool HostilePorts::openBad(http::Server& server, const QHostAddress& address,
    const Identity& authority, const QString& domain)
{
    const auto names = [&domain](
                           const char* name) { return QStringList{ hostName(name, domain) }; };
    note("expired", domain,
        listenWith(
            server, address, makeServerIdentity(authority, names("expired"), { -30 * day, -day })));
    note("unknown-ca", domain,
        listenWith(server, address, makeServerIdentity(makeAuthority(), names("unknown-ca"))));
    note("wrong-host", domain,
        listenWith(server, address,
            makeServerIdentity(authority, { QStringLiteral("someone-else.example") })));
    note("plain", domain, server.listen(address, 0));
    return std::all_of(
        m_ports.begin(), m_ports.end(), [](const auto& port) { return port.second != 0; });
}

// The library refuses such old versions by itself, on the server's side too, unless it is told to
// lower its level of security.
bool HostilePorts::openOldTls(http::Server& server, const QHostAddress& address,
    const Identity& authority, const QString& domain)
{
    const Identity identity = makeServerIdentity(authority, { hostName("old-tls", domain) });
    if (identity.isEmpty())
        return false;
    QSslConfiguration tls = http::tlsConfiguration(identity.certificate, identity.key);
    tls.setProtocol(QSsl::TlsV1_1);
    tls.setBackendConfigurationOption("CipherString", QByteArray("ALL:@SECLEVEL=0"));
    const quint16 port = server.listen(address, 0, tls);
    note("old-tls", domain, port);
    return port != 0;
}

bool HostilePorts::openStall(const QHostAddress& address, const QString& domain)
{
    m_stall = std::make_unique<QTcpServer>();
    QTcpServer* server = m_stall.get();
    QObject::connect(server, &QTcpServer::newConnection, server, [server] {
        while (QTcpSocket* peer = server->nextPendingConnection())
            QObject::connect(peer, &QTcpSocket::disconnected, peer, &QObject::deleteLater);
    });
    const bool listening = server->listen(address, 0);
    note("stall", domain, server->serverPort());
    return listening;
}

// A port that is taken but not listened on stays refused, whatever others open meanwhile.
bool HostilePorts::openRefused(const QString& domain)
{
    quint16 port = 0;
    const int bound = bindAnywhere(port);
    note("refused", domain, port);
    if (bound < 0)
        return false;
    m_sockets += bound;
    return true;
}

// With its queue full the system drops further attempts to connect.
bool HostilePorts::openBlackHole(const QString& domain)
{
    quint16 port = 0;
    const int bound = bindAnywhere(port);
    note("black-hole", domain, port);
    if (bound < 0 || ::listen(bound, 0) != 0)
        return false;
    m_sockets += bound;
    for (int i = 0; i < 4; ++i)
        m_sockets += connectAndStay(port);
    return true;
}

} // namespace emulator
