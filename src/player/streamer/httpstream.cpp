#include "httpstream.h"

#include "transferloop.h"

#include <algorithm>
#include <utility>

namespace player {

namespace {

// A seek forward by less is read over rather than asked for anew.
constexpr qint64 skipAtMost = qint64{ 128 } * 1024;

} // namespace

HttpStream::HttpStream(
    TransferLoop& loop, StreamRequest request, const HttpOptions& options, StreamRemains remains)
    : m_loop(loop)
    , m_options(options)
    , m_durationMs(request.durationMs)
    , m_request(std::move(request))
    , m_bytes(std::move(remains.bytes))
    , m_size(remains.size)
    , m_entityTag(std::move(remains.entityTag))
    , m_entityTagUrl(remains.url)
    , m_seekable(remains.seekable)
    , m_servesRanges(remains.servesRanges)
{
    m_failure.host = m_request.host;
    if (remains.url == m_request.url && remains.refusal.isSet())
        m_failure = remains.refusal;
    placeReader(0, m_bytes.endOfRun(0));
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
    if (ahead() == 0)
        fetch();
}

void HttpStream::close()
{
    const Lock lock(m_mutex);
    m_closed = true;
    ++m_generation;
    m_changed.notify_all();
    post(&HttpStream::leave);
}

StreamRemains HttpStream::closeForAnother()
{
    StreamRemains remains;
    {
        const Lock lock(m_mutex);
        remains.bytes = std::exchange(m_bytes, FetchedBytes());
        m_fetchOffset = m_readOffset;
        remains.size = m_size;
        remains.entityTag = m_entityTag;
        remains.url = m_request.url;
        remains.seekable = m_seekable;
        remains.servesRanges = m_servesRanges;
        if (isRefusal(m_failure.httpStatus))
            remains.refusal = m_failure;
    }
    close();
    return remains;
}

bool HttpStream::renew(const StreamRequest& request)
{
    const Lock lock(m_mutex);
    if (m_closed || m_endTold)
        return false;
    m_request = request;
    const bool failed = m_failure.isSet();
    m_failure = StreamFailure();
    m_failure.host = m_request.host;
    m_attempts = 0;
    if (failed)
        fetch();
    return true;
}

/// What was posted for later would keep the stream in memory until then.
void HttpStream::leave()
{
    m_transfer.reset();
    m_spare.reset();
    m_loop.cancelDelayed(this);
    // Not in close(): megabytes take a while, and whoever left this stream waits for another one.
    const Lock lock(m_mutex);
    m_bytes.clear();
    m_fetchOffset = m_readOffset;
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

bool HttpStream::servesRanges() const
{
    const Lock lock(m_mutex);
    return m_servesRanges;
}

HttpStream::Progress HttpStream::progress() const
{
    const Lock lock(m_mutex);
    return { m_size, ahead(), isOver(), m_endConfirmed, m_failure };
}

HttpStream::Read HttpStream::read(ByteChunk& chunk, std::size_t atMost)
{
    Lock lock(m_mutex);
    const auto settled = [this] { return m_interrupted || m_closed || isOver() || ahead() > 0; };
    if (!m_fetching && !settled())
        fetch();
    if (!m_changed.wait_for(lock, std::chrono::milliseconds(m_options.giveUpMs), settled)) {
        ++m_generation;
        post(&HttpStream::restart);
        fail(m_trouble);
    }
    if (m_interrupted || m_closed)
        return Read::Interrupted;
    m_endTold = ahead() == 0;
    if (m_endTold)
        return Read::End;
    chunk = m_bytes.get(m_readOffset, std::min(atMost, static_cast<std::size_t>(ahead())));
    m_readOffset += static_cast<qint64>(chunk.size);
    keepInBounds();
    resumeTransfer(lock);
    return Read::Data;
}

void HttpStream::keepInBounds()
{
    const qint64 atMost =
        std::clamp(wantedAhead() / 2, m_options.keptBytesAtLeast, m_options.keptBytesAtMost);
    m_bytes.keepOnly(m_readOffset, m_fetchOffset, atMost);
}

void HttpStream::resumeTransfer(Lock& lock)
{
    if (!m_held || ahead() > capacity() * 3 / 4)
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

void HttpStream::seek(qint64 offset, qint64 lead)
{
    const Lock lock(m_mutex);
    if (offset == m_readOffset)
        return;
    m_endTold = false;
    const qint64 run = m_bytes.endOfRun(offset);
    if (offset <= m_fetchOffset && run >= m_fetchOffset) {
        m_readOffset = offset;
        return;
    }
    const qint64 toSkip = run - m_transferOffset;
    const bool goesOn = m_fetching && m_answered && !isOver() && !m_held && !m_probesEnd;
    if (goesOn && toSkip >= 0 && toSkip <= skipAtMost)
        return placeReader(offset, run);
    leapTo(offset, lead);
}

/// What lies there already is read first; more is fetched when the reader wants it.
void HttpStream::leapTo(qint64 offset, qint64 lead)
{
    placeReader(offset, m_bytes.endOfRun(offset));
    m_lead = lead;
    ++m_generation;
    m_fetching = false;
    m_attempts = 0;
    m_held = false;
    m_probesEnd = false;
    if (!isRefusal(m_failure.httpStatus)) {
        m_failure = StreamFailure();
        m_failure.host = m_request.host;
    }
    if (ahead() == 0 && !isOver())
        fetch();
    else
        post(&HttpStream::abandon);
}

void HttpStream::placeReader(qint64 offset, qint64 endOfRun)
{
    m_readOffset = offset;
    m_fetchOffset = endOfRun;
    m_putFrom = endOfRun > offset ? endOfRun : 0;
    m_ended = isEndAtHand();
    m_endConfirmed = m_ended;
}

void HttpStream::fetch()
{
    m_fetching = true;
    post(&HttpStream::restart);
}

void HttpStream::post(void (HttpStream::*task)())
{
    m_loop.post([self = shared_from_this(), task] { (self.get()->*task)(); });
}

qint64 HttpStream::capacity() const
{
    const qint64 wanted = wantedAhead();
    return m_starting ? std::min(wanted, m_options.aheadBytesAtStart) : wanted;
}

qint64 HttpStream::wantedAhead() const
{
    if (m_size <= 0 || m_durationMs <= 0)
        return std::max(m_options.aheadBytesAtLeast, m_options.aheadBytesAtMost / 4);
    const double bytesPerMs = static_cast<double>(m_size) / static_cast<double>(m_durationMs);
    const auto wanted = static_cast<qint64>(bytesPerMs * m_options.aheadMs);
    return std::clamp(wanted, m_options.aheadBytesAtLeast, m_options.aheadBytesAtMost);
}

} // namespace player
