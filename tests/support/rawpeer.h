#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QTcpSocket>

#include <memory>

/// One connection to a server on loopback that sends exactly the bytes it is told, and so also what
/// no proper client would send. Turns the event loop of the calling thread while it waits, so that
/// the server may live there as well.
class RawPeer
{
public:
    struct Answer
    {
        int status = 0; ///< 0: none came
        QList<QPair<QByteArray, QByteArray>> fields;
        QByteArray body; ///< without chunk framing
        bool complete = false; ///< as its framing says

        QByteArray field(const QByteArray& name) const;
    };

    explicit RawPeer(quint16 port);
    /// Over TLS, trusting whatever certificate comes.
    static RawPeer tls(quint16 port);

    bool connected() const;
    void send(const QByteArray& bytes);
    /// Sends a request with a Host field and, with a body, its length and type.
    void request(const QByteArray& method, const QByteArray& target, const QByteArray& body = {},
        const QByteArray& fields = {});

    /// The next answer, interim ones included. Waits until it is complete, the connection ends or
    /// the watchdog barks.
    Answer answer(bool toHead = false, int watchdogMs = 10000);
    /// request() and answer().
    Answer ask(const QByteArray& method, const QByteArray& target, const QByteArray& body = {},
        const QByteArray& fields = {});

    /// Everything received and not taken yet.
    QByteArray received();
    bool waitFor(const QByteArray& text, int watchdogMs = 10000);
    bool waitForEnd(int watchdogMs = 10000);

    QTcpSocket* socket() { return m_socket.get(); }

private:
    explicit RawPeer(std::unique_ptr<QTcpSocket> socket);
    bool takeAnswer(Answer* answer, bool toHead);
    bool takeChunked(Answer* answer, int bodyStart);

    std::unique_ptr<QTcpSocket> m_socket;
    quint16 m_port = 0;
    QByteArray m_received;
};
