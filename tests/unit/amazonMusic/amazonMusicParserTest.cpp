#include "amazonMusicParser.h"

#include "logcapture.h"
#include "printers.h"
#include "tavuenums.h"
#include "tavujson.h"
#include "tavupaths.h"

#include <gtest/gtest.h>

namespace {

constexpr auto warning = log4cplus::WARN_LOG_LEVEL;

const AmazonMusicParser parser;

TavuUrl url(const char* text)
{
    return TavuUrl::fromEncoded(text);
}

TavuUrl pageUrl()
{
    return url("https://service.example/catalog/page?size=2");
}

QString missing(const char* collection, const char* key)
{
    return QStringLiteral("Hash \"%1\" doesn't contain key \"%2\"")
        .arg(QLatin1String(collection), QLatin1String(key));
}

TavuAmazonMusic document(const QByteArray& json)
{
    return TavuAmazonMusic(TavuHash(TavuJson::parse(json).toHash()));
}

TEST(AmazonMusicParserReference, IsLocalWhenItBeginsWithAHash)
{
    EXPECT_TRUE(parser.isLocalReference(QStringLiteral("#key")));
    EXPECT_TRUE(parser.isLocalReference(QStringLiteral("#")));
    EXPECT_FALSE(parser.isLocalReference(QStringLiteral("key")));
    EXPECT_FALSE(parser.isLocalReference(QStringLiteral("page#key")));
    EXPECT_FALSE(parser.isLocalReference(QString()));
}

TEST(AmazonMusicParserReference, LosesOneHashOnly)
{
    EXPECT_EQ(parser.removeLocalReference(QStringLiteral("##key")), QStringLiteral("#key"));
    EXPECT_EQ(parser.removeLocalReference(QStringLiteral("#key")), QStringLiteral("key"));
    EXPECT_EQ(parser.removeLocalReference(QStringLiteral("key")), QStringLiteral("key"));
}

TEST(AmazonMusicParserReference, StaysEmptyWhenItIsEmpty)
{
    EXPECT_TRUE(parser.removeLocalReference(QString()).isEmpty());
    EXPECT_TRUE(parser.removeLocalReference(QStringLiteral("#")).isEmpty());
}

TEST(AmazonMusicParserTrackPointer, GetsItsChunkAsAnAbsoluteUrl)
{
    TavuAmazonMusicTrackPointer pointer;
    pointer.setChunk(QStringLiteral("../chunks/7?x=%2F#c1"));
    pointer.setIndexWithinChunk(3);

    const auto resolved = parser.resolveTrackPointer(pointer, pageUrl());

    EXPECT_EQ(resolved.chunkUrl(), QStringLiteral("https://service.example/chunks/7?x=%2F#c1"));
    EXPECT_EQ(resolved.chunk(), pointer.chunk());
    EXPECT_EQ(resolved.indexWithinChunk(), 3);
}

TEST(AmazonMusicParserTrackPointer, WithoutChunkKeepsAnEmptyUrl)
{
    const auto resolved = parser.resolveTrackPointer(TavuAmazonMusicTrackPointer(), pageUrl());

    EXPECT_TRUE(resolved.isEmpty());
    EXPECT_TRUE(resolved.chunkUrl().isEmpty());
}

TEST(AmazonMusicParserTrackDefinition, GetsItsRatingUrlAndItsErrorReport)
{
    const auto doc = document(R"({"generalErrorReports": {"e1": {"brief": "Not here"}}})");
    TavuAmazonMusicTrackDefinition definition(
        document(R"({"trackRating": {"ratingURI": "rate/1"}, "error": "#e1"})"));

    parser.fillTrackDefinition(&definition, doc, pageUrl());

    EXPECT_EQ(
        definition.trackRatingUrl(), QStringLiteral("https://service.example/catalog/rate/1"));
    EXPECT_EQ(definition.errorInst().brief(), QStringLiteral("Not here"));
}

TEST(AmazonMusicParserTrackDefinition, LeavesAForeignErrorAsItStands)
{
    const LogCapture log;
    TavuAmazonMusicTrackDefinition definition(document(R"({"error": "errors/1"})"));

    parser.fillTrackDefinition(&definition, TavuAmazonMusic(), pageUrl());

    EXPECT_EQ(definition.error(), QStringLiteral("errors/1"));
    EXPECT_FALSE(definition.__contains(TavuAmazonMusicTrackDefinition::ErrorInst()));
    EXPECT_FALSE(definition.__contains(TavuAmazonMusicTrackDefinition::TrackRatingUrl()));
    EXPECT_TRUE(log.texts(warning).isEmpty());
}

TEST(AmazonMusicParserPlayable, IsFoundByItsFragmentAndCompleted)
{
    const auto playable = parser.parsePlayableResponse(R"({
        "playables": {"p1": {
            "trackDefinition": "#t1",
            "naturalTrackPointer": {"chunk": "/chunks/a", "indexWithinChunk": 7},
            "shuffleTrackPointer": {"chunk": "#chunk", "indexWithinChunk": 2},
            "selfData": "self/1"}},
        "trackDefinitions": {"t1": {"title": "Song", "trackRating": {"ratingURI": "/rate"}}}
        })",
        url("https://service.example/play/1#p1"));

    EXPECT_EQ(playable.trackDefinitionInst().title(), QStringLiteral("Song"));
    EXPECT_EQ(playable.trackDefinitionInst().trackRatingUrl(),
        QStringLiteral("https://service.example/rate"));
    EXPECT_EQ(playable.naturalTrackPointer().chunkUrl(),
        QStringLiteral("https://service.example/chunks/a"));
    EXPECT_EQ(playable.naturalTrackPointer().indexWithinChunk(), 7);
    EXPECT_EQ(playable.shuffleTrackPointer().chunkUrl(),
        QStringLiteral("https://service.example/play/1#chunk"));
    EXPECT_EQ(playable.selfDataUrl(), QStringLiteral("https://service.example/play/self/1"));
}

TEST(AmazonMusicParserPlayable, WithoutOwnDocumentOrTrackGetsNeither)
{
    const auto playable = parser.parsePlayableResponse(
        R"({"playables": {"p1": {"trackDefinition": "elsewhere"}}})", url("https://a.example/#p1"));

    EXPECT_FALSE(playable.__contains(TavuAmazonMusicPlayable::SelfDataUrl()));
    EXPECT_FALSE(playable.__contains(TavuAmazonMusicPlayable::TrackDefinitionInst()));
}

TEST(AmazonMusicParserPlayable, WithAnEmptyOwnDocumentIsThePageItself)
{
    const auto playable = parser.parsePlayableResponse(
        R"({"playables": {"p1": {"selfData": ""}}})", url("https://a.example/x?y=1#p1"));

    EXPECT_EQ(TavuUrl(playable.selfDataUrl()).path(), QStringLiteral("/x"));
}

TEST(AmazonMusicParserPlayable, IsLookedUpWithAHashOfItsOwn)
{
    const LogCapture log;
    const auto playable = parser.parsePlayableResponse(
        R"({"playables": {"#p1": {"selfData": "hash"}, "p1": {"selfData": "plain"}}})",
        url("https://a.example/#%23p1"));

    EXPECT_EQ(playable.selfData(), QStringLiteral("hash"));
    EXPECT_TRUE(log.texts(warning).isEmpty());
}

TEST(AmazonMusicParserPlayable, DoesNotFallBackToTheResult)
{
    const LogCapture log;
    const auto playable = parser.parsePlayableResponse(
        R"({"result": "#p1", "playables": {"p1": {"selfData": "self"}}})",
        url("https://a.example/"));

    EXPECT_TRUE(playable.selfData().isEmpty());
    EXPECT_EQ(log.texts(warning), QStringList{ missing("playables", "") });
}

TEST(AmazonMusicParserTrackInstance, IsFoundByItsFragmentAndCompleted)
{
    const auto instance = parser.parseTrackInstanceResponse(R"({
        "result": "#other",
        "trackInstances": {"i1": {
            "trackDefinition": "#t1", "playbackEventCollector": "/events/1", "selfData": "i/1"}},
        "trackDefinitions": {"t1": {"title": "Song"}}
        })",
        url("https://service.example/tracks/1#i1"));

    EXPECT_EQ(instance.trackDefinitionInst().title(), QStringLiteral("Song"));
    EXPECT_EQ(
        instance.playbackEventCollectorUrl(), QStringLiteral("https://service.example/events/1"));
    EXPECT_EQ(instance.selfDataUrl(), QStringLiteral("https://service.example/tracks/i/1"));
}

