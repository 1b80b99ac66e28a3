// How a stream is fetched, in the loop's thread.
#include "httpstream.h"

#include "tavulog.h"
#include "transferloop.h"
#include "urlpolicy.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace player {

namespace {

log4cplus::Logger& logger()
{
    static log4cplus::Logger logger =
        log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("player.streamer.http"));
    return logger;
}

constexpr int redirectsAtMost = 5;
// Servers close idle connections after a minute or more.
constexpr std::chrono::seconds spareUse{ 30 };

bool isRedirect(const HttpTransfer::Head& head)
{
    const int status = head.status;
    return !head.location.isEmpty()
        && (status == 301 || status == 302 || status == 303 || status == 307 || status == 308);
}

TavuUrl urlOf(const QByteArray& encoded)
{
    return TavuUrl::fromEncoded(encoded);
}

/// Without the query, which may hold secrets.
QString forLog(const TavuUrl& url)
{
    const QString port = url.port() < 0 ? QString() : QStringLiteral(":%1").arg(url.port());
    return url.scheme() + QLatin1String("://") + url.host() + port + url.path();
}

bool cannotBeAudio(const QByteArray& mediaType)
{
    return mediaType == "text/html" || mediaType == "application/json"
        || mediaType == "application/xml" || mediaType == "application/xhtml+xml";
}

StreamFailure::Kind failureKind(CURLcode code)
{
    switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return StreamFailure::NameNotResolved;
    case CURLE_COULDNT_CONNECT:
    case CURLE_OPERATION_TIMEDOUT:
        return StreamFailure::ConnectFailed;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_INVALIDCERTSTATUS:
        return StreamFailure::TlsFailed;
    default:
        return StreamFailure::Interrupted;
    }
}

std::chrono::milliseconds backoff(int attempts)
{
    return attempts <= 1 ? std::chrono::milliseconds(0)
                         : std::chrono::milliseconds(250 << std::min(attempts - 2, 3));
}

} // namespace

/// What it transfers is not wanted any more.
void HttpStream::abandon()
{
    bool stale = false;
    {
        const Lock lock(m_mutex);
        stale = isStale();
    }
    if (stale)
        m_transfer.reset();
}

void HttpStream::restart()
{
    m_transfer.reset();
    m_spare.reset();
    m_spareDue = {};
    {
        const Lock lock(m_mutex);
        m_transferGeneration = m_generation;
        m_asked = m_request;
        m_held = false;
        if (m_closed || isOver())
            return;
        if (isEndAtHand())
            return end(true);
    }
    m_redirects = 0;
    begin(m_asked.url);
}

void HttpStream::begin(const QByteArray& url)
{
    qint64 offset = 0;
    {
        const Lock lock(m_mutex);
        offset = m_fetchOffset;
        if (ahead() == 0)
            offset = std::max<qint64>(0, offset - m_lead);
        m_transferOffset = offset;
        m_putFrom = ahead() > 0 ? m_fetchOffset : 0;
    }
    LOG4CPLUS_DEBUG(logger(), "GET " << forLog(urlOf(url)) << " from byte " << offset);
    m_bodyWanted = false;
    m_transfer.reset();
    m_transferUrl = url;
    m_transfer = std::make_unique<HttpTransfer>(
        m_loop, *this, m_options, HttpTransfer::Method::Get, url, headersFor(url), offset);
    watchForStall();
}

QList<QByteArray> HttpStream::headersFor(const QByteArray& url) const
{
    const bool ownOrigin = httpclient::sameOrigin(urlOf(url), urlOf(m_asked.url));
    return ownOrigin ? m_asked.keyHeaders : QList<QByteArray>();
}

void HttpStream::keepSpare()
{
    const auto now = std::chrono::steady_clock::now();
    if (!m_transfer || now < m_spareDue)
        return;
    m_spareDue = now + spareUse;
    m_spare = std::make_unique<SpareConnection>(
        m_loop, m_options, m_transferUrl, headersFor(m_transferUrl));
}

void HttpStream::endStart()
{
    Lock lock(m_mutex);
    m_starting = false;
    resumeTransfer(lock);
}

