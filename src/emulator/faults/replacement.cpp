#include "replacement.h"

#include "../documents/errorreports.h"
#include "gzip.h"
#include "tavujson.h"

#include <QRandomGenerator>

namespace emulator::faults {

using http::Response;

namespace {

Response withType(const Effect& effect, int status, const QByteArray& body)
{
    Response response;
    response.status = static_cast<int>(effect.number("status", status));
    response.headers.append("Content-Type", effect.text("type", "application/json").toUtf8());
    response.body = body;
    return response;
}

QByteArray longText(const QByteArray& text, qint64 bytes)
{
    return bytes > text.size() ? text + QByteArray(static_cast<int>(bytes - text.size()), 'x')
                               : text;
}

Response status(const Effect& effect)
{
    Response response = withType(effect, 503, effect.text("body", "{}").toUtf8());
    if (effect.has("retryAfter"))
        response.headers.append("Retry-After", effect.text("retryAfter").toUtf8());
    if (effect.has("location"))
        response.headers.append("Location", effect.text("location").toUtf8());
    return response;
}

Response unauthorized(const Effect& effect)
{
    Response response = Response::json(
        static_cast<int>(effect.number("status", 401)), R"({"error":"invalid_token"})");
    response.headers.append("WWW-Authenticate", R"(Bearer error="invalid_token")");
    return response;
}

QVariantList optionsOf(const Effect& effect, const QString& serviceBase)
{
    if (effect.has("options"))
        return effect.value("options").toList();
    if (!effect.has("label"))
        return { documents::postOption(QStringLiteral("Go on"),
                     serviceBase + QLatin1String("/selections/go-on"), true)
                     .__variant(),
            documents::closeOption(QStringLiteral("Stop")).__variant() };
    documents::ErrorOption option;
    option.setLabel(effect.text("label"));
    option.setAction(effect.text("action", "close"));
    option.setUri(
        QString::fromUtf8(longText(effect.text("uri").toUtf8(), effect.number("uriBytes", 0))));
    option.setResume(effect.isOn("resume", false));
    return { option.__variant() };
}

Response conflict(const Effect& effect, const QString& serviceBase)
{
    if (!effect.isOn("report", true))
        return Response::json(409, R"({"result":"#error"})");
    const QVariantList once = optionsOf(effect, serviceBase);
    QVariantList options = once;
    const qint64 count = effect.number("count", once.size());
    for (int i = 0; options.size() < count && !once.isEmpty(); ++i)
        options += once.at(i % once.size());
    const auto report = documents::errorReport(effect.text("brief", "The service asks you to wait"),
        effect.text("terse"),
        effect.text("explanation", "This answer was injected by the fault dial."), options);
    return Response::json(409, documents::errorDocument(report));
}

Response redirect(const Effect& effect, const QString& serviceBase, const QByteArray& target)
{
    QByteArray location = serviceBase.toUtf8() + target;
    if (effect.has("toHost"))
        location = serviceBase.section(QLatin1String("//"), 0, 0).toUtf8() + "//"
            + effect.text("toHost").toUtf8() + target;
    if (effect.has("location"))
        location = effect.text("location").toUtf8();
    location = longText(location, effect.number("locationBytes", 0));
    Response response = Response::json(static_cast<int>(effect.number("status", 302)), "{}");
    if (!effect.isOn("noLocation", false))
        response.headers.append("Location", location);
    return response;
}

Response oauthError(const Effect& effect)
{
    QVariantHash body{ { QStringLiteral("error"), effect.text("error", "slow_down") } };
    if (effect.has("description"))
        body.insert(QStringLiteral("error_description"), effect.text("description"));
    return Response::json(static_cast<int>(effect.number("status", 400)), TavuJson::toJson(body));
}

Response gzipBomb(const Effect& effect)
{
    Response response = Response::json(200, gzipOfBlanks(effect.number("megabytes", 200)));
    response.headers.append("Content-Encoding", "gzip");
    return response;
}

Response nesting(const Effect& effect)
{
    const auto depth = static_cast<int>(effect.number("depth", 100000));
    return Response::json(200, QByteArray(depth, '[') + QByteArray(depth, ']'));
}

// Noise that is the same each time, so that a test can be repeated.
QByteArray noise(qint64 bytes)
{
    QRandomGenerator random(1);
    QByteArray made;
    while (made.size() < bytes)
        made += static_cast<char>(random.bounded(256));
    return made;
}

Response fixedBody(const Effect& effect)
{
    if (effect.has("noise"))
        return withType(effect, 200, noise(effect.number("noise", 0)));
    const QByteArray bytes = effect.has("base64")
        ? QByteArray::fromBase64(effect.text("base64").toLatin1())
        : effect.text("text").toUtf8();
    return withType(effect, 200, bytes);
}

} // namespace

Response replacement(const Effect& effect, const QString& serviceBase, const QByteArray& target)
{
    const auto is = [&effect](const char* kind) { return effect.kind == QLatin1String(kind); };
    if (is("unauthorized"))
        return unauthorized(effect);
    if (is("conflict"))
        return conflict(effect, serviceBase);
    if (is("redirect"))
        return redirect(effect, serviceBase, target);
    if (is("body"))
        return fixedBody(effect);
    if (is("oauth-error"))
        return oauthError(effect);
    if (is("rating"))
        return Response::json(200,
            documents::ratingDocument(
                effect.text("message", "Thanks."), effect.isOn("shouldSkip", true)));
    if (is("gzip-bomb"))
        return gzipBomb(effect);
    if (is("nesting"))
        return nesting(effect);
    return status(effect);
}

} // namespace emulator::faults
