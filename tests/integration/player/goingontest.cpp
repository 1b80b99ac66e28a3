#include "continuity.h"
#include "printers.h"

namespace {

using GoingOn = Continuity;

TEST_F(GoingOn, an_album_goes_on_after_a_pause_that_outlasts_its_addresses)
{
    start();
    playWithShortLives(album());
    pauseBeyondExpiry();
    house.command(Command::TogglePause);
    ASSERT_TRUE(waitToHear({ first(), second(), third() }));
    const QVariantHash from = house.player().queue().value(QStringLiteral("from")).toHash();
    EXPECT_EQ(from.value(QStringLiteral("title")), QVariant(QStringLiteral("Unknown album")));
    EXPECT_EQ(house.messageTexts(), QStringList());
    const QStringList reports = house.reportsWithoutPositions();
    EXPECT_EQ(reports.mid(0, 3),
        QStringList({ QStringLiteral("START CONTAINER_SELECTED"), QStringLiteral("STOP PAUSE"),
            QStringLiteral("START UNPAUSE") }));
    EXPECT_EQ(reports.count(QStringLiteral("START TRACK_SELECTED")), 1);
}

TEST_F(GoingOn, next_goes_on_after_a_pause_that_outlasts_the_addresses)
{
    start();
    playWithShortLives(album());
    pauseBeyondExpiry();
    house.command(Command::Next);
    ASSERT_TRUE(waitToHear({ first(), second(), third() }));
    EXPECT_EQ(house.messageTexts(), QStringList());
    EXPECT_EQ(house.reportsWithoutPositions().mid(0, 4),
        QStringList({ QStringLiteral("START CONTAINER_SELECTED"), QStringLiteral("STOP PAUSE"),
            QStringLiteral("STOP NEXT"), QStringLiteral("START TRACK_SELECTED") }));
}

TEST_F(GoingOn, an_album_that_repeats_begins_again_after_such_a_pause)
{
    start();
    house.player().setPlayMode(4);
    playWithShortLives(album() + QStringLiteral("/Third"));
    pauseBeyondExpiry();
    house.command(Command::TogglePause);
    ASSERT_TRUE(waitToHear({ third(), first() }));
    EXPECT_EQ(house.messageTexts(), QStringList());
}

TEST_F(GoingOn, a_track_that_repeats_begins_again_after_such_a_pause)
{
    start();
    house.player().setPlayMode(2);
    playWithShortLives(album() + QStringLiteral("/Second"));
    pauseBeyondExpiry();
    house.command(Command::TogglePause);
    const QString started = QStringLiteral("START TRACK_SELECTED");
    ASSERT_TRUE(
        waitUntil([&] { return house.reportsWithoutPositions().count(started) == 2; }, patienceMs));
    ASSERT_TRUE(house.waitForState(playing));
    EXPECT_EQ(heard, QStringList(second()));
    EXPECT_EQ(house.messageTexts(), QStringList());
}

TEST_F(GoingOn, a_shuffled_album_misses_nothing_after_such_a_pause)
{
    start();
    house.player().setPlayMode(1);
    playWithShortLives(album());
    pauseBeyondExpiry();
    house.command(Command::TogglePause);
    ASSERT_TRUE(waitUntil(
        [&] {
            return heard.contains(first()) && heard.contains(second()) && heard.contains(third());
        },
        patienceMs));
    EXPECT_EQ(house.messageTexts(), QStringList());
}

TEST_F(GoingOn, who_signs_out_meanwhile_has_nothing_follow)
{
    start();
    playWithShortLives(album());
    pauseBeyondExpiry();
    house.fault("kind=browse effect=none delay=20000");
    house.command(Command::TogglePause);
    ASSERT_TRUE(waitUntil(
        [&] { return house.state() == buffering && position() > trackMs / 2; }, patienceMs));
    house.player().logout();
    EXPECT_TRUE(waitUntil([&] { return house.state() == idle; }));
}

TEST_F(GoingOn, what_cannot_be_found_again_is_skipped_and_told)
{
    start();
    playWithShortLives(album());
    pauseBeyondExpiry();
    house.fault("kind=browse effect=status status=503");
    house.command(Command::Next);
    ASSERT_TRUE(waitUntil([&] { return house.messageTexts().size() == 2; }, patienceMs));
    EXPECT_EQ(house.messageTexts(),
        QStringList({ QStringLiteral("Skipped 2 tracks: Error: Track already expired\n"
                                     "Second, Third"),
            QStringLiteral("End of queue reached: ") }));
    EXPECT_EQ(heard, QStringList(first()));
}

} // namespace
