#pragma once

#include "wordindex.h"

#include <QHash>
#include <QString>

#include <array>
#include <memory>
#include <vector>

namespace emulator::catalogue {

/// Names a thing of the catalogue for good: made from paths and names, not from positions, so that
/// it stays the same over restarts and further scans.
using Id = quint64;

/// Positions in the catalogue's vectors.
using Places = std::vector<int>;

/// The text form of an id, as it stands in URLs, and back; 0 for what is none.
QString toText(Id id);
Id idFromText(const QString& text);

/// Hash of a name for an id; `kind` keeps an album and an artist of the same name apart.
Id makeId(const QString& kind, const QString& name);

struct Track
{
    Id id = 0;
    QString path; ///< relative to the library's root
    QString title;
    QString artist;
    QString genre;
    int number = 0;
    int disc = 0;
    int year = 0;
    qint64 durationMs = 0;
    int album = 0; ///< place in the albums
    int placeInAlbum = 0; ///< from 0
    bool picture = false;
};

struct Album
{
    Id id = 0;
    QString title;
    QString artist;
    int year = 0;
    Places tracks; ///< by disc and number
    QString picture; ///< a picture file, or a music file with a picture inside; empty: none
};

struct Artist
{
    Id id = 0;
    QString name;
    Places albums; ///< by year
    Places tracks;
};

struct Playlist
{
    Id id = 0;
    QString title;
    Places tracks;
};

/// A pool of tracks that is played without end in ever new orders.
struct Station
{
    Id id = 0;
    QString title;
    Places tracks;
};

/// What of the catalogue a search may find, in the order of its results.
enum class Kind { Artist, Album, Station, Track };
constexpr std::array<Kind, 4> searchOrder{ Kind::Artist, Kind::Album, Kind::Station, Kind::Track };

/// Everything that the service can serve, sorted for display and indexed. Never changed once built,
/// so that threads may share it; a further scan builds another.
class Catalogue
{
public:
    std::vector<Track> tracks;
    std::vector<Album> albums;
    std::vector<Artist> artists;
    std::vector<Playlist> playlists;
    std::vector<Station> stations;
    QHash<Id, int> trackPlaces;
    QHash<Id, int> albumPlaces;
    QHash<Id, int> artistPlaces;
    QHash<Id, int> playlistPlaces;
    QHash<Id, int> stationPlaces;
    std::array<WordIndex, searchOrder.size()> searchIndexes; ///< in searchOrder
    int revision = 0; ///< grows with each catalogue of a run

    /// The thing of the id; null when the catalogue does not hold it.
    const Track* track(Id id) const { return find(tracks, trackPlaces, id); }
    const Album* album(Id id) const { return find(albums, albumPlaces, id); }
    const Artist* artist(Id id) const { return find(artists, artistPlaces, id); }
    const Playlist* playlist(Id id) const { return find(playlists, playlistPlaces, id); }
    const Station* station(Id id) const { return find(stations, stationPlaces, id); }

    const Album& albumOf(const Track& track) const
    {
        return albums[static_cast<size_t>(track.album)];
    }
    const Track& trackAt(int place) const { return tracks[static_cast<size_t>(place)]; }

private:
    template <typename T>
    static const T* find(const std::vector<T>& things, const QHash<Id, int>& places, Id id)
    {
        const auto found = places.constFind(id);
        return found == places.constEnd() ? nullptr : &things[static_cast<size_t>(*found)];
    }
};

using CataloguePointer = std::shared_ptr<const Catalogue>;

} // namespace emulator::catalogue
