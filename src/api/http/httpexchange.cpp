#include "httpexchange.h"

#include "cachecontrol.h"
#include "curlmulti.h"
#include "refusedtoken.h"
#include "urlpolicy.h"

#include <algorithm>

namespace httpclient {

namespace {

constexpr int maxResends = 2;
constexpr int longestRetryAfterSeconds = 2;

bool isRedirect(int code)
{
    return code == 301 || code == 302 || code == 303 || code == 307 || code == 308;
}

/// The user of the client does the checking when the request has one of these.
bool goesPastCache(const HttpClientHeaders& headers)
{
    return headers.contains("range") || headers.contains("if-none-match")
        || headers.contains("if-modified-since") || CacheControl::of(headers).noStore;
}

bool wantsCheck(const HttpClientHeaders& headers)
{
    const CacheControl control = CacheControl::of(headers);
    return control.noCache || control.maxAge;
}

/// Seconds that the server asks to wait; -1 when it does not, or not in seconds.
int retryAfter(const HttpClientHeaders& headers)
{
    bool isNumber = false;
    const int seconds = headers.value("retry-after").toInt(&isNumber);
    return isNumber && seconds >= 0 ? seconds : -1;
}

} // namespace

HttpExchange::HttpExchange(const Request& request, Shared& shared, Finished finished)
    : m_shared(shared)
    , m_request(request)
    , m_finished(std::move(finished))
    , m_url(request.url)
    , m_post(request.post)
{
    for (QTimer* timer : { &m_deadline, &m_pause }) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    QObject::connect(&m_deadline, &QTimer::timeout, [this] {
        fail(HttpClientStatus::Timeout, QStringLiteral("The answer did not come in time."));
    });
    QObject::connect(&m_pause, &QTimer::timeout, [this] { send(); });
}

HttpExchange::~HttpExchange()
{
    stopTransfer();
}

bool HttpExchange::prepare()
{
    if (!isAcceptable() || answerFromCache())
        return false;
    if (m_request.options.timeoutMs() > 0)
        m_deadline.start(m_request.options.timeoutMs());
    return true;
}

bool HttpExchange::isAcceptable()
{
    m_target = target(m_url);
    if (m_target.isEmpty()) {
        fail(HttpClientStatus::InvalidUrl, QStringLiteral("The URL names no host to ask."));
        return false;
    }
    const auto& fields = m_request.options.headers().fields();
    if (!std::all_of(fields.begin(), fields.end(), isSendable)) {
        fail(
            HttpClientStatus::Failed, QStringLiteral("A header field holds forbidden characters."));
        return false;
    }
    return true;
}

bool HttpExchange::answerFromCache()
{
    m_mayAuthorize = mayAuthorize(m_shared.config, m_url.host());
    if (!m_shared.cache || m_post)
        return false;
    m_generation = m_shared.cache->generation();
    const HttpClientHeaders& fields = m_request.options.headers();
    if (goesPastCache(fields))
        return false;
    m_kept = m_shared.cache->find(m_target, fieldsToSend());
    const int limit = m_request.options.readSizeLimit();
    if (m_kept && limit > 0 && m_kept->data.size() > limit)
        m_kept.reset();
    if (!m_kept || !m_kept->fresh || wantsCheck(fields))
        return false;
    finish({ m_request.url, HttpClientStatus::Ok, 200, m_kept->data, m_kept->headers });
    return true;
}

HttpClientHeaders HttpExchange::fieldsToSend() const
{
    HttpClientHeaders fields = m_request.options.headers();
    if (!m_mayAuthorize)
        fields.remove("authorization");
    if (!m_post)
        fields.remove("content-type");
    return fields;
}

void HttpExchange::send()
{
    sendOn(false);
}

void HttpExchange::sendOn(bool freshConnection)
{
    const bool repeatable = !m_post || m_request.options.isRepeatable();
    Attempt attempt;
    attempt.url = m_target;
    attempt.post = m_post;
    attempt.body = m_post ? m_request.body : QByteArray();
    attempt.headers = fieldsToSend();
    if (m_kept)
        for (const HttpClientHeaders::Field& field : checkFields(m_kept->headers).fields())
            attempt.headers.insert(field.first, field.second);
    attempt.readSizeLimit = m_request.options.readSizeLimit();
    attempt.resends = repeatable ? maxResends - m_resends : 0;
    attempt.fresh = freshConnection;
    stopTransfer();
    m_transfer = std::make_unique<CurlTransfer>(attempt, m_shared.config, m_shared.handles,
        m_shared.sockets, [this](const Outcome& outcome) { attemptDone(outcome); });
    m_shared.multi.add(m_transfer.get());
}

void HttpExchange::stopTransfer()
{
    if (!m_transfer)
        return;
    m_shared.multi.remove(m_transfer.get());
    m_transfer.reset();
}

void HttpExchange::attemptDone(const Outcome& outcome)
{
    if (outcome.unsent)
        return sendOn(true);
    m_resends += outcome.resends;
    if (outcome.status != HttpClientStatus::Ok)
        return fail(outcome.status, outcome.reason);
    if (sendAgain(outcome) || followRedirect(outcome))
        return;
    tellOfRefusal(outcome.code, fieldsToSend());
    learn(outcome);
    finish(resultOf(outcome));
}

bool HttpExchange::sendAgain(const Outcome& outcome)
{
    const int wait = retryAfter(outcome.headers);
    const bool overloaded = outcome.code == 429 || outcome.code == 503;
    if (m_post || !overloaded || wait < 0 || wait > longestRetryAfterSeconds
        || m_resends >= maxResends)
        return false;
    if (m_deadline.isActive() && m_deadline.remainingTime() <= wait * 1000)
        return false;
    ++m_resends;
    m_pause.start(wait * 1000);
    return true;
}

TavuUrl HttpExchange::redirectTarget(const Outcome& outcome) const
{
    TavuUrl url =
        TavuUrl::fromEncoded(resolvedLocation(m_target, outcome.headers.value("location")));
    return downgrades(m_url, url) ? TavuUrl() : url;
}

bool HttpExchange::followRedirect(const Outcome& outcome)
{
    if (m_request.options.maxRedirects() <= 0 || !isRedirect(outcome.code))
        return false;
    if (m_redirects++ >= m_request.options.maxRedirects()) {
        fail(HttpClientStatus::TooManyRedirects, QStringLiteral("Too many redirects."));
        return true;
    }
    const TavuUrl next = redirectTarget(outcome);
    if (!sameOrigin(m_url, next))
        m_mayAuthorize =
            !m_shared.config.domainSuffix.isEmpty() && mayAuthorize(m_shared.config, next.host());
    if (outcome.code < 307)
        m_post = false;
    m_url = next;
    m_kept.reset();
    if (isAcceptable())
        send();
    return true;
}

void HttpExchange::learn(const Outcome& outcome)
{
    HttpCache* const cache = m_shared.cache;
    if (!cache)
        return;
    if (m_post) {
        if (outcome.code < 400)
            cache->invalidate(m_target);
        return;
    }
    if (m_generation != cache->generation() || goesPastCache(m_request.options.headers()))
        return;
    if (outcome.code == 200)
        cache->store(m_target, fieldsToSend(), outcome.headers, outcome.data);
    else if (outcome.code == 304 && m_kept)
        cache->store(
            m_target, fieldsToSend(), refreshed(m_kept->headers, outcome.headers), m_kept->data);
}

HttpClient::Result HttpExchange::resultOf(const Outcome& outcome)
{
    if (outcome.code == 304 && m_kept)
        return { m_request.url, HttpClientStatus::Ok, 200, m_kept->data,
            refreshed(m_kept->headers, outcome.headers) };
    HttpClient::Result result{ m_request.url, HttpClientStatus::Ok, outcome.code, outcome.data,
        outcome.headers };
    if (result.headers.contains("location"))
        result.headers.insert(
            "location", resolvedLocation(m_target, result.headers.value("location")));
    return result;
}

void HttpExchange::fail(HttpClientStatus status, const QString& reason)
{
    finish({ m_request.url, status, 0, QByteArray(), HttpClientHeaders(), reason });
}

void HttpExchange::finish(const HttpClient::Result& result)
{
    m_deadline.stop();
    m_pause.stop();
    const Finished finished = std::move(m_finished);
    finished(result);
}

} // namespace httpclient
