#include "musicfolder.h"

#include "emulator/catalogue/textfold.h"
#include "emulator/documents/chunks.h"
#include "emulator/documents/messages.h"
#include "emulator/documents/pages.h"
#include "emulator/documents/stationorder.h"
#include "tavujson.h"

#include <gtest/gtest.h>

#include <QSet>
#include <QUrl>
#include <QUrlQuery>

#include <algorithm>
#include <ctime>

using namespace emulator;
using namespace emulator::documents;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

TavuAmazonMusic parse(const QByteArray& json)
{
    const QVariant parsed = TavuJson::parse(json);
    EXPECT_TRUE(parsed.isValid());
    return TavuAmazonMusic(parsed.toHash());
}

template <typename Record>
Record record(const TavuHash& collection, const QString& reference)
{
    EXPECT_TRUE(reference.startsWith(QLatin1Char('#'))) << reference.toStdString();
    EXPECT_TRUE(collection.__contains(reference.mid(1))) << reference.toStdString();
    return Record(collection.__value(reference.mid(1)).toHash());
}

TavuAmazonMusicNavigationNodeDescription node(const TavuAmazonMusic& page)
{
    return record<TavuAmazonMusicNavigationNodeDescription>(
        page.navigationNodeDescriptions(), page.result());
}

TavuAmazonMusicItemDescription item(const TavuAmazonMusic& page, int index)
{
    return record<TavuAmazonMusicItemDescription>(
        page.itemDescriptions(), node(page).items().value(index));
}

TavuAmazonMusicPlayable playableOf(const TavuAmazonMusic& page, int index)
{
    return record<TavuAmazonMusicPlayable>(page.playables(), item(page, index).playable());
}

QStringList labels(const TavuAmazonMusic& page)
{
    QStringList found;
    for (int i = 0; i < node(page).items().size(); ++i)
        found += item(page, i).itemLabel();
    return found;
}

TavuAmazonMusicTrackContainerChunkDescription chunkOf(const TavuAmazonMusic& document)
{
    EXPECT_TRUE(document.trackContainerChunkDescriptions().__contains(text("chunk")));
    return TavuAmazonMusicTrackContainerChunkDescription(
        document.trackContainerChunkDescriptions().__value(text("chunk")).toHash());
}

TavuAmazonMusicTrackDefinition trackOf(const TavuAmazonMusic& document, int index)
{
    const auto instance = record<TavuAmazonMusicTrackInstance>(
        document.trackInstances(), chunkOf(document).trackInstances().value(index));
    return record<TavuAmazonMusicTrackDefinition>(
        document.trackDefinitions(), instance.trackDefinition());
}

class Documents : public ::testing::Test
{
protected:
    Documents() { use(60, 7); }

    void use(int albums, int tracksEach)
    {
        m_catalogue = inventedCatalogue(albums, tracksEach);
        m_moment.nowMs = 1700000000000;
        m_moment.expiresAfterMs = 5000;
        m_moment.serviceBase = text("https://music.localhost");
        m_moment.mediaBase = text("http://127.0.0.1:1");
    }

    Pages pages() const { return Pages(*m_catalogue, m_rules, m_media, m_moment); }
    Chunks chunks() const { return Chunks(*m_catalogue, m_rules, m_media, m_moment); }
    Messages messages() const { return Messages(*m_catalogue, m_rules, m_media, m_moment); }

    catalogue::CataloguePointer m_catalogue;
    Rules m_rules;
    MediaUrls m_media{ "secret" };
    Moment m_moment;
};

} // namespace

TEST_F(Documents, RootHasTheSectionsAndANoticeWhenThereIsOne)
{
    const QStringList sections{ text("Artists"), text("Albums"), text("Playlists"),
        text("Stations"), text("Tracks"), text("Messages") };
    EXPECT_EQ(labels(parse(pages().root(QString()))), sections);
    EXPECT_EQ(
        labels(parse(pages().root(text("Reading")))), QStringList{ text("Reading") } + sections);
    const TavuAmazonMusic root = parse(pages().root(QString()));
    const auto summary = record<TavuAmazonMusicNavigationNodeSummary>(
        root.navigationNodeSummaries(), item(root, 1).summary());
    EXPECT_EQ(summary.description(), text("/albums/"));
}