TEST(AmazonMusicParserTrackInstance, IsFoundByTheResultWhenTheUrlHasNoFragment)
{
    const auto instance = parser.parseTrackInstanceResponse(
        R"({"result": "#i1", "trackInstances": {"i1": {"trackDefinition": "t1"}},
            "trackDefinitions": {"t1": {"title": "Song"}}})",
        url("https://service.example/tracks/1"));

    // The definition is looked up whether or not the reference has its hash.
    EXPECT_EQ(instance.trackDefinitionInst().title(), QStringLiteral("Song"));
    EXPECT_FALSE(instance.__contains(TavuAmazonMusicTrackInstance::PlaybackEventCollectorUrl()));
    EXPECT_FALSE(instance.__contains(TavuAmazonMusicTrackInstance::SelfDataUrl()));
}

TEST(AmazonMusicParserTrackInstance, IsFoundByAFragmentThatHasAHash)
{
    const auto instance = parser.parseTrackInstanceResponse(
        R"({"trackInstances": {"i1": {"selfData": "i"}}})", url("https://a.example/#%23i1"));

    EXPECT_EQ(instance.selfData(), QStringLiteral("i"));
}

TEST(AmazonMusicParserTrackInstance, AlwaysLooksForItsDefinition)
{
    const LogCapture log;
    const auto instance = parser.parseTrackInstanceResponse(
        R"({"trackInstances": {"i1": {}}})", url("https://a.example/#i1"));

    EXPECT_TRUE(instance.trackDefinitionInst().isEmpty());
    EXPECT_EQ(log.texts(warning), QStringList{ missing("trackDefinitions", "") });
}

