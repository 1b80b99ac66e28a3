#include "httpstream.h"

#include "tavulog.h"
#include "transferloop.h"
#include "urlparts.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <algorithm>
#include <chrono>

namespace player {

namespace {

log4cplus::Logger& logger()
{
    static log4cplus::Logger logger =
        log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("player.streamer.http"));
    return logger;
}

constexpr int redirectsAtMost = 5;
// A seek forward by less is read over rather than asked for anew.
constexpr qint64 skipAtMost = qint64{ 128 } * 1024;
// Servers close idle connections after a minute or more.
constexpr std::chrono::seconds spareUse{ 30 };

bool isRedirect(const HttpTransfer::Head& head)
{
    const int status = head.status;
    return head.hasLocation
        && (status == 301 || status == 302 || status == 303 || status == 307 || status == 308);
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

HttpStream::HttpStream(TransferLoop& loop, StreamRequest request, const HttpOptions& options)
    : m_loop(loop)
    , m_request(std::move(request))
    , m_options(options)
{
    m_failure.host = m_request.host;
}

HttpStream::~HttpStream()
{
    Q_ASSERT_X(!m_transfer, "HttpStream", "closed before it goes");
}

void HttpStream::open()
{
    const Lock lock(m_mutex);
    if (m_opened)
        return;
    m_opened = true;
    post(&HttpStream::restart);
}

void HttpStream::close()
{
    const Lock lock(m_mutex);
    m_closed = true;
    ++m_generation;
    m_changed.notify_all();
    post(&HttpStream::leave);
}

/// What was posted for later would keep the stream in memory until then.
void HttpStream::leave()
{
    m_transfer.reset();
    m_spare.reset();
    m_loop.cancelDelayed(this);
    // Not in close(): megabytes take a while, and whoever left this stream waits for another one.
    const Lock lock(m_mutex);
    m_chunks.clear();
}

void HttpStream::setInterrupted(bool interrupted)
{
    const Lock lock(m_mutex);
    m_interrupted = interrupted;
    m_changed.notify_all();
}

bool HttpStream::isSeekable() const
{
    const Lock lock(m_mutex);
    return m_seekable;
}

HttpStream::Progress HttpStream::progress() const
{
    const Lock lock(m_mutex);
    return { m_size, static_cast<qint64>(m_chunks.size()), isOver(), m_endConfirmed, m_failure };
}

HttpStream::Read HttpStream::read(ByteChunk& chunk, std::size_t atMost)
{
    Lock lock(m_mutex);
    const auto settled = [this] {
        return m_interrupted || m_closed || isOver() || !m_chunks.isEmpty();
    };
    if (!m_changed.wait_for(lock, std::chrono::milliseconds(m_options.giveUpMs), settled)) {
        ++m_generation;
        post(&HttpStream::restart);
        fail(m_trouble);
    }
    if (m_interrupted || m_closed)
        return Read::Interrupted;
    if (m_chunks.isEmpty())
        return Read::End;
    chunk = m_chunks.pop(atMost);
    m_readOffset += static_cast<qint64>(chunk.size);
    resumeTransfer(lock);
    return Read::Data;
}

void HttpStream::resumeTransfer(Lock& lock)
{
    if (!m_held || static_cast<qint64>(m_chunks.size()) > capacity() * 3 / 4)
        return;
    m_held = false;
    lock.unlock();
    post(&HttpStream::unpause);
}

void HttpStream::unpause()
{
    if (!m_transfer)
        return;
    m_transfer->unpause();
    watchForStall();
}

void HttpStream::seek(qint64 offset)
{
    const Lock lock(m_mutex);
    if (offset >= m_readOffset && offset <= fetchOffset()) {
        m_chunks.drop(static_cast<std::size_t>(offset - m_readOffset));
        m_readOffset = offset;
        return;
    }
    const qint64 ahead = offset - fetchOffset();
    m_chunks.clear();
    m_readOffset = offset;
    if (ahead > 0 && ahead <= skipAtMost && m_answered && !isOver() && !m_held) {
        m_skip += ahead;
        return;
    }
    ++m_generation;
    m_attempts = 0;
    m_skip = 0;
    m_held = false;
    m_ended = false;
    m_probesEnd = false;
    m_failure = StreamFailure();
    m_failure.host = m_request.host;
    post(&HttpStream::restart);
}

void HttpStream::post(void (HttpStream::*task)())
{
    m_loop.post([self = shared_from_this(), task] { (self.get()->*task)(); });
}

void HttpStream::restart()
{
    m_transfer.reset();
    m_spare.reset();
    m_spareDue = {};
    {
        const Lock lock(m_mutex);
        m_transferGeneration = m_generation;
        m_held = false;
        if (m_closed || isOver())
            return;
        if (m_size >= 0 && fetchOffset() >= m_size)
            return end(true);
    }
    m_redirects = 0;
    begin(m_request.url);
}

void HttpStream::begin(const QByteArray& url)
{
    qint64 offset = 0;
    {
        const Lock lock(m_mutex);
        m_skip = 0;
        offset = fetchOffset();
    }
    const UrlParts parts = UrlParts::of(url);
    LOG4CPLUS_DEBUG(logger(), "GET " << parts.forLog() << " from byte " << offset);
    m_bodyWanted = false;
    m_transfer.reset();
    m_transferUrl = url;
    m_transfer = std::make_unique<HttpTransfer>(
        m_loop, *this, m_options, HttpTransfer::Method::Get, url, headersFor(url), offset);
    watchForStall();
}

QList<QByteArray> HttpStream::headersFor(const QByteArray& url) const
{
    const bool ownOrigin = UrlParts::of(url).sameOrigin(UrlParts::of(m_request.url));
    return ownOrigin ? m_request.keyHeaders : QList<QByteArray>();
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
    if (!takeSize(head.length))
        return false;
    m_seekable = head.length >= 0 || head.acceptsRanges;
    m_skip = fetchOffset();
    return true;
}

bool HttpStream::acceptPart(const HttpTransfer::Head& head)
{
    if (head.rangeStart < 0 || head.rangeStart > fetchOffset())
        return fail(StreamFailure::Changed);
    if (!takeSize(head.rangeTotal))
        return false;
    m_seekable = true;
    m_skip = fetchOffset() - head.rangeStart;
    return true;
}

bool HttpStream::takeSize(qint64 size)
{
    if (m_size >= 0 && size >= 0 && m_size != size)
        return fail(StreamFailure::Changed);
    if (size == 0)
        return fail(StreamFailure::Empty);
    if (size >= 0)
        m_size = size;
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
    const Lock lock(m_mutex);
    if (isStale() || !m_bodyWanted || isOver())
        return true;
    if (static_cast<qint64>(m_chunks.size()) >= capacity()) {
        m_held = true;
        post(&HttpStream::keepSpare);
        return false;
    }
    m_attempts = 0;
    m_trouble = StreamFailure::Stalled;
    m_probesEnd = false;
    const auto seen = static_cast<std::size_t>(std::min<qint64>(m_skip, static_cast<qint64>(size)));
    m_skip -= static_cast<qint64>(seen);
    m_chunks.push(bytes + seen, size - seen);
    if (size > seen)
        m_changed.notify_all();
    return true;
}

void HttpStream::transferFinished(CURLcode code)
{
    const std::unique_ptr<HttpTransfer> finished = std::move(m_transfer);
    if (code == CURLE_OK && isRedirect(finished->head()))
        return follow(finished->redirectUrl());
    const Lock lock(m_mutex);
    if (isStale() || m_closed || isOver())
        return;
    if (code == CURLE_OK)
        bodyEnded();
    else
        brokenOff(code, QString::fromUtf8(finished->errorText()));
}

void HttpStream::follow(const QByteArray& url)
{
    if (mayFollow(url))
        begin(url);
}

bool HttpStream::mayFollow(const QByteArray& url)
{
    const UrlParts from = UrlParts::of(m_request.url);
    const UrlParts to = UrlParts::of(url);
    const Lock lock(m_mutex);
    if (isStale() || m_closed)
        return false;
    if (++m_redirects > redirectsAtMost)
        return fail(StreamFailure::TooManyRedirects);
    if (!to.isValid())
        return fail(StreamFailure::BadAddress);
    if (from.scheme == "https" && to.scheme != "https")
        return fail(StreamFailure::Downgraded);
    return true;
}

void HttpStream::bodyEnded()
{
    if (m_size >= 0)
        return fetchOffset() >= m_size ? end(true) : retry(StreamFailure::Interrupted);
    if (fetchOffset() == 0)
        return void(fail(StreamFailure::Empty));
    // Nobody said how long the resource is, so this may be a connection that died silently. An item
    // without a duration is a broadcast, which cannot be asked for its rest.
    if (m_request.durationMs <= 0 || m_probesEnd)
        return end(m_request.durationMs <= 0);
    m_probesEnd = true;
    post(&HttpStream::restart);
}

void HttpStream::brokenOff(CURLcode code, const QString& detail)
{
    const StreamFailure::Kind kind = failureKind(code);
    if (kind == StreamFailure::TlsFailed)
        return void(fail(kind, detail));
    if (!m_answered)
        return void(fail(kind, detail));
    retry(kind);
}

void HttpStream::retry(StreamFailure::Kind trouble)
{
    m_trouble = trouble;
    ++m_attempts;
    LOG4CPLUS_INFO(logger(),
        "Stream from " << m_request.host << " broke off at byte " << fetchOffset() << ", attempt "
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

qint64 HttpStream::capacity() const
{
    if (m_size <= 0 || m_request.durationMs <= 0)
        return std::max(m_options.aheadBytesAtLeast, m_options.aheadBytesAtMost / 4);
    const double bytesPerMs =
        static_cast<double>(m_size) / static_cast<double>(m_request.durationMs);
    const auto wanted = static_cast<qint64>(bytesPerMs * m_options.aheadMs);
    return std::clamp(wanted, m_options.aheadBytesAtLeast, m_options.aheadBytesAtMost);
}

} // namespace player
