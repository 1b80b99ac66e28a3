#include "longtrack.h"
#include "printers.h"

#include <QDateTime>
#include <QElapsedTimer>

namespace {

using Command = PlayerFacade::Command;
using Pauses = LongTrack;

int fromEnvironment(const char* name, int otherwise)
{
    bool given = false;
    const int value = qEnvironmentVariableIntValue(name, &given);
    return given ? value : otherwise;
}

// The long form takes more pauses, longer ones, and looks at how soon it sounds again, which is to
// be judged on a machine that does nothing else:
//   TAVU_PAUSES=100 TAVU_EXPIRY_MS=5000 TAVU_PAUSE_MS=8000 TAVU_RESUME_MS=2000

TEST_F(Pauses, goes_on_where_it_was_after_each_of_many_pauses_that_outlast_the_address)
{
    const int pauses = fromEnvironment("TAVU_PAUSES", 8);
    const int expiryMs = fromEnvironment("TAVU_EXPIRY_MS", 1200);
    const int pauseMs = fromEnvironment("TAVU_PAUSE_MS", expiryMs + 50);
    const int resumeMs = fromEnvironment("TAVU_RESUME_MS", 30000);
    const std::unique_ptr<House> house = makeHouse(Capture::realTime());
    house->startSignedIn();
    const QByteArray expire = QByteArrayLiteral("effect=expire in=") + QByteArray::number(expiryMs);
    house->fault(QByteArrayLiteral("kind=chunk ") + expire);
    house->fault(QByteArrayLiteral("kind=instance ") + expire);
    playTrack(*house);
    qint64 slowest = 0;
    for (int pause = 0; pause < pauses; ++pause) {
        ASSERT_TRUE(waitForMoreSound(200));
        house->command(Command::TogglePause);
        ASSERT_TRUE(house->waitForState(paused));
        const qint64 over = QDateTime::currentMSecsSinceEpoch() + pauseMs;
        ASSERT_TRUE(
            waitUntil([&] { return QDateTime::currentMSecsSinceEpoch() > over; }, pauseMs + 10000));
        QElapsedTimer resumed;
        resumed.start();
        house->command(Command::TogglePause);
        ASSERT_TRUE(waitForMoreSound(1)) << "pause " << pause;
        slowest = std::max(slowest, resumed.elapsed());
        ASSERT_TRUE(house->waitForState(playing));
    }
    house->command(Command::Stop);
    ASSERT_TRUE(house->waitForState(idle));
    RecordProperty("slowest resume ms", static_cast<int>(slowest));
    EXPECT_LE(slowest, resumeMs);

    const std::vector<int> found = jumps(capture.samples(), original);
    EXPECT_LE(found.size(), static_cast<size_t>(pauses));
    for (const int jump : found)
        EXPECT_LE(std::abs(jump), halfSecond);
    EXPECT_EQ(house->requests("instance"), pauses);
    QStringList expected{ QStringLiteral("START TRACK_SELECTED") };
    for (int pause = 0; pause < pauses; ++pause)
        expected += { QStringLiteral("STOP PAUSE"), QStringLiteral("START UNPAUSE") };
    expected += QStringLiteral("STOP STOP");
    ASSERT_TRUE(waitUntil([&] { return house->reportsWithoutPositions() == expected; }))
        << house->reportsWithoutPositions().join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(house->messageTexts(), QStringList());
}

} // namespace