TEST_F(Documents, PagesFollowEachOtherWithoutGapOrRepeat)
{
    m_rules.pageSize = 25;
    QStringList all;
    int offset = 0;
    int count = 0;
    for (;;) {
        const TavuAmazonMusic page = parse(pages().albums(offset));
        all += labels(page);
        ++count;
        const QString next = node(page).nextPage();
        if (next.isEmpty())
            break;
        offset = QUrlQuery(QUrl(text("http://h/albums/")).resolved(QUrl(next)))
                     .queryItemValue(text("offset"))
                     .toInt();
    }
    EXPECT_EQ(count, 3);
    EXPECT_EQ(all.size(), 60);
    EXPECT_EQ(QSet<QString>(all.begin(), all.end()).size(), 60);
}

TEST_F(Documents, LastPageThatIsJustFullHasNoNext)
{
    m_rules.pageSize = 60;
    EXPECT_EQ(node(parse(pages().albums(0))).nextPage(), QString());
    EXPECT_EQ(node(parse(pages().albums(60))).items().size(), 0);
    EXPECT_EQ(node(parse(pages().albums(-5))).items().size(), 60);
}

TEST_F(Documents, AlbumIsAFolderAndAPlayable)
{
    const TavuAmazonMusic page = parse(pages().albums(0));
    const auto album = item(page, 0);
    const auto summary = record<TavuAmazonMusicNavigationNodeSummary>(
        page.navigationNodeSummaries(), album.summary());
    const QString id = catalogue::toText(m_catalogue->albums[0].id);
    EXPECT_EQ(summary.description(), text("/albums/") + id + QLatin1Char('/'));
    EXPECT_EQ(playableOf(page, 0).naturalTrackPointer().chunk(), text("/chunks/albums/") + id);
    EXPECT_TRUE(playableOf(page, 0).__contains(TavuAmazonMusicPlayable::SelfData()));
    EXPECT_TRUE(playableOf(page, 0).trackDefinition().isEmpty());
    EXPECT_EQ(album.artist().name(), text("Artist 0"));
}

TEST_F(Documents, TrackOfAnAlbumPointsIntoTheMiddleOfTheAlbumsChunk)
{
    const auto id = m_catalogue->albums[3].id;
    const TavuAmazonMusic page = parse(*pages().album(id, 0));
    ASSERT_EQ(node(page).items().size(), 7);
    const auto pointer = playableOf(page, 4).naturalTrackPointer();
    EXPECT_EQ(pointer.indexWithinChunk(), 4);
    const TavuAmazonMusic chunk = parse(*chunks().album(id, 0));
    EXPECT_EQ(trackOf(chunk, 4).title(), item(page, 4).itemLabel());
}

TEST_F(Documents, SingleTrackIsAChunkOfOne)
{
    const TavuAmazonMusic page = parse(pages().tracks(0));
    const auto pointer = playableOf(page, 5).naturalTrackPointer();
    const TavuAmazonMusic chunk = parse(*chunks().track(m_catalogue->tracks[5].id));
    EXPECT_EQ(pointer.indexWithinChunk(), 0);
    EXPECT_EQ(chunkOf(chunk).trackInstances().size(), 1);
    EXPECT_EQ(trackOf(chunk, 0).title(), item(page, 5).itemLabel());
    EXPECT_EQ(chunkOf(chunk).nextTrackPointer().chunk(), QString());
}

TEST_F(Documents, StationIsAPlayableWithoutTrackDefinition)
{
    const TavuAmazonMusic page = parse(pages().stations(0));
    EXPECT_TRUE(item(page, 0).summary().isEmpty());
    EXPECT_TRUE(playableOf(page, 0).trackDefinition().isEmpty());
    EXPECT_TRUE(
        playableOf(page, 0).naturalTrackPointer().chunk().startsWith(text("/chunks/stations/")));
}

