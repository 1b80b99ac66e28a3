#pragma once

#include <QByteArray>

#include <atomic>
#include <list>
#include <thread>

/// Answers every HTTP request on loopback with the same body, as cheaply as can be: blocking
/// sockets, one thread a connection. The peer's side of a bench.
class LoopbackAnswerer
{
public:
    explicit LoopbackAnswerer(const QByteArray& body, const QByteArray& type = "application/json");
    ~LoopbackAnswerer();
    LoopbackAnswerer(const LoopbackAnswerer&) = delete;
    LoopbackAnswerer& operator=(const LoopbackAnswerer&) = delete;

    QByteArray url() const;

private:
    void accept();
    void serve(int socket) const;

    const QByteArray m_answer;
    int m_listener;
    int m_port = 0;
    std::atomic<bool> m_ending = false;
    std::list<std::thread> m_connections; // Of the accepting thread alone, until it has ended.
    std::thread m_accepting;
};
