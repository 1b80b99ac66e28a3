#include "streamrequest.h"

#include "tavuvariant.h"
#include "urlpolicy.h"

#include <algorithm>

namespace player {

namespace {

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

bool isSendable(const QByteArray& line)
{
    const int colon = line.indexOf(':');
    return colon > 0 && httpclient::isSendable({ line.left(colon), line.mid(colon + 1) });
}

} // namespace

StreamRequest StreamRequest::fromRoles(const TavuRoles& roles, StreamFailure& failure)
{
    const TavuResource resource = roles.mediaData().firstResource();
    StreamRequest request;
    const TavuUrl url(resource.uri());
    request.url = httpclient::target(url);
    request.keyHeaders = player::keyHeaders(resource);
    request.durationMs = std::max<qint64>(0, resource.duration());
    request.host = url.host();
    failure.host = request.host;
    if (request.url.isEmpty())
        failure.kind = StreamFailure::BadAddress;
    else if (!std::all_of(request.keyHeaders.begin(), request.keyHeaders.end(), isSendable))
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
