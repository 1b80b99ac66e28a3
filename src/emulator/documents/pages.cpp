#include "pages.h"

#include "../catalogue/textfold.h"
#include "links.h"

#include <QStringList>
#include <QUrl>

#include <algorithm>

namespace emulator::documents {

using catalogue::Album;
using catalogue::Artist;
using catalogue::Id;
using catalogue::Kind;
using catalogue::Places;
using catalogue::Playlist;
using catalogue::Station;
using catalogue::Track;

namespace {

const QString pageKey = QStringLiteral("page");

QString keyOf(const char* kind, Id id)
{
    return QLatin1String(kind) + QLatin1Char('-') + catalogue::toText(id);
}

int countOf(const std::vector<int>& places)
{
    return static_cast<int>(places.size());
}

template <typename T>
int countOf(const std::vector<T>& things)
{
    return static_cast<int>(things.size());
}

template <typename T>
const T& at(const std::vector<T>& things, int place)
{
    return things[static_cast<size_t>(place)];
}

TavuAmazonMusicItemDescription item(const QString& label)
{
    TavuAmazonMusicItemDescription described;
    described.setItemLabel(label);
    return described;
}

TavuAmazonMusicArtist artistRecord(const QString& name)
{
    TavuAmazonMusicArtist record;
    record.setName(name);
    return record;
}

QByteArray finish(DocumentBuilder& builder, const QStringList& items, const QString& nextPage)
{
    TavuAmazonMusicNavigationNodeDescription node;
    node.setItems(items);
    if (!nextPage.isEmpty())
        node.setNextPage(nextPage);
    return builder.toJson(builder.addNode(pageKey, node));
}

QString summaryOf(DocumentBuilder& builder, const QString& key, const QString& url)
{
    TavuAmazonMusicNavigationNodeSummary summary;
    summary.setDescription(url);
    return builder.addSummary(key, summary);
}

} // namespace

QString addNote(DocumentBuilder& builder, const QString& key, const QString& label)
{
    return builder.addItem(key, item(label));
}

Pages::Pages(const catalogue::Catalogue& catalogue, const Rules& rules, const MediaUrls& media,
    const Moment& moment)
    : m_catalogue(catalogue)
    , m_rules(rules)
    , m_writer(catalogue, rules, media, moment)
{
}

QByteArray Pages::page(int count, int offset, const AddItem& add) const
{
    DocumentBuilder builder;
    QStringList items;
    const int begin = std::clamp(offset, 0, count);
    const int end = count - begin > m_rules.pageSize ? begin + m_rules.pageSize : count;
    for (int place = begin; place < end; ++place)
        items += add(builder, place);
    return finish(builder, items, end < count ? QStringLiteral("?offset=%1").arg(end) : QString());
}

QString Pages::addFolder(
    DocumentBuilder& builder, const QString& key, const QString& label, const QString& url) const
{
    TavuAmazonMusicItemDescription folder = item(label);
    folder.setImage(m_writer.drawnImage(label));
    folder.setSummary(summaryOf(builder, key, url));
    return builder.addItem(key, folder);
}

QByteArray Pages::root(const QString& notice) const
{
    DocumentBuilder builder;
    QStringList items;
    if (!notice.isEmpty())
        items += addNote(builder, QStringLiteral("notice"), notice);
    const auto section = [&](const char* key, const char* label, const QString& url) {
        items += addFolder(builder, QLatin1String(key), QLatin1String(label), url);
    };
    section("artists", "Artists", links::artists());
    section("albums", "Albums", links::albums());
    section("playlists", "Playlists", links::playlists());
    section("stations", "Stations", links::stations());
    section("tracks", "Tracks", links::tracks());
    section("messages", "Messages", links::messages());
    return finish(builder, items, QString());
}

QByteArray Pages::artists(int offset) const
{
    return page(countOf(m_catalogue.artists), offset, [this](DocumentBuilder& builder, int place) {
        return addArtist(builder, at(m_catalogue.artists, place));
    });
}

QByteArray Pages::albums(int offset) const
{
    return page(countOf(m_catalogue.albums), offset, [this](DocumentBuilder& builder, int place) {
        return addAlbum(builder, at(m_catalogue.albums, place));
    });
}

QByteArray Pages::playlists(int offset) const
{
    return page(
        countOf(m_catalogue.playlists), offset, [this](DocumentBuilder& builder, int place) {
            return addPlaylist(builder, at(m_catalogue.playlists, place));
        });
}

QByteArray Pages::stations(int offset) const
{
    return page(countOf(m_catalogue.stations), offset, [this](DocumentBuilder& builder, int place) {
        return addStation(builder, at(m_catalogue.stations, place));
    });
}

QByteArray Pages::tracks(int offset) const
{
    return page(countOf(m_catalogue.tracks), offset, [this](DocumentBuilder& builder, int place) {
        return addTrack(builder, m_catalogue.trackAt(place));
    });
}

// The artist's station where there is one, then the albums, then the single tracks.
Pages::Document Pages::artist(Id id, int offset) const
{
    const Artist* artist = m_catalogue.artist(id);
    if (!artist)
        return std::nullopt;
    const Station* station = m_catalogue.station(catalogue::makeId(
        QStringLiteral("artist station"), artist->name + QLatin1String(" Station")));
    const int stations = station ? 1 : 0;
    const int albums = countOf(artist->albums);
    const int count = stations + albums + countOf(artist->tracks);
    return page(count, offset, [=](DocumentBuilder& builder, int place) {
        if (place < stations)
            return addStation(builder, *station);
        if (place < stations + albums)
            return addAlbum(builder, at(m_catalogue.albums, at(artist->albums, place - stations)));
        return addTrack(
            builder, m_catalogue.trackAt(at(artist->tracks, place - stations - albums)));
    });
}

Pages::Document Pages::album(Id id, int offset) const
{
    const Album* album = m_catalogue.album(id);
    return album ? container(QStringLiteral("albums"), id, album->tracks, offset) : std::nullopt;
}

Pages::Document Pages::playlist(Id id, int offset) const
{
    const Playlist* playlist = m_catalogue.playlist(id);
    return playlist ? container(QStringLiteral("playlists"), id, playlist->tracks, offset)
                    : std::nullopt;
}

// A track of a container points into the container's chunk, so that the music goes on behind it.
Pages::Document Pages::container(
    const QString& folder, Id id, const Places& places, int offset) const
{
    return page(countOf(places), offset, [&](DocumentBuilder& builder, int place) {
        const Track& track = m_catalogue.trackAt(at(places, place));
        const int first = place / m_rules.containerLimit * m_rules.containerLimit;
        return addTrack(builder, track, keyOf("track", track.id) + QStringLiteral("-%1").arg(place),
            trackPointer(links::chunkFrom(folder, id, first), place - first));
    });
}

QString Pages::addArtist(DocumentBuilder& builder, const Artist& artist) const
{
    return addFolder(builder, keyOf("artist", artist.id), artist.name, links::artist(artist.id));
}

TavuAmazonMusicPlayable Pages::containerPlayable(const QString& folder, Id id) const
{
    TavuAmazonMusicPlayable playable;
    playable.setNaturalTrackPointer(trackPointer(links::chunk(folder, id), 0));
    playable.setShuffleTrackPointer(trackPointer(links::chunk(folder, id), 0));
    playable.setSelfData(links::playable(folder, id));
    return playable;
}

QString Pages::addAlbum(DocumentBuilder& builder, const Album& album) const
{
    const QString key = keyOf("album", album.id);
    TavuAmazonMusicItemDescription folder = item(album.title);
    folder.setArtist(artistRecord(album.artist));
    folder.setImage(m_writer.albumImage(album));
    folder.setSummary(summaryOf(builder, key, links::album(album.id)));
    folder.setPlayable(
        builder.addPlayable(key, containerPlayable(QStringLiteral("albums"), album.id)));
    return builder.addItem(key, folder);
}

QString Pages::addPlaylist(DocumentBuilder& builder, const Playlist& playlist) const
{
    const QString key = keyOf("playlist", playlist.id);
    TavuAmazonMusicItemDescription folder = item(playlist.title);
    folder.setImage(m_writer.drawnImage(playlist.title));
    folder.setSummary(summaryOf(builder, key, links::playlist(playlist.id)));
    folder.setPlayable(
        builder.addPlayable(key, containerPlayable(QStringLiteral("playlists"), playlist.id)));
    return builder.addItem(key, folder);
}

// Every other station starts in the middle of its first chunk, so that something can be stepped
// back to.
TavuAmazonMusicPlayable Pages::stationPlayable(const Station& station) const
{
    const QString folder = QStringLiteral("stations");
    TavuAmazonMusicPlayable playable;
    const int start = station.id % 2 && m_rules.stationChunk > 2 ? 2 : 0;
    playable.setNaturalTrackPointer(trackPointer(links::chunk(folder, station.id), start));
    playable.setSelfData(links::playable(folder, station.id));
    return playable;
}

QString Pages::addStation(DocumentBuilder& builder, const Station& station) const
{
    const QString key = keyOf("station", station.id);
    TavuAmazonMusicItemDescription described = item(station.title);
    described.setImage(m_writer.drawnImage(station.title));
    described.setPlayable(builder.addPlayable(key, stationPlayable(station)));
    return builder.addItem(key, described);
}

QString Pages::addTrack(DocumentBuilder& builder, const Track& track, const QString& key,
    const TavuAmazonMusicTrackPointer& pointer) const
{
    const QString definitionKey = keyOf("definition", track.id);
    TavuAmazonMusicPlayable playable;
    playable.setTrackDefinition(builder.addDefinition(definitionKey, m_writer.definition(track)));
    playable.setNaturalTrackPointer(pointer);
    playable.setShuffleTrackPointer(pointer);
    playable.setSelfData(links::playable(QStringLiteral("tracks"), track.id));
    TavuAmazonMusicItemDescription described = item(track.title);
    described.setArtist(artistRecord(track.artist));
    described.setImage(m_writer.albumImage(m_catalogue.albumOf(track)));
    described.setPlayable(builder.addPlayable(key, playable));
    return builder.addItem(key, described);
}

QString Pages::addTrack(DocumentBuilder& builder, const Track& track) const
{
    return addTrack(builder, track, keyOf("track", track.id),
        trackPointer(links::chunk(QStringLiteral("tracks"), track.id), 0));
}

QString Pages::addHit(DocumentBuilder& builder, Kind kind, int place) const
{
    switch (kind) {
    case Kind::Artist:
        return addArtist(builder, at(m_catalogue.artists, place));
    case Kind::Album:
        return addAlbum(builder, at(m_catalogue.albums, place));
    case Kind::Station:
        return addStation(builder, at(m_catalogue.stations, place));
    case Kind::Track:
        return addTrack(builder, m_catalogue.trackAt(place));
    }
    return {};
}

// The cursor names the index that is being gone through and the place in it, so that a later page
// costs no more than the first.
QByteArray Pages::search(const QString& keywords, const QString& cursor) const
{
    const QStringList prefixes = catalogue::words(keywords);
    const QStringList position = cursor.split(QLatin1Char('.'));
    auto index = static_cast<size_t>(std::max(0, position.value(0).toInt()));
    int from = std::max(0, position.value(1).toInt());
    DocumentBuilder builder;
    QStringList items;
    for (; index < m_catalogue.searchIndexes.size(); ++index, from = 0) {
        const auto hits =
            m_catalogue.searchIndexes[index].find(prefixes, from, m_rules.pageSize - items.size());
        for (const int place : hits.things)
            items += addHit(builder, catalogue::searchOrder[index], place);
        if (hits.next >= 0)
            return finish(builder, items,
                QStringLiteral("?keywords=%1&cursor=%2.%3")
                    .arg(QString::fromLatin1(QUrl::toPercentEncoding(keywords)))
                    .arg(index)
                    .arg(hits.next));
    }
    if (items.isEmpty())
        items += addNote(builder, QStringLiteral("nothing"),
            QStringLiteral("Nothing was found for \"%1\".").arg(keywords));
    return finish(builder, items, QString());
}

Pages::Document Pages::playable(const QString& folder, Id id) const
{
    DocumentBuilder builder;
    const QString key = QStringLiteral("playable");
    if (folder == QLatin1String("albums") && m_catalogue.album(id))
        return builder.toJson(builder.addPlayable(key, containerPlayable(folder, id)));
    if (folder == QLatin1String("playlists") && m_catalogue.playlist(id))
        return builder.toJson(builder.addPlayable(key, containerPlayable(folder, id)));
    if (const Station* station =
            folder == QLatin1String("stations") ? m_catalogue.station(id) : nullptr)
        return builder.toJson(builder.addPlayable(key, stationPlayable(*station)));
    if (const Track* track = folder == QLatin1String("tracks") ? m_catalogue.track(id) : nullptr) {
        addTrack(builder, *track, key, trackPointer(links::chunk(folder, id), 0));
        return builder.toJson(QLatin1Char('#') + key);
    }
    return std::nullopt;
}

} // namespace emulator::documents
