#include "musicfolder.h"

#include "emulator/catalogue/cataloguebuilder.h"
#include "emulator/catalogue/playlistreader.h"
#include "emulator/catalogue/textfold.h"
#include "emulator/catalogue/wordindex.h"

#include <gtest/gtest.h>

#include <ctime>

using namespace emulator::catalogue;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

QStringList titles(const Catalogue& catalogue, const Places& places)
{
    QStringList found;
    for (const int place : places)
        found += catalogue.trackAt(place).title;
    return found;
}

CataloguePointer build(const std::vector<MusicFile>& files)
{
    ScanResult scan;
    scan.files = files;
    return buildCatalogue(scan, 1);
}

} // namespace

TEST(TextFold, IgnoresCaseAccentsAndBlanks)
{
    EXPECT_EQ(fold(text("  Béla   BARTÓK ")), text("bela bartok"));
    EXPECT_EQ(fold(text("ÉCOLE №5")), text("ecole no5"));
}

TEST(TextFold, SortsWithoutTheArticle)
{
    EXPECT_EQ(sortKey(text("The Wall")), text("wall"));
    EXPECT_EQ(sortKey(text("Theatre")), text("theatre"));
}

TEST(TextFold, SplitsWordsAtPunctuationButNotAtApostrophes)
{
    EXPECT_EQ(words(text("Don't stop—me, 99!")),
        (QStringList{ text("dont"), text("stop"), text("me"), text("99") }));
    EXPECT_TRUE(words(text(" - ")).isEmpty());
}

TEST(Playlist, TakesEntriesRelativeToItsFolder)
{
    const PlaylistFile list = parsePlaylist(text("lists/mix.m3u8"),
        "#EXTM3U\r\n#PLAYLIST:My Mix\r\n#EXTINF:1,x\r\n../a/One.flac\r\n\r\nsub\\Two.mp3\r\n"
        "/music/b/Three.ogg\r\nhttp://radio.example/live\r\n../../outside.flac\r\n",
        text("/music"));
    EXPECT_EQ(list.title, text("My Mix"));
    EXPECT_EQ(list.entries,
        (QStringList{ text("a/One.flac"), text("lists/sub/Two.mp3"), text("b/Three.ogg") }));
}

TEST(Playlist, IsNamedAfterItsFileAndReadAsLatin1WhenItIsNotUtf8)
{
    const PlaylistFile list = parsePlaylist(text("Caf.m3u"), "Caf\xe9.mp3\n", text("/music"));
    EXPECT_EQ(list.title, text("Caf"));
    EXPECT_EQ(list.entries, QStringList{ text("Café.mp3") });
}

TEST(WordIndex, FindsThingsByTheBeginningsOfAllWords)
{
    const WordIndex index({ { text("night"), text("train") }, { text("train"), text("station") },
        { text("nightly"), text("news") } });
    EXPECT_EQ(index.find({ text("night") }, 0, 10).things, (std::vector<int>{ 0, 2 }));
    EXPECT_EQ(index.find({ text("tr"), text("ni") }, 0, 10).things, std::vector<int>{ 0 });
    EXPECT_TRUE(index.find({ text("zebra") }, 0, 10).things.empty());
    EXPECT_TRUE(index.find({}, 0, 10).things.empty());
}

TEST(WordIndex, GivesEachThingOnceAlthoughSeveralWordsMatch)
{
    const WordIndex index({ { text("alpha"), text("alphabet"), text("also") }, { text("all") } });
    EXPECT_EQ(index.find({ text("al") }, 0, 10).things, (std::vector<int>{ 1, 0 }));
}

TEST(WordIndex, ContinuesWhereItEnded)
{
    std::vector<QStringList> things;
    for (int i = 0; i < 25; ++i)
        things.push_back({ text("song"), QString::number(i) });
    const WordIndex index(things);
    std::vector<int> found;
    int from = 0;
    int rounds = 0;
    while (from >= 0) {
        const WordIndex::Hits hits = index.find({ text("song") }, from, 10);
        found.insert(found.end(), hits.things.begin(), hits.things.end());
        from = hits.next;
        ++rounds;
    }
    EXPECT_EQ(found.size(), 25u);
    EXPECT_EQ(rounds, 3);
}

