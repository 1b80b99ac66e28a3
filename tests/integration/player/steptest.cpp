#include "continuity.h"
#include "printers.h"

namespace {

using Step = Continuity;

TEST_F(Step, two_wishes_for_the_next_track_start_it_once)
{
    start();
    house.play(album());
    ASSERT_TRUE(house.waitForState(playing));
    house.fault("kind=report effect=none delay=1000");
    house.command(Command::Next);
    house.command(Command::Next);
    house.command(Command::Next);
    ASSERT_TRUE(house.waitForTitle(second()));
    ASSERT_TRUE(house.waitForState(playing));
    EXPECT_EQ(house.reportsWithoutPositions().count(QStringLiteral("START NEXT")), 1);
    EXPECT_EQ(house.reportsWithoutPositions().count(QStringLiteral("STOP NEXT")), 1);
}

TEST_F(Step, a_wish_for_the_next_track_at_the_end_of_one_is_that_of_the_end)
{
    start();
    const QVariantHash station = house.row(QStringLiteral("Stations/"));
    house.fault("kind=chunk effect=none skip=1 delay=10000");
    valueOf(house.player().play(station));
    const QString byItself = QStringLiteral("START AUTO_NEXT");
    const auto started = [&](const QString& report) {
        return house.reportsWithoutPositions().count(report);
    };
    // The last of the first chunk, and all of it.
    ASSERT_TRUE(waitUntil([&] { return started(byItself) == 1; }, patienceMs));
    ASSERT_TRUE(waitUntil([&] { return position() >= trackMs - 20; }, patienceMs));
    ASSERT_EQ(started(byItself), 1);
    house.command(Command::Next);
    ASSERT_TRUE(waitUntil([&] { return started(byItself) == 2; }, patienceMs));
    ASSERT_TRUE(waitUntil([&] { return position() > 0 && position() < trackMs - 20; }, patienceMs));
    EXPECT_EQ(started(QStringLiteral("START NEXT")), 0);
    EXPECT_EQ(house.messageTexts(), QStringList());
}

} // namespace
