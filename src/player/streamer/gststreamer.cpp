#include "gststreamer.h"

#include "branch.h"
#include "gstruntime.h"
#include "output.h"
#include "pipeline.h"
#include "tavulog.h"
#include "transferloop.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <algorithm>

namespace player {

namespace {

log4cplus::Logger logger = log4cplus::Logger::getInstance("player.streamer");

constexpr int tickMs = 250;
constexpr int fillCheckMs = 50;
// Shorter than what a sound device holds, so that it is found in time.
constexpr int dryConfirmMs = 100;
// Sound that must lie ready at a start, and after it ran dry.
constexpr qint64 startTargetMs = 500;
constexpr qint64 refillTargetMs = 2000;
// How long before its end the present item is followed up, once it has been received itself.
constexpr qint64 nextWantedMs = 20000;
// And even if it has not.
constexpr qint64 nextUrgentMs = 8000;
// Who was asked for the next item has answered by then, or never will.
constexpr int nextDeadlineMs = 35000;

StreamFailure endedEarly()
{
    StreamFailure failure;
    failure.kind = StreamFailure::EndedEarly;
    return failure;
}

double volumeFactor(int percent)
{
    const double part = percent / 100.0;
    return part * part * part;
}

} // namespace

GstStreamer::GstStreamer(const StreamerOptions& options, QObject* parent)
    : Streamer(parent)
    , m_options(options)
{
    m_tick.setInterval(tickMs);
    m_fill.setInterval(fillCheckMs);
    m_dry.setInterval(dryConfirmMs);
    m_nextDeadline.setInterval(nextDeadlineMs);
    m_turn.setTimerType(Qt::PreciseTimer);
    for (QTimer* timer : { &m_dry, &m_turn, &m_nextDeadline })
        timer->setSingleShot(true);
    connect(&m_tick, &QTimer::timeout, this, &GstStreamer::tick);
    connect(&m_fill, &QTimer::timeout, this, &GstStreamer::checkBuffer);
    connect(&m_dry, &QTimer::timeout, this, &GstStreamer::checkDry);
    connect(&m_turn, &QTimer::timeout, this, &GstStreamer::onTurn);
    connect(&m_nextDeadline, &QTimer::timeout, this, &GstStreamer::finishPresent);
}

GstStreamer::~GstStreamer()
{
    close();
}

// Commands

template <class Function>
void GstStreamer::post(Function function)
{
    QMetaObject::invokeMethod(this, std::move(function), Qt::QueuedConnection);
}

template <class Signal, class... Args>
void GstStreamer::tell(Signal signal, Args... args)
{
    if (m_endsGiven == m_endsDone)
        Q_EMIT(this->*signal)(args...);
}

void GstStreamer::play(quint64 id, const TavuRoles& roles, const QVariantHash&)
{
    ++m_endsGiven;
    post([this, id, roles] {
        ++m_endsDone;
        doPlay(id, roles);
    });
}

void GstStreamer::stop()
{
    ++m_endsGiven;
    post([this] {
        ++m_endsDone;
        close();
        forget();
    });
}

void GstStreamer::setNextMedia(quint64 id, const TavuRoles& roles, const QVariantHash&)
{
    post([this, id, roles] { doSetNext(id, roles); });
}

void GstStreamer::setNoNextMedia()
{
    post([this] { doSetNoNext(); });
}

void GstStreamer::pause()
{
    post([this] { doPause(); });
}

void GstStreamer::resume()
{
    post([this] { doResume(); });
}

void GstStreamer::seekTime(qint64 position)
{
    post([this, position] { doSeek(position); });
}

GstStreamer::Item GstStreamer::itemOf(quint64 id, const TavuRoles& roles, StreamFailure& failure)
{
    Item item;
    item.id = id;
    item.title = itemTitle(roles);
    item.startMs = std::max<qint64>(0, roles.mediaData().metaData().startTime());
    item.request = StreamRequest::fromRoles(roles, failure);
    return item;
}

void GstStreamer::doPlay(quint64 id, const TavuRoles& roles)
{
    closeBranches();
    forget();
    StreamFailure failure;
    m_item = itemOf(id, roles, failure);
    LOG4CPLUS_INFO(
        logger, "Play " << id << ": \"" << m_item->title << "\" at " << m_item->startMs << " ms");
    if (!failure.isSet())
        failure = openOutput();
    if (failure.isSet())
        return failPresent(failure);
    startPresent(m_item->startMs);
}

void GstStreamer::doSetNext(quint64 id, const TavuRoles& roles)
{
    if (!m_item)
        return;
    dropNext();
    StreamFailure failure;
    m_next = itemOf(id, roles, failure);
    m_nextDecision = Next::Item;
    LOG4CPLUS_INFO(logger, "Next " << id << ": \"" << m_next->title << '"');
    if (failure.isSet())
        failNext(failure);
    else if (m_waitsForNext)
        startNextAfresh();
    else
        prepareNext();
}

void GstStreamer::doSetNoNext()
{
    if (!m_item)
        return;
    dropNext();
    m_nextDecision = Next::None;
    if (m_waitsForNext)
        finishPresent();
}

void GstStreamer::doPause()
{
    if (!m_item || m_pausedByUser)
        return;
    m_pausedByUser = true;
    applyState();
    tell(&Streamer::positionChanged, m_item->id, position());
}

void GstStreamer::doResume()
{
    if (!m_item || !m_pausedByUser)
        return;
    m_pausedByUser = false;
    if (m_outputLost)
        return reopen(m_restingPosition);
    applyState();
    if (m_buffering)
        checkBuffer();
}

void GstStreamer::doSeek(qint64 position)
{
    if (!m_item)
        return;
    position = std::max<qint64>(0, position);
    if (const qint64 duration = durationMs())
        position = std::min(position, duration);
    tell(&Streamer::positionChanged, m_item->id, position);
    if (m_outputLost) {
        m_restingPosition = position;
        return;
    }
    // Its turn is over for the pipeline, only its last sound is still to be heard.
    if (m_waitsForNext || m_branch->isDrained())
        return reopen(position);
    m_seekTo = position;
    applyState();
    if (m_prerolled)
        seekPresent();
}

// The present item's course

std::unique_ptr<Branch> GstStreamer::makeBranch(const Item& item, Access access)
{
    if (!m_loop)
        m_loop = std::make_unique<TransferLoop>();
    return std::make_unique<Branch>(
        ++m_lastBranch, *m_loop, item.request, m_options.http, access, *this);
}

void GstStreamer::startPresent(qint64 positionMs)
{
    startPresent(positionMs, Access::Linear);
}

void GstStreamer::startPresent(qint64 positionMs, Access access)
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
    m_branch = makeBranch(*m_item, access);
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
    LOG4CPLUS_DEBUG(logger, "Begin " << m_item->id << " anew at " << positionMs << " ms");
    closeBranches();
    m_restingPosition = positionMs;
    const StreamFailure failure = openOutput();
    if (failure.isSet())
        return loseOutput(failure);
    m_outputLost = false;
    startPresent(positionMs, access);
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
    LOG4CPLUS_WARN(logger, "Cannot seek in \"" << m_item->title << '"');
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
    LOG4CPLUS_INFO(logger, "Ended " << id);
    close();
    forget();
    tell(&Streamer::ended, id);
}