TEST_F(Documents, EachPlayableHasItsOwnDocument)
{
    const auto check = [this](const char* folder, catalogue::Id id) {
        const auto json = pages().playable(text(folder), id);
        ASSERT_TRUE(json.has_value()) << folder;
        EXPECT_TRUE(parse(*json).playables().__contains(text("playable"))) << folder;
    };
    check("albums", m_catalogue->albums[0].id);
    check("stations", m_catalogue->stations[0].id);
    check("tracks", m_catalogue->tracks[0].id);
    EXPECT_FALSE(pages().playable(text("albums"), 42).has_value());
    EXPECT_FALSE(pages().playable(text("nonsense"), m_catalogue->albums[0].id).has_value());
}

TEST_F(Documents, UnknownIdsGiveNoDocument)
{
    EXPECT_FALSE(pages().album(1, 0).has_value());
    EXPECT_FALSE(pages().artist(1, 0).has_value());
    EXPECT_FALSE(pages().playlist(1, 0).has_value());
    EXPECT_FALSE(chunks().album(1, 0).has_value());
    EXPECT_FALSE(chunks().playlist(1, 0).has_value());
    EXPECT_FALSE(chunks().track(1).has_value());
    EXPECT_FALSE(chunks().station(1, 1, 0).has_value());
    EXPECT_FALSE(chunks().instance(1, QString()).has_value());
}

TEST_F(Documents, ArtistPageHasStationAlbumsAndTracks)
{
    const auto& artist = m_catalogue->artists[0];
    const TavuAmazonMusic page = parse(*pages().artist(artist.id, 0));
    EXPECT_EQ(labels(page).size(), 1 + 2 + 14);
    EXPECT_EQ(labels(page).first(), artist.name + text(" Station"));
    EXPECT_FALSE(item(page, 1).summary().isEmpty());
    EXPECT_TRUE(item(page, 3).summary().isEmpty());
}

// How many things a search for "artist 1" must find, by looking at each.
template <typename T, typename Text>
int matching(const std::vector<T>& things, Text textOf)
{
    return static_cast<int>(std::count_if(things.begin(), things.end(), [&](const T& thing) {
        const QStringList found = catalogue::words(textOf(thing));
        const auto any = [&found](const QString& prefix) {
            return std::any_of(found.begin(), found.end(),
                [&](const QString& word) { return word.startsWith(prefix); });
        };
        return any(text("artist")) && any(text("1"));
    }));
}

TEST_F(Documents, SearchGoesThroughArtistsAlbumsStationsAndTracksInPages)
{
    m_rules.pageSize = 10;
    QStringList found;
    QString cursor;
    int pagesSeen = 0;
    do {
        const TavuAmazonMusic page = parse(pages().search(text("artist 1"), cursor));
        found += labels(page);
        ++pagesSeen;
        const QUrl next = QUrl(text("http://h/search/")).resolved(QUrl(node(page).nextPage()));
        cursor = QUrlQuery(next).queryItemValue(text("cursor"));
        EXPECT_TRUE(node(page).nextPage().isEmpty()
            || QUrlQuery(next).queryItemValue(text("keywords"), QUrl::FullyDecoded)
                == text("artist 1"));
    } while (!cursor.isEmpty() && pagesSeen < 100);
    const int expected = matching(m_catalogue->artists, [](auto& each) { return each.name; })
        + matching(m_catalogue->albums,
            [](auto& each) { return QString(each.title + QLatin1Char(' ') + each.artist); })
        + matching(m_catalogue->stations, [](auto& each) { return each.title; })
        + matching(m_catalogue->tracks,
            [](auto& each) { return QString(each.title + QLatin1Char(' ') + each.artist); });
    EXPECT_EQ(found.size(), expected);
    EXPECT_EQ(pagesSeen, (expected + 9) / 10);
    EXPECT_EQ(found.first(), text("Artist 1"));
}

TEST_F(Documents, SearchThatFindsNothingSaysSoWithTheText)
{
    const TavuAmazonMusic page = parse(pages().search(text("zebra & <co> %1"), QString()));
    EXPECT_EQ(labels(page), QStringList{ text("Nothing was found for \"zebra & <co> %1\".") });
    EXPECT_TRUE(item(page, 0).summary().isEmpty());
    EXPECT_TRUE(item(page, 0).playable().isEmpty());
    EXPECT_EQ(labels(parse(pages().search(QString(), QString()))).size(), 1);
    EXPECT_EQ(labels(parse(pages().search(text("x"), text("9.-3")))).size(), 1);
}

