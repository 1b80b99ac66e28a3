#pragma once

#include "clientview.h"
#include "httpresponder.h"
#include "playerfacade.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <deque>

namespace control {

/// Tells clients what changes in the player. A client first gets the whole state ("snapshot"), then
/// numbered changes. One that was cut off and names the last number it has seen gets what it
/// missed, or a new snapshot if that is further back than the last 256 changes. Changes of one turn
/// of the event loop are told once.
class EventFeed : public QObject
{
    Q_OBJECT

public:
    /// None of the arguments is owned; all must outlive the feed.
    EventFeed(PlayerFacade& player, const ClientView& view, int clientsAtMost, QObject* parent);

    void join(const http::Request& request, const http::Responder& responder);
    /// The whole state, as the event "snapshot" tells it.
    QVariantHash snapshot();

private:
    struct Change
    {
        qint64 serial;
        QByteArray formatted;
    };

    void flushLater();
    void flush();
    void publish(const char* event, const QVariantHash& data);
    bool resume(const http::EventStream& client, const QByteArray& lastId);

    PlayerFacade& m_player;
    const ClientView& m_view;
    const int m_clientsAtMost;
    /// Begins at the clock, so that numbers of an earlier run are never taken for ours.
    qint64 m_serial;
    std::deque<Change> m_changes;
    QHash<qint64, http::EventStream> m_clients;
    qint64 m_lastClient = 0;
    QTimer m_flush;
    bool m_loginChanged = false;
    bool m_playerChanged = false;
    bool m_queueChanged = false;
    QSet<QString> m_changedRows;
};

} // namespace control
