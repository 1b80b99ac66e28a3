#pragma once

#include "accesspolicy.h"
#include "apicontext.h"
#include "controloptions.h"
#include "eventfeed.h"
#include "httprouter.h"
#include "httpserver.h"
#include "httpstaticfiles.h"
#include "playerfacade.h"

#include <QObject>

namespace control {

/// The control API ("/api/v1") and the web page of a player. Lives in the player's thread.
class ControlServer : public QObject
{
    Q_OBJECT

public:
    /// `player` is not owned and must outlive the server.
    ControlServer(PlayerFacade& player, const Options& options, QObject* parent = nullptr);
    ~ControlServer() override;
    Q_DISABLE_COPY_MOVE(ControlServer)

    /// Listens on the address; port 0 takes a free one. Returns the port, 0 on failure. Several
    /// calls listen on several.
    quint16 listen(const QHostAddress& address, quint16 port);
    QString errorString() const { return m_server.errorString(); }

    /// The operations of the API, for comparing them with their description.
    QVector<http::Router::Route> routes() const { return m_router.routes(); }

private:
    void addRoutes();
    void handle(const http::Request& request, const http::Responder& responder) const;

    RowMemory m_rows;
    ArtworkStore m_artwork;
    ClientView m_view;
    EventFeed m_events;
    AccessPolicy m_access;
    http::StaticFiles m_page;
    /// Owns the answers that are awaited, so that they end before what they use.
    QObject m_pending;
    ApiContext m_api;
    http::Router m_router;
    http::Server m_server;
};

} // namespace control
