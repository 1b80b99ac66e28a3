#pragma once

#include "tavuurl.h"

#include <QByteArray>
#include <QList>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QTcpSocket>

#include <functional>
#include <optional>

/// A server on loopback that answers with exactly the bytes that a test writes, right or wrong, on
/// the test's own event loop.
class RawServer : public QTcpServer
{
    Q_OBJECT

public:
    struct Call
    {
        QByteArray head; ///< request line and fields, with their ends
        QByteArray body;
        QTcpSocket* socket = nullptr;
        int connection = 0; ///< counted from 1
        int number = 0; ///< of this call, counted from 1

        QByteArray line() const { return head.left(head.indexOf('\r')); }
        /// The first field of the name; null when there is none.
        QByteArray field(const QByteArray& name) const;
        void write(const QByteArray& bytes) const { socket->write(bytes); }
        /// Writes a 200 answer with the body, and with further fields, each ended by CR LF.
        void answer(const QByteArray& body, const QByteArray& fields = QByteArray()) const;
        void answer(int status, const QByteArray& body, const QByteArray& fields) const;
        void close() const;
        void reset() const;
    };
    using Script = std::function<void(const Call&)>;

    explicit RawServer(Script script);
    RawServer(const QSslConfiguration& tls, Script script);

    void setScript(Script script) { m_script = std::move(script); }
    /// Called for each connection before it says anything.
    void setOnConnection(std::function<void(QTcpSocket*)> function);
    TavuUrl url(const QByteArray& pathAndQuery) const;
    TavuUrl url(const QByteArray& host, const QByteArray& pathAndQuery) const;

    const QList<Call>& calls() const { return m_calls; }
    int connections() const { return m_connections; }
    /// How many of the connections have ended.
    int ended() const { return m_ended; }

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    void read(QTcpSocket* socket, int connection, QByteArray* received);

    Script m_script;
    std::optional<QSslConfiguration> m_tls;
    std::function<void(QTcpSocket*)> m_onConnection;
    QList<Call> m_calls;
    int m_connections = 0;
    int m_ended = 0;
};
