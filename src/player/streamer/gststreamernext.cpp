// The next item, and how it takes over.
#include "gststreamer.h"

#include "branch.h"
#include "pipeline.h"
#include "streamerlog.h"

namespace player {

namespace {

// How long before its end the present item is followed up, once it has been received itself.
constexpr qint64 nextWantedMs = 20000;
// And even if it has not.
constexpr qint64 nextUrgentMs = 8000;

StreamFailure endedEarly()
{
    StreamFailure failure;
    failure.kind = StreamFailure::EndedEarly;
    return failure;
}

} // namespace

void GstStreamer::prepareNext()
{
    // Without a turn to wait for it begins afresh when the present one has ended.
    if (!m_pipeline || m_branch->isDrained())
        return;
    m_nextBranch = makeBranch(*m_next);
    m_pipeline->add(*m_nextBranch);
}

void GstStreamer::dropNext()
{
    m_next.reset();
    if (!m_nextBranch)
        return;
    if (m_branch->isDrained()) {
        // Its sound may have reached the sink: it goes together with the pipeline's data.
        m_strayBranch = std::move(m_nextBranch);
        return;
    }
    m_pipeline->remove(*m_nextBranch);
    m_nextBranch.reset();
}

void GstStreamer::failNext(const StreamFailure& failure)
{
    const quint64 id = m_next->id;
    const CMError error = streamError(m_next->title, failure);
    LOG4CPLUS_WARN(streamerLogger(), "Failed next " << id << ": " << error.message());
    dropNext();
    m_nextDecision = Next::None;
    tell(&Streamer::failed, id, error);
    if (m_waitsForNext)
        finishPresent();
}

/// Waits for the present item's last sound, where something has to happen then.
void GstStreamer::planTurn()
{
    if (!m_branch->isDrained() || !(m_branch->isCutOff() || m_nextBranch || m_strayBranch))
        return;
    // Without anything more to come the sink would wait for ever.
    if (!m_plays && m_branch->isCutOff() && m_pipeline->isStarved())
        return failPresent(m_branch->failure(endedEarly()));
    if (!m_plays)
        return;
    if (const qint64 wait = untilSilenceMs())
        m_turn.start(static_cast<int>(wait));
    else
        onTurn();
}

void GstStreamer::onTurn()
{
    if (!m_plays)
        return;
    if (untilSilenceMs() > 0)
        return planTurn();
    if (m_branch->isCutOff())
        return failPresent(m_branch->failure(endedEarly()));
    if (m_nextBranch)
        takeOver();
    else if (m_next)
        startNextAfresh();
    else
        finishPresent();
}

void GstStreamer::takeOver()
{
    tellStarted();
    const std::unique_ptr<Branch> before = std::move(m_branch);
    m_branch = std::move(m_nextBranch);
    m_item = std::move(m_next);
    m_next.reset();
    m_nextDecision = Next::Undecided;
    m_restingPosition = 0;
    m_stateTold = 0;
    m_pipeline->remove(*before);
    LOG4CPLUS_INFO(streamerLogger(), "Item " << m_item->id << " takes over");
    tellStarted();
    if (!m_pipeline->timeline().hasReached(m_branch->number()) && !m_branch->isDrained())
        return beginBuffering(startTargetMs);
    applyState();
    checkNextWanted();
    planTurn();
}

void GstStreamer::startNextAfresh()
{
    m_item = std::move(m_next);
    m_next.reset();
    m_nextDecision = Next::Undecided;
    m_nextDeadline.stop();
    m_stateTold = 0;
    closeBranches();
    startPresent(m_item->startMs);
}

void GstStreamer::wantNext()
{
    if (m_item->nextWanted)
        return;
    m_item->nextWanted = true;
    tell(&Streamer::nextMediaWanted, m_item->id);
}

void GstStreamer::checkNextWanted()
{
    if (m_item->nextWanted)
        return;
    const qint64 duration = durationMs();
    const qint64 left = duration > 0 ? duration - position() : 0;
    const bool received = m_branch->isDownloaded();
    if (m_branch->isDrained() || (received && left <= nextWantedMs)
        || (duration > 0 && left <= nextUrgentMs))
        wantNext();
}

} // namespace player