TEST_F(Documents, PageCostsTheSameInALargeLibrary)
{
    const auto cost = [this] {
        const std::clock_t start = std::clock();
        for (int i = 0; i < 20; ++i) {
            pages().tracks(1000);
            pages().search(text("artist 1"), QString());
        }
        return std::max<qint64>(1, std::clock() - start);
    };
    use(200, 10);
    const qint64 small = std::min(cost(), cost());
    use(4000, 10);
    const qint64 large = std::min(cost(), cost());
    EXPECT_LT(large, 4 * small);
}

TEST_F(Documents, ChunkHasEverythingThatPlayingNeeds)
{
    const auto& album = m_catalogue->albums[0];
    const TavuAmazonMusic chunk = parse(*chunks().album(album.id, 0));
    ASSERT_EQ(chunkOf(chunk).trackInstances().size(), 7);
    const auto instance = record<TavuAmazonMusicTrackInstance>(
        chunk.trackInstances(), chunkOf(chunk).trackInstances().first());
    const QString id = catalogue::toText(m_catalogue->trackAt(album.tracks[0]).id);
    const QString context = text("albums-") + catalogue::toText(album.id) + text("-0");
    EXPECT_EQ(instance.playbackEventCollector(), text("/events/") + id + text("?in=") + context);
    EXPECT_EQ(instance.selfData(), text("/instances/") + id + text("?in=") + context);
    const auto track = trackOf(chunk, 0);
    EXPECT_EQ(track.duration(), 200000);
    EXPECT_EQ(track.artist().name(), text("Artist 0"));
    EXPECT_EQ(track.album().name(), album.title);
    EXPECT_TRUE(track.autoSkipOnError());
    EXPECT_EQ(track.audio().expires(), text("2023-11-14T22:13:25.000Z"));
    EXPECT_TRUE(track.audio().uri().startsWith(text("http://127.0.0.1:1/audio/") + id));
    EXPECT_EQ(track.trackRating().ratingURI(), text("/ratings/") + id);
}

TEST_F(Documents, AMarkedShareOfTracksNeedsKeyHeadersAndHasNoRating)
{
    const TavuAmazonMusic chunk = parse(*chunks().album(m_catalogue->albums[0].id, 0));
    for (int i = 0; i < 7; ++i) {
        const auto track = trackOf(chunk, i);
        EXPECT_EQ(track.audio().__contains(TavuAmazonMusicAudio::Headers()), i == 3) << i;
        EXPECT_EQ(track.__contains(TavuAmazonMusicTrackDefinition::TrackRating()), i != 4) << i;
    }
    const auto headers = trackOf(chunk, 3).audio().headers().keyHeaders();
    ASSERT_EQ(headers.size(), 2);
    EXPECT_EQ(headers.record(0).name(), text("x-audio-key-id"));
    EXPECT_EQ(headers.record(1).name(), text("x-audio-key"));
}

TEST_F(Documents, InstanceStandsInItsOwnDocument)
{
    const TavuAmazonMusic document =
        parse(*chunks().instance(m_catalogue->tracks[2].id, text("albums-1-2")));
    const auto instance =
        record<TavuAmazonMusicTrackInstance>(document.trackInstances(), document.result());
    const auto track = record<TavuAmazonMusicTrackDefinition>(
        document.trackDefinitions(), instance.trackDefinition());
    EXPECT_EQ(track.title(), m_catalogue->tracks[2].title);
    EXPECT_FALSE(track.audio().uri().isEmpty());
    EXPECT_TRUE(instance.playbackEventCollector().endsWith(text("?in=albums-1-2")));
}

TEST_F(Documents, ChunkOfAHugeAlbumIsCappedAndStaysUnderAMegabyte)
{
    use(1, 1234);
    const auto id = m_catalogue->albums[0].id;
    const QByteArray json = *chunks().album(id, 0);
    EXPECT_EQ(chunkOf(parse(json)).trackInstances().size(), 500);
    EXPECT_LT(json.size(), 1024 * 1024);
    EXPECT_EQ(chunkOf(parse(json)).nextTrackPointer().chunk(),
        text("/chunks/albums/") + catalogue::toText(id) + text("?from=500"));
    const TavuAmazonMusic page = parse(*pages().album(id, 1200));
    EXPECT_EQ(playableOf(page, 0).naturalTrackPointer().indexWithinChunk(), 200);
    EXPECT_TRUE(playableOf(page, 0).naturalTrackPointer().chunk().endsWith(text("?from=1000")));
    EXPECT_EQ(chunkOf(parse(*chunks().album(id, 1000))).trackInstances().size(), 234);
}

