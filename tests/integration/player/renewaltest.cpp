#include "longtrack.h"
#include "printers.h"

namespace {

class Renewal : public LongTrack
{
protected:
    static QByteArray expiring(const char* what, int status)
    {
        return QByteArrayLiteral("effect=expire in=1500 status=") + QByteArray::number(status)
            + QByteArrayLiteral(" kind=") + what;
    }

    /// What sounded since the capture had the size is the track from its start.
    void expectTrackSince(qint64 size)
    {
        const std::vector<int> found =
            jumps(capture.samples().mid(static_cast<int>(size)), original);
        EXPECT_LE(found.size(), 2U);
        for (const int jump : found)
            EXPECT_LE(std::abs(jump), halfSecond);
    }
};

// The audio comes in pieces, each by a request of its own, so that the address is needed again and
// again while it plays.
TEST_F(Renewal, goes_on_when_the_stream_is_refused_twice_while_it_plays_whatever_the_refusal)
{
    const std::unique_ptr<House> house = makeHouse(Capture::tenfold());
    house->startSignedIn();
    QStringList reports;
    int renewed = 0;
    for (const auto& [first, second] : { std::pair(401, 403), std::pair(404, 410) }) {
        SCOPED_TRACE(first);
        const qint64 before = capture.size();
        house->fault("kind=audio effect=cut after=300000");
        house->fault(expiring("chunk", first));
        house->fault(expiring("instance times=1", second));
        playTrack(*house);
        renewed += 2;
        ASSERT_TRUE(waitUntil([&] { return house->requests("instance") == renewed; }, 60000));
        house->liftFaults();
        ASSERT_TRUE(waitForMoreSound(2000));
        house->command(PlayerFacade::Command::Stop);
        ASSERT_TRUE(house->waitForState(idle));

        EXPECT_EQ(house->audioRefusals().mid(renewed - 2), QList<int>({ first, second }));
        expectTrackSince(before);
        reports += { QStringLiteral("START TRACK_SELECTED"), QStringLiteral("STOP STOP") };
    }
    ASSERT_TRUE(waitUntil([&] { return house->reportsWithoutPositions() == reports; }))
        << house->reportsWithoutPositions().join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(house->messageTexts(), QStringList());
}

} // namespace
