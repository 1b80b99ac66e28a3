#include "streamrequest.h"

#include "tavuvariant.h"
#include "urlparts.h"

#include <algorithm>

namespace player {

namespace {

bool isTokenCharacter(char c)
{
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return letter || (c >= '0' && c <= '9')
        || (c != '\0' && strchr("!#$%&'*+-.^_`|~", c) != nullptr);
}

QList<QByteArray> keyHeaders(const TavuResource& resource)
{
    QList<QByteArray> lines;
    const QVariantHash services = resource.cryptoData();
    for (const QVariant& service : services) {
        const QVariantHash crypto = tavuvariant::toHash(service);
        const QStringList texts = tavuvariant::toTexts(crypto.value(QStringLiteral("key-headers")));
        for (const QString& text : texts)
            lines.append(text.toUtf8());
    }
    return lines;
}

} // namespace

bool isSafeHeader(const QByteArray& line)
{
    const int colon = line.indexOf(':');
    if (colon < 1 || !std::all_of(line.begin(), line.begin() + colon, isTokenCharacter))
        return false;
    // RFC 9110, section 5.5: no control characters but the tab.
    return std::all_of(line.begin() + colon, line.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (byte >= ' ' && byte != 0x7f) || c == '\t';
    });
}

StreamRequest StreamRequest::fromRoles(const TavuRoles& roles, StreamFailure& failure)
{
    const TavuResource resource = roles.mediaData().firstResource();
    StreamRequest request;
    request.url = resource.uri().toUtf8();
    request.keyHeaders = player::keyHeaders(resource);
    request.durationMs = std::max<qint64>(0, resource.duration());
    const UrlParts url = UrlParts::of(request.url);
    request.host = QString::fromUtf8(url.host);
    failure.host = request.host;
    if (!url.isValid())
        failure.kind = StreamFailure::BadAddress;
    else if (!std::all_of(request.keyHeaders.begin(), request.keyHeaders.end(), isSafeHeader))
        failure.kind = StreamFailure::BadKeyHeaders;
    return request;
}

QString renewedAttribute()
{
    return QStringLiteral("player.renewed");
}

QString itemTitle(const TavuRoles& roles)
{
    return roles.title().isEmpty() ? roles.mediaData().metaData().track() : roles.title();
}

} // namespace player
