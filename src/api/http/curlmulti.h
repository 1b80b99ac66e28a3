#pragma once

#include <QHash>
#include <QObject>
#include <QTimer>

#include <curl/curl.h>

#include <memory>

class QSocketNotifier;

namespace httpclient {

class CurlTransfer;

/// Runs transfers on the event loop of its thread: the sockets' notifiers and one timer tell the
/// library when to go on. Idle connections cost no wake-ups.
class CurlMulti : public QObject
{
    Q_OBJECT

public:
    explicit CurlMulti(QObject* parent);
    ~CurlMulti() override;

    /// Begins a transfer; nothing of it happens before control returns to the event loop. It must
    /// live until it is done or removed.
    void add(CurlTransfer* transfer);
    /// Ends a transfer without a word; its connection is closed.
    void remove(CurlTransfer* transfer);

private:
    struct Watch
    {
        std::unique_ptr<QSocketNotifier> read;
        std::unique_ptr<QSocketNotifier> write;
    };

    static int onSocket(CURL* easy, curl_socket_t socket, int what, void* self, void* watch);
    static int onTimer(CURLM* multi, long ms, void* self);

    void watch(curl_socket_t socket, int what);
    std::unique_ptr<QSocketNotifier> notifier(curl_socket_t socket, int type, int event);
    void forget(curl_socket_t socket);
    void act(curl_socket_t socket, int event);
    void reportDone();

    CURLM* m_multi;
    QTimer m_timer;
    QHash<curl_socket_t, std::shared_ptr<Watch>> m_watches;
};

} // namespace httpclient
