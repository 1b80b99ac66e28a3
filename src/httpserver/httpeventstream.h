#pragma once

#include <QByteArray>

#include <functional>
#include <memory>

namespace http {

class Exchange;

/// One client of server-sent events. A copyable handle, used in the server's thread only. The
/// stream ends when the peer goes, when it lags further behind than the limit, at close(), and when
/// the last copy goes. A quiet stream carries a comment at the limit's heartbeat.
class EventStream
{
public:
    EventStream() = default;
    explicit EventStream(std::shared_ptr<Exchange> exchange);

    bool isOpen() const;
    /// `closed` runs once, when the peer goes or is cut off.
    void onClosed(std::function<void()> closed) const;

    /// Returns whether the client still takes part. An empty id or name is left out.
    bool send(const QByteArray& id, const QByteArray& event, const QByteArray& data) const;
    /// Sends what format() made; saves the formatting where many clients get the same.
    bool send(const QByteArray& formatted) const;
    void close() const;

    static QByteArray format(const QByteArray& id, const QByteArray& event, const QByteArray& data);

private:
    std::shared_ptr<Exchange> m_exchange;
};

} // namespace http
