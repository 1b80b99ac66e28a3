#include "capture.h"
#include "continuity.h"
#include "printers.h"

#include <cmath>
#include <cstring>

namespace {

class Sleep : public Continuity
{
protected:
    bool isSet()
    {
        return !house.player().player().value(QStringLiteral("sleep")).toHash().isEmpty();
    }
    /// Has the time come at once.
    void fallAsleep(bool finishTrack)
    {
        house.player().setSleep(1, finishTrack);
        EXPECT_TRUE(isSet());
    }
};

constexpr int bytesPerMs = 44100 * Sound::frameSize / 1000;

/// How far the samples swing on average.
double loudness(const QByteArray& samples)
{
    const int count = samples.size() / int(sizeof(qint16));
    double sum = 0.0;
    for (int i = 0; i < count; ++i) {
        qint16 sample = 0;
        std::memcpy(&sample, samples.constData() + i * int(sizeof sample), sizeof sample);
        sum += std::abs(int{ sample });
    }
    return count > 0 ? sum / count : 0.0;
}

TEST_F(Sleep, fades_away_and_pauses_and_is_loud_when_it_goes_on)
{
    constexpr int sampleMs = 200;
    const Capture capture;
    house.setOutput(capture.output(Capture::realTime()));
    start();
    house.player().setPlayMode(4);
    house.play(album());
    ASSERT_TRUE(waitUntil([&] { return capture.size() > sampleMs * bytesPerMs; }, patienceMs));
    const double loud = loudness(capture.samples().left(sampleMs * bytesPerMs));
    fallAsleep(false);
    ASSERT_TRUE(house.waitForState(paused));
    EXPECT_FALSE(isSet());
    EXPECT_LT(loudness(capture.samples().right(sampleMs * bytesPerMs)), loud / 5);
    house.command(Command::TogglePause);
    EXPECT_TRUE(waitUntil(
        [&] { return loudness(capture.samples().right(sampleMs * bytesPerMs)) > loud / 2; },
        patienceMs));
    EXPECT_EQ(house.messageTexts(), QStringList());
}

TEST_F(Sleep, lets_the_track_end_that_plays)
{
    start();
    house.play(album());
    ASSERT_TRUE(house.waitForState(playing));
    fallAsleep(true);
    ASSERT_TRUE(house.waitForState(paused));
    EXPECT_EQ(house.title(), second());
    EXPECT_FALSE(isSet());
    EXPECT_EQ(house.messageTexts(), QStringList());
}

TEST_F(Sleep, a_track_that_repeats_has_ended_too_however_short_it_is)
{
    start();
    house.player().setPlayMode(2);
    house.play(album() + QStringLiteral("/Second"));
    ASSERT_TRUE(house.waitForState(playing));
    fallAsleep(true);
    ASSERT_TRUE(house.waitForState(paused));
    EXPECT_EQ(heard, QStringList(second()));
    EXPECT_FALSE(isSet());
    EXPECT_EQ(house.messageTexts(), QStringList());
}

} // namespace
