#include "streamerear.h"

#include "watchdog.h"

#include <algorithm>

StreamerEar::StreamerEar(Streamer* streamer)
{
    const auto on = [&](auto signal, const char* what) {
        connect(streamer, signal, this, [this, what](quint64 id, auto... value) {
            add(QString::fromLatin1(what), id, double(value)...);
        });
    };
    on(&Streamer::mediaStarted, "started");
    on(&Streamer::stateChanged, "state");
    on(&Streamer::positionChanged, "position");
    on(&Streamer::bufferLevelChanged, "level");
    on(&Streamer::nextMediaWanted, "wanted");
    on(&Streamer::ended, "ended");
    connect(streamer, &Streamer::failed, this,
        [this](quint64 id, const CMError& error) { add(QStringLiteral("failed"), id, 0, error); });
}

void StreamerEar::add(const QString& what, quint64 id, double value, const CMError& error)
{
    m_heard.append({ what, id, value, error });
}

bool StreamerEar::hears(const QString& what, quint64 id, int watchdogMs) const
{
    return waitUntil([&] { return count(what, id) > 0; }, watchdogMs);
}

bool StreamerEar::hearsState(quint64 id, int state, int watchdogMs) const
{
    const auto told = [&](const Heard& heard) {
        return heard.what == QLatin1String("state") && heard.id == id && int(heard.value) == state;
    };
    return waitUntil([&] { return std::any_of(m_heard.begin(), m_heard.end(), told); }, watchdogMs);
}

bool StreamerEar::hearsPositionFrom(quint64 id, qint64 from, int watchdogMs) const
{
    return waitUntil([&] { return position(id) >= from; }, watchdogMs);
}

int StreamerEar::count(const QString& what, quint64 id) const
{
    return static_cast<int>(std::count_if(m_heard.begin(), m_heard.end(),
        [&](const Heard& heard) { return heard.what == what && heard.id == id; }));
}

qint64 StreamerEar::position(quint64 id) const
{
    qint64 last = -1;
    for (const Heard& heard : m_heard) {
        if (heard.what == QLatin1String("position") && heard.id == id)
            last = static_cast<qint64>(heard.value);
    }
    return last;
}

CMError StreamerEar::error(quint64 id) const
{
    for (const Heard& heard : m_heard) {
        if (heard.what == QLatin1String("failed") && heard.id == id)
            return heard.error;
    }
    return {};
}

QStringList StreamerEar::story(quint64 id) const
{
    QStringList lines;
    for (const Heard& heard : m_heard) {
        if (heard.id != id || heard.what == QLatin1String("position"))
            continue;
        const bool valued =
            heard.what == QLatin1String("state") || heard.what == QLatin1String("level");
        lines.append(
            valued ? QStringLiteral("%1 %2").arg(heard.what).arg(int(heard.value)) : heard.what);
    }
    return lines;
}
