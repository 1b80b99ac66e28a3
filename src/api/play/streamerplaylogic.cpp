#include "streamerplaylogic.h"

#include "tavuconnect.h"

#include <atomic>

namespace {

// So many items may fail one after the other before playback gives up.
constexpr int failuresAtMost = 5;
// An item that sounded for so many milliseconds was a good one.
constexpr qint64 soundedLongEnough = 3000;

quint64 uniqueId()
{
    static std::atomic<quint64> last{ 0 };
    return ++last;
}

CMError nothingPlays()
{
    return CMError(
        TrString(TrCharData(trExtractContext("StreamerPlayLogic"), "Nothing is playing.")));
}

} // namespace

StreamerPlayLogic::StreamerPlayLogic(CMNodes* nodes, const CMPath& path)
    : PlayLogicBase(nodes, path)
{
    qRegisterMetaType<CMError>("CMError");
    connectStreamer();
    tavuConnect(this, SIGNAL(playbackFailed(CMError)), this, SLOT(on_playbackFailed()),
        Qt::DirectConnection);
}

StreamerPlayLogic::~StreamerPlayLogic() = default;

void StreamerPlayLogic::connectStreamer()
{
    const Streamer* streamer = Streamer::instance();
    Q_ASSERT_X(
        streamer, "StreamerPlayLogic", "the player sets its streamer before it loads plug-ins");
    const auto follow = [&](const char* signal, const char* slot) {
        tavuConnect(streamer, signal, this, slot, Qt::AutoConnection);
    };
    follow(SIGNAL(mediaStarted(quint64)), SLOT(on_streamer_mediaStarted(quint64)));
    follow(SIGNAL(stateChanged(quint64, int)), SLOT(on_streamer_stateChanged(quint64, int)));
    follow(SIGNAL(positionChanged(quint64, qint64)),
        SLOT(on_streamer_positionChanged(quint64, qint64)));
    follow(SIGNAL(bufferLevelChanged(quint64, double)),
        SLOT(on_streamer_bufferLevelChanged(quint64, double)));
    follow(SIGNAL(nextMediaWanted(quint64)), SLOT(on_streamer_nextMediaWanted(quint64)));
    follow(SIGNAL(ended(quint64)), SLOT(on_streamer_ended(quint64)));
    follow(SIGNAL(failed(quint64, CMError)), SLOT(on_streamer_failed(quint64, CMError)));
    follow(SIGNAL(rolesRenewed(quint64, TavuRoles)),
        SLOT(on_streamer_rolesRenewed(quint64, TavuRoles)));
}

void StreamerPlayLogic::setDataRequest(const CMSetDataRequest& request)
{
    const TavuPlayLogicCommand record(tavuvariant::toHash(request.value()));
    if (record.command() == QLatin1String("play")) {
        m_mediaRoles = TavuPlayLogicPlayArgs(record.args()).mediaRoles();
        m_failedInARow.clear();
        m_play = request.reply();
        cmchain::whenFinished(m_play, m_context, [this](const CMReply<QVariant>& play) {
            if (m_playAwaited && play == m_play)
                playbackEnded();
        });
    }
    PlayLogicBase::setDataRequest(request);
}

qint64 StreamerPlayLogic::playTime() const
{
    if (state() != TavuPlayLogicState::Playing || !m_positionAge.isValid())
        return m_position;
    const qint64 position = m_position + m_positionAge.elapsed();
    const qint64 duration = m_present.roles.mediaData().firstResource().duration();
    return duration > 0 ? qMin(position, qMax(duration, m_position)) : position;
}

StreamerPlayLogic::Item StreamerPlayLogic::newItem(const TavuRoles& roles)
{
    Item item;
    item.id = uniqueId();
    item.roles = roles;
    return item;
}

void StreamerPlayLogic::sendPlayCommand(const TavuRoles& roles, const QVariantHash& attributes)
{
    forgetItems();
    m_present = newItem(roles);
    setPosition(roles.mediaData().metaData().startTime());
    setState(TavuPlayLogicState::Buffering);
    if (hasFailedInARow(roles))
        giveUpLater();
    else if (Streamer* streamer = Streamer::instance())
        streamer->play(m_present.id, roles, attributes);
}

