#include "describe.h"

#include "../documents/mediaurls.h"
#include "../oauth2/authority.h"
#include "tavujson.h"

namespace emulator {

namespace {

void put(QVariantHash& details, const char* name, const QString& value)
{
    if (!value.isEmpty())
        details.insert(QLatin1String(name), value);
}

void putHeader(
    QVariantHash& details, const char* name, const http::Request& request, const char* header)
{
    put(details, name, QString::fromUtf8(request.headers.value(header)));
}

// A body that is not JSON is told as its size; what it holds may be anything.
void putBody(QVariantHash& details, const char* name, const QByteArray& body)
{
    const QVariant json = TavuJson::parse(body);
    details.insert(QLatin1String(name),
        json.isValid() ? json : QVariant(QStringLiteral("%1 bytes").arg(body.size())));
}

void describeSound(QVariantHash& details, const http::Request& request)
{
    putHeader(details, "range", request, "range");
    const auto has = [&request](
                         const QString& name) { return request.headers.contains(name.toLatin1()); };
    const bool keyed =
        has(documents::MediaUrls::keyIdName()) || has(documents::MediaUrls::keyName());
    details.insert(QStringLiteral("keyHeaders"), keyed);
}

void describeLogin(QVariantHash& details, const http::Request& request)
{
    const oauth2::Form form = oauth2::parseForm(request.body);
    put(details, "grantType", form.value(QStringLiteral("grant_type")));
    put(details, "client", oauth2::clientOf(request.headers.value("authorization"), form).id);
    put(details, "scope", form.value(QStringLiteral("scope")));
    details.insert(QStringLiteral("pkce"),
        form.contains(QStringLiteral("code_challenge"))
            || form.contains(QStringLiteral("code_verifier")));
}

bool carriesBearer(const http::Request& request)
{
    return request.headers.value("authorization").toLower().startsWith("bearer ");
}

} // namespace

QVariantHash describeRequest(const http::Request& request, const QString& kind)
{
    QVariantHash details;
    details.insert(QStringLiteral("bearerSent"), carriesBearer(request));
    put(details, "in", request.queryValue(QStringLiteral("in")));
    putHeader(details, "drmType", request, "x-amzn-audio-drmtype");
    putHeader(details, "deviceCapability", request, "x-amzn-audio-device-capability");
    if (kind == QLatin1String("report") || kind == QLatin1String("rating"))
        putBody(details, kind == QLatin1String("report") ? "report" : "rating", request.body);
    else if (kind == QLatin1String("audio"))
        describeSound(details, request);
    else if (kind == QLatin1String("login") || kind == QLatin1String("token"))
        describeLogin(details, request);
    return details;
}

} // namespace emulator
