#pragma once

#include "certificates.h"

#include <QHostAddress>
#include <QString>
#include <QVector>

#include <map>
#include <memory>

class QTcpServer;

namespace http {
class Server;
}

namespace emulator {

/// Ports behind which TLS or the connection itself goes wrong, each with a host name of its own
/// below the service's. A client is led there by a redirect, or by its settings from the start.
///
/// expired, unknown-ca, wrong-host: certificates that must not be trusted; old-tls: nothing newer
/// than TLS 1.1; plain: HTTP where TLS is expected; stall: takes connections and says nothing;
/// refused: nobody listens; black-hole: connections are never answered.
class HostilePorts
{
public:
    HostilePorts();
    ~HostilePorts();

    /// Opens the ports; `server` serves those that get as far as a request. Returns what went
    /// wrong, for people; empty on success.
    QString open(http::Server& server, const QHostAddress& address, const Identity& authority,
        const QString& domain);

    /// Host name to port.
    const std::map<QString, quint16>& ports() const { return m_ports; }

private:
    bool openBad(http::Server& server, const QHostAddress& address, const Identity& authority,
        const QString& domain);
    bool openOldTls(http::Server& server, const QHostAddress& address, const Identity& authority,
        const QString& domain);
    bool openStall(const QHostAddress& address, const QString& domain);
    bool openRefused(const QString& domain);
    bool openBlackHole(const QString& domain);
    void note(const char* name, const QString& domain, quint16 port);

    std::map<QString, quint16> m_ports;
    std::unique_ptr<QTcpServer> m_stall;
    QVector<int> m_sockets;
};

} // namespace emulator
