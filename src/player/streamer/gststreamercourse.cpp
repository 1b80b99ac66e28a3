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

} // namespace

std::unique_ptr<Branch> GstStreamer::makeBranch(const Item& item, Access access)
{
    initGStreamer();
    if (!m_loop)
        m_loop = std::make_unique<TransferLoop>();
    return std::make_unique<Branch>(
        ++m_lastBranch, *m_loop, item.request, m_options.http, access, *this);
}

void GstStreamer::startPresent(qint64 positionMs)
{
    startPresent(makeBranch(*m_item, Access::Linear), positionMs);
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
    reopen(positionMs, Access::Linear);
}

void GstStreamer::reopen(qint64 positionMs, Access access)
{
    LOG4CPLUS_DEBUG(streamerLogger(), "Begin " << m_item->id << " anew at " << positionMs << " ms");
    closeBranches();
    m_restingPosition = positionMs;
    const StreamFailure failure = openOutput();
    if (failure.isSet())
        return loseOutput(failure);
    m_outputLost = false;
    startPresent(makeBranch(*m_item, access), positionMs);
    if (m_next)
        prepareNext();
}

void GstStreamer::seekPresent()
{
    if (m_branch->needsRandomAccess())
        return reopen(*m_seekTo, Access::Random);
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
    const Item item = *m_item;
    const qint64 where = position();
    const CMError error = streamError(item.title, failure);
    LOG4CPLUS_WARN(streamerLogger(), "Failed " << item.id << ": " << error.message());
    close();
    forget();
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
