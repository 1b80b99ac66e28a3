#include "tavupaths.h"

#include "printers.h"

#include <gtest/gtest.h>

#include <QSet>

namespace {

using Path = CMPath (*)();

const QList<Path> nodes{ TavuAmazonMusicBrowsePath, TavuAmazonMusicSearchPath,
    TavuAmazonMusicPlayLogicPath, TavuAmazonMusicPrePlayPath, TavuAmazonMusicBrowsePostActionPath,
    TavuAmazonMusicBrowseRatingPath, TavuAmazonMusicBrowseCloseActionPath };

const QList<Path> values{ TavuAmazonMusicBaseUrlPath, TavuAmazonMusicAuthorizationServiceUrlPath,
    TavuAmazonMusicTokenServiceUrlPath, TavuAmazonMusicDeviceCodeUrlPath,
    TavuAmazonMusicClientIdPath, TavuAmazonMusicClientSecretPath, TavuAmazonMusicScope,
    TavuAmazonMusicMaxQueueSizePath, TavuAmazonMusicDeviceHDCapabilityPath,
    TavuAmazonMusicDomainSuffixPath, TavuOAuth2AddServicePath, TavuOAuth2ServicePath,
    TavuPlayerPlayModePath, TavuNetworkStateConnected };

TEST(TavuPaths, every_node_lies_under_the_prefix_which_ends_in_a_separator)
{
    EXPECT_TRUE(TavuAmazonMusicPrefixPath().text().endsWith(QLatin1Char('/')));
    for (const Path node : nodes)
        EXPECT_TRUE(node().startsWith(TavuAmazonMusicPrefixPath())) << node();
}

TEST(TavuPaths, no_node_lies_under_another)
{
    for (const Path a : nodes) {
        for (const Path b : nodes)
            EXPECT_EQ(a().startsWith(b()), a == b) << a() << " " << b();
    }
}

TEST(TavuPaths, all_differ)
{
    QSet<QString> texts;
    for (const Path path : nodes + values)
        texts.insert(path().text());
    EXPECT_EQ(texts.size(), nodes.size() + values.size());
}

TEST(TavuPaths, none_carries_parameters)
{
    for (const Path path : nodes + values) {
        EXPECT_EQ(path(), path().withoutParams());
        EXPECT_FALSE(path().isEmpty());
        EXPECT_EQ(CMPath::fromEncoded(path().toEncoded()), path());
    }
}

TEST(TavuPaths, names_of_services_and_subpaths_differ)
{
    const QStringList subpaths{ TavuOAuth2AccessTokenSubPath(), TavuOAuth2RefreshTokenSubPath(),
        TavuOAuth2LoggedInSubPath(), TavuOAuth2DeviceCodeSubPath(), TavuOAuth2StartLoginSubPath(),
        TavuOAuth2LogoutSubPath() };
    EXPECT_EQ(QSet<QString>(subpaths.begin(), subpaths.end()).size(), subpaths.size());
    EXPECT_FALSE(TavuAmazonMusicName().isEmpty());
    EXPECT_FALSE(TavuService_AmazonMusic_Id().isEmpty());
    EXPECT_FALSE(TavuStreamerAttributesStartPaused().isEmpty());
}

TEST(TavuPaths, the_time_limit_of_previous_is_3_s_until_it_is_set)
{
    EXPECT_EQ(TavuPreviousTrackTimeLimit(), 3000);
    TavuSetPreviousTrackTimeLimit(5000);
    EXPECT_EQ(TavuPreviousTrackTimeLimit(), 5000);
    TavuSetPreviousTrackTimeLimit(3000);
}

} // namespace
