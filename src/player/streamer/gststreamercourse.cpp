// The present item's course, and what lies ready of it.
#include "gststreamer.h"

#include "branch.h"
#include "gstruntime.h"
#include "pipeline.h"
#include "streamerlog.h"
#include "transferloop.h"

#include <algorithm>

namespace player {

namespace {

// Sound that must lie ready after it ran dry.
constexpr qint64 refillTargetMs = 2000;
// Positions nearer to each other are the same place.
constexpr qint64 samePlaceMs = 500;

} // namespace

std::unique_ptr<Branch> GstStreamer::makeBranch(Item& item)
{
    initGStreamer();
    if (!m_loop)
        m_loop = std::make_unique<TransferLoop>();
    StreamRemains remains;
    if (m_kept.id == item.id) {
        item.randomAccess = m_kept.randomAccess;
        item.goesOn = true;
        remains = std::move(m_kept.remains);
        m_kept = Kept();
    }
    return std::make_unique<Branch>(++m_lastBranch, *m_loop, item.request, m_options.http,
        item.randomAccess ? Access::Random : Access::Linear, std::move(remains), *this);
}

/// What has come of the present item, for the case that it is begun anew. It stops coming.
void GstStreamer::keepFetched()
{
    if (m_branch)
        m_kept = { m_item->id, m_item->randomAccess, m_branch->takeRemains() };
}

/// Another address for the same playback: what has been fetched sounds on, and the rest comes from
/// there. False when it has to begin anew.
bool GstStreamer::goOnWith(const Item& renewed)
{
    const bool same = m_item && m_item->id == renewed.id && m_item->started;
    if (!same || !m_prerolled || m_outputLost || m_waitsForNext || m_branch->isDrained())
        return false;
    if (!m_branch->renew(renewed.request))
        return false;
    LOG4CPLUS_INFO(streamerLogger(), "Item " << renewed.id << " goes on with another address");
    m_item->request = renewed.request;
    m_item->renewed = renewed.renewed;
    m_item->goesOn = true;
    Q_EMIT soundPathChanged();
    if (std::abs(renewed.startMs - position()) > samePlaceMs)
        doSeek(renewed.startMs);
    doResume();
    return true;
}

void GstStreamer::startPresent(qint64 positionMs)
{
    startPresent(makeBranch(*m_item), positionMs);
}

void GstStreamer::startPresent(std::unique_ptr<Branch> branch, qint64 positionMs)
{
    m_prerolled = false;
    m_buffering = false;
    m_wantsPlaying = false;
    m_plays = false;
    m_waitsForNext = false;
    m_seeking.reset();
    m_seekTo.reset();
    if (positionMs > 0)
        m_seekTo = positionMs;
    m_restingPosition = 0;
    m_branch = std::move(branch);
    m_pipeline->pause();
    m_pipeline->add(*m_branch);
    applyState();
}

/// The same playback over again from a position: nobody is told that it started.
void GstStreamer::reopen(qint64 positionMs)
{
    keepFetched();
    beginAnew(positionMs);
}

void GstStreamer::beginAnew(qint64 positionMs)
{
    LOG4CPLUS_DEBUG(streamerLogger(), "Begin " << m_item->id << " anew at " << positionMs << " ms");
    closeBranches();
    m_restingPosition = positionMs;
    const StreamFailure failure = openOutput();
    if (failure.isSet())
        return loseOutput(failure);
    m_outputLost = false;
    startPresent(positionMs);
    if (m_next)
        prepareNext();
}

void GstStreamer::seekPresent()
{
    if (m_branch->needsRandomAccess()) {
        m_item->randomAccess = true;
        return reopen(*m_seekTo);
    }
    m_seeking = m_seekTo;
    m_seekTo.reset();
    m_prerolled = false;
    m_branch->setSeeking(true);
    m_flushesBefore = m_pipeline->timeline().flushes();
    if (m_pipeline->seek(*m_seeking))
        return;
    LOG4CPLUS_WARN(streamerLogger(), "Cannot seek in \"" << m_item->title << '"');
    m_seeking.reset();
    m_branch->setSeeking(false);
    m_prerolled = true;
    tell(&Streamer::positionChanged, m_item->id, position());
    beginBuffering(startTargetMs);
}

void GstStreamer::onPrerolled()
{
    const auto place = m_pipeline->timeline().last();
    if (m_prerolled || (!place && !m_branch->isDrained()))
        return;
    // What the seek makes void may still have been announced.
    if (m_seeking && m_pipeline->timeline().flushes() == m_flushesBefore)
        return;
    if (place && m_seeking && place->branch != m_branch->number())
        return reopen(*m_seeking);
    if (m_seekTo)
        return seekPresent();
    m_prerolled = true;
    m_restingPosition = m_seeking.value_or(m_restingPosition);
    m_seeking.reset();
    m_branch->setSeeking(false);
    beginBuffering(startTargetMs);
}

void GstStreamer::onPlaying()
{
    if (!m_wantsPlaying || m_plays)
        return;
    m_plays = true;
    tellStarted();
    applyState();
    tell(&Streamer::positionChanged, m_item->id, position());
    checkNextWanted();
    planTurn();
}

void GstStreamer::tellStarted()
{
    if (m_item->started)
        return;
    m_item->started = true;
    tell(&Streamer::mediaStarted, m_item->id);
    Q_EMIT soundPathChanged();
}

void GstStreamer::onEnded()
{
    if (m_seeking || m_seekTo)
        return;
    if (m_nextBranch && m_pipeline->timeline().hasReached(m_nextBranch->number()))
        takeOver();
    // The item before had ended just when this one was added behind it.
    if (!m_branch->isDrained())
        return reopen(m_restingPosition);
    tellStarted();
    m_restingPosition = position();
    if (m_next)
        return startNextAfresh();
    if (m_nextDecision == Next::None)
        return finishPresent();
    m_waitsForNext = true;
    m_nextDeadline.start();
    wantNext();
}

void GstStreamer::finishPresent()
{
    const quint64 id = m_item->id;
    LOG4CPLUS_INFO(streamerLogger(), "Ended " << id);
    close();
    forget();
    tell(&Streamer::ended, id);
}

void GstStreamer::failPresent(const StreamFailure& failure)
{
    // A renewed address may lead to another form of the same item.
    if (failure.kind == StreamFailure::Changed && std::exchange(m_item->goesOn, false))
        return beginAnew(position());
    Kept kept;
    if (isRefusal(failure.httpStatus) && m_branch) {
        keepFetched();
        kept = std::move(m_kept);
    }
    const Item item = *m_item;
    const qint64 where = position();
    const CMError error = streamError(item.title, failure);
    LOG4CPLUS_WARN(streamerLogger(), "Failed " << item.id << ": " << error.message());
    close();
    forget();
    m_kept = std::move(kept);
    if (item.started)
        tell(&Streamer::positionChanged, item.id, where);
    tell(&Streamer::failed, item.id, error);
}

// Buffering

void GstStreamer::beginBuffering(qint64 targetMs)
{
    m_buffering = true;
    m_bufferTargetMs = targetMs;
    m_levelTold = -1;
    checkBuffer();
}

void GstStreamer::checkBuffer()
{
    const qint64 ready = std::min(m_branch->bufferedMs(), m_bufferTargetMs);
    const int level = static_cast<int>(ready * 100 / m_bufferTargetMs);
    m_buffering = level < 100;
    if (m_buffering)
        applyState();
    const bool worthTelling = m_levelTold < 0 || level == 100 || level >= m_levelTold + 5;
    if (worthTelling && !m_pausedByUser) {
        m_levelTold = level;
        tell(&Streamer::bufferLevelChanged, m_item->id, double(level));
    }
    if (!m_buffering)
        applyState();
}

void GstStreamer::onDry()
{
    if (!m_plays || m_dry.isActive())
        return;
    m_passedWhenDry = m_branch->passedBuffers();
    m_dry.start();
}

void GstStreamer::checkDry()
{
    if (!m_plays || !m_branch->isDry())
        return;
    // A sink that takes what it gets leaves nothing in hand by its nature.
    if (!m_pipeline->isSynced() && m_branch->passedBuffers() != m_passedWhenDry)
        return;
    LOG4CPLUS_INFO(streamerLogger(), "Sound of " << m_item->id << " ran dry");
    m_buffering = true;
    m_bufferTargetMs = refillTargetMs;
    m_levelTold = 0;
    applyState();
    tell(&Streamer::bufferLevelChanged, m_item->id, 0.0);
}

} // namespace player