void HttpStream::watchForStall()
{
    m_lastNews = std::chrono::steady_clock::now();
    if (m_watching)
        return;
    m_watching = true;
    m_loop.postDelayed(std::chrono::milliseconds(m_options.stallTimeoutMs), this,
        [self = shared_from_this()] { self->checkForStall(); });
}

void HttpStream::checkForStall()
{
    using namespace std::chrono;
    m_watching = false;
    const Lock lock(m_mutex);
    if (!m_transfer || m_held || isStale() || isOver())
        return;
    const steady_clock::time_point due = m_lastNews + milliseconds(m_options.stallTimeoutMs);
    const auto left = ceil<milliseconds>(due - steady_clock::now());
    // Connecting has a limit of its own.
    if (left.count() <= 0 && m_transfer->hasConnected()) {
        m_transfer.reset();
        return retry(StreamFailure::Stalled);
    }
    m_watching = true;
    m_loop.postDelayed(std::max(left, milliseconds(100)), this,
        [self = shared_from_this()] { self->checkForStall(); });
}

bool HttpStream::headArrived(const HttpTransfer::Head& head)
{
    const Lock lock(m_mutex);
    if (isStale())
        return false;
    if (isRedirect(head))
        return true;
    m_bodyWanted = accept(head);
    return m_bodyWanted;
}

bool HttpStream::accept(const HttpTransfer::Head& head)
{
    if (head.status == 206)
        return acceptPart(head);
    if (head.status >= 200 && head.status < 300)
        return acceptWhole(head);
    return refuse(head);
}

bool HttpStream::acceptWhole(const HttpTransfer::Head& head)
{
    if (cannotBeAudio(head.mediaType))
        return fail(StreamFailure::NotAudio, QString::fromLatin1(head.mediaType));
    if (m_probesEnd) {
        // The server knows no ranges: what the end was remains unknown.
        end(false);
        return false;
    }
    if (!takeResource(head, head.length))
        return false;
    m_seekable = head.length >= 0 || head.acceptsRanges;
    m_servesRanges = head.acceptsRanges;
    m_transferOffset = 0;
    return true;
}

bool HttpStream::acceptPart(const HttpTransfer::Head& head)
{
    if (head.rangeStart < 0 || head.rangeStart > m_fetchOffset)
        return fail(StreamFailure::Changed);
    if (!takeResource(head, head.rangeTotal))
        return false;
    m_seekable = true;
    m_servesRanges = true;
    m_transferOffset = head.rangeStart;
    return true;
}

bool HttpStream::takeResource(const HttpTransfer::Head& head, qint64 size)
{
    if (m_size >= 0 && size >= 0 && m_size != size)
        return fail(StreamFailure::Changed);
    // The servers of one address need not agree on tags; where the address is another one, nothing
    // else tells that the resource is the same.
    const bool tagged = !head.entityTag.isEmpty() && !m_entityTag.isEmpty();
    if (tagged && m_asked.url != m_entityTagUrl && head.entityTag != m_entityTag)
        return fail(StreamFailure::Changed);
    if (size == 0)
        return fail(StreamFailure::Empty);
    if (size >= 0)
        m_size = size;
    m_entityTag = head.entityTag;
    m_entityTagUrl = m_asked.url;
    m_answered = true;
    return true;
}

bool HttpStream::refuse(const HttpTransfer::Head& head)
{
    if (head.status == 416 && m_probesEnd) {
        end(true);
        return false;
    }
    const bool passing = head.status == 429 || head.status >= 500;
    if (passing && m_answered)
        return false;
    return fail(StreamFailure::HttpError, QString(), head.status);
}

bool HttpStream::dataArrived(const char* bytes, std::size_t size)
{
    m_lastNews = std::chrono::steady_clock::now();
    if (!std::exchange(m_startTimed, true))
        m_loop.postDelayed(std::chrono::milliseconds(m_options.startMs), this,
            [self = shared_from_this()] { self->endStart(); });
    const Lock lock(m_mutex);
    if (isStale() || !m_bodyWanted || isOver())
        return true;
    if (ahead() >= capacity()) {
        m_held = true;
        if (!m_starting)
            post(&HttpStream::keepSpare);
        return false;
    }
    m_attempts = 0;
    m_trouble = StreamFailure::Stalled;
    m_probesEnd = false;
    take(bytes, static_cast<qint64>(size));
    return true;
}

