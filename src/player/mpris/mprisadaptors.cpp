#include "mprisadaptors.h"

#include "mpris.h"
#include "mprisstate.h"
#include "playerfacade.h"

#include <cmath>

namespace player {

MprisRootAdaptor::MprisRootAdaptor(Mpris* mpris)
    : QDBusAbstractAdaptor(mpris)
    , m_mpris(*mpris)
{
}

QString MprisRootAdaptor::identity() const
{
    return m_mpris.identity();
}

MprisPlayerAdaptor::MprisPlayerAdaptor(Mpris* mpris)
    : QDBusAbstractAdaptor(mpris)
    , m_mpris(*mpris)
{
}

bool MprisPlayerAdaptor::is(const char* status) const
{
    return playbackStatus() == QLatin1String(status);
}

QString MprisPlayerAdaptor::playbackStatus() const
{
    return m_mpris.playerProperty("PlaybackStatus").toString();
}

QString MprisPlayerAdaptor::loopStatus() const
{
    return m_mpris.playerProperty("LoopStatus").toString();
}

void MprisPlayerAdaptor::setLoopStatus(const QString& status)
{
    const int mode = m_mpris.facade().player().value(QStringLiteral("mode")).toInt();
    const int wanted = mpris::withLoopStatus(mode, status);
    if (wanted != mode)
        m_mpris.facade().setPlayMode(wanted);
}

void MprisPlayerAdaptor::setRate(double rate)
{
    // The one rate that the interface wants heeded where no others are offered.
    if (rate == 0.0)
        Pause();
}

bool MprisPlayerAdaptor::shuffle() const
{
    return m_mpris.playerProperty("Shuffle").toBool();
}

void MprisPlayerAdaptor::setShuffle(bool shuffle)
{
    const int mode = m_mpris.facade().player().value(QStringLiteral("mode")).toInt();
    const int wanted = mpris::withShuffle(mode, shuffle);
    if (wanted != mode)
        m_mpris.facade().setPlayMode(wanted);
}

QVariantMap MprisPlayerAdaptor::metadata() const
{
    return m_mpris.playerProperty("Metadata").toMap();
}

double MprisPlayerAdaptor::volume() const
{
    return m_mpris.playerProperty("Volume").toDouble();
}

void MprisPlayerAdaptor::setVolume(double volume)
{
    if (!std::isfinite(volume))
        return;
    const int wanted = int(std::lround(qBound(0.0, volume, 1.0) * 100));
    if (wanted > 0 && m_mpris.facade().player().value(QStringLiteral("mute")).toBool())
        m_mpris.facade().setMuted(false);
    m_mpris.facade().setVolume(wanted);
}

qlonglong MprisPlayerAdaptor::position() const
{
    return m_mpris.position() * 1000;
}

bool MprisPlayerAdaptor::canGoNext() const
{
    return m_mpris.playerProperty("CanGoNext").toBool();
}

bool MprisPlayerAdaptor::canGoPrevious() const
{
    return m_mpris.playerProperty("CanGoPrevious").toBool();
}

bool MprisPlayerAdaptor::canPlay() const
{
    return m_mpris.playerProperty("CanPlay").toBool();
}

bool MprisPlayerAdaptor::canPause() const
{
    return m_mpris.playerProperty("CanPause").toBool();
}

bool MprisPlayerAdaptor::canSeek() const
{
    return m_mpris.playerProperty("CanSeek").toBool();
}

void MprisPlayerAdaptor::Next()
{
    if (canGoNext())
        m_mpris.facade().command(PlayerFacade::Command::Next);
}

void MprisPlayerAdaptor::Previous()
{
    if (canGoPrevious())
        m_mpris.facade().command(PlayerFacade::Command::Previous);
}

void MprisPlayerAdaptor::Pause()
{
    if (is("Playing") && canPause())
        m_mpris.facade().command(PlayerFacade::Command::TogglePause);
}

void MprisPlayerAdaptor::PlayPause(const QDBusMessage& message)
{
    if (!canPause())
        return refuse(message, QStringLiteral("Nothing plays that could be paused."));
    if (is("Paused"))
        Play();
    else
        Pause();
}

void MprisPlayerAdaptor::Stop()
{
    if (!is("Stopped"))
        m_mpris.facade().command(PlayerFacade::Command::Stop);
}

void MprisPlayerAdaptor::Play()
{
    if (is("Paused"))
        m_mpris.facade().command(PlayerFacade::Command::Resume);
}

void MprisPlayerAdaptor::Seek(qlonglong Offset)
{
    if (!canSeek())
        return;
    // Whole milliseconds first, so that the sum cannot overflow.
    const qint64 wanted = qMax<qint64>(0, m_mpris.position() + Offset / 1000);
    const qint64 duration = m_mpris.duration();
    if (duration > 0 && wanted > duration)
        Next();
    else
        m_mpris.facade().seek(wanted);
}

void MprisPlayerAdaptor::SetPosition(const QDBusObjectPath& TrackId, qlonglong Position)
{
    const auto present = metadata().value(QStringLiteral("mpris:trackid")).value<QDBusObjectPath>();
    const qint64 duration = m_mpris.duration();
    const bool within = Position >= 0 && (duration <= 0 || Position <= duration * 1000);
    if (canSeek() && TrackId == present && within)
        m_mpris.facade().seek(Position / 1000);
}

void MprisPlayerAdaptor::OpenUri(const QString&, const QDBusMessage& message)
{
    refuse(message, QStringLiteral("The player plays what its services list."));
}

void MprisPlayerAdaptor::refuse(const QDBusMessage& message, const QString& why)
{
    message.setDelayedReply(true);
    QDBusConnection(m_mpris.bus()).send(message.createErrorReply(QDBusError::NotSupported, why));
}

} // namespace player