void GstStreamer::failPresent(const StreamFailure& failure)
{
    const Item item = *m_item;
    const qint64 where = position();
    const CMError error = streamError(item.title, failure);
    LOG4CPLUS_WARN(logger, "Failed " << item.id << ": " << error.message());
    close();
    forget();
    if (item.started)
        tell(&Streamer::positionChanged, item.id, where);
    tell(&Streamer::failed, item.id, error);
}

// The next item, and how it takes over

void GstStreamer::prepareNext()
{
    // Without a turn to wait for it begins afresh when the present one has ended.
    if (!m_pipeline || m_branch->isDrained())
        return;
    m_nextBranch = makeBranch(*m_next, Access::Linear);
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
    LOG4CPLUS_WARN(logger, "Failed next " << id << ": " << error.message());
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
    LOG4CPLUS_INFO(logger, "Item " << m_item->id << " takes over");
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
    LOG4CPLUS_INFO(logger, "Sound of " << m_item->id << " ran dry");
    m_buffering = true;
    m_bufferTargetMs = refillTargetMs;
    m_levelTold = 0;
    applyState();
    tell(&Streamer::bufferLevelChanged, m_item->id, 0.0);
}

// The output

StreamFailure GstStreamer::openOutput()
{
    StreamFailure failure;
    if (m_pipeline)
        return failure;
    initGStreamer();
    if (GstElement* sink = makeOutput(m_options.output, failure)) {
        m_pipeline = std::make_unique<Pipeline>(sink, *this);
        applyVolume();
    }
    return failure;
}