TEST(Catalogue, PutsTracksOfAnAlbumInTheirOrder)
{
    Tags second = tagged("A", "Album", "Second", 2);
    Tags discTwo = tagged("A", "Album", "Disc two", 1);
    discTwo.disc = 2;
    const auto catalogue =
        build({ musicFile("x/CD2/1.flac", discTwo), musicFile("x/CD1/b.flac", second),
            musicFile("x/CD1/a.flac", tagged("A", "Album", "First", 1)) });
    ASSERT_EQ(catalogue->albums.size(), 1u);
    EXPECT_EQ(titles(*catalogue, catalogue->albums[0].tracks),
        (QStringList{ text("First"), text("Second"), text("Disc two") }));
    EXPECT_EQ(catalogue->track(makeId(text("track"), text("x/CD1/b.flac")))->placeInAlbum, 1);
}

TEST(Catalogue, TellsFoldersOfDiscsFromFoldersOfAlbums)
{
    const Tags noAlbum = tagged("A", "", "x");
    const auto albumIn = [&](const char* folder) {
        const QByteArray file = QByteArray("Box/") + folder + "/a.flac";
        return build({ musicFile(file.constData(), noAlbum) })->albums[0].title;
    };
    for (const char* disc : { "CD1", "cd 2", "Disc 3", "disk4", "Disc-Five" })
        EXPECT_EQ(albumIn(disc), text("Box")) << disc;
    for (const char* other : { "CD of the year", "Discovery", "Encore" })
        EXPECT_EQ(albumIn(other), text(other)) << other;
}

TEST(Catalogue, ListsAnAlbumOnceForEachOfItsArtists)
{
    Tags guest = tagged("Guest", "One", "b", 2);
    guest.albumArtist = text("A");
    Tags own = tagged("A", "One", "a", 1);
    own.albumArtist = text("A");
    Tags again = tagged("A", "One", "c", 3);
    again.albumArtist = text("A");
    const auto catalogue = build(
        { musicFile("x/1.flac", own), musicFile("x/2.flac", guest), musicFile("x/3.flac", again) });
    ASSERT_EQ(catalogue->artists.size(), 2u);
    EXPECT_EQ(catalogue->artists[0].albums, Places{ 0 });
    EXPECT_EQ(catalogue->artists[1].albums, Places{ 0 });
}

TEST(Catalogue, KeepsAlbumsOfTheSameNameApartByFolder)
{
    const auto catalogue = build({ musicFile("one/a.flac", tagged("A", "Greatest Hits", "x")),
        musicFile("two/b.flac", tagged("B", "Greatest Hits", "y")) });
    EXPECT_EQ(catalogue->albums.size(), 2u);
}

TEST(Catalogue, JoinsACompilationUnderVariousArtists)
{
    const auto catalogue = build({ musicFile("mix/a.flac", tagged("A", "Sampler", "x", 1)),
        musicFile("mix/b.flac", tagged("B", "Sampler", "y", 2)) });
    ASSERT_EQ(catalogue->albums.size(), 1u);
    EXPECT_EQ(catalogue->albums[0].artist, text("Various artists"));
    EXPECT_EQ(catalogue->artists.size(), 3u);
}

TEST(Catalogue, NamesFilesWithoutTagsByTheirNames)
{
    const auto catalogue = build({ musicFile("Some Folder/03 - A Song.mp3", Tags()) });
    EXPECT_EQ(catalogue->tracks[0].title, text("A Song"));
    EXPECT_EQ(catalogue->tracks[0].artist, text("Unknown artist"));
    EXPECT_EQ(catalogue->albums[0].title, text("Some Folder"));
    EXPECT_EQ(build({ musicFile("1999.mp3", Tags()) })->tracks[0].title, text("1999"));
}

TEST(Catalogue, SpellsAnAlbumAsItsTagsDo)
{
    const auto catalogue = build({ musicFile("the album/a.flac", tagged("A", "", "a")),
        musicFile("the album/b.flac", tagged("A", "The Album", "b")) });
    ASSERT_EQ(catalogue->albums.size(), 1u);
    EXPECT_EQ(catalogue->albums[0].title, text("The Album"));
}

