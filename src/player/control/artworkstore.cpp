#include "artworkstore.h"

#include "problem.h"

#include <QCryptographicHash>
#include <QPointer>

namespace control {

namespace {

constexpr int urlsAtMost = 4096;
constexpr int pictureBytesAtMost = 8 * 1024 * 1024;

} // namespace

ArtworkStore::ArtworkStore(ArtworkFetch fetch, QObject* parent)
    : QObject(parent)
    , m_fetch(std::move(fetch))
    , m_urls(urlsAtMost)
    , m_pictures(pictureBytesAtMost)
{
}

QString ArtworkStore::addressOf(const QString& icon)
{
    if (icon.startsWith(QLatin1String("skin:")))
        return icon;
    const bool onTheWeb = icon.startsWith(QLatin1String("https://"), Qt::CaseInsensitive)
        || icon.startsWith(QLatin1String("http://"), Qt::CaseInsensitive);
    if (!onTheWeb)
        return {};
    const QByteArray digest = QCryptographicHash::hash(icon.toUtf8(), QCryptographicHash::Sha1);
    const QString id = QString::fromLatin1(digest.left(10).toHex());
    // Looking an address up keeps it from being dropped first.
    if (!m_urls.object(id))
        m_urls.insert(id, new QString(icon));
    return QStringLiteral("/api/v1/artwork/") + id;
}

namespace {

/// Pictures come from elsewhere but are served under the player's own address, where a browser must
/// not take them for a page. An id stands for one address for good.
http::ContentInfo contentInfo(const QString& id, const Artwork& artwork)
{
    http::ContentInfo info;
    info.contentType = artwork.contentType;
    info.etag = '"' + id.toLatin1() + '"';
    info.headers = { { "Cache-Control", "private, max-age=604800" },
        { "Content-Security-Policy", "default-src 'none'; sandbox" },
        { "X-Content-Type-Options", "nosniff" } };
    return info;
}

} // namespace

void ArtworkStore::serve(const QString& id, const http::Responder& responder)
{
    if (const Artwork* known = m_pictures.object(id)) {
        responder.sendBytes(known->bytes, contentInfo(id, *known));
        return;
    }
    const QString* url = m_urls.object(id);
    if (!url || !m_fetch) {
        responder.send(problem(404, QStringLiteral("This picture is no longer known.")));
        return;
    }
    m_waiting[id] += responder;
    if (m_waiting.value(id).size() > 1)
        return;
    const QPointer<ArtworkStore> self(this);
    m_fetch(*url, [self, id](const Artwork& artwork) {
        if (self)
            self->fetched(id, artwork);
    });
}

void ArtworkStore::fetched(const QString& id, const Artwork& artwork)
{
    const bool good = artwork.code == 200 && artwork.contentType.startsWith("image/");
    for (const http::Responder& responder : m_waiting.take(id)) {
        if (good)
            responder.sendBytes(artwork.bytes, contentInfo(id, artwork));
        else
            responder.send(problem(502, QStringLiteral("The picture could not be fetched.")));
    }
    if (good)
        m_pictures.insert(id, new Artwork(artwork), qMax(1, artwork.bytes.size()));
}

} // namespace control