TEST(AmazonMusicParserBrowse, CompletesFoldersAndPlayables)
{
    const auto page = parser.parseBrowseResponse(R"({
        "result": "#root",
        "navigationNodeDescriptions": {"root": {"items": ["#a", "#b"], "nextPage": "more"}},
        "itemDescriptions": {
            "a": {"itemLabel": "Folder", "summary": "#s"},
            "b": {"itemLabel": "Album", "playable": "#p"}},
        "navigationNodeSummaries": {"s": {"description": "/folder"}},
        "playables": {"p": {"selfData": "/album"}}
        })",
        pageUrl());

    ASSERT_EQ(page.itemsInst().count(), 2);
    EXPECT_EQ(page.itemsInst().record(0).itemLabel(), QStringLiteral("Folder"));
    EXPECT_EQ(page.itemsInst().record(0).summaryInst().description(), QStringLiteral("/folder"));
    EXPECT_EQ(page.itemsInst().record(1).playableInst().selfDataUrl(),
        QStringLiteral("https://service.example/album"));
    EXPECT_EQ(page.itemsInst().record(1).playableUrl(),
        QStringLiteral("https://service.example/catalog/page?size=2#p"));
    EXPECT_EQ(page.nextPage(), QStringLiteral("more"));
}

TEST(AmazonMusicParserBrowse, FindsTheFolderByTheFragmentBeforeTheResult)
{
    const QByteArray body = R"({"result": "#one", "navigationNodeDescriptions": {
        "one": {"nextPage": "1"}, "two": {"nextPage": "2"}}})";

    EXPECT_EQ(parser.parseBrowseResponse(body, url("https://a.example/#two")).nextPage(),
        QStringLiteral("2"));
    EXPECT_EQ(parser.parseBrowseResponse(body, url("https://a.example/#%23two")).nextPage(),
        QStringLiteral("2"));
    EXPECT_EQ(parser.parseBrowseResponse(body, url("https://a.example/")).nextPage(),
        QStringLiteral("1"));
}

TEST(AmazonMusicParserBrowse, GivesAPlayableOfAnotherDocumentItsUrlOnly)
{
    const LogCapture log;
    const auto page = parser.parseBrowseResponse(
        R"({"navigationNodeDescriptions": {"n": {"items": ["#a"]}},
            "itemDescriptions": {"a": {"playable": "play/1#p", "summary": "elsewhere"}}})",
        url("https://a.example/x/#n"));

    const auto item = page.itemsInst().record(0);
    EXPECT_EQ(item.playableUrl(), QStringLiteral("https://a.example/x/play/1#p"));
    EXPECT_TRUE(item.playableInst().isEmpty());
    EXPECT_TRUE(item.summaryInst().isEmpty());
    EXPECT_TRUE(log.texts(warning).isEmpty());
}

