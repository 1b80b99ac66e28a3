#include "mprisstate.h"
#include "positiontracker.h"
#include "printers.h"

#include <gtest/gtest.h>

#include <QDBusObjectPath>

using namespace player::mpris;

namespace {

QString text(const char* ascii)
{
    return QString::fromLatin1(ascii);
}

QVariant property(const QVariantHash& player, const char* name)
{
    return playerProperties(player, 7).value(text(name));
}

QVariantMap metadata(const QVariantHash& player)
{
    return property(player, "Metadata").toMap();
}

} // namespace

TEST(MprisState, StatesHaveTheirStatus)
{
    const char* const statuses[] = { "Stopped", "Playing", "Playing", "Paused" };
    for (int state = 0; state < 4; ++state)
        EXPECT_EQ(property({ { text("state"), state } }, "PlaybackStatus").toString(),
            text(statuses[state]));
    EXPECT_EQ(property({ { text("state"), 9 } }, "PlaybackStatus").toString(), text("Stopped"));
    EXPECT_EQ(property({}, "PlaybackStatus").toString(), text("Stopped"));
}

TEST(MprisState, ModesAreLoopStatusAndShuffle)
{
    const char* const loops[] = { "None", "None", "Track", "Track", "Playlist", "Playlist" };
    for (int mode = 0; mode < 6; ++mode) {
        const QVariantHash player{ { text("mode"), mode } };
        EXPECT_EQ(property(player, "LoopStatus").toString(), text(loops[mode]));
        EXPECT_EQ(property(player, "Shuffle").toBool(), mode % 2 == 1);
        EXPECT_EQ(withLoopStatus(mode, text(loops[mode])), mode);
        EXPECT_EQ(withShuffle(mode, mode % 2 == 1), mode);
        EXPECT_EQ(withLoopStatus(mode, text("Forever")), mode);
    }
    EXPECT_EQ(withLoopStatus(1, text("Playlist")), 5);
    EXPECT_EQ(withLoopStatus(5, text("None")), 1);
    EXPECT_EQ(withShuffle(4, true), 5);
    EXPECT_EQ(withShuffle(3, false), 2);
}

TEST(MprisState, MetadataUsesTheBusesUnits)
{
    const QVariantMap fields = metadata({ { text("state"), 2 }, { text("title"), text("Blue") },
        { text("artist"), text("The Waves") }, { text("album"), text("Sea") },
        { text("duration"), 200000 }, { text("artwork"), text("https://example.com/a.png") } });
    EXPECT_EQ(fields.value(text("mpris:trackid")).value<QDBusObjectPath>().path(),
        text("/org/tavu/track/7"));
    EXPECT_EQ(fields.value(text("xesam:title")).toString(), text("Blue"));
    EXPECT_EQ(fields.value(text("xesam:artist")).toStringList(), QStringList{ text("The Waves") });
    EXPECT_EQ(fields.value(text("xesam:album")).toString(), text("Sea"));
    EXPECT_EQ(fields.value(text("mpris:length")).toLongLong(), 200000000);
    EXPECT_EQ(fields.value(text("mpris:artUrl")).toString(), text("https://example.com/a.png"));
}

TEST(MprisState, ThumbsAreTheEndsOfTheRating)
{
    const auto rated = [](const char* rating) {
        return metadata({ { text("state"), 2 }, { text("rating"), text(rating) } })
            .value(text("xesam:userRating"));
    };
    EXPECT_EQ(rated("up"), QVariant(1.0));
    EXPECT_EQ(rated("down"), QVariant(0.0));
    EXPECT_FALSE(rated("").isValid());
}

TEST(MprisState, MetadataLeavesOutWhatIsNotKnown)
{
    const QVariantMap fields =
        metadata({ { text("state"), 3 }, { text("artwork"), text("skin:note") } });
    EXPECT_EQ(fields.keys(), (QStringList{ text("mpris:trackid"), text("xesam:title") }));
}

TEST(MprisState, NothingLoadedIsNoTrack)
{
    const QVariantMap fields = metadata({ { text("state"), 0 }, { text("title"), text("Old") } });
    EXPECT_EQ(fields.size(), 1);
    EXPECT_EQ(fields.value(text("mpris:trackid")).value<QDBusObjectPath>().path(),
        text("/org/mpris/MediaPlayer2/TrackList/NoTrack"));
}

TEST(MprisState, AbilitiesFollowTheControlsOfALoadedItem)
{
    QVariantHash player{ { text("state"), 2 },
        { text("controls"), QVariantHash{ { text("next"), true }, { text("seek"), true } } } };
    EXPECT_TRUE(property(player, "CanGoNext").toBool());
    EXPECT_FALSE(property(player, "CanGoPrevious").toBool());
    EXPECT_TRUE(property(player, "CanSeek").toBool());
    EXPECT_FALSE(property(player, "CanPause").toBool());
    EXPECT_TRUE(property(player, "CanPlay").toBool());
    player.insert(text("state"), 0);
    EXPECT_FALSE(property(player, "CanGoNext").toBool());
    EXPECT_FALSE(property(player, "CanSeek").toBool());
    EXPECT_FALSE(property(player, "CanPlay").toBool());
    EXPECT_TRUE(property(player, "CanControl").toBool());
}

TEST(MprisState, MutedVolumeIsNone)
{
    EXPECT_EQ(property({ { text("volume"), 35 } }, "Volume").toDouble(), 0.35);
    EXPECT_EQ(
        property({ { text("volume"), 35 }, { text("mute"), true } }, "Volume").toDouble(), 0.0);
}

TEST(PositionTracker, FlowsWhilePlayingAndStandsWhilePaused)
{
    PositionTracker tracker;
    tracker.restart(1000);
    tracker.setFlowing(true, 1000);
    EXPECT_EQ(tracker.positionAt(4000), 3000);
    tracker.setFlowing(false, 4000);
    EXPECT_EQ(tracker.positionAt(9000), 3000);
    tracker.setFlowing(true, 9000);
    EXPECT_EQ(tracker.positionAt(9500), 3500);
    EXPECT_EQ(tracker.positionAt(0), 3000);
}

TEST(PositionTracker, TellsJumpsFromTheFlow)
{
    PositionTracker tracker;
    tracker.restart(0);
    tracker.setFlowing(true, 0);
    EXPECT_FALSE(tracker.report(1100, 1000));
    EXPECT_FALSE(tracker.report(1700, 2000));
    EXPECT_TRUE(tracker.report(60000, 3000));
    EXPECT_FALSE(tracker.report(61000, 4000));
    EXPECT_TRUE(tracker.report(0, 5000));
    tracker.setFlowing(false, 5000);
    EXPECT_FALSE(tracker.report(0, 60000));
    EXPECT_TRUE(tracker.report(30000, 61000));
}
