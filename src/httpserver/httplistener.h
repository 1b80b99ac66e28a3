#pragma once

#include <QSslConfiguration>
#include <QTcpServer>

#include <functional>
#include <optional>

class QTcpSocket;

namespace http {

/// Accepts connections and hands them on as sockets, TLS ones with their handshake begun. Goes on
/// after the process has been out of file descriptors.
class Listener : public QTcpServer
{
    Q_OBJECT

public:
    /// Takes a socket without a parent; `secure` says that it speaks TLS.
    using Accept = std::function<void(QTcpSocket*, bool secure)>;
    /// Whether one more connection may be had, from this peer.
    using MayAccept = std::function<bool(const QHostAddress& peer)>;

    Listener(
        std::optional<QSslConfiguration> tls, MayAccept mayAccept, Accept accept, QObject* parent);

    bool start(const QHostAddress& address, quint16 port);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    void turnAway(int descriptor) const;

    const std::optional<QSslConfiguration> m_tls;
    const MayAccept m_mayAccept;
    const Accept m_accept;
};

} // namespace http
