#include "tavuamazonmusic.h"

#include "recordfields.h"
#include "tavujson.h"

namespace {

const qint64 someMs = 1LL << 40;
const QStringList someRefs{ QStringLiteral("#a"), QStringLiteral("b/c"), QString() };

TEST(TavuAmazonMusicArtist, fields)
{
    EXPECT_FIELD(TavuAmazonMusicArtist, name, Name, someText);
}

TEST(TavuAmazonMusicAlbum, fields)
{
    EXPECT_FIELD(TavuAmazonMusicAlbum, name, Name, someText);
}

TEST(TavuAmazonMusicImage, fields)
{
    EXPECT_FIELD(TavuAmazonMusicImage, uri, Uri, someText);
}

TEST(TavuAmazonMusicGeneralErrorReportOption, fields)
{
    using Option = TavuAmazonMusicGeneralErrorReportOption;
    EXPECT_FIELD(Option, label, Label, someText);
    EXPECT_FIELD(Option, action, Action, QStringLiteral("post"));
    EXPECT_FIELD(Option, uri, Uri, someText);
    EXPECT_FIELD(Option, resume, Resume, true);
}

TEST(TavuAmazonMusicGeneralErrorReport, fields)
{
    using Report = TavuAmazonMusicGeneralErrorReport;
    EXPECT_FIELD(Report, brief, Brief, someText);
    EXPECT_FIELD(Report, terse, Terse, someText);
    EXPECT_FIELD(Report, explanation, Explanation, someText);
    EXPECT_FIELD(Report, options, Options, someRecords<TavuAmazonMusicGeneralErrorReportOption>());
}

TEST(TavuAmazonMusicAudio, fields)
{
    EXPECT_FIELD(TavuAmazonMusicAudioHeader, name, Name, someText);
    EXPECT_FIELD(TavuAmazonMusicAudioHeader, value, Value, someText);
    EXPECT_FIELD(TavuAmazonMusicAudioHeaders, keyHeaders, KeyHeaders,
        someRecords<TavuAmazonMusicAudioHeader>());
    EXPECT_FIELD(TavuAmazonMusicAudio, uri, Uri, someText);
    EXPECT_FIELD(
        TavuAmazonMusicAudio, expires, Expires, QStringLiteral("2024-01-02T03:04:05.678Z"));
    EXPECT_FIELD(TavuAmazonMusicAudio, headers, Headers, someRecord<TavuAmazonMusicAudioHeaders>());
}

TEST(TavuAmazonMusicTrackRating, fields)
{
    EXPECT_FIELD(TavuAmazonMusicTrackRating, ratingURI, RatingURI, someText);
}

TEST(TavuAmazonMusicTrackDefinition, fields)
{
    using Definition = TavuAmazonMusicTrackDefinition;
    EXPECT_FIELD(Definition, title, Title, someText);
    EXPECT_FIELD(Definition, artist, Artist, someRecord<TavuAmazonMusicArtist>());
    EXPECT_FIELD(Definition, album, Album, someRecord<TavuAmazonMusicAlbum>());
    EXPECT_FIELD(Definition, duration, Duration, someMs);
    EXPECT_FIELD(Definition, image, Image, someRecord<TavuAmazonMusicImage>());
    EXPECT_FIELD(Definition, audio, Audio, someRecord<TavuAmazonMusicAudio>());
    EXPECT_FIELD(Definition, error, Error, someText);
    EXPECT_FIELD(Definition, errorInst, ErrorInst, someRecord<TavuAmazonMusicGeneralErrorReport>());
    EXPECT_FIELD(Definition, trackRating, TrackRating, someRecord<TavuAmazonMusicTrackRating>());
    EXPECT_FIELD(Definition, trackRatingUrl, TrackRatingUrl, someText);
    EXPECT_FIELD(Definition, autoSkipOnError, AutoSkipOnError, true);
}

TEST(TavuAmazonMusicTrackPointer, fields)
{
    using Pointer = TavuAmazonMusicTrackPointer;
    EXPECT_FIELD(Pointer, chunk, Chunk, someText);
    EXPECT_FIELD(Pointer, chunkUrl, ChunkUrl, someText);
    EXPECT_FIELD(Pointer, indexWithinChunk, IndexWithinChunk, 7);
}

TEST(TavuAmazonMusicTrackInstance, fields)
{
    using Instance = TavuAmazonMusicTrackInstance;
    EXPECT_FIELD(Instance, trackDefinition, TrackDefinition, someText);
    EXPECT_FIELD(Instance, trackDefinitionInst, TrackDefinitionInst,
        someRecord<TavuAmazonMusicTrackDefinition>());
    EXPECT_FIELD(Instance, playbackEventCollector, PlaybackEventCollector, someText);
    EXPECT_FIELD(Instance, playbackEventCollectorUrl, PlaybackEventCollectorUrl, someText);
    EXPECT_FIELD(Instance, selfData, SelfData, someText);
    EXPECT_FIELD(Instance, selfDataUrl, SelfDataUrl, someText);
}

TEST(TavuAmazonMusicPlayable, fields)
{
    using Playable = TavuAmazonMusicPlayable;
    const auto pointer = someRecord<TavuAmazonMusicTrackPointer>();
    EXPECT_FIELD(Playable, trackDefinition, TrackDefinition, someText);
    EXPECT_FIELD(Playable, trackDefinitionInst, TrackDefinitionInst,
        someRecord<TavuAmazonMusicTrackDefinition>());
    EXPECT_FIELD(Playable, naturalTrackPointer, NaturalTrackPointer, pointer);
    EXPECT_FIELD(Playable, shuffleTrackPointer, ShuffleTrackPointer, pointer);
    EXPECT_FIELD(Playable, selfData, SelfData, someText);
    EXPECT_FIELD(Playable, selfDataUrl, SelfDataUrl, someText);
}

TEST(TavuAmazonMusicTrackContainerChunkDescription, fields)
{
    using Chunk = TavuAmazonMusicTrackContainerChunkDescription;
    const auto pointer = someRecord<TavuAmazonMusicTrackPointer>();
    EXPECT_FIELD(Chunk, trackInstances, TrackInstances, someRefs);
    EXPECT_FIELD(Chunk, itemsInst, ItemsInst, someRecords<TavuAmazonMusicTrackInstance>());
    EXPECT_FIELD(Chunk, firstTrackPointer, FirstTrackPointer, pointer);
    EXPECT_FIELD(Chunk, lastTrackPointer, LastTrackPointer, pointer);
    EXPECT_FIELD(Chunk, nextTrackPointer, NextTrackPointer, pointer);
    EXPECT_FIELD(Chunk, prevTrackPointer, PrevTrackPointer, pointer);
}

TEST(TavuAmazonMusicNavigationNodeSummary, fields)
{
    EXPECT_FIELD(TavuAmazonMusicNavigationNodeSummary, description, Description, someText);
}

TEST(TavuAmazonMusicItemDescription, fields)
{
    using Item = TavuAmazonMusicItemDescription;
    EXPECT_FIELD(Item, itemLabel, ItemLabel, someText);
    EXPECT_FIELD(Item, artist, Artist, someRecord<TavuAmazonMusicArtist>());
    EXPECT_FIELD(Item, image, Image, someRecord<TavuAmazonMusicImage>());
    EXPECT_FIELD(Item, summary, Summary, someText);
    EXPECT_FIELD(
        Item, summaryInst, SummaryInst, someRecord<TavuAmazonMusicNavigationNodeSummary>());
    EXPECT_FIELD(Item, playable, Playable, someText);
    EXPECT_FIELD(Item, playableInst, PlayableInst, someRecord<TavuAmazonMusicPlayable>());
    EXPECT_FIELD(Item, playableUrl, PlayableUrl, someText);
}

TEST(TavuAmazonMusicNavigationNodeDescription, fields)
{
    using Page = TavuAmazonMusicNavigationNodeDescription;
    EXPECT_FIELD(Page, items, Items, someRefs);
    EXPECT_FIELD(Page, itemsInst, ItemsInst, someRecords<TavuAmazonMusicItemDescription>());
    EXPECT_FIELD(Page, nextPage, NextPage, someText);
}

TEST(TavuAmazonMusicTrackRatingResponse, fields)
{
    EXPECT_FIELD(TavuAmazonMusicTrackRatingResponse, message, Message, someText);
    EXPECT_FIELD(TavuAmazonMusicTrackRatingResponse, shouldSkip, ShouldSkip, true);
}

TEST(TavuAmazonMusic, fields)
{
    using Document = TavuAmazonMusic;
    const auto collection = someRecord<TavuHash>();
    EXPECT_FIELD(Document, result, Result, QStringLiteral("#key"));
    EXPECT_FIELD(Document, generalErrorReports, GeneralErrorReports, collection);
    EXPECT_FIELD(Document, trackDefinitions, TrackDefinitions, collection);
    EXPECT_FIELD(Document, navigationNodeSummaries, NavigationNodeSummaries, collection);
    EXPECT_FIELD(Document, playables, Playables, collection);
    EXPECT_FIELD(Document, trackInstances, TrackInstances, collection);
    EXPECT_FIELD(Document, navigationNodeDescriptions, NavigationNodeDescriptions, collection);
    EXPECT_FIELD(Document, itemDescriptions, ItemDescriptions, collection);
    EXPECT_FIELD(
        Document, trackContainerChunkDescriptions, TrackContainerChunkDescriptions, collection);
}

TEST(TavuAmazonMusicErrors, fields)
{
    EXPECT_FIELD(TavuAmazonMusicErrors, result, Result, someText);
    EXPECT_FIELD(
        TavuAmazonMusicErrors, generalErrorReports, GeneralErrorReports, someRecord<TavuHash>());
}

TEST(TavuAmazonMusicRatings, fields)
{
    EXPECT_FIELD(TavuAmazonMusicRatings, result, Result, someText);
    EXPECT_FIELD(
        TavuAmazonMusicRatings, trackRatingResponses, TrackRatingResponses, someRecord<TavuHash>());
}

TEST(TavuAmazonMusicPlaybackEventReport, fields)
{
    using Report = TavuAmazonMusicPlaybackEventReport;
    EXPECT_FIELD(Report, event, Event, someText);
    EXPECT_FIELD(Report, reason, Reason, someText);
    EXPECT_FIELD(Report, source, Source, someText);
    EXPECT_FIELD(Report, isShufflePlay, IsShufflePlay, true);
    EXPECT_FIELD(Report, isDirectedPlay, IsDirectedPlay, true);
    EXPECT_FIELD(Report, trackPosition, TrackPosition, someMs);
    EXPECT_FIELD(Report, playbackDelay, PlaybackDelay, someMs);
    EXPECT_FIELD(Report, cacheHitStatus, CacheHitStatus, true);
    EXPECT_FIELD(Report, transferSpeedBPS, TransferSpeedBPS, 1 << 20);
    EXPECT_FIELD(Report, rebufferCount, RebufferCount, 2);
    EXPECT_FIELD(Report, wallClockTime, WallClockTime, QStringLiteral("2024-01-02T03:04:05Z"));
}

TEST(TavuAmazonMusicTrackRatingRequest, fields)
{
    using Request = TavuAmazonMusicTrackRatingRequest;
    EXPECT_FIELD(Request, thumbRating, ThumbRating, someText);
    EXPECT_FIELD(Request, trackPosition, TrackPosition, someMs);
    EXPECT_FIELD(Request, wallClockTime, WallClockTime, someText);
}

TEST(TavuAmazonMusicPlaybackEventReport, is_posted_as_json)
{
    TavuAmazonMusicPlaybackEventReport report;
    report.setEvent(QStringLiteral("START"));
    report.setIsDirectedPlay(false);
    report.setTrackPosition(someMs);
    report.setRebufferCount(0);
    EXPECT_EQ(report.toJsonString(),
        QStringLiteral("{\"event\":\"START\",\"isDirectedPlay\":false,\"rebufferCount\":0,"
                       "\"trackPosition\":1099511627776}"));
}

TEST(TavuAmazonMusic, self_data_is_the_key_of_its_field)
{
    EXPECT_EQ(TavuAmazonMusicPlayable::SelfData(), QStringLiteral("selfData"));
    EXPECT_EQ(TavuAmazonMusicTrackInstance::SelfData(), QStringLiteral("selfData"));
    EXPECT_FALSE(
        TavuAmazonMusicPlayable(TavuHash()).__contains(TavuAmazonMusicPlayable::SelfData()));
    EXPECT_FALSE(TavuAmazonMusicTrackInstance(TavuHash())
                     .__contains(TavuAmazonMusicTrackInstance::SelfData()));
}

TEST(TavuAmazonMusic, views_the_json_of_the_service)
{
    const QByteArray body = R"({
        "result": "#page",
        "navigationNodeDescriptions": {"page": {"items": ["#one", "two"], "nextPage": "page2"}},
        "itemDescriptions": {"one": {"itemLabel": "One", "artist": {"name": "A"},
            "image": {"uri": "https://h/i"}, "playable": "#p"}},
        "playables": {"p": {"naturalTrackPointer": {"chunk": "c#k", "indexWithinChunk": 2}}},
        "trackDefinitions": {"t": {"duration": 180000, "audio": {"uri": "s", "headers":
            {"keyHeaders": [{"name": "n", "value": "v"}]}}, "autoSkipOnError": true}}})";
    const TavuAmazonMusic document(TavuHash(TavuJson::parse(body).toHash()));
    EXPECT_EQ(document.result(), QStringLiteral("#page"));
    const auto in = [](const TavuHash& collection, const char* key) {
        return TavuHash(collection.__value(QString::fromLatin1(key)).toHash());
    };
    const TavuAmazonMusicNavigationNodeDescription page(
        in(document.navigationNodeDescriptions(), "page"));
    EXPECT_EQ(page.items(), (QStringList{ QStringLiteral("#one"), QStringLiteral("two") }));
    EXPECT_EQ(page.nextPage(), QStringLiteral("page2"));
    const TavuAmazonMusicItemDescription item(in(document.itemDescriptions(), "one"));
    EXPECT_EQ(item.itemLabel(), QStringLiteral("One"));
    EXPECT_EQ(item.artist().name(), QStringLiteral("A"));
    EXPECT_EQ(item.image().uri(), QStringLiteral("https://h/i"));
    const TavuAmazonMusicPlayable playable(in(document.playables(), "p"));
    EXPECT_EQ(playable.naturalTrackPointer().chunk(), QStringLiteral("c#k"));
    EXPECT_EQ(playable.naturalTrackPointer().indexWithinChunk(), 2);
    const TavuAmazonMusicTrackDefinition track(in(document.trackDefinitions(), "t"));
    EXPECT_EQ(track.duration(), 180000);
    EXPECT_TRUE(track.autoSkipOnError());
    EXPECT_EQ(track.audio().headers().keyHeaders().record(0).value(), QStringLiteral("v"));
}

TEST(TavuAmazonMusic, a_collection_of_the_wrong_type_is_empty)
{
    const TavuAmazonMusic document(TavuHash(
        TavuJson::parse(R"({"playables": [1], "itemDescriptions": "x", "result": {}})").toHash()));
    EXPECT_TRUE(document.playables().isEmpty());
    EXPECT_TRUE(document.itemDescriptions().isEmpty());
    EXPECT_EQ(document.result(), QString());
    EXPECT_TRUE(document.__contains(TavuAmazonMusic::Playables()));
}

} // namespace