CMError GstStreamer::setOutput(const QString& setting)
{
    if (setting == m_options.output)
        return {};
    initGStreamer();
    StreamFailure failure;
    GstElement* sink = makeOutput(setting, failure);
    if (!sink)
        return streamError(QString(), failure);
    m_options.output = setting;
    auto pipeline = std::make_unique<Pipeline>(sink, *this);
    if (!m_item || m_outputLost)
        return {};
    const qint64 where = position();
    close();
    m_pipeline = std::move(pipeline);
    applyVolume();
    reopen(where);
    return {};
}

void GstStreamer::onOutputFailed(const QString& text)
{
    StreamFailure failure;
    failure.kind = StreamFailure::OutputFailed;
    failure.detail = text;
    if (!m_item->started)
        return failPresent(failure);
    m_restingPosition = position();
    loseOutput(failure);
}

void GstStreamer::loseOutput(const StreamFailure& failure)
{
    const CMError error = streamError(m_item->title, failure);
    LOG4CPLUS_WARN(logger, error.message());
    const qint64 where = m_restingPosition;
    close();
    m_restingPosition = where;
    m_outputLost = true;
    m_pausedByUser = true;
    report(TavuPlayLogicState::Paused);
    tell(&Streamer::positionChanged, m_item->id, where);
    Q_EMIT outputLost(error);
}

void GstStreamer::setVolume(int percent)
{
    m_volume = std::clamp(percent, 0, 100);
    applyVolume();
}

void GstStreamer::setMuted(bool muted)
{
    m_muted = muted;
    applyVolume();
}

void GstStreamer::applyVolume()
{
    if (m_pipeline)
        m_pipeline->setVolume(volumeFactor(m_volume), m_muted);
}

// State and position

/// Brings the pipeline, the timers and what was told in line with what is wanted.
void GstStreamer::applyState()
{
    setPlaying(m_prerolled && !m_buffering && !m_seekTo && !m_pausedByUser);
    const int state = m_pausedByUser ? TavuPlayLogicState::Paused
        : m_plays                    ? TavuPlayLogicState::Playing
                                     : TavuPlayLogicState::Buffering;
    report(state);
    const auto run = [](QTimer& timer, bool wanted) {
        if (timer.isActive() != wanted)
            wanted ? timer.start() : timer.stop();
    };
    run(m_tick, m_plays);
    run(m_fill, m_buffering && m_prerolled && !m_pausedByUser);
}

void GstStreamer::setPlaying(bool plays)
{
    if (plays == m_wantsPlaying)
        return;
    if (!plays)
        m_restingPosition = position();
    m_wantsPlaying = plays;
    if (plays) {
        if (m_pipeline->play())
            playing(m_pipeline->epoch());
        return;
    }
    m_plays = false;
    m_turn.stop();
    m_dry.stop();
    m_pipeline->pause();
}

void GstStreamer::report(int state)
{
    if (state == m_stateTold)
        return;
    m_stateTold = state;
    tell(&Streamer::stateChanged, m_item->id, state);
}

void GstStreamer::tick()
{
    m_restingPosition = position();
    tell(&Streamer::positionChanged, m_item->id, m_restingPosition);
    checkNextWanted();
}

