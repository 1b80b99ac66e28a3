#include "controlserver.h"

#include "browseroutes.h"
#include "loginroutes.h"
#include "playroutes.h"
#include "problem.h"

// In no namespace, as the macro demands.
static void initControlResource()
{
    // The description sits in a static library, which nobody registers by itself.
    Q_INIT_RESOURCE(control);
}

namespace control {

namespace {

/// The page is scripts and styles of its own, the player's pictures, and a silence that it makes
/// itself; nothing else may run or be asked for, and no other page may frame it. Its address may
/// carry the token.
http::Headers pageHeaders()
{
    return { { "Content-Security-Policy",
                 "default-src 'self'; img-src 'self' data:; media-src 'self' blob:; "
                 "object-src 'none'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'" },
        { "X-Content-Type-Options", "nosniff" }, { "Referrer-Policy", "no-referrer" } };
}

} // namespace

ControlServer::ControlServer(PlayerFacade& player, const Options& options, QObject* parent)
    : QObject(parent)
    , m_artwork(options.fetchArtwork)
    , m_view(m_rows, m_artwork)
    , m_events(player, m_view, options.eventClients, nullptr)
    , m_access(options.hosts, options.token)
    , m_page(options.webRoot, pageHeaders())
    , m_api{ player, m_rows, m_artwork, m_view, m_pending, options.deadlineMs }
{
    initControlResource();
    addRoutes();
    m_server.setLimits(options.limits);
    m_server.setGuard([this](const http::Request& head) { return m_access.judge(head); });
    m_server.setRefusal([](int status) { return problem(status); });
    m_server.setHandler([this](const http::Request& request, const http::Responder& responder) {
        handle(request, responder);
    });
}

ControlServer::~ControlServer() = default;

quint16 ControlServer::listen(const QHostAddress& address, quint16 port)
{
    return m_server.listen(address, port);
}

void ControlServer::addRoutes()
{
    m_router.setRefusal(
        [](const http::Request&, int status, const QByteArray&) { return problem(status); });
    const auto get = [this](const char* path, http::Handler handler) {
        m_router.add("GET", QStringLiteral("/api/v1/") + QLatin1String(path), std::move(handler));
    };
    get("state", [this](const http::Request&, const http::Responder& responder) {
        responder.send(json(m_events.snapshot()));
    });
    get("events", [this](const http::Request& request, const http::Responder& responder) {
        m_events.join(request, responder);
    });
    get("messages", [this](const http::Request&, const http::Responder& responder) {
        const QString messages = QStringLiteral("messages");
        responder.send(json({ { messages, m_events.snapshot().value(messages) } }));
    });
    get("artwork/{id}", [this](const http::Request& request, const http::Responder& responder) {
        m_artwork.serve(request.parameters.value(QStringLiteral("id")), responder);
    });
    get("openapi.json", [](const http::Request&, const http::Responder& responder) {
        http::ContentInfo info;
        info.contentType = "application/json";
        info.headers = { { "Cache-Control", "no-cache" }, { "X-Content-Type-Options", "nosniff" } };
        responder.sendFile(QStringLiteral(":/control/openapi.json"), info);
    });
    addBrowseRoutes(m_router, m_api);
    addPlayRoutes(m_router, m_api);
    addLoginRoutes(m_router, m_api);
}

void ControlServer::handle(const http::Request& request, const http::Responder& responder) const
{
    const bool isApi = request.segments.value(0) == QLatin1String("api");
    const bool reads = request.method == "GET" || request.method == "HEAD";
    if (isApi) {
        m_router.handle(request, responder);
    } else if (reads) {
        m_page.serve(request.segments, responder);
    } else {
        http::Response refusal = problem(405);
        refusal.headers.set("Allow", "GET, HEAD");
        responder.send(refusal);
    }
}

} // namespace control
