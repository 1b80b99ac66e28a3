#pragma once

#include "curltransfer.h"
#include "httpcache.h"
#include "httpclient.h"

#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace httpclient {

class CurlMulti;

/// What the exchanges of one client share.
struct Shared
{
    const HttpClientConfig& config;
    CurlMulti& multi;
    CurlHandles& handles;
    CurlSockets& sockets;
    /// Null when the client keeps no answers.
    HttpCache* cache;
};

/// One request of the client's user, up to its result: looks into the cache, sends, sends again
/// where that is safe, follows redirects when it may. Ends at its time-out in whatever state.
class HttpExchange
{
public:
    struct Request
    {
        TavuUrl url;
        bool post;
        QByteArray body;
        HttpClientOptions options;
    };
    using Finished = std::function<void(const HttpClient::Result&)>;

    /// `shared` must outlive the exchange. `finished` is called once, from the event loop or from
    /// prepare(); the exchange may be destroyed from within. Destroying it before ends it silently.
    HttpExchange(const Request& request, Shared& shared, Finished finished);
    ~HttpExchange();
    Q_DISABLE_COPY_MOVE(HttpExchange)

    /// Starts the clock and answers what needs no network. Returns whether the network is needed.
    bool prepare();
    /// Sends the request.
    void send();
    bool isSent() const { return bool(m_transfer); }

private:
    bool isAcceptable();
    bool answerFromCache();
    HttpClientHeaders fieldsToSend() const;
    void sendOn(bool freshConnection);
    void attemptDone(const Outcome& outcome);
    bool sendAgain(const Outcome& outcome);
    bool followRedirect(const Outcome& outcome);
    TavuUrl redirectTarget(const Outcome& outcome) const;
    HttpClient::Result resultOf(const Outcome& outcome);
    void learn(const Outcome& outcome);
    void fail(HttpClientStatus status, const QString& reason);
    void finish(const HttpClient::Result& result);
    void stopTransfer();

    Shared& m_shared;
    Request m_request;
    Finished m_finished;
    QTimer m_deadline;
    QTimer m_pause; // Until a failed request is sent again.
    std::unique_ptr<CurlTransfer> m_transfer;
    // As sent next; redirects change them.
    TavuUrl m_url;
    QByteArray m_target;
    bool m_post;
    bool m_mayAuthorize = true;
    int m_redirects = 0;
    int m_resends = 0;
    int m_generation = 0;
    std::optional<HttpCache::Answer> m_kept;
};

} // namespace httpclient
