#include "sleeptimer.h"

#include "watchdog.h"

#include <gtest/gtest.h>

#include <QDateTime>

namespace {

class SleepTimerTest : public ::testing::Test
{
protected:
    SleepTimerTest()
        : timer({ [this](double part) { parts.append(part); }, [this] { ++pauses; },
                    [this] { return remaining; } },
            { fadeMs, 100, 1000 })
    {
    }

    void show(TavuPlayLogicState::Enum state, const char* title = "a")
    {
        TavuRoles track;
        track.setPath(CMPath(QString::fromLatin1(title)));
        TavuPlayLogicData data;
        data.setState(state);
        data.setTrackRoles(track);
        timer.follow(data);
    }
    bool isOff() const { return timer.state().isEmpty(); }
    /// Waits for the pause that the timer asks for, and lets it happen.
    void goToSleep()
    {
        ASSERT_TRUE(waitUntil([this] { return pauses == 1; }));
        EXPECT_EQ(parts.last(), 0.0);
        show(TavuPlayLogicState::Paused);
    }
    bool isLoudAgain()
    {
        return waitUntil([this] { return !parts.isEmpty() && parts.last() == 1.0; });
    }

    static constexpr int fadeMs = 800;

    QList<double> parts;
    int pauses = 0;
    qint64 remaining = -1;
    player::SleepTimer timer;
};

TEST_F(SleepTimerTest, tells_when_its_time_comes_until_it_is_called_off)
{
    EXPECT_TRUE(isOff());
    timer.start(60000, true);
    const qint64 at = timer.state().value(QStringLiteral("at")).toLongLong();
    EXPECT_NEAR(double(at - QDateTime::currentMSecsSinceEpoch()), 60000.0, 30000.0);
    EXPECT_EQ(timer.state().value(QStringLiteral("finishTrack")), QVariant(true));
    const qint64 left = timer.state().value(QStringLiteral("remaining")).toLongLong();
    EXPECT_GT(left, 0);
    EXPECT_LE(left, 60000);
    timer.cancel();
    EXPECT_TRUE(isOff());
    EXPECT_TRUE(parts.isEmpty());
}

TEST_F(SleepTimerTest, fades_pauses_and_is_loud_again_when_all_is_quiet)
{
    show(TavuPlayLogicState::Playing);
    timer.start(0, false);
    goToSleep();
    EXPECT_TRUE(isOff());
    for (int i = 1; i < parts.size(); ++i)
        EXPECT_LT(parts[i], parts[i - 1]);
    EXPECT_TRUE(isLoudAgain());
    EXPECT_EQ(pauses, 1);
}

TEST_F(SleepTimerTest, finishes_the_track_and_pauses_before_the_next_one_is_heard)
{
    show(TavuPlayLogicState::Playing);
    remaining = 60000;
    timer.start(0, true);
    settle();
    remaining = fadeMs / 2;
    ASSERT_TRUE(waitUntil([this] { return !parts.isEmpty(); }));
    EXPECT_DOUBLE_EQ(parts.first(), 0.5);
    EXPECT_EQ(pauses, 0);
    show(TavuPlayLogicState::Playing, "b");
    goToSleep();
    EXPECT_TRUE(isLoudAgain());
}

TEST_F(SleepTimerTest, a_track_that_is_repeated_has_ended_too)
{
    show(TavuPlayLogicState::Playing);
    remaining = fadeMs / 100;
    timer.start(0, true);
    ASSERT_TRUE(waitUntil([this] { return !parts.isEmpty(); }));
    remaining = 60000;
    goToSleep();
}

TEST_F(SleepTimerTest, so_has_one_that_is_repeated_and_too_short_to_fade_away)
{
    show(TavuPlayLogicState::Playing);
    remaining = fadeMs / 100;
    timer.start(0, true);
    ASSERT_TRUE(waitUntil([this] { return !parts.isEmpty(); }));
    remaining = fadeMs / 2;
    goToSleep();
}

TEST_F(SleepTimerTest, a_position_that_is_put_right_is_no_new_start)
{
    show(TavuPlayLogicState::Playing);
    remaining = fadeMs / 100;
    timer.start(0, true);
    ASSERT_TRUE(waitUntil([this] { return !parts.isEmpty(); }));
    remaining = fadeMs / 20;
    ASSERT_TRUE(waitUntil([this] { return parts.last() > 0.04; }));
    EXPECT_EQ(pauses, 0);
}

TEST_F(SleepTimerTest, a_track_without_a_known_end_is_followed_to_its_change)
{
    show(TavuPlayLogicState::Playing);
    timer.start(0, true);
    settle();
    show(TavuPlayLogicState::Playing, "b");
    goToSleep();
}

TEST_F(SleepTimerTest, nothing_is_paused_where_nothing_plays)
{
    show(TavuPlayLogicState::Paused);
    timer.start(0, false);
    ASSERT_TRUE(waitUntil([this] { return isOff(); }));
    EXPECT_EQ(pauses, 0);
}

TEST_F(SleepTimerTest, who_pauses_while_it_fades_hears_all_of_it_later)
{
    show(TavuPlayLogicState::Playing);
    timer.start(0, false);
    ASSERT_TRUE(waitUntil([this] { return !parts.isEmpty(); }));
    show(TavuPlayLogicState::Paused);
    EXPECT_TRUE(isLoudAgain());
    EXPECT_EQ(pauses, 0);
    EXPECT_TRUE(isOff());
}

TEST_F(SleepTimerTest, being_called_off_while_it_fades_it_is_loud_at_once)
{
    show(TavuPlayLogicState::Playing);
    timer.start(0, false);
    ASSERT_TRUE(waitUntil([this] { return !parts.isEmpty(); }));
    timer.cancel();
    EXPECT_EQ(parts.last(), 1.0);
    EXPECT_EQ(pauses, 0);
}

TEST_F(SleepTimerTest, being_set_again_while_it_fades_it_is_loud_at_once)
{
    show(TavuPlayLogicState::Playing);
    timer.start(0, false);
    ASSERT_TRUE(waitUntil([this] { return !parts.isEmpty(); }));
    timer.start(60000, false);
    EXPECT_EQ(parts.last(), 1.0);
    EXPECT_FALSE(isOff());
    EXPECT_EQ(pauses, 0);
}

TEST_F(SleepTimerTest, a_jump_within_the_last_track_is_not_its_end)
{
    show(TavuPlayLogicState::Playing);
    remaining = fadeMs / 2;
    timer.start(0, true);
    ASSERT_TRUE(waitUntil([this] { return !parts.isEmpty(); }));
    remaining = 60000;
    ASSERT_TRUE(isLoudAgain());
    EXPECT_EQ(pauses, 0);
    EXPECT_FALSE(isOff());
}

TEST_F(SleepTimerTest, what_still_fills_its_buffer_is_sent_to_sleep_too)
{
    show(TavuPlayLogicState::Buffering);
    timer.start(0, false);
    goToSleep();
}

TEST_F(SleepTimerTest, a_pause_that_fails_leaves_no_silence_behind)
{
    show(TavuPlayLogicState::Playing);
    timer.start(0, false);
    ASSERT_TRUE(waitUntil([this] { return pauses == 1; }));
    EXPECT_TRUE(waitUntil([this] { return parts.last() == 1.0; }));
}

} // namespace