TEST_F(Documents, StationGoesOnWithoutEndAndItsPointersFit)
{
    const auto& station = m_catalogue->stations[0];
    QStringList played;
    int position = 0;
    int index = 0;
    int inTheMiddle = 0;
    for (int round = 0; round < 12; ++round) {
        const TavuAmazonMusic chunk = parse(*chunks().station(station.id, 77, position));
        const auto description = chunkOf(chunk);
        ASSERT_EQ(description.trackInstances().size(), 10);
        ASSERT_LT(index, 10);
        for (int i = index; i < 10; ++i)
            played += trackOf(chunk, i).title();
        const auto next = description.nextTrackPointer();
        const QUrlQuery query(QUrl(next.chunk()).query());
        position = query.queryItemValue(text("at")).toInt();
        index = next.indexWithinChunk();
        inTheMiddle += index > 0 ? 1 : 0;
        EXPECT_EQ(query.queryItemValue(text("session")), text("000000000000004d"));
    }
    EXPECT_GT(inTheMiddle, 0);
    QStringList expected;
    for (int i = 0; i < played.size(); ++i)
        expected +=
            m_catalogue
                ->trackAt(station.tracks[size_t(stationPlace(77, int(station.tracks.size()), i))])
                .title;
    EXPECT_EQ(played, expected);
}

TEST_F(Documents, StationLeadsBackToTheTrackBeforeAChunk)
{
    const auto& station = m_catalogue->stations[0];
    const auto placeAt = [&](int position) {
        return station.tracks[size_t(stationPlace(77, int(station.tracks.size()), position))];
    };
    for (const int position : { 1, 7, 10, 27 }) {
        const auto back =
            chunkOf(parse(*chunks().station(station.id, 77, position))).prevTrackPointer();
        const int before = QUrlQuery(QUrl(back.chunk()).query()).queryItemValue(text("at")).toInt();
        const TavuAmazonMusic chunk = parse(*chunks().station(station.id, 77, before));
        EXPECT_EQ(trackOf(chunk, back.indexWithinChunk()).title(),
            m_catalogue->trackAt(placeAt(position - 1)).title)
            << position;
    }
    EXPECT_TRUE(
        chunkOf(parse(*chunks().station(station.id, 77, 0))).prevTrackPointer().chunk().isEmpty());
}

TEST_F(Documents, StationWithALengthEnds)
{
    m_rules.stationLength = 13;
    const auto id = m_catalogue->stations[0].id;
    EXPECT_FALSE(chunkOf(parse(*chunks().station(id, 1, 0))).nextTrackPointer().chunk().isEmpty());
    const auto last = chunkOf(parse(*chunks().station(id, 1, 10)));
    EXPECT_EQ(last.trackInstances().size(), 3);
    EXPECT_TRUE(last.nextTrackPointer().chunk().isEmpty());
    EXPECT_FALSE(chunks().station(id, 1, 13).has_value());
}

TEST(StationOrder, PlaysEachTrackOncePerRoundAndNeverTwiceInARow)
{
    for (const int size : { 1, 2, 3, 4, 7, 16, 100 }) {
        for (quint64 session = 1; session < 30; ++session) {
            int previous = -1;
            for (int round = 0; round < 5; ++round) {
                QSet<int> seen;
                for (int i = 0; i < size; ++i) {
                    const int place = stationPlace(session, size, round * size + i);
                    EXPECT_TRUE(place >= 0 && place < size);
                    EXPECT_TRUE(size == 1 || place != previous) << size << " " << session;
                    previous = place;
                    seen.insert(place);
                }
                EXPECT_EQ(seen.size(), size);
            }
        }
    }
}

