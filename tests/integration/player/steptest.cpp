#include "continuity.h"
#include "printers.h"

namespace {

using Step = Continuity;

TEST_F(Step, two_wishes_for_the_next_track_start_it_once)
{
    start();
    house.play(QStringLiteral("Stations/"));
    ASSERT_TRUE(house.waitForState(playing));
    house.fault("kind=chunk effect=none delay=1500");
    house.command(Command::Next);
    house.command(Command::Next);
    house.command(Command::Next);
    const QString started = QStringLiteral("START NEXT");
    ASSERT_TRUE(waitUntil([&] { return house.reportsWithoutPositions().contains(started); }));
    ASSERT_TRUE(house.waitForState(playing));
    settle();
    EXPECT_EQ(house.reportsWithoutPositions().count(started), 1);
}

} // namespace
