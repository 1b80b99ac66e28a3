#include "amazonMusicBrowser.h"

#include "logcapture.h"
#include "printers.h"
#include "tavujson.h"
#include "tavupaths.h"

#include <gtest/gtest.h>

namespace {

const TavuUrl pageUrl = TavuUrl::fromEncoded("https://service.example/catalog/page?size=2");

QString param(const TavuRoles& row, const char* name)
{
    return row.path().param(QLatin1String(name));
}

QString firstUri(const TavuRoles& row)
{
    return row.mediaData().firstResource().uri();
}

TavuRoles rowOf(const QByteArray& json)
{
    const AmazonMusicBrowser browser(nullptr, nullptr);
    return browser.createRow(
        TavuAmazonMusicItemDescription(TavuHash(TavuJson::parse(json).toHash())), pageUrl);
}

TavuRoles trackRow(const QString& label, qint64 duration)
{
    TavuAmazonMusicTrackDefinition definition;
    definition.setDuration(duration);
    TavuAmazonMusicPlayable playable;
    playable.setTrackDefinitionInst(definition);
    TavuAmazonMusicItemDescription item;
    item.setItemLabel(label);
    item.setPlayableInst(playable);
    return AmazonMusicBrowser(nullptr, nullptr).createRow(item, pageUrl);
}

QString titleOf(qint64 duration)
{
    return trackRow(QStringLiteral("Song"), duration).title();
}

TEST(AmazonMusicBrowserRows, OfAnythingCarryTitleIconAndDoNotTrack)
{
    const TavuRoles row = rowOf(R"({"itemLabel": "Label", "image": {"uri": "https://i/1.jpg"}})");

    TavuRoles expected;
    expected.setTitle(QStringLiteral("Label"));
    expected.setIcon(QStringLiteral("https://i/1.jpg"));
    expected.setDoNotTrack(true);
    EXPECT_EQ(row, expected);
}

TEST(AmazonMusicBrowserRows, OfAFolderLeadToItsPage)
{
    const LogCapture log;
    const TavuRoles row =
        rowOf(R"({"itemLabel": "Folder", "summaryInst": {"description": "folder?x=%2F&y"}})");

    EXPECT_EQ(int(row.type()), 1);
    EXPECT_TRUE(row.__contains(TavuRoles::AudioType()));
    EXPECT_EQ(int(row.audioType()), 0);
    EXPECT_FALSE(row.__contains(TavuRoles::ContainerType()));
    EXPECT_FALSE(row.__contains(TavuRoles::ContainerPlayable()));
    EXPECT_EQ(row.path().withoutParams(), TavuAmazonMusicBrowsePath());
    EXPECT_EQ(param(row, "url"), QStringLiteral("https://service.example/catalog/folder?x=%2F&y"));
    EXPECT_FALSE(row.path().hasParam(QStringLiteral("selfUrl")));
    EXPECT_TRUE(log.texts(log4cplus::WARN_LOG_LEVEL).isEmpty());
}

TEST(AmazonMusicBrowserRows, OfAFolderNameThePlayLogicAndTheServiceOnly)
{
    const TavuRoles row =
        rowOf(R"({"artist": {"name": "Artist"}, "summaryInst": {"description": "folder"}})");

    TavuMetaData metaData;
    metaData.setPlayLogicPath(TavuAmazonMusicPlayLogicPath());
    metaData.setServiceID(TavuService_AmazonMusic_Id());
    TavuMediaData mediaData;
    mediaData.setMetaData(metaData);
    EXPECT_EQ(row.mediaData(), mediaData);
}

TEST(AmazonMusicBrowserRows, OfAFolderInTheSameDocumentLeadToThePageWithTheKeyAsFragment)
{
    EXPECT_EQ(param(rowOf(R"({"summaryInst": {"description": "#n2"}})"), "url"),
        QStringLiteral("https://service.example/catalog/page?size=2#n2"));
}

TEST(AmazonMusicBrowserRows, OfAFolderWithoutDescriptionLeadToThePageItself)
{
    const LogCapture log;
    const TavuRoles row = rowOf(R"({"itemLabel": "Odd", "summaryInst": {"description": ""}})");

    EXPECT_EQ(int(row.type()), 1);
    EXPECT_EQ(param(row, "url"), QString::fromUtf8(pageUrl.toEncoded()));
    EXPECT_EQ(log.texts(log4cplus::WARN_LOG_LEVEL),
        QStringList{ QStringLiteral("Browsable node \"Odd\" without summary description") });
}

TEST(AmazonMusicBrowserRows, OfAPlayableFolderOpenAndPlay)
{
    const TavuRoles row = rowOf(R"({
        "itemLabel": "Album", "artist": {"name": "Artist"},
        "summaryInst": {"description": "/album/1"},
        "playableInst": {"selfDataUrl": "https://service.example/self/1"},
        "playableUrl": "https://service.example/catalog/page?size=2#p1"})");

    EXPECT_EQ(int(row.type()), 1);
    EXPECT_EQ(int(row.audioType()), 1);
    EXPECT_EQ(int(row.containerType()), 2);
    EXPECT_TRUE(row.containerPlayable());
    EXPECT_EQ(row.path().withoutParams(), TavuAmazonMusicBrowsePath());
    EXPECT_EQ(param(row, "url"), QStringLiteral("https://service.example/album/1"));
    EXPECT_EQ(param(row, "selfUrl"), QStringLiteral("https://service.example/self/1"));
    EXPECT_EQ(row.mediaData().metaData().artist(), QStringLiteral("Artist"));
    EXPECT_EQ(row.mediaData().resources().count(), 1);
    EXPECT_EQ(firstUri(row), QStringLiteral("https://service.example/catalog/page?size=2#p1"));
    EXPECT_FALSE(row.mediaData().metaData().__contains(TavuMetaData::LikeItPath()));
}

TEST(AmazonMusicBrowserRows, OfAStationPlayAsAStream)
{
    const TavuRoles row = rowOf(R"({
        "itemLabel": "Station", "artist": {"name": "Various"},
        "playableInst": {"selfDataUrl": "https://service.example/self/2"},
        "playableUrl": "https://service.example/station#p"})");

    EXPECT_EQ(int(row.type()), 3);
    EXPECT_EQ(int(row.audioType()), 2);
    EXPECT_FALSE(row.__contains(TavuRoles::ContainerType()));
    EXPECT_FALSE(row.__contains(TavuRoles::ContainerPlayable()));
    EXPECT_EQ(row.path().withoutParams(), TavuAmazonMusicPrefixPath());
    EXPECT_EQ(param(row, "selfUrl"), QStringLiteral("https://service.example/self/2"));
    EXPECT_FALSE(row.path().hasParam(QStringLiteral("url")));
    EXPECT_EQ(row.mediaData().metaData().artist(), QStringLiteral("Various"));
    EXPECT_EQ(firstUri(row), QStringLiteral("https://service.example/station#p"));
}

TEST(AmazonMusicBrowserRows, OfATrackPlayItAndTakeAThumb)
{
    const TavuRoles row = rowOf(R"({
        "itemLabel": "Song", "artist": {"name": "Artist"},
        "playableInst": {"selfDataUrl": "https://service.example/self/3", "trackDefinitionInst": {
            "album": {"name": "Album"}, "trackRatingUrl": "https://service.example/rate?t=1&u=%2F"}},
        "playableUrl": "https://service.example/track#p"})");

    EXPECT_EQ(int(row.type()), 3);
    EXPECT_EQ(int(row.audioType()), 1);
    EXPECT_EQ(row.title(), QStringLiteral("Song"));
    EXPECT_EQ(row.path().withoutParams(), TavuAmazonMusicPrefixPath());
    EXPECT_EQ(param(row, "selfUrl"), QStringLiteral("https://service.example/self/3"));
    EXPECT_EQ(firstUri(row), QStringLiteral("https://service.example/track#p"));

    const TavuMetaData metaData = row.mediaData().metaData();
    EXPECT_EQ(metaData.artist(), QStringLiteral("Artist"));
    EXPECT_EQ(metaData.album(), QStringLiteral("Album"));
    EXPECT_EQ(metaData.serviceID(), TavuService_AmazonMusic_Id());
    EXPECT_EQ(metaData.playLogicPath(), TavuAmazonMusicPlayLogicPath());
    EXPECT_EQ(metaData.likeItPath().withoutParams(), TavuAmazonMusicBrowseRatingPath());
    EXPECT_EQ(metaData.likeItPath().param(QStringLiteral("url")),
        QStringLiteral("https://service.example/rate?t=1&u=%2F"));
}

TEST(AmazonMusicBrowserRows, OfATrackWithoutRatingUrlTakeNoThumb)
{
    const TavuRoles row = rowOf(R"({"playableInst": {"trackDefinitionInst": {"title": "Song"}}})");

    EXPECT_EQ(int(row.audioType()), 1);
    EXPECT_FALSE(row.mediaData().metaData().__contains(TavuMetaData::LikeItPath()));
    EXPECT_FALSE(row.mediaData().metaData().__contains(TavuMetaData::Album()));
}

TEST(AmazonMusicBrowserRows, OfATrackShowItsDurationBeyondOneSecond)
{
    EXPECT_EQ(titleOf(0), QStringLiteral("Song"));
    EXPECT_EQ(titleOf(-5000), QStringLiteral("Song"));
    EXPECT_EQ(titleOf(1000), QStringLiteral("Song"));
    EXPECT_EQ(titleOf(1001), QStringLiteral("Song (00:00:01)"));
    EXPECT_EQ(titleOf(3723000), QStringLiteral("Song (01:02:03)"));
}

TEST(AmazonMusicBrowserRows, OfATrackLongerThanADayShowTheTimeOfDay)
{
    EXPECT_EQ(titleOf(Q_INT64_C(86400000) + 3723000), QStringLiteral("Song (01:02:03)"));
    EXPECT_EQ(titleOf(Q_INT64_C(86400000) * 1000000 + 61000), QStringLiteral("Song (00:01:01)"));
}

TEST(AmazonMusicBrowserRows, KeepAPlaceholderInATitle)
{
    EXPECT_EQ(trackRow(QStringLiteral("100 %1 %2"), 2000).title(),
        QStringLiteral("100 %1 %2 (00:00:02)"));
}

TEST(AmazonMusicBrowserRows, OfATrackThatCannotBePlayedOpenItsReport)
{
    const TavuRoles row = rowOf(R"({
        "itemLabel": "Song", "image": {"uri": "https://i/1.jpg"},
        "playableInst": {"selfDataUrl": "https://service.example/self/4", "trackDefinitionInst": {
            "duration": 5000, "error": "#e1", "errorInst": {"brief": "No"}}},
        "playableUrl": "https://service.example/track#p"})");

