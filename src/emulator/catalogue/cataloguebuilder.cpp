#include "cataloguebuilder.h"

#include "textfold.h"

#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>

#include <algorithm>
#include <numeric>

namespace emulator::catalogue {

namespace {

const QString unknownArtist = QStringLiteral("Unknown artist");
const QString unknownAlbum = QStringLiteral("Unknown album");
const QString variousArtists = QStringLiteral("Various artists");

QString lastComponent(const QString& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

// "CD1", "cd 2", "Disc Three", but neither "Discovery" nor "CD of the year".
bool isDiscFolder(const QString& name)
{
    static const QRegularExpression disc(QStringLiteral("^(?:cd|dis[ck])(?:[0-9]*| [^ ]+)$"));
    return disc.match(words(name).join(QLatin1Char(' '))).hasMatch();
}

// The folder that stands for the album: the one above "CD 1", "Disc 2" and their like.
QString albumFolder(const QString& path)
{
    const QString folder = folderOf(path);
    return isDiscFolder(lastComponent(folder)) ? folderOf(folder) : folder;
}

// "03 - Title.flac" and "03. Title.flac" mean "Title".
QString titleFromName(const QString& path)
{
    const QString base = QFileInfo(path).completeBaseName();
    int start = 0;
    while (start < base.size() && base.at(start).isDigit())
        ++start;
    if (start > 0) {
        while (start < base.size() && !base.at(start).isLetterOrNumber())
            ++start;
    }
    return start == base.size() ? base : base.mid(start);
}

QString orElse(const QString& text, const QString& other)
{
    return text.isEmpty() ? other : text;
}

class Builder
{
public:
    Builder(const ScanResult& scan, Catalogue& catalogue)
        : m_scan(scan)
        , m_catalogue(catalogue)
    {
    }

    void build()
    {
        addTracks();
        addAlbums();
        addArtists();
        addPlaylists();
        addStations();
        index();
    }

private:
    std::vector<Track>& tracks() { return m_catalogue.tracks; }
    Track& track(int place) { return m_catalogue.tracks[static_cast<size_t>(place)]; }
    Album& album(int place) { return m_catalogue.albums[static_cast<size_t>(place)]; }

    // Sorts things by a key that is computed once for each.
    template <typename T, typename Key>
    static void sortBy(std::vector<T>& things, Key key)
    {
        std::vector<std::pair<QString, size_t>> order;
        order.reserve(things.size());
        for (size_t i = 0; i < things.size(); ++i)
            order.emplace_back(key(things[i]), i);
        std::sort(order.begin(), order.end());
        std::vector<T> sorted;
        sorted.reserve(things.size());
        for (const auto& entry : order)
            sorted.push_back(std::move(things[entry.second]));
        things = std::move(sorted);
    }

    template <typename T>
    static QHash<Id, int> placesOf(const std::vector<T>& things)
    {
        QHash<Id, int> places;
        places.reserve(static_cast<int>(things.size()));
        for (size_t i = 0; i < things.size(); ++i)
            places.insert(things[i].id, static_cast<int>(i));
        return places;
    }

    void addTracks();
    void addAlbums();
    void fillAlbum(Album& album);
    QString albumPicture(const Album& album) const;
    QString albumArtist(const Album& album) const;
    void addArtists();
    void addPlaylists();
    void addFolders();
    void addStations();
    void addStation(const QString& kind, const QString& title, const Places& pool);
    void index();

    const ScanResult& m_scan;
    Catalogue& m_catalogue;
    QHash<QString, int> m_placeOfPath;
    std::vector<const MusicFile*> m_files; ///< beside the tracks
};

void Builder::addTracks()
{
    std::vector<const MusicFile*> files;
    files.reserve(m_scan.files.size());
    for (const MusicFile& file : m_scan.files) {
        if (file.problem.isEmpty())
            files.push_back(&file);
    }
    sortBy(files, [](const MusicFile* file) {
        return sortKey(orElse(file->tags.title, titleFromName(file->path))) + QChar(0) + file->path;
    });
    tracks().reserve(files.size());
    for (const MusicFile* file : files) {
        const Tags& tags = file->tags;
        Track added;
        added.id = makeId(QStringLiteral("track"), file->path);
        added.path = file->path;
        added.title = orElse(tags.title, titleFromName(file->path));
        added.artist = orElse(tags.artist, orElse(tags.albumArtist, unknownArtist));
        added.genre = tags.genre;
        added.number = tags.number;
        added.disc = tags.disc;
        added.year = tags.year;
        added.durationMs = tags.durationMs;
        added.picture = tags.picture;
        m_placeOfPath.insert(file->path, static_cast<int>(tracks().size()));
        tracks().push_back(std::move(added));
    }
    m_files = std::move(files);
}

// Tracks are of one album when its title is the same, and the album's artist, or without one the
// folder: compilations seldom name an artist, and "Greatest Hits" exists more than once.
void Builder::addAlbums()
{
    QHash<QString, int> known;
    for (size_t i = 0; i < m_files.size(); ++i) {
        const MusicFile& file = *m_files[i];
        const QString folder = albumFolder(file.path);
        const QString title = orElse(file.tags.album, orElse(lastComponent(folder), unknownAlbum));
        const QString owner = file.tags.albumArtist.isEmpty() ? QLatin1Char('/') + folder
                                                              : fold(file.tags.albumArtist);
        const QString key = fold(title) + QChar(0) + owner;
        auto found = known.find(key);
        if (found == known.end()) {
            found = known.insert(key, static_cast<int>(m_catalogue.albums.size()));
            Album added;
            added.id = makeId(QStringLiteral("album"), key);
            added.title = title;
            added.artist = file.tags.albumArtist;
            m_catalogue.albums.push_back(std::move(added));
        }
        if (!file.tags.album.isEmpty() && album(*found).title == lastComponent(folder))
            album(*found).title = file.tags.album; // Tags spell it better than folders.
        album(*found).tracks.push_back(static_cast<int>(i));
    }
    for (Album& added : m_catalogue.albums)
        fillAlbum(added);
    sortBy(m_catalogue.albums, [](const Album& each) {
        return sortKey(each.title) + QChar(0) + sortKey(each.artist) + toText(each.id);
    });
    for (size_t i = 0; i < m_catalogue.albums.size(); ++i) {
        for (const int place : m_catalogue.albums[i].tracks)
            track(place).album = static_cast<int>(i);
    }
}

void Builder::fillAlbum(Album& album)
{
    std::sort(album.tracks.begin(), album.tracks.end(), [this](int a, int b) {
        const Track& one = track(a);
        const Track& other = track(b);
        return std::tie(one.disc, one.number, one.path)
            < std::tie(other.disc, other.number, other.path);
    });
    for (size_t i = 0; i < album.tracks.size(); ++i) {
        track(album.tracks[i]).placeInAlbum = static_cast<int>(i);
        album.year = std::max(album.year, track(album.tracks[i]).year);
    }
    album.artist = albumArtist(album);
    album.picture = albumPicture(album);
}

QString Builder::albumArtist(const Album& album) const
{
    if (!album.artist.isEmpty())
        return album.artist;
    const QString first = m_catalogue.trackAt(album.tracks.front()).artist;
    const bool same = std::all_of(album.tracks.begin(), album.tracks.end(),
        [&](int place) { return fold(m_catalogue.trackAt(place).artist) == fold(first); });
    return same ? first : variousArtists;
}

QString Builder::albumPicture(const Album& album) const
{
    const QString path = m_catalogue.trackAt(album.tracks.front()).path;
    for (const QString& folder : { folderOf(path), albumFolder(path) }) {
        const auto picture = m_scan.folderPictures.constFind(folder);
        if (picture != m_scan.folderPictures.constEnd())
            return *picture;
    }
    for (const int place : album.tracks) {
        if (m_catalogue.trackAt(place).picture)
            return m_catalogue.trackAt(place).path;
    }
    return {};
}

void Builder::addArtists()
{
    QHash<QString, int> known;
    const auto artistOf = [&](const QString& name) -> Artist& {
        const QString key = fold(name);
        auto found = known.find(key);
        if (found == known.end()) {
            found = known.insert(key, static_cast<int>(m_catalogue.artists.size()));
            m_catalogue.artists.push_back({ makeId(QStringLiteral("artist"), key), name, {}, {} });
        }
        return m_catalogue.artists[static_cast<size_t>(*found)];
    };
    const auto add = [](Places& places, int place) {
        if (places.empty() || places.back() != place)
            places.push_back(place);
    };
    for (size_t i = 0; i < m_catalogue.albums.size(); ++i) {
        const Album& each = m_catalogue.albums[i];
        add(artistOf(each.artist).albums, static_cast<int>(i));
        for (const int place : each.tracks) {
            Artist& artist = artistOf(track(place).artist);
            add(artist.albums, static_cast<int>(i));
            artist.tracks.push_back(place);
        }
    }
    for (Artist& artist : m_catalogue.artists) {
        std::stable_sort(artist.albums.begin(), artist.albums.end(),
            [this](int a, int b) { return album(a).year < album(b).year; });
    }
    sortBy(m_catalogue.artists,
        [](const Artist& each) { return sortKey(each.name) + QChar(0) + toText(each.id); });
}

void Builder::addPlaylists()
{
    for (const PlaylistFile& file : m_scan.playlists) {
        Playlist added{ makeId(QStringLiteral("playlist"), file.path), file.title, {} };
        for (const QString& entry : file.entries) {
            const auto place = m_placeOfPath.constFind(entry);
            if (place != m_placeOfPath.constEnd())
                added.tracks.push_back(*place);
        }
        if (!added.tracks.empty())
            m_catalogue.playlists.push_back(std::move(added));
    }
    addFolders();
    sortBy(m_catalogue.playlists,
        [](const Playlist& each) { return sortKey(each.title) + QChar(0) + toText(each.id); });
}

// A folder of mixed music is a playlist in its order of names. A folder that is just an album is
// not offered twice.
void Builder::addFolders()
{
    QHash<QString, Places> folders;
    for (size_t i = 0; i < tracks().size(); ++i)
        folders[folderOf(tracks()[i].path)].push_back(static_cast<int>(i));
    for (auto folder = folders.begin(); folder != folders.end(); ++folder) {
        Places& places = *folder;
        const int first = track(places.front()).album;
        const bool mixed = std::any_of(
            places.begin(), places.end(), [&](int place) { return track(place).album != first; });
        if (!mixed)
            continue;
        std::sort(places.begin(), places.end(),
            [this](int a, int b) { return track(a).path < track(b).path; });
        m_catalogue.playlists.push_back({ makeId(QStringLiteral("folder"), folder.key()),
            orElse(lastComponent(folder.key()), QStringLiteral("Music folder")), places });
    }
}

void Builder::addStation(const QString& kind, const QString& title, const Places& pool)
{
    m_catalogue.stations.push_back({ makeId(kind, title), title, pool });
}

void Builder::addStations()
{
    if (tracks().empty())
        return;
    Places all(tracks().size());
    std::iota(all.begin(), all.end(), 0);
    addStation(QStringLiteral("station"), QStringLiteral("Everything Station"), all);
    QMap<QString, Places> genres;
    QMap<int, Places> decades;
    QHash<QString, QString> spellings;
    for (size_t i = 0; i < tracks().size(); ++i) {
        const Track& each = tracks()[i];
        if (!each.genre.isEmpty()) {
            const QString key = fold(each.genre);
            spellings.insert(key, spellings.value(key, each.genre));
            genres[key].push_back(static_cast<int>(i));
        }
        if (each.year >= 1900)
            decades[each.year / 10 * 10].push_back(static_cast<int>(i));
    }
    for (auto genre = genres.cbegin(); genre != genres.cend(); ++genre)
        addStation(QStringLiteral("genre"),
            spellings.value(genre.key()) + QLatin1String(" Station"), *genre);
    for (auto decade = decades.cbegin(); decade != decades.cend(); ++decade)
        addStation(
            QStringLiteral("decade"), QStringLiteral("%1s Station").arg(decade.key()), *decade);
    for (const Artist& artist : m_catalogue.artists) {
        if (artist.tracks.size() > 1)
            addStation(QStringLiteral("artist station"), artist.name + QLatin1String(" Station"),
                artist.tracks);
    }
}

void Builder::index()
{
    m_catalogue.trackPlaces = placesOf(m_catalogue.tracks);
    m_catalogue.albumPlaces = placesOf(m_catalogue.albums);
    m_catalogue.artistPlaces = placesOf(m_catalogue.artists);
    m_catalogue.playlistPlaces = placesOf(m_catalogue.playlists);
    m_catalogue.stationPlaces = placesOf(m_catalogue.stations);
    const auto indexed = [](const auto& things, auto text) {
        std::vector<QStringList> found;
        found.reserve(things.size());
        for (const auto& thing : things)
            found.push_back(words(text(thing)));
        return WordIndex(found);
    };
    const auto blank = QLatin1Char(' ');
    m_catalogue.searchIndexes = {
        indexed(m_catalogue.artists, [](const Artist& each) { return each.name; }),
        indexed(m_catalogue.albums,
            [=](const Album& each) { return QString(each.title + blank + each.artist); }),
        indexed(m_catalogue.stations, [](const Station& each) { return each.title; }),
        indexed(m_catalogue.tracks,
            [=](const Track& each) { return QString(each.title + blank + each.artist); }),
    };
}

} // namespace

CataloguePointer buildCatalogue(const ScanResult& scan, int revision)
{
    auto catalogue = std::make_shared<Catalogue>();
    catalogue->revision = revision;
    Builder(scan, *catalogue).build();
    return catalogue;
}

} // namespace emulator::catalogue
