#include "serverfixture.h"

ServerFixture::ServerFixture()
{
    server.setHandler([this](const http::Request& request, const http::Responder& responder) {
        router.handle(request, responder);
    });
}

quint16 ServerFixture::port()
{
    if (m_port == 0) {
        server.setLimits(limits);
        m_port = server.listen();
    }
    return m_port;
}

void ServerFixture::add(const QByteArray& method, const char* pattern, http::Handler handler)
{
    router.add(method, QLatin1String(pattern), std::move(handler));
}

void ServerFixture::answerText(const char* pattern, const QByteArray& text)
{
    add("GET", pattern, [text](const http::Request&, const http::Responder& responder) {
        responder.send(http::Response::text(200, text));
    });
}
