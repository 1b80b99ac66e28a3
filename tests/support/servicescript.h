#pragma once

#include "httpclient.h"
#include "httpserver.h"
#include "tavuurl.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QPair>
#include <QString>
#include <QTemporaryFile>
#include <QVector>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// A request that a ServiceScript received, and the right to answer it. A copyable handle. One that
/// is never answered hangs its peer until the script ends.
class ServiceRequest
{
public:
    ServiceRequest() = default;
    ServiceRequest(const http::Request& request, const http::Responder& responder)
        : m_request(request)
        , m_responder(responder)
    {
    }

    /// Whether a request came at all.
    bool isValid() const { return m_responder.has_value(); }
    const http::Request& request() const { return m_request; }
    /// As sent, for example "/page?x=1".
    QByteArray target() const { return m_request.target; }
    /// Such as "https://host/page?x=1".
    QByteArray url() const;
    QByteArray header(const QByteArray& name) const { return m_request.headers.value(name); }
    /// The body as JSON.
    QVariantHash json() const;

    void answer(int status, const QByteArray& body = "{}", const http::Headers& headers = {}) const;
    /// Ends the connection without an answer.
    void cut() const;

private:
    http::Request m_request;
    std::optional<http::Responder> m_responder;
};

/// A music service on the loopback that answers what a test tells it to. Requests wait for the test
/// until it expects them, unless a standing answer is there for them. Requests on several
/// connections may come in another order than they were sent in, so that a test names the one that
/// it wants. Runs on the event loop of the test's thread.
class ServiceScript
{
public:
    ServiceScript();
    ~ServiceScript();
    Q_DISABLE_COPY_MOVE(ServiceScript)

    /// "http://127.0.0.1:<port>/".
    QString baseUrl() const;
    /// The base URL with `target` in the place of its "/".
    TavuUrl url(const QString& target) const;

    /// Also answers at "https://<host>/", its usual port, for every HTTP client made from now on
    /// and in the script's life: they find it without looking the name up and trust its
    /// certificate.
    /// "*." in front stands for every host of one level below.
    void serveHost(const QByteArray& host);

    using Condition = std::function<bool(const ServiceRequest&)>;

    /// Waits for a request with this method and target, and the condition if one is given. The test
    /// fails when none comes.
    ServiceRequest expectRequest(
        const QByteArray& method, const QByteArray& target, const Condition& condition = {});
    /// Answers the request that was expected last.
    void answer(int status, const QByteArray& body = "{}", const http::Headers& headers = {});
    /// The test fails when there is a request that it has not expected. Those under way arrive
    /// first.
    void expectNoRequest();

    /// From now on every such request is answered at once, and only counted.
    void always(const QByteArray& method, const QByteArray& target, int status,
        const QByteArray& body = "{}");
    /// Requests that a standing answer took, in order.
    const QVector<http::Request>& served() const { return m_served; }
    /// How many of these had the method and target.
    int servedCount(const QByteArray& method, const QByteArray& target) const;

private:
    using Address = QPair<QByteArray, QByteArray>;

    void takeRequestsOf(http::Server& server);
    void handle(const http::Request& request, const http::Responder& responder);
    bool take(const QByteArray& method, const QByteArray& target, const Condition& condition);
    QByteArray waitingRequests() const;
    void letRequestsArrive();

    http::Server m_server;
    quint16 m_port = 0;
    std::vector<std::unique_ptr<http::Server>> m_hosts;
    QTemporaryFile m_authorities; // The certificates of m_hosts.
    HttpClientConfig m_config;
    std::deque<ServiceRequest> m_waiting;
    ServiceRequest m_last; // Expected last.
    QHash<Address, QPair<int, QByteArray>> m_standing;
    QVector<http::Request> m_served;
    QList<ServiceRequest> m_taken; // Kept, so that one that a test drops is not answered with 500.
};
