#include "gststreamer.h"

#include "branch.h"
#include "pipeline.h"
#include "streamerlog.h"
#include "transferloop.h"

#include <algorithm>

namespace player {

namespace {

constexpr int tickMs = 250;
constexpr int fillCheckMs = 10;
// Shorter than what a sound device holds, so that it is found in time.
constexpr int dryConfirmMs = 100;
// Who was asked for the next item has answered by then, or never will.
constexpr int nextDeadlineMs = 35000;

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

void GstStreamer::play(quint64 id, const TavuRoles& roles, const QVariantHash& attributes)
{
    ++m_endsGiven;
    post([this, id, roles, attributes] {
        ++m_endsDone;
        doPlay(id, roles, attributes);
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

void GstStreamer::setNextMedia(quint64 id, const TavuRoles& roles, const QVariantHash& attributes)
{
    post([this, id, roles, attributes] { doSetNext(id, roles, attributes); });
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

GstStreamer::Item GstStreamer::itemOf(
    quint64 id, const TavuRoles& roles, const QVariantHash& attributes, StreamFailure& failure)
{
    Item item;
    item.id = id;
    item.title = itemTitle(roles);
    item.startMs = std::max<qint64>(0, roles.mediaData().metaData().startTime());
    item.request = StreamRequest::fromRoles(roles, failure);
    item.renewed = attributes.value(renewedAttribute()).toBool();
    return item;
}

void GstStreamer::doPlay(quint64 id, const TavuRoles& roles, const QVariantHash& attributes)
{
    StreamFailure failure;
    Item item = itemOf(id, roles, attributes, failure);
    if (!failure.isSet() && goOnWith(item))
        return;
    if (m_item && m_item->id == id)
        keepFetched();
    // It is fetched already while what played is taken down.
    std::unique_ptr<Branch> branch = failure.isSet() ? nullptr : makeBranch(item);
    m_kept = Kept();
    closeBranches();
    forget();
    m_item = std::move(item);
    LOG4CPLUS_INFO(streamerLogger(),
        "Play " << id << ": \"" << m_item->title << "\" at " << m_item->startMs << " ms");
    if (!failure.isSet())
        failure = openOutput();
    if (failure.isSet())
        return failPresent(failure);
    startPresent(std::move(branch), m_item->startMs);
}

void GstStreamer::doSetNext(quint64 id, const TavuRoles& roles, const QVariantHash& attributes)
{
    if (!m_item)
        return;
    dropNext();
    StreamFailure failure;
    m_next = itemOf(id, roles, attributes, failure);
    m_nextDecision = Next::Item;
    LOG4CPLUS_INFO(streamerLogger(), "Next " << id << ": \"" << m_next->title << '"');
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
    m_kept = Kept();
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
    Q_EMIT soundPathChanged();
}

std::optional<SoundPath> GstStreamer::soundPath() const
{
    if (!m_item || !m_item->started || !m_branch || !m_pipeline)
        return std::nullopt;
    return SoundPath{ m_branch->format(), !m_item->request.keyHeaders.isEmpty(), m_item->renewed,
        m_pipeline->outputFormat(), m_pipeline->outputElement() };
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

void GstStreamer::outputFormatChanged(int epoch)
{
    post([this, epoch] {
        if (m_branch && epoch == m_pipeline->epoch())
            Q_EMIT soundPathChanged();
    });
}

void GstStreamer::branchFormatChanged(quint64 branch)
{
    post([this, branch] {
        if (isPresent(branch))
            Q_EMIT soundPathChanged();
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
