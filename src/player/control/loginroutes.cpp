#include "loginroutes.h"

#include "problem.h"
#include "qrcode.h"
#include "requestbody.h"

namespace control {

namespace {

QString codeAddress(const QVariantHash& login)
{
    const QString complete = login.value(QStringLiteral("verificationUriComplete")).toString();
    return complete.isEmpty() ? login.value(QStringLiteral("verificationUri")).toString()
                              : complete;
}

void sendCode(const ApiContext& api, const http::Responder& responder)
{
    const QByteArray picture = qrSvg(codeAddress(api.player.login()));
    if (picture.isEmpty())
        return responder.send(problem(404, QStringLiteral("There is no code to show.")));
    responder.send({ 200,
        { { "Content-Type", "image/svg+xml" }, { "Cache-Control", "no-store" },
            { "Content-Security-Policy", "default-src 'none'; sandbox" },
            { "X-Content-Type-Options", "nosniff" } },
        picture });
}

} // namespace

void addLoginRoutes(http::Router& router, const ApiContext& api)
{
    router.add("GET", QStringLiteral("/api/v1/login"),
        [&api](const http::Request&, const http::Responder& responder) {
            responder.send(json(api.player.login()));
        });
    router.add("GET", QStringLiteral("/api/v1/login/qr.svg"),
        [&api](
            const http::Request&, const http::Responder& responder) { sendCode(api, responder); });
    router.add("POST", QStringLiteral("/api/v1/login/start"),
        withBody([&api](const RequestBody&, const http::Responder& responder) {
            api.player.startLogin();
            responder.send(json(api.player.login()));
        }));
    router.add("POST", QStringLiteral("/api/v1/logout"),
        withBody([&api](const RequestBody&, const http::Responder& responder) {
            api.player.logout();
            responder.send(json(api.player.login()));
        }));
}

} // namespace control