TEST(AmazonMusicParserBrowse, KeepsAnEmptyElementForAMissingItem)
{
    const LogCapture log;
    const auto page = parser.parseBrowseResponse(
        R"({"navigationNodeDescriptions": {"n": {"items": ["#a", "#gone", "#c"]}},
            "itemDescriptions": {"a": {"itemLabel": "A"}, "c": {"itemLabel": "C"}}})",
        url("https://a.example/#n"));

    ASSERT_EQ(page.itemsInst().count(), 3);
    EXPECT_EQ(page.itemsInst().record(0).itemLabel(), QStringLiteral("A"));
    EXPECT_TRUE(page.itemsInst().record(1).isEmpty());
    EXPECT_EQ(page.itemsInst().record(2).itemLabel(), QStringLiteral("C"));
    EXPECT_EQ(log.texts(warning), QStringList{ missing("itemDescriptions", "gone") });
}

TEST(AmazonMusicParserChunk, IsCalledChunkWhenTheUrlHasNoFragment)
{
    const auto chunk = parser.parseChunkResponse(R"({
        "result": "#other",
        "trackContainerChunkDescriptions": {"chunk": {
            "trackInstances": ["#i1", "#gone", "i2"],
            "firstTrackPointer": {"chunk": "first"},
            "lastTrackPointer": {"chunk": "last"},
            "nextTrackPointer": {"chunk": "next", "indexWithinChunk": 4},
            "prevTrackPointer": {"chunk": "prev"}}},
        "trackInstances": {"i1": {"trackDefinition": "#t"}, "i2": {"selfData": "self"}},
        "trackDefinitions": {"t": {"title": "Song"}, "": {}}
        })",
        url("https://a.example/chunks/1"));

    ASSERT_EQ(chunk.itemsInst().count(), 3);
    EXPECT_EQ(chunk.itemsInst().record(0).trackDefinitionInst().title(), QStringLiteral("Song"));
    EXPECT_EQ(
        chunk.itemsInst().record(2).selfDataUrl(), QStringLiteral("https://a.example/chunks/self"));
    EXPECT_EQ(
        chunk.firstTrackPointer().chunkUrl(), QStringLiteral("https://a.example/chunks/first"));
    EXPECT_EQ(chunk.lastTrackPointer().chunkUrl(), QStringLiteral("https://a.example/chunks/last"));
    EXPECT_EQ(chunk.nextTrackPointer().chunkUrl(), QStringLiteral("https://a.example/chunks/next"));
    EXPECT_EQ(chunk.nextTrackPointer().indexWithinChunk(), 4);
    EXPECT_EQ(chunk.prevTrackPointer().chunkUrl(), QStringLiteral("https://a.example/chunks/prev"));
}

TEST(AmazonMusicParserChunk, IsFoundByItsFragmentAsItIs)
{
    const LogCapture log;
    const QByteArray body = R"({"trackContainerChunkDescriptions": {
        "c": {"nextTrackPointer": {"chunk": "plain"}},
        "#c": {"nextTrackPointer": {"chunk": "hash"}}}})";

    EXPECT_EQ(
        parser.parseChunkResponse(body, url("https://a.example/#c")).nextTrackPointer().chunk(),
        QStringLiteral("plain"));
    EXPECT_EQ(
        parser.parseChunkResponse(body, url("https://a.example/#%23c")).nextTrackPointer().chunk(),
        QStringLiteral("hash"));
    EXPECT_TRUE(log.texts(warning).isEmpty());
}

TEST(AmazonMusicParserErrorReport, IsFoundByItsIdOrElseByTheResult)
{
    const QByteArray body = R"({"result": "#e1", "generalErrorReports": {
        "e1": {"brief": "one"}, "e2": {"brief": "two"}}})";

    EXPECT_EQ(
        parser.parseGeneralErrorReport(body, QStringLiteral("#e2")).brief(), QStringLiteral("two"));
    EXPECT_EQ(
        parser.parseGeneralErrorReport(body, QStringLiteral("e2")).brief(), QStringLiteral("two"));
    EXPECT_EQ(parser.parseGeneralErrorReport(body, QString()).brief(), QStringLiteral("one"));
}