/// With repeat the tracks come round again, though none of them can be played.
bool StreamerPlayLogic::hasFailedInARow(const TavuRoles& roles) const
{
    return !roles.path().isEmpty() && m_failedInARow.contains(roles.path());
}

/// Not while the logic is still sending its command.
void StreamerPlayLogic::giveUpLater()
{
    const auto giveUp = [this, id = m_present.id] {
        if (!isPresent(id))
            return;
        m_present.failure = m_lastFailure;
        Q_EMIT playbackFailed(m_lastFailure);
    };
    QMetaObject::invokeMethod(this, giveUp, Qt::QueuedConnection);
}

void StreamerPlayLogic::sendSetNextMediaCommand(
    const TavuRoles& roles, const QVariantHash& attributes)
{
    const bool waited = std::exchange(m_nextWanted, false);
    if (m_present.id == 0) {
        // The item that was to be followed ended while this one was fetched, or was stopped.
        const bool paused = state() == TavuPlayLogicState::Paused;
        if (waited)
            sendPlayCommand(roles, attributes);
        if (waited && paused)
            pausePresent();
        return;
    }
    m_next = newItem(roles);
    if (Streamer* streamer = Streamer::instance())
        streamer->setNextMedia(m_next.id, roles, attributes);
}

void StreamerPlayLogic::sendNoNextMediaCommand()
{
    const bool waited = std::exchange(m_nextWanted, false);
    m_next = Item();
    if (m_present.id == 0) {
        if (waited)
            playbackEnded();
        return;
    }
    if (Streamer* streamer = Streamer::instance())
        streamer->setNoNextMedia();
}

void StreamerPlayLogic::sendStopCommand()
{
    forgetItems();
    if (Streamer* streamer = Streamer::instance())
        streamer->stop();
    playbackEnded();
}

void StreamerPlayLogic::sendSeekTimeCommand(qint64 position)
{
    setPosition(position);
    if (Streamer* streamer = Streamer::instance())
        streamer->seekTime(position);
    Q_EMIT positionChanged(position);
}

void StreamerPlayLogic::pauseInternal(const CMSetDataRequest& request)
{
    Streamer* streamer = Streamer::instance();
    if (!streamer || state() == TavuPlayLogicState::Idle)
        return request.reply().setError(nothingPlays());
    if (state() == TavuPlayLogicState::Paused) {
        const bool waits = m_present.id == 0;
        setPosition(m_position);
        setState(waits ? TavuPlayLogicState::Buffering : TavuPlayLogicState::Playing);
        streamer->resume();
    } else {
        pausePresent();
    }
    request.reply().setValue(QVariant());
}

void StreamerPlayLogic::pausePresent()
{
    setPosition(playTime());
    setState(TavuPlayLogicState::Paused);
    if (Streamer* streamer = Streamer::instance())
        streamer->pause();
}

void StreamerPlayLogic::stopInternal(const CMSetDataRequest& request)
{
    sendStopCommand();
    request.reply().setValue(QVariant());
}

void StreamerPlayLogic::seekTimeInternal(const CMSetDataRequest& request, const QVariantHash& args)
{
    if (state() == TavuPlayLogicState::Idle)
        return request.reply().setError(nothingPlays());
    const qint64 duration = m_present.roles.mediaData().firstResource().duration();
    qint64 position = qMax<qint64>(0, TavuPlayLogicSeekArgs(args).seekTime());
    if (duration > 0)
        position = qMin(position, duration);
    sendSeekTimeCommand(position);
    request.reply().setValue(QVariant());
}

void StreamerPlayLogic::playbackEnded()
{
    forgetItems();
    setPosition(0);
    setData(TavuPlayLogicData());
}

void StreamerPlayLogic::on_streamer_mediaStarted(quint64 id)
{
    if (id != 0 && id == m_next.id) {
        m_present = std::exchange(m_next, Item());
        setPosition(0);
    } else if (!isPresent(id)) {
        return;
    }
    startPresent();
}