TEST(Catalogue, LeavesOutFilesWithAProblem)
{
    MusicFile broken = musicFile("a/broken.flac", tagged("A", "B", "C"));
    broken.problem = text("it holds no audio");
    EXPECT_TRUE(build({ broken })->tracks.empty());
    EXPECT_TRUE(build({ broken })->stations.empty());
}

TEST(Catalogue, OffersMixedFoldersAsPlaylistsButNotAlbumsAgain)
{
    const auto catalogue = build({ musicFile("mix/b.flac", tagged("A", "One", "x")),
        musicFile("mix/a.flac", tagged("B", "Two", "y")),
        musicFile("album/1.flac", tagged("C", "Three", "z")) });
    ASSERT_EQ(catalogue->playlists.size(), 1u);
    EXPECT_EQ(catalogue->playlists[0].title, text("mix"));
    EXPECT_EQ(
        titles(*catalogue, catalogue->playlists[0].tracks), (QStringList{ text("y"), text("x") }));
}

TEST(Catalogue, TakesPlaylistFilesWithTheTracksThatExist)
{
    ScanResult scan;
    scan.files = { musicFile("a.flac", tagged("A", "One", "x")) };
    scan.playlists = { { text("p.m3u"), text("P"), { text("a.flac"), text("gone.flac") } },
        { text("q.m3u"), text("Q"), { text("gone.flac") } } };
    const auto catalogue = buildCatalogue(scan, 1);
    ASSERT_EQ(catalogue->playlists.size(), 1u);
    EXPECT_EQ(catalogue->playlists[0].tracks.size(), 1u);
}

TEST(Catalogue, MakesStationsOfGenresDecadesAndArtists)
{
    Tags one = tagged("A", "One", "x", 1);
    one.genre = text("Jazz");
    one.year = 1994;
    Tags two = tagged("A", "One", "y", 2);
    two.genre = text("JAZZ");
    const auto catalogue = build({ musicFile("a/1.flac", one), musicFile("a/2.flac", two) });
    QStringList stations;
    for (const Station& station : catalogue->stations)
        stations += station.title;
    EXPECT_EQ(stations,
        (QStringList{ text("Everything Station"), text("Jazz Station"), text("1990s Station"),
            text("A Station") }));
    EXPECT_EQ(catalogue->stations[1].tracks.size(), 2u);
}

TEST(Catalogue, PrefersThePictureOfTheFolder)
{
    Tags embedded = tagged("A", "One", "x");
    embedded.picture = true;
    ScanResult scan;
    scan.files = { musicFile("a/1.flac", embedded),
        musicFile("b/1.flac", tagged("B", "Two", "y")) };
    EXPECT_EQ(buildCatalogue(scan, 1)->albums[0].picture, text("a/1.flac"));
    scan.folderPictures = { { text("a"), text("a/cover.jpg") } };
    EXPECT_EQ(buildCatalogue(scan, 1)->albums[0].picture, text("a/cover.jpg"));
    EXPECT_TRUE(buildCatalogue(scan, 1)->albums[1].picture.isEmpty());
}

TEST(Catalogue, KeepsIdsWhenMoreMusicComes)
{
    const MusicFile first = musicFile("a/1.flac", tagged("A", "One", "x"));
    const auto before = build({ first });
    const auto after = build({ musicFile("0/0.flac", tagged("0", "0", "0")), first });
    EXPECT_EQ(before->tracks[0].id, after->tracks[1].id);
    EXPECT_EQ(before->albums[0].id, after->albums[1].id);
    EXPECT_EQ(idFromText(toText(before->tracks[0].id)), before->tracks[0].id);
    EXPECT_EQ(idFromText(text("12")), 0u);
}

TEST(Catalogue, OfTenThousandTracksIsBuiltQuickly)
{
    const std::clock_t start = std::clock();
    EXPECT_EQ(inventedCatalogue(1000, 10)->tracks.size(), 10000u);
    // Unoptimised and with sanitizers; a release build takes a tenth of a second.
    EXPECT_LT(std::clock() - start, 5 * CLOCKS_PER_SEC);
}
