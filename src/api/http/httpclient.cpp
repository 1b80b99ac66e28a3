#include "httpclient.h"

#include "curlmulti.h"
#include "httpcache.h"
#include "httpexchange.h"
#include "tavulog.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <chrono>
#include <deque>
#include <unordered_map>

using httpclient::HttpExchange;

namespace {

// Also the number of kept connections.
constexpr size_t maxRunning = 16;

log4cplus::Logger& logger()
{
    static log4cplus::Logger logger = log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("HttpClient"));
    return logger;
}

qint64 monotonicMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

/// A query or a fragment may hold what belongs into no log.
QString printable(TavuUrl url)
{
    url.setQueryItems({});
    url.setFragment(QString());
    return url.hasUserInfo() ? QStringLiteral("(URL with user information)") : url.toString();
}

void logFailure(const HttpClient::Result& result)
{
    LOG4CPLUS_WARN(
        logger(), printable(result.url) << ": " << result.error << ": " << result.reason);
}

} // namespace

class HttpClient::Private
{
public:
    Private(HttpClient* client, bool useCache)
        : q(client)
        , config(HttpClientConfig::shared())
        , multi(nullptr)
        , cache(&monotonicMs)
        , shared{ config, multi, handles, sockets, useCache ? &cache : nullptr }
    {
    }

    void start(const HttpExchange::Request& request, Callback callback);
    void startWaiting();
    void finished(quint64 id, const HttpClient::Result& result, const Callback& callback);

    HttpClient* const q;
    const HttpClientConfig config;
    httpclient::CurlSockets sockets; // Outlives the connections that the loop keeps.
    httpclient::CurlMulti multi;
    httpclient::CurlHandles handles; // Before the loop they ran on: connections know both.
    httpclient::HttpCache cache;
    httpclient::Shared shared;
    quint64 lastId = 0;
    size_t running = 0;
    std::deque<quint64> waiting; // Ids of exchanges that may have ended meanwhile.
    std::unordered_map<quint64, std::unique_ptr<HttpExchange>> exchanges;
};

void HttpClient::Private::start(const HttpExchange::Request& request, Callback callback)
{
    const quint64 id = ++lastId;
    auto& exchange = exchanges[id];
    exchange = std::make_unique<HttpExchange>(request, shared,
        [this, id, callback = std::move(callback)](
            const HttpClient::Result& result) { finished(id, result, callback); });
    if (!exchange->prepare())
        return;
    waiting.push_back(id);
    startWaiting();
}

void HttpClient::Private::startWaiting()
{
    while (running < maxRunning && !waiting.empty()) {
        const auto next = exchanges.find(waiting.front());
        waiting.pop_front();
        if (next == exchanges.end())
            continue;
        ++running;
        next->second->send();
    }
}

void HttpClient::Private::finished(
    quint64 id, const HttpClient::Result& result, const Callback& callback)
{
    if (result.error != HttpClientStatus::Ok)
        logFailure(result);
    // The exchange ends with this scope; the callback may do as it likes with the client.
    const auto ended = exchanges.extract(id);
    QMetaObject::invokeMethod(
        q, [callback, result] { callback(result); }, Qt::QueuedConnection);
    if (ended.mapped()->isSent()) {
        --running;
        startWaiting();
    }
}

HttpClient::HttpClient(QObject* parent, HttpVersion, bool useCache)
    : QObject(parent)
    , d(std::make_unique<Private>(this, useCache))
{
    qRegisterMetaType<HttpClient::Result>();
}

HttpClient::~HttpClient() = default;

void HttpClient::get(const TavuUrl& url, const HttpClientOptions& options, Callback callback)
{
    d->start({ url, false, QByteArray(), options }, std::move(callback));
}

void HttpClient::post(
    const TavuUrl& url, const QByteArray& body, const HttpClientOptions& options, Callback callback)
{
    d->start({ url, true, body, options }, std::move(callback));
}

void HttpClient::setCacheSize(unsigned long bytes)
{
    d->cache.setCapacity(qint64(bytes));
}

void HttpClient::clearCache()
{
    d->cache.clear();
}