void StreamerPlayLogic::startPresent()
{
    const quint64 id = m_present.id;
    m_present.started = true;
    TavuPlayLogicData data = mediaPlaybackStarted(m_mediaRoles, m_present.roles);
    if (!isPresent(id))
        return; // The logic itself went on to something else.
    data.setState(state());
    data.setMediaRoles(m_mediaRoles);
    data.setTrackRoles(m_present.roles);
    setData(data);
    Q_EMIT positionChanged(m_position);
}

void StreamerPlayLogic::on_streamer_stateChanged(quint64 id, int state)
{
    if (!isPresent(id))
        return;
    setPosition(playTime());
    setState(static_cast<TavuPlayLogicState::Enum>(state));
}

void StreamerPlayLogic::on_streamer_positionChanged(quint64 id, qint64 position)
{
    if (!isPresent(id))
        return;
    if (position > soundedLongEnough)
        m_failedInARow.clear();
    setPosition(position);
    Q_EMIT positionChanged(position);
}

void StreamerPlayLogic::on_streamer_bufferLevelChanged(quint64 id, double percent)
{
    if (isPresent(id))
        Q_EMIT bufferLevelChanged(percent);
}

void StreamerPlayLogic::on_streamer_nextMediaWanted(quint64 id)
{
    if (!isPresent(id))
        return;
    m_nextWanted = true;
    prepareNextMedia();
}

void StreamerPlayLogic::on_streamer_ended(quint64 id)
{
    if (!isPresent(id))
        return;
    if (isPlayUnderWay()) {
        awaitPlay();
    } else if (m_next.failure.isSet()) {
        m_present = std::exchange(m_next, Item());
        setPosition(0);
        skipPresent(m_present.failure);
    } else if (m_nextWanted) {
        setPosition(playTime());
        m_present = Item();
        setState(TavuPlayLogicState::Buffering);
    } else {
        playbackEnded();
    }
}

void StreamerPlayLogic::on_streamer_failed(quint64 id, const CMError& error)
{
    if (id != 0 && id == m_next.id)
        m_next.failure = error; // The present item plays to its end first.
    else if (isPresent(id) && isPlayUnderWay())
        awaitPlay();
    else if (isPresent(id))
        skipPresent(error);
}

/// To end now would end the play that is about to begin.
void StreamerPlayLogic::awaitPlay()
{
    setPosition(playTime());
    forgetItems();
    m_playAwaited = true;
    setState(TavuPlayLogicState::Buffering);
}

void StreamerPlayLogic::skipPresent(const CMError& error)
{
    const quint64 id = m_present.id;
    m_present.failure = error;
    m_lastFailure = error;
    setPosition(playTime());
    setState(TavuPlayLogicState::Buffering);
    // The logic goes on from the item that it knows as started.
    if (!m_present.started)
        startPresent();
    if (!isPresent(id))
        return;
    m_failedInARow.append(m_present.roles.path());
    const bool hopeless = error.name() == Streamer::outputErrorName()
        || m_failedInARow.size() >= failuresAtMost || !m_data.controls().next();
    if (hopeless) {
        Q_EMIT playbackFailed(error);
        return;
    }
    Q_EMIT mediaSkipped(m_present.roles, error);
    if (isPresent(id))
        next();
}

/// Nothing follows an item that failed.
void StreamerPlayLogic::on_playbackFailed()
{
    if (m_present.failure.isSet())
        sendStopCommand();
}

void StreamerPlayLogic::on_streamer_rolesRenewed(quint64 id, const TavuRoles& roles)
{
    if (!isPresent(id))
        return;
    m_present.roles = roles;
    TavuPlayLogicData data = m_data;
    data.setTrackRoles(roles);
    setData(data);
}

void StreamerPlayLogic::setPosition(qint64 position)
{
    m_position = position;
    m_positionAge.start();
}

void StreamerPlayLogic::setState(TavuPlayLogicState::Enum state)
{
    TavuPlayLogicData data = m_data;
    data.setState(state);
    setData(data);
}

void StreamerPlayLogic::setData(const TavuPlayLogicData& data)
{
    if (data == m_data)
        return;
    m_data = data;
    Q_EMIT playbackDataChanged(m_data);
}

void StreamerPlayLogic::forgetItems()
{
    m_present = Item();
    m_next = Item();
    m_nextWanted = false;
    m_playAwaited = false;
}
