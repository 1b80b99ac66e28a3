#include "testhost.h"

#include "cmroot.h"
#include "replies.h"
#include "streamerplaylogic.h"
#include "tavupaths.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace {

TavuValue valueAt(const CMPath& path)
{
    return TavuValue(CMRoot()->getValue(path).toHash());
}

TavuRoles item(const QString& title)
{
    TavuRoles roles;
    roles.setTitle(title);
    return roles;
}

TEST(TestHost, StartsWithUsableValuesAndWithoutToken)
{
    const TestHost host;
    EXPECT_EQ(
        valueAt(TavuAmazonMusicBaseUrlPath()).string(), QStringLiteral("https://service.example/"));
    EXPECT_EQ(valueAt(TavuAmazonMusicMaxQueueSizePath()).i32(), 500);
    EXPECT_TRUE(valueAt(TavuNetworkStateConnected()).bool_());
    EXPECT_FALSE(CMRoot()
                     ->getValue(TavuOAuth2ServicePath()
                                    .appendSubpath(TavuAmazonMusicName())
                                    .appendSubpath(TavuOAuth2AccessTokenSubPath()))
                     .isValid());
    EXPECT_EQ(TavuPreviousTrackTimeLimit(), 3000);
}

TEST(TestHost, LeavesNothingBehind)
{
    {
        TestHost host;
        host.setMaxQueueSize(7);
        host.setPreviousTrackTimeLimit(1);
        EXPECT_NE(Streamer::instance(), nullptr);
    }
    EXPECT_FALSE(CMRoot()->getValue(TavuAmazonMusicMaxQueueSizePath()).isValid());
    EXPECT_EQ(TavuPreviousTrackTimeLimit(), 3000);
    EXPECT_EQ(Streamer::instance(), nullptr);
}

TEST(TestHost, RecordsRegistrationsAndRenewsTokens)
{
    TestHost host;
    TavuOAuth2ServiceInfo info;
    info.setServiceName(QStringLiteral("music"));
    const auto reply = CMReply<QVariant>::create();
    CMRoot()->invoke(TavuOAuth2AddServicePath(), info, reply);
    expectValue(reply);
    ASSERT_EQ(host.registeredServices().size(), 1);
    EXPECT_EQ(host.registeredServices().first().serviceName(), QStringLiteral("music"));

    host.renewTokenWith(QStringLiteral("second"));
    const CMPath service = TavuOAuth2ServicePath().appendSubpath(TavuAmazonMusicName());
    const auto renewed = CMReply<QVariant>::create();
    CMRoot()->invoke(service.appendSubpath(TavuOAuth2RefreshTokenSubPath()), QVariant(), renewed);
    expectValue(renewed);
    EXPECT_EQ(host.tokenRenewals(), 1);
    EXPECT_EQ(valueAt(service.appendSubpath(TavuOAuth2AccessTokenSubPath())).string(),
        QStringLiteral("second"));
}

TEST(RecordingStreamer, RecordsCommandsInOrder)
{
    TestHost host;
    RecordingStreamer& streamer = host.streamer();
    streamer.play(7, item(QStringLiteral("a")), {});
    streamer.seekTime(30000);
    const auto play = streamer.expect(RecordingStreamer::Kind::Play);
    EXPECT_EQ(play.id, 7U);
    EXPECT_EQ(play.roles.title(), QStringLiteral("a"));
    EXPECT_EQ(streamer.expect(RecordingStreamer::Kind::SeekTime).position, 30000);
    streamer.expectNothing();
}

TEST(RecordingStreamer, FailsATestThatExpectsAnotherCommand)
{
    static RecordingStreamer* streamer;
    TestHost host;
    streamer = &host.streamer();
    streamer->pause();
    EXPECT_NONFATAL_FAILURE(streamer->expectNothing(), "got a command");
    EXPECT_NONFATAL_FAILURE(streamer->expect(RecordingStreamer::Kind::Stop), "");
}

TEST(RecordingStreamer, TellsOfTheItemThatItHolds)
{
    TestHost host;
    RecordingStreamer& streamer = host.streamer();
    QVector<quint64> started;
    QObject::connect(
        &streamer, &Streamer::mediaStarted, &streamer, [&](quint64 id) { started.append(id); });
    streamer.play(1, item(QStringLiteral("a")), {});
    streamer.setNextMedia(2, item(QStringLiteral("b")), {});
    streamer.startPresent();
    streamer.startNext();
    EXPECT_EQ(started, (QVector<quint64>{ 1, 2 }));
    EXPECT_EQ(streamer.presentId(), 2U);
    EXPECT_EQ(streamer.nextId(), 0U);
}

} // namespace
