#pragma once

#include "streamer.h"

#include <QStringList>
#include <QVector>

/// Listens to a streamer: keeps its notifications in their order.
class StreamerEar : public QObject
{
    Q_OBJECT

public:
    struct Heard
    {
        QString what; ///< "started", "state", "position", "level", "wanted", "ended", "failed".
        quint64 id = 0;
        double value = 0; ///< State, position or level.
        CMError error;
    };

    explicit StreamerEar(Streamer* streamer);

    /// Waits until something was heard; false when it was not within the watchdog's time.
    bool hears(const QString& what, quint64 id, int watchdogMs = 10000) const;
    bool hearsState(quint64 id, int state, int watchdogMs = 10000) const;
    bool hearsPositionFrom(quint64 id, qint64 position, int watchdogMs = 10000) const;

    int count(const QString& what, quint64 id) const;
    /// The last position told of an item; -1 without one.
    qint64 position(quint64 id) const;
    CMError error(quint64 id) const;
    /// The states, levels and the rest of an item in order, as "state 2", without positions.
    QStringList story(quint64 id) const;
    const QVector<Heard>& all() const { return m_heard; }
    void forget() { m_heard.clear(); }

private:
    void add(const QString& what, quint64 id, double value = 0, const CMError& error = {});

    QVector<Heard> m_heard;
};
