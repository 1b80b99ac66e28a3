#include "links.h"

#include <QUrl>

namespace emulator::documents::links {

namespace {

QString encoded(const QString& text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

QString join(const char* head, Id id, const char* tail)
{
    return QLatin1String(head) + catalogue::toText(id) + QLatin1String(tail);
}

QString withContext(const char* head, Id track, const QString& context)
{
    return join(head, track, "?in=") + encoded(context);
}

} // namespace

QString artists()
{
    return QStringLiteral("/artists/");
}

QString artist(Id id)
{
    return join("/artists/", id, "/");
}

QString albums()
{
    return QStringLiteral("/albums/");
}

QString album(Id id)
{
    return join("/albums/", id, "/");
}

QString playlists()
{
    return QStringLiteral("/playlists/");
}

QString playlist(Id id)
{
    return join("/playlists/", id, "/");
}

QString stations()
{
    return QStringLiteral("/stations/");
}

QString tracks()
{
    return QStringLiteral("/tracks/");
}

QString messages()
{
    return QStringLiteral("/messages/");
}

QString playable(const QString& folder, Id id)
{
    return QLatin1String("/playables/") + folder + join("/", id, "#playable");
}

QString chunk(const QString& folder, Id id)
{
    return QLatin1String("/chunks/") + folder + join("/", id, "");
}

QString chunkFrom(const QString& folder, Id id, int place)
{
    return place > 0 ? chunk(folder, id) + QStringLiteral("?from=%1").arg(place)
                     : chunk(folder, id);
}

QString stationChunk(Id id, quint64 session, int position)
{
    return chunk(QStringLiteral("stations"), id)
        + QStringLiteral("?session=%1&at=%2").arg(catalogue::toText(session)).arg(position);
}

QString instance(Id track, const QString& context)
{
    return withContext("/instances/", track, context);
}

QString events(Id track, const QString& context)
{
    return withContext("/events/", track, context);
}

QString rating(Id track)
{
    return join("/ratings/", track, "");
}

QString artwork(Id album)
{
    return join("/artwork/albums/", album, "");
}

QString drawnArtwork(const QString& name)
{
    return QLatin1String("/artwork/drawn/") + encoded(name);
}

} // namespace emulator::documents::links
