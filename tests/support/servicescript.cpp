#include "servicescript.h"

#include "printers.h"
#include "tavujson.h"
#include "testcertificate.h"
#include "watchdog.h"

#include <QTcpSocket>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// Marks the end of what was sent before it.
const char* const fenceTarget = "/servicescript-fence";

http::Response jsonResponse(int status, const QByteArray& body, const http::Headers& headers)
{
    http::Response response = http::Response::json(status, body);
    for (const http::Headers::Field& field : headers.fields())
        response.headers.set(field.first, field.second);
    return response;
}

} // namespace

QVariantHash ServiceRequest::json() const
{
    return TavuJson::parse(m_request.body).toHash();
}

QByteArray ServiceRequest::url() const
{
    return (m_request.secure ? "https://" : "http://") + m_request.authority + m_request.target;
}

void ServiceRequest::answer(int status, const QByteArray& body, const http::Headers& headers) const
{
    if (m_responder)
        m_responder->send(jsonResponse(status, body, headers));
}

void ServiceRequest::cut() const
{
    if (m_responder)
        m_responder->reset();
}

ServiceScript::ServiceScript()
{
    takeRequestsOf(m_server);
    m_port = m_server.listen();
    EXPECT_NE(m_port, 0) << m_server.errorString().toStdString();
}

ServiceScript::~ServiceScript()
{
    if (!m_hosts.empty())
        HttpClientConfig::setShared(HttpClientConfig());
}

void ServiceScript::takeRequestsOf(http::Server& server)
{
    server.setHandler([this](const http::Request& request, const http::Responder& responder) {
        handle(request, responder);
    });
}

void ServiceScript::serveHost(const QByteArray& host)
{
    const TestCertificate certificate = TestCertificate::make(host);
    m_hosts.push_back(std::make_unique<http::Server>());
    takeRequestsOf(*m_hosts.back());
    const quint16 port = m_hosts.back()->listen(QHostAddress::LocalHost, 0,
        http::tlsConfiguration(certificate.certificate, certificate.key));
    EXPECT_NE(port, 0) << m_hosts.back()->errorString().toStdString();
    EXPECT_TRUE(m_authorities.open());
    m_authorities.seek(m_authorities.size());
    m_authorities.write(certificate.certificate);
    m_authorities.close();

    // An empty name stands for every host that no earlier entry names.
    const bool many = host.startsWith("*.");
    const QByteArray target = ":443:127.0.0.1:" + QByteArray::number(port);
    m_config.caFile = m_authorities.fileName();
    m_config.connectTo.insert(
        many ? m_config.connectTo.size() : 0, (many ? QByteArray() : host) + target);
    HttpClientConfig::setShared(m_config);
}

QString ServiceScript::baseUrl() const
{
    return QStringLiteral("http://127.0.0.1:%1/").arg(m_port);
}

TavuUrl ServiceScript::url(const QString& target) const
{
    return TavuUrl(baseUrl()).resolved(TavuUrl(target));
}

ServiceRequest ServiceScript::expectRequest(
    const QByteArray& method, const QByteArray& target, const Condition& condition)
{
    if (!waitUntil([&] { return take(method, target, condition); })) {
        ADD_FAILURE() << "no such request came: " << method.constData() << ' ' << target.constData()
                      << "; waiting: " << waitingRequests().constData();
        m_last = ServiceRequest();
    }
    return m_last;
}

bool ServiceScript::take(
    const QByteArray& method, const QByteArray& target, const Condition& condition)
{
    const auto wanted =
        std::find_if(m_waiting.begin(), m_waiting.end(), [&](const ServiceRequest& waiting) {
            return waiting.request().method == method && waiting.target() == target
                && (!condition || condition(waiting));
        });
    if (wanted == m_waiting.end())
        return false;
    m_last = *wanted;
    m_waiting.erase(wanted);
    m_taken.append(m_last);
    return true;
}

void ServiceScript::answer(int status, const QByteArray& body, const http::Headers& headers)
{
    m_last.answer(status, body, headers);
}

void ServiceScript::expectNoRequest()
{
    letRequestsArrive();
    EXPECT_TRUE(m_waiting.empty()) << "unexpected: " << waitingRequests().constData();
}

QByteArray ServiceScript::waitingRequests() const
{
    QByteArray list;
    for (const ServiceRequest& waiting : m_waiting)
        list += waiting.request().method + ' ' + waiting.target() + "; ";
    return list;
}

void ServiceScript::always(
    const QByteArray& method, const QByteArray& target, int status, const QByteArray& body)
{
    m_standing.insert({ method, target }, { status, body });
}

int ServiceScript::servedCount(const QByteArray& method, const QByteArray& target) const
{
    int count = 0;
    for (const http::Request& request : m_served)
        count += request.method == method && request.target == target ? 1 : 0;
    return count;
}

void ServiceScript::handle(const http::Request& request, const http::Responder& responder)
{
    const auto standing = m_standing.constFind({ request.method, request.target });
    if (standing != m_standing.constEnd()) {
        m_served.append(request);
        responder.send(jsonResponse(standing->first, standing->second, {}));
    } else if (request.target == fenceTarget) {
        responder.send(http::Response::text(200, {}));
    } else {
        m_waiting.emplace_back(request, responder);
    }
}

/// A request of our own, sent after everything that is due, arrives after it.
void ServiceScript::letRequestsArrive()
{
    for (int round = 0; round < 2; ++round) {
        settle();
        QTcpSocket fence;
        fence.connectToHost(QHostAddress::LocalHost, m_port);
        fence.write(QByteArray("GET ") + fenceTarget
            + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
        EXPECT_TRUE(waitUntil([&] {
            return fence.bytesAvailable() > 0 && fence.state() == QAbstractSocket::UnconnectedState;
        }));
    }
    settle();
}