TEST(AmazonMusicParserMissingKey, IsWarnedOfWithTheCollectionsName)
{
    struct Case
    {
        const char* collection;
        const char* body;
    };
    const Case cases[] = {
        { "playables", R"({"navigationNodeDescriptions": {"k": {"items": ["#i"]}},
            "itemDescriptions": {"i": {"playable": "#gone"}}})" },
        { "navigationNodeSummaries", R"({"navigationNodeDescriptions": {"k": {"items": ["#i"]}},
            "itemDescriptions": {"i": {"summary": "#gone"}}})" },
        { "itemDescriptions", R"({"navigationNodeDescriptions": {"k": {"items": ["#gone"]}}})" },
        { "trackDefinitions", R"({"navigationNodeDescriptions": {"k": {"items": ["#i"]}},
            "itemDescriptions": {"i": {"playable": "#p"}},
            "playables": {"p": {"trackDefinition": "#gone"}}})" },
        { "generalErrorReports", R"({"navigationNodeDescriptions": {"k": {"items": ["#i"]}},
            "itemDescriptions": {"i": {"playable": "#p"}},
            "playables": {"p": {"trackDefinition": "#t"}},
            "trackDefinitions": {"t": {"error": "#gone"}}})" },
    };
    for (const Case& one : cases) {
        const LogCapture log;
        parser.parseBrowseResponse(one.body, url("https://a.example/#k"));
        EXPECT_EQ(log.texts(warning), QStringList{ missing(one.collection, "gone") });
    }
}

TEST(AmazonMusicParserMissingKey, OfAWholeDocumentIsWarnedOfToo)
{
    const LogCapture log;
    parser.parsePlayableResponse("{}", url("https://a.example/#p1"));
    parser.parseBrowseResponse("{}", url("https://a.example/#n1"));
    parser.parseChunkResponse("{}", url("https://a.example/"));
    parser.parseGeneralErrorReport("{}", QStringLiteral("#e1"));
    parser.parseTrackInstanceResponse("{}", url("https://a.example/#i1"));

    EXPECT_EQ(log.texts(warning),
        (QStringList{ missing("playables", "p1"), missing("navigationNodeDescriptions", "n1"),
            missing("trackContainerChunkDescriptions", "chunk"),
            missing("generalErrorReports", "e1"), missing("trackInstances", "i1"),
            missing("trackDefinitions", "") }));
}

class AmazonMusicParserBadBodyOfAnyKind : public testing::TestWithParam<const char*>
{
};

TEST_P(AmazonMusicParserBadBodyOfAnyKind, IsADocumentWithoutAnything)
{
    const LogCapture log;
    const QByteArray body(GetParam());
    EXPECT_TRUE(parser.parseBrowseResponse(body, pageUrl()).itemsInst().isEmpty());
    EXPECT_TRUE(parser.parseChunkResponse(body, pageUrl()).itemsInst().isEmpty());
    EXPECT_TRUE(parser.parseGeneralErrorReport(body, QStringLiteral("e")).isEmpty());
    EXPECT_TRUE(parser.parsePlayableResponse(body, pageUrl()).selfDataUrl().isEmpty());
    EXPECT_TRUE(parser.parseTrackInstanceResponse(body, pageUrl()).trackDefinitionInst().isEmpty());
    EXPECT_EQ(log.count(warning, missing("generalErrorReports", "e")), 1);
}

INSTANTIATE_TEST_SUITE_P(Bodies, AmazonMusicParserBadBodyOfAnyKind,
    testing::Values("", "<html>", R"({"result": )", "[1, 2]", "null", "\xff\xfe"));

TEST(AmazonMusicParserBadBody, WithWrongTypesReadsAsEmptyRecords)
{
    const auto page = parser.parseBrowseResponse(R"({
        "result": 5, "navigationNodeDescriptions": {"n": {"items": ["#a", 7, null], "nextPage": []}},
        "itemDescriptions": {"a": "no record", "7": {"summary": "#s", "playable": {"a": 1}}},
        "navigationNodeSummaries": [1]})",
        url("https://a.example/#n"));

    ASSERT_EQ(page.itemsInst().count(), 3);
    EXPECT_TRUE(page.itemsInst().record(0).isEmpty());
    EXPECT_TRUE(page.itemsInst().record(1).summaryInst().isEmpty());
    EXPECT_TRUE(page.nextPage().isEmpty());
}