    TavuRoles expected;
    expected.setTitle(QStringLiteral("Song"));
    expected.setIcon(QStringLiteral("skin:iconMusic"));
    expected.setDoNotTrack(true);
    expected.setType(TavuRolesType::Folder);
    expected.setPath(TavuAmazonMusicBrowsePath()
                         .addParam(QStringLiteral("url"), QString::fromUtf8(pageUrl.toEncoded()))
                         .addParam(QStringLiteral("error"), QStringLiteral("#e1")));
    EXPECT_EQ(row, expected);
}

TEST(AmazonMusicBrowserRows, LeadToMoreResults)
{
    TavuAmazonMusicNavigationNodeDescription page;
    page.setNextPage(QStringLiteral("page?start=2&size=2"));
    const TavuRoles row = AmazonMusicBrowser(nullptr, nullptr).createSeeMoreRow(page, pageUrl);

    TavuRoles expected;
    expected.setTitle(QStringLiteral("See more results"));
    expected.setType(TavuRolesType::Folder);
    expected.setPath(TavuAmazonMusicBrowsePath().addParam(QStringLiteral("url"),
        QStringLiteral("https://service.example/catalog/page?start=2&size=2")));
    EXPECT_EQ(row, expected);
}

TEST(AmazonMusicBrowserRows, HaveNoResourcesUntilTheyAreAdded)
{
    const TavuMediaData mediaData = AmazonMusicBrowser(nullptr, nullptr)
                                        .createMediaData(QStringLiteral("Artist"), QString(),
                                            TavuUrl::fromEncoded("https://service.example/rate"));

    EXPECT_FALSE(mediaData.__contains(TavuMediaData::Resources()));
    EXPECT_FALSE(mediaData.metaData().__contains(TavuMetaData::Album()));
    EXPECT_TRUE(mediaData.metaData().__contains(TavuMetaData::LikeItPath()));
}

} // namespace