void HttpStream::take(const char* bytes, qint64 size)
{
    const qint64 end = m_transferOffset + size;
    const qint64 from = std::max(m_transferOffset, m_putFrom);
    if (from < end)
        m_bytes.put(from, bytes + (from - m_transferOffset), end - from);
    m_transferOffset = end;
    if (end <= m_fetchOffset)
        return;
    m_fetchOffset = end;
    keepInBounds();
    m_changed.notify_all();
}

void HttpStream::transferFinished(CURLcode code)
{
    const std::unique_ptr<HttpTransfer> finished = std::move(m_transfer);
    if (code == CURLE_OK && isRedirect(finished->head()))
        return follow(finished->head().location);
    const Lock lock(m_mutex);
    if (isStale() || m_closed || isOver())
        return;
    if (code == CURLE_OK)
        bodyEnded();
    else
        brokenOff(finished->metLocalAddress() ? StreamFailure::LocalAddress : failureKind(code),
            QString::fromUtf8(finished->errorText()));
}

void HttpStream::follow(const QByteArray& location)
{
    const QByteArray url =
        httpclient::target(urlOf(httpclient::resolvedLocation(m_transferUrl, location)));
    if (mayFollow(url))
        begin(url);
}

bool HttpStream::mayFollow(const QByteArray& url)
{
    const Lock lock(m_mutex);
    if (isStale() || m_closed)
        return false;
    if (++m_redirects > redirectsAtMost)
        return fail(StreamFailure::TooManyRedirects);
    if (url.isEmpty())
        return fail(StreamFailure::BadAddress);
    if (httpclient::downgrades(urlOf(m_transferUrl), urlOf(url)))
        return fail(StreamFailure::Downgraded);
    return true;
}

void HttpStream::bodyEnded()
{
    if (m_size >= 0)
        return m_fetchOffset >= m_size ? end(true) : retry(StreamFailure::Interrupted);
    if (m_fetchOffset == 0)
        return void(fail(StreamFailure::Empty));
    // Nobody said how long the resource is, so this may be a connection that died silently. An item
    // without a duration is a broadcast, which cannot be asked for its rest.
    if (m_durationMs <= 0 || m_probesEnd)
        return end(m_durationMs <= 0);
    m_probesEnd = true;
    post(&HttpStream::restart);
}

void HttpStream::brokenOff(StreamFailure::Kind kind, const QString& detail)
{
    const bool forGood = kind == StreamFailure::TlsFailed || kind == StreamFailure::LocalAddress;
    if (forGood || !m_answered)
        return void(fail(kind, detail));
    retry(kind);
}

void HttpStream::retry(StreamFailure::Kind trouble)
{
    m_trouble = trouble;
    ++m_attempts;
    LOG4CPLUS_INFO(logger(),
        "Stream from " << m_request.host << " broke off at byte " << m_fetchOffset << ", attempt "
                       << m_attempts << " to go on");
    m_loop.postDelayed(backoff(m_attempts), this, [self = shared_from_this(), was = m_generation] {
        bool wanted = false;
        {
            const Lock lock(self->m_mutex);
            wanted = was == self->m_generation;
        }
        if (wanted)
            self->restart();
    });
}

void HttpStream::end(bool confirmed)
{
    m_ended = true;
    m_endConfirmed = confirmed;
    m_changed.notify_all();
}

bool HttpStream::fail(StreamFailure::Kind kind, const QString& detail, int httpStatus)
{
    m_failure.kind = kind;
    m_failure.detail = detail;
    m_failure.httpStatus = httpStatus;
    LOG4CPLUS_INFO(logger(),
        "Stream from " << m_request.host
                       << " failed: " << streamError(QString(), m_failure).message());
    m_changed.notify_all();
    return false;
}

} // namespace player