qint64 GstStreamer::position() const
{
    if (m_seekTo || m_seeking)
        return m_seekTo ? *m_seekTo : *m_seeking;
    if (!m_pipeline || !m_branch || !m_prerolled)
        return m_restingPosition;
    const Timeline& timeline = m_pipeline->timeline();
    const auto place =
        m_pipeline->isSynced() ? timeline.at(m_pipeline->runningTime()) : timeline.last();
    if (!place || place->branch != m_branch->number())
        return m_restingPosition;
    return place->position / 1000000;
}

/// Of the present item; 0 when it is not known. A stream that tells its own is believed where that
/// is shorter: the description may be wrong.
qint64 GstStreamer::durationMs() const
{
    const qint64 described = m_item->request.durationMs;
    const qint64 own = m_branch ? m_branch->streamDurationMs() : 0;
    if (own <= 0 || described <= 0)
        return std::max(own, described);
    return std::min(own, described);
}

qint64 GstStreamer::untilSilenceMs() const
{
    if (!m_pipeline->isSynced())
        return 0;
    return std::max<qint64>(0,
        (m_pipeline->timeline().endOf(m_branch->number()) - m_pipeline->runningTime()) / 1000000);
}

void GstStreamer::closeBranches()
{
    m_turn.stop();
    m_dry.stop();
    if (m_pipeline)
        m_pipeline->reset();
    for (std::unique_ptr<Branch>* branch : { &m_branch, &m_nextBranch, &m_strayBranch }) {
        if (*branch)
            m_pipeline->remove(**branch);
        branch->reset();
    }
}

/// Gives the device back.
void GstStreamer::close()
{
    closeBranches();
    m_pipeline.reset();
    m_plays = false;
    m_wantsPlaying = false;
    m_prerolled = false;
    m_buffering = false;
    m_seekTo.reset();
    m_seeking.reset();
    for (QTimer* timer : { &m_tick, &m_fill, &m_nextDeadline })
        timer->stop();
}

void GstStreamer::forget()
{
    m_item.reset();
    m_next.reset();
    m_nextDecision = Next::Undecided;
    m_pausedByUser = false;
    m_outputLost = false;
    m_restingPosition = 0;
    m_levelTold = -1;
    m_stateTold = 0;
    for (QTimer* timer : { &m_tick, &m_fill, &m_nextDeadline })
        timer->stop();
}

// News of the pipeline, in GStreamer's threads

bool GstStreamer::isPresent(quint64 branch) const
{
    return m_branch && m_branch->number() == branch;
}

void GstStreamer::prerolled(int epoch)
{
    post([this, epoch] {
        if (m_branch && epoch == m_pipeline->epoch())
            onPrerolled();
    });
}

void GstStreamer::playing(int epoch)
{
    post([this, epoch] {
        if (m_branch && epoch == m_pipeline->epoch())
            onPlaying();
    });
}

void GstStreamer::ended(int epoch)
{
    post([this, epoch] {
        if (m_branch && epoch == m_pipeline->epoch())
            onEnded();
    });
}

void GstStreamer::outputFailed(int epoch, const QString& text)
{
    post([this, epoch, text] {
        if (m_branch && epoch == m_pipeline->epoch())
            onOutputFailed(text);
    });
}

void GstStreamer::branchDry(quint64 branch)
{
    post([this, branch] {
        if (isPresent(branch))
            onDry();
    });
}

void GstStreamer::branchDrained(quint64 branch)
{
    post([this, branch] {
        if (isPresent(branch))
            planTurn();
    });
}

void GstStreamer::branchCutOff(quint64 branch)
{
    branchDrained(branch);
}

void GstStreamer::branchFailed(quint64 branch, const StreamFailure& failure)
{
    post([this, branch, failure] {
        if (isPresent(branch))
            failPresent(m_branch->failure(failure));
        else if (m_nextBranch && m_nextBranch->number() == branch)
            failNext(m_nextBranch->failure(failure));
    });
}

} // namespace player