TavuAmazonMusicGeneralErrorReport report(const QByteArray& json)
{
    return TavuAmazonMusicGeneralErrorReport(document(json));
}

TEST(AmazonMusicParserErrorScreen, PrefersTheTerseTitle)
{
    const auto rows = parser.createErrorReportScreen(
        report(R"({"brief": "Brief", "terse": "Terse", "explanation": "Why"})"));

    ASSERT_EQ(rows.count(), 1);
    EXPECT_EQ(rows.at(0).title(), QStringLiteral("Terse"));
    EXPECT_EQ(rows.at(0).longDescription(), QStringLiteral("Why"));
    EXPECT_EQ(int(rows.at(0).type()), 6);
}

TEST(AmazonMusicParserErrorScreen, TakesTheBriefTitleWhenTheTerseOneIsEmpty)
{
    EXPECT_EQ(
        parser.createErrorReportScreen(report(R"({"brief": "Brief", "terse": ""})")).at(0).title(),
        QStringLiteral("Brief"));
    EXPECT_EQ(parser.createErrorReportScreen(report(R"({"brief": "Brief"})")).at(0).title(),
        QStringLiteral("Brief"));
}

/// The row of a report's only option.
TavuRoles optionRow(const QByteArray& option)
{
    return parser.createErrorReportScreen(report(R"({"brief": "B", "options": [)" + option + "]}"))
        .value(1);
}

TEST(AmazonMusicParserErrorScreen, MakesARowOfEachOptionInOrder)
{
    const auto rows = parser.createErrorReportScreen(
        report(R"({"options": [{"label": "One"}, {"label": "Two"}, {"label": "Three"}]})"));

    QStringList titles;
    for (const TavuRoles& row : rows)
        titles += row.title();
    EXPECT_EQ(titles.mid(1),
        (QStringList{ QStringLiteral("One"), QStringLiteral("Two"), QStringLiteral("Three") }));
}

TEST(AmazonMusicParserErrorScreen, LinksToTheWeb)
{
    const TavuRoles row =
        optionRow(R"({"label": "Web", "action": "www", "uri": "https://help.example/?a=b"})");

    EXPECT_EQ(row.title(), QStringLiteral("Web"));
    EXPECT_EQ(int(row.type()), 106);
    EXPECT_EQ(row.mediaData().resources().count(), 1);
    EXPECT_EQ(row.mediaData().firstResource().uri(), QStringLiteral("https://help.example/?a=b"));
    EXPECT_FALSE(row.__contains(TavuRoles::Path()));
}

TEST(AmazonMusicParserErrorScreen, PostsToTheService)
{
    const TavuRoles row = optionRow(
        R"({"label": "Buy", "action": "post", "uri": "https://service.example/buy?x=1&y=2#f"})");

    EXPECT_EQ(row.title(), QStringLiteral("Buy"));
    EXPECT_EQ(int(row.type()), 102);
    EXPECT_EQ(row.path(),
        TavuAmazonMusicBrowsePostActionPath().addParam(
            QStringLiteral("url"), QStringLiteral("https://service.example/buy?x=1&y=2#f")));
}

TEST(AmazonMusicParserErrorScreen, ClosesForEveryOtherAction)
{
    for (const char* option : { R"({"label": "L", "action": "WWW", "uri": "https://a.example/"})",
             R"({"label": "L", "action": "close"})", R"({"label": "L"})" }) {
        TavuRoles close;
        close.setTitle(QStringLiteral("L"));
        close.setType(static_cast<TavuRolesType::Enum>(102));
        close.setPath(TavuAmazonMusicBrowseCloseActionPath());
        EXPECT_EQ(optionRow(option), close);
    }
}

TEST(AmazonMusicParserLog, TracesEachOperationWithItsSignature)
{
    const LogCapture log;
    parser.parseGeneralErrorReport("{}", QStringLiteral("e"));

    const QStringList traces = log.texts(log4cplus::TRACE_LOG_LEVEL);
    const QString signature = QStringLiteral("TavuAmazonMusicGeneralErrorReport "
                                             "AmazonMusicParser::parseGeneralErrorReport("
                                             "const QByteArray&, const QString&) const");
    EXPECT_EQ(traces.first(), QStringLiteral("Enter ") + signature);
    EXPECT_EQ(traces.last(), QStringLiteral("Leave ") + signature);
}

} // namespace