TEST(StationOrder, DiffersBetweenSessions)
{
    int same = 0;
    for (int i = 0; i < 100; ++i)
        same += stationPlace(1, 100, i) == stationPlace(2, 100, i) ? 1 : 0;
    EXPECT_LT(same, 20);
}

TEST(MediaUrls, AreGoodUntilTheyExpireAndOnlyAsTheyWereMade)
{
    const MediaUrls media("secret");
    catalogue::Track track;
    track.id = 7;
    track.path = text("a/b.FLAC");
    const QUrl url(media.audio(track, 5000, 410, true));
    EXPECT_EQ(url.path(), text("/audio/0000000000000007.flac"));
    const QUrlQuery query(url.query());
    const auto check = [&](catalogue::Id id, const QString& expires, const QString& keyed,
                           qint64 nowMs) {
        return media.check(id, expires, query.queryItemValue(text("then")), keyed,
            query.queryItemValue(text("signature")), nowMs);
    };
    EXPECT_EQ(query.queryItemValue(text("then")), text("410"));
    EXPECT_EQ(check(7, text("5000"), text("1"), 5000), MediaUrls::Check::Good);
    EXPECT_EQ(check(7, text("5000"), text("1"), 5001), MediaUrls::Check::Expired);
    EXPECT_EQ(check(7, text("9000"), text("1"), 5000), MediaUrls::Check::Forged);
    EXPECT_EQ(check(7, text("5000"), text("0"), 5000), MediaUrls::Check::Forged);
    EXPECT_EQ(check(8, text("5000"), text("1"), 5000), MediaUrls::Check::Forged);
    EXPECT_NE(media.key(7), media.key(8));
    EXPECT_NE(media.key(7), MediaUrls("other").key(7));
}

TEST_F(Documents, MessagesHoldEveryKindOfOption)
{
    const TavuAmazonMusic page = parse(messages().page());
    QSet<QString> actions;
    int unplayable = 0;
    for (int i = 0; i < node(page).items().size(); ++i) {
        if (item(page, i).playable().isEmpty() || playableOf(page, i).trackDefinition().isEmpty())
            continue;
        const auto track = record<TavuAmazonMusicTrackDefinition>(
            page.trackDefinitions(), playableOf(page, i).trackDefinition());
        if (track.error().isEmpty())
            continue;
        ++unplayable;
        EXPECT_FALSE(track.autoSkipOnError());
        const auto report =
            record<TavuAmazonMusicGeneralErrorReport>(page.generalErrorReports(), track.error());
        EXPECT_FALSE(report.brief().isEmpty());
        for (int option = 0; option < report.options().size(); ++option)
            actions.insert(report.options().record(option).action());
    }
    EXPECT_EQ(unplayable, 4);
    EXPECT_EQ(actions, (QSet<QString>{ text("www"), text("post"), text("close") }));
}

TEST_F(Documents, MessagesRefuseWhatTheySayTheyRefuse)
{
    EXPECT_EQ(messages().folder(text("refused"))->status, 409);
    EXPECT_EQ(messages().folder(text("broken"))->status, 500);
    EXPECT_FALSE(messages().folder(text("missing")).has_value());
    const auto refused = messages().chunk(text("refused-station"));
    EXPECT_EQ(refused->status, 409);
    const TavuAmazonMusic document = parse(refused->document);
    EXPECT_FALSE(
        record<TavuAmazonMusicGeneralErrorReport>(document.generalErrorReports(), document.result())
            .explanation()
            .isEmpty());
    EXPECT_EQ(messages().chunk(text("ask"))->status, 200);
    EXPECT_TRUE(messages().startRefusal(text("messages-ask-0"))->options().record(1).resume());
    EXPECT_FALSE(messages().startRefusal(text("messages-refuse-0"))->options().record(0).resume());
    EXPECT_FALSE(messages().startRefusal(text("albums-1-0")).has_value());
    EXPECT_TRUE(Messages::skipsWhenRated(text("messages-skip-2")));
    EXPECT_FALSE(Messages::skipsWhenRated(text("albums-1-0")));
}

TEST_F(Documents, PostOptionsAreAbsoluteAddresses)
{
    const auto refusal = messages().startRefusal(text("messages-ask-0"));
    EXPECT_EQ(refusal->options().record(1).uri(), text("https://music.localhost/selections/go-on"));
}
