#include "authorizationserver.h"

#include "tavujson.h"

#include <QUrl>

namespace {

AuthorizationServer::Form formOf(const QByteArray& body)
{
    AuthorizationServer::Form form;
    for (const QByteArray& item : body.split('&')) {
        const int equals = item.indexOf('=');
        form.insert(QUrl::fromPercentEncoding(item.left(equals)),
            QUrl::fromPercentEncoding(item.mid(equals + 1)));
    }
    return form;
}

} // namespace

AuthorizationServer::AuthorizationServer()
    : device(json(200, code()))
    , token(error("authorization_pending"))
{
    m_server.setHandler([this](const http::Request& request, const http::Responder& responder) {
        handle(request, responder);
    });
    m_port = m_server.listen();
    Q_ASSERT(m_port > 0);
}

QString AuthorizationServer::url(const char* path) const
{
    return QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(QLatin1String(path));
}

void AuthorizationServer::handle(const http::Request& request, const http::Responder& responder)
{
    const Call call{ formOf(request.body), request.headers, responder };
    const bool isDevice = request.path == QLatin1String("/device");
    (isDevice ? m_deviceCalls : m_tokenCalls).append(call);
    const Script script = isDevice ? device : token;
    script(call);
}

AuthorizationServer::Script AuthorizationServer::json(int status, const QVariantHash& body)
{
    return bytes(status, TavuJson::toJson(body));
}

AuthorizationServer::Script AuthorizationServer::error(const char* code, int status)
{
    return json(status, { { QStringLiteral("error"), QString::fromLatin1(code) } });
}

AuthorizationServer::Script AuthorizationServer::tokens(
    const char* access, const char* refresh, int lifetimeS)
{
    return json(200,
        { { QStringLiteral("access_token"), QString::fromLatin1(access) },
            { QStringLiteral("refresh_token"), QString::fromLatin1(refresh) },
            { QStringLiteral("token_type"), QStringLiteral("bearer") },
            { QStringLiteral("expires_in"), lifetimeS } });
}

AuthorizationServer::Script AuthorizationServer::bytes(int status, const QByteArray& body)
{
    return [=](const Call& call) { call.responder.send(http::Response::json(status, body)); };
}

AuthorizationServer::Script AuthorizationServer::lost()
{
    return [](const Call& call) { call.responder.reset(); };
}

AuthorizationServer::Script AuthorizationServer::silent()
{
    return [](const Call&) {};
}

QVariantHash AuthorizationServer::code()
{
    return { { QStringLiteral("device_code"), QStringLiteral("device-code-1") },
        { QStringLiteral("user_code"), QStringLiteral("BCDF-GHJK") },
        { QStringLiteral("verification_uri"), QStringLiteral("https://example.com/code") },
        { QStringLiteral("verification_uri_complete"),
            QStringLiteral("https://example.com/code?user_code=BCDF-GHJK") },
        { QStringLiteral("expires_in"), 600 }, { QStringLiteral("interval"), 5 } };
}
