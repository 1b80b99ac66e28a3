#include "continuity.h"
#include "printers.h"

namespace {

using Restore = Continuity;

TEST_F(Restore, an_album_goes_on_behind_the_track_at_which_the_player_ended)
{
    start();
    house.play(album());
    ASSERT_TRUE(house.waitForState(playing));
    house.command(Command::Next);
    ASSERT_TRUE(house.waitForTitle(second()));
    ASSERT_TRUE(house.waitForState(playing));
    ASSERT_TRUE(waitUntil([&] { return position() > 500; }));
    house.command(Command::TogglePause);
    ASSERT_TRUE(house.waitForState(paused));
    const qint64 kept = position();
    restart();
    EXPECT_EQ(house.state(), paused);
    EXPECT_EQ(house.title(), second());
    house.command(Command::Resume);
    ASSERT_TRUE(waitUntil([&] { return house.state() == playing; }, patienceMs));
    EXPECT_GE(position(), kept);
    ASSERT_TRUE(waitToHear({ second(), third() }));
    EXPECT_EQ(house.messageTexts(), QStringList());
}

TEST_F(Restore, the_track_plays_alone_when_its_list_is_gone)
{
    start();
    house.play(album() + QStringLiteral("/Second"));
    ASSERT_TRUE(house.waitForState(playing));
    restart();
    house.fault("kind=browse effect=status status=404");
    house.command(Command::Resume);
    ASSERT_TRUE(waitToHear({ second() }));
    ASSERT_TRUE(house.waitForState(idle));
    EXPECT_EQ(heard, QStringList(second()));
    EXPECT_EQ(house.messageTexts(), QStringList());
}

TEST_F(Restore, what_is_chosen_while_its_list_is_looked_through_plays_instead)
{
    start();
    house.play(album() + QStringLiteral("/Second"));
    ASSERT_TRUE(house.waitForState(playing));
    restart();
    const QVariantHash other = house.row(album() + QStringLiteral("/Third"));
    house.fault("kind=browse effect=none delay=1000");
    const auto resumed = house.player().command(Command::Resume);
    valueOf(house.player().play(other));
    EXPECT_TRUE(resumed.isFinished());
    // By its end the list has long been there.
    ASSERT_TRUE(waitUntil([&] { return heard.contains(third()); }, patienceMs));
    ASSERT_TRUE(waitUntil([&] { return house.state() == idle; }, patienceMs));
    EXPECT_EQ(heard, QStringList(third()));
}

TEST_F(Restore, a_station_begins_anew_behind_the_track_at_which_the_player_ended)
{
    start();
    house.play(QStringLiteral("Stations/"));
    ASSERT_TRUE(house.waitForState(playing));
    const QString title = house.title();
    restart();
    const int chunks = house.requests("chunk");
    house.command(Command::Resume);
    ASSERT_TRUE(waitUntil([&] { return house.requests("chunk") > chunks; }, patienceMs));
    ASSERT_TRUE(house.waitForState(playing));
    EXPECT_EQ(heard.first(), title);
    EXPECT_EQ(house.messageTexts(), QStringList());
}

TEST_F(Restore, a_kept_track_has_its_picture_once_its_list_was_read)
{
    start();
    house.play(album());
    ASSERT_TRUE(house.waitForState(playing));
    const QVariant picture = house.player().player().value(QStringLiteral("artwork"));
    EXPECT_NE(picture.toString(), QString());
    restart();
    EXPECT_TRUE(waitUntil(
        [&] { return house.player().player().value(QStringLiteral("artwork")) == picture; }));
}

TEST_F(Restore, a_kept_track_of_a_station_has_the_stations_picture)
{
    start();
    const QString stations = QStringLiteral("Stations/");
    const QVariant picture = house.row(stations).value(QStringLiteral("icon"));
    EXPECT_NE(picture.toString(), QString());
    house.play(stations);
    ASSERT_TRUE(house.waitForState(playing));
    restart();
    EXPECT_TRUE(waitUntil(
        [&] { return house.player().player().value(QStringLiteral("artwork")) == picture; }));
}

TEST_F(Restore, a_kept_track_can_be_rated_and_left_once_it_plays)
{
    start();
    house.play(album());
    ASSERT_TRUE(house.waitForState(playing));
    restart();
    EXPECT_EQ(errorOf(house.player().command(Command::Like)),
        QStringLiteral("“First” can be rated once it plays again."));
    EXPECT_EQ(house.requests("rating"), 0);
    for (const Command step : { Command::Next, Command::Previous })
        EXPECT_EQ(errorOf(house.player().command(step)),
            QStringLiteral("“First” has to go on before another track can follow."));
    house.command(Command::Resume);
    ASSERT_TRUE(house.waitForState(playing));
    valueOf(house.player().command(Command::Like));
    EXPECT_EQ(house.requests("rating"), 1);
}

TEST_F(Restore, a_pause_between_two_tracks_holds_until_it_is_over)
{
    start();
    playWithShortLives(album());
    pauseBeyondExpiry();
    house.fault("kind=browse effect=none delay=5000");
    house.command(Command::TogglePause);
    // The second track or, if that had been prepared before the pause, the third is looked for.
    const auto isBetween = [&] { return house.state() == buffering && position() > trackMs / 2; };
    ASSERT_TRUE(waitUntil(isBetween, patienceMs));
    EXPECT_EQ(house.title(), heard.last());
    house.command(Command::TogglePause);
    EXPECT_EQ(house.state(), paused);
    EXPECT_TRUE(house.player().player().value(QStringLiteral("error")).isNull());
    house.liftFaults();
    house.command(Command::Resume);
    ASSERT_TRUE(waitUntil([&] { return heard.contains(third()); }, patienceMs));
    EXPECT_EQ(house.messageTexts(), QStringList());
}

} // namespace
