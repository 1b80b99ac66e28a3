#include "chunks.h"

#include "links.h"
#include "stationorder.h"

#include <algorithm>

namespace emulator::documents {

using catalogue::Id;
using catalogue::Places;
using catalogue::Track;

namespace {

// The plug-in looks for this key in a chunk document whose URL has no fragment.
const QString chunkKey = QStringLiteral("chunk");

QString contextOf(const QString& folder, Id id)
{
    return folder + QLatin1Char('-') + catalogue::toText(id);
}

// Every third chunk repeats the last tracks of the one before; the pointer to it then leads into
// its middle.
int overlapAt(int position, int chunkSize)
{
    return position / chunkSize % 3 == 2 ? std::min(3, chunkSize - 1) : 0;
}

} // namespace

Chunks::Chunks(const catalogue::Catalogue& catalogue, const Rules& rules, const MediaUrls& media,
    const Moment& moment)
    : m_catalogue(catalogue)
    , m_rules(rules)
    , m_writer(catalogue, rules, media, moment)
{
}

QStringList Chunks::addTracks(DocumentBuilder& builder, const QString& context, int first,
    int count, const std::function<int(int)>& placeOf) const
{
    QStringList instances;
    for (int place = first; place < first + count; ++place) {
        const Track& track = m_catalogue.trackAt(placeOf(place));
        const QString definition = QLatin1String("definition-") + catalogue::toText(track.id);
        if (!builder.hasDefinition(definition))
            builder.addDefinition(definition, m_writer.playableDefinition(track));
        instances += builder.addInstance(QStringLiteral("instance-%1").arg(place),
            m_writer.instance(
                track, context + QStringLiteral("-%1").arg(place), QLatin1Char('#') + definition));
    }
    return instances;
}

Chunks::Document Chunks::album(Id id, int from) const
{
    const catalogue::Album* album = m_catalogue.album(id);
    return album ? container(QStringLiteral("albums"), id, album->tracks, from) : std::nullopt;
}

Chunks::Document Chunks::playlist(Id id, int from) const
{
    const catalogue::Playlist* playlist = m_catalogue.playlist(id);
    return playlist ? container(QStringLiteral("playlists"), id, playlist->tracks, from)
                    : std::nullopt;
}

Chunks::Document Chunks::container(
    const QString& folder, Id id, const Places& places, int from) const
{
    const int size = static_cast<int>(places.size());
    const int limit = m_rules.containerLimit;
    const int first = std::clamp(from, 0, size - 1);
    const int count = std::min(limit, size - first);
    const int lastFirst = (size - 1) / limit * limit;
    DocumentBuilder builder;
    TavuAmazonMusicTrackContainerChunkDescription chunk;
    chunk.setTrackInstances(addTracks(builder, contextOf(folder, id), first, count,
        [&places](int place) { return places[static_cast<size_t>(place)]; }));
    chunk.setFirstTrackPointer(trackPointer(links::chunk(folder, id), 0));
    chunk.setLastTrackPointer(
        trackPointer(links::chunkFrom(folder, id, lastFirst), size - 1 - lastFirst));
    if (first + count < size)
        chunk.setNextTrackPointer(trackPointer(links::chunkFrom(folder, id, first + count), 0));
    if (first >= limit)
        chunk.setPrevTrackPointer(
            trackPointer(links::chunkFrom(folder, id, first - limit), limit - 1));
    return builder.toJson(builder.addChunk(chunkKey, chunk));
}

Chunks::Document Chunks::track(Id id) const
{
    const auto place = m_catalogue.trackPlaces.constFind(id);
    if (place == m_catalogue.trackPlaces.constEnd())
        return std::nullopt;
    return container(QStringLiteral("tracks"), id, { *place }, 0);
}

Chunks::Document Chunks::station(Id id, quint64 session, int position) const
{
    const catalogue::Station* station = m_catalogue.station(id);
    const int end = m_rules.stationLength > 0 ? m_rules.stationLength : 0x7ffffff;
    if (!station || position < 0 || position >= end)
        return std::nullopt;
    const int poolSize = static_cast<int>(station->tracks.size());
    const int count = std::min(m_rules.stationChunk, end - position);
    DocumentBuilder builder;
    TavuAmazonMusicTrackContainerChunkDescription chunk;
    chunk.setTrackInstances(addTracks(
        builder, contextOf(QStringLiteral("stations"), id), position, count, [&](int each) {
            return station->tracks[static_cast<size_t>(stationPlace(session, poolSize, each))];
        }));
    chunk.setFirstTrackPointer(trackPointer(links::stationChunk(id, session, 0), 0));
    if (position + count < end) {
        const int next = position + count;
        const int overlap = overlapAt(next, m_rules.stationChunk);
        chunk.setNextTrackPointer(
            trackPointer(links::stationChunk(id, session, next - overlap), overlap));
    }
    if (position > 0) {
        const int previous = std::max(0, position - m_rules.stationChunk);
        chunk.setPrevTrackPointer(
            trackPointer(links::stationChunk(id, session, previous), position - previous - 1));
    }
    return builder.toJson(builder.addChunk(chunkKey, chunk));
}

Chunks::Document Chunks::instance(Id id, const QString& context) const
{
    const Track* track = m_catalogue.track(id);
    if (!track)
        return std::nullopt;
    DocumentBuilder builder;
    const QString definition =
        builder.addDefinition(QStringLiteral("definition"), m_writer.playableDefinition(*track));
    return builder.toJson(builder.addInstance(
        QStringLiteral("instance"), m_writer.instance(*track, context, definition)));
}

} // namespace emulator::documents
