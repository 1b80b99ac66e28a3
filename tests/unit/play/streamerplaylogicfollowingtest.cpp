#include "streamerplaylogicfixture.h"
#include "watchdog.h"

namespace {

class StreamerPlayLogicFollowingTest : public StreamerPlayLogicFixture
{
};

// What follows.

TEST_F(StreamerPlayLogicFollowingTest, asks_for_what_follows_when_the_streamer_wants_it)
{
    playAndStart(item("one"));
    prepare(item("two"));
    EXPECT_TRUE(m_logic->calls.contains(QStringLiteral("prepare")));
    m_streamer.startNext();
    EXPECT_EQ(present(), QStringLiteral("two"));
    EXPECT_EQ(m_logic->started, (QStringList{ QStringLiteral("one"), QStringLiteral("two") }));
    EXPECT_LT(m_logic->playTime(), 10000);
}

TEST_F(StreamerPlayLogicFollowingTest, playback_ends_when_nothing_follows)
{
    playAndStart(item("one"));
    m_logic->whenWanted = [this] { m_logic->sendNoNextMediaCommand(); };
    m_streamer.wantNextMedia();
    m_streamer.expect(Kind::SetNoNextMedia);
    m_streamer.tellEnded();
    EXPECT_EQ(m_logic->calls.last(), QStringLiteral("ended"));
    EXPECT_EQ(m_logic->data(), TavuPlayLogicData());
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(StreamerPlayLogicFollowingTest, waits_for_the_next_item_when_the_present_one_ends_first)
{
    playAndStart(item("one"));
    m_streamer.wantNextMedia();
    m_streamer.tellEnded();
    EXPECT_EQ(m_logic->state(), State::Buffering);
    EXPECT_FALSE(m_logic->calls.contains(QStringLiteral("ended")));
    m_logic->sendSetNextMediaCommand(item("two"), {});
    EXPECT_EQ(m_streamer.expect(Kind::Play).roles, item("two"));
    m_streamer.startPresent();
    EXPECT_EQ(present(), QStringLiteral("two"));
}

TEST_F(StreamerPlayLogicFollowingTest, ends_when_it_waited_for_nothing)
{
    playAndStart(item("one"));
    m_streamer.wantNextMedia();
    m_streamer.tellEnded();
    m_logic->sendNoNextMediaCommand();
    EXPECT_EQ(m_logic->calls.last(), QStringLiteral("ended"));
    EXPECT_EQ(m_logic->state(), State::Idle);
    m_streamer.expectNothing();
}

TEST_F(StreamerPlayLogicFollowingTest, a_next_item_that_comes_after_a_stop_does_not_play)
{
    playAndStart(item("one"));
    m_streamer.wantNextMedia();
    m_logic->sendStopCommand();
    m_streamer.forgetCommands();
    m_logic->sendSetNextMediaCommand(item("two"), {});
    m_logic->sendNoNextMediaCommand();
    m_streamer.expectNothing();
    EXPECT_EQ(m_logic->state(), State::Idle);
    EXPECT_EQ(m_logic->calls.count(QStringLiteral("ended")), 1);
}

TEST_F(StreamerPlayLogicFollowingTest, a_next_item_that_comes_after_a_stop_at_the_end_does_not_play)
{
    playAndStart(item("one"));
    m_streamer.wantNextMedia();
    m_streamer.tellEnded();
    m_logic->sendStopCommand();
    m_streamer.forgetCommands();
    m_logic->sendSetNextMediaCommand(item("two"), {});
    m_streamer.expectNothing();
}

TEST_F(StreamerPlayLogicFollowingTest, a_logic_that_stops_when_an_item_starts_stays_stopped)
{
    play(item("one"));
    m_logic->whenStarted = [this] { m_logic->sendStopCommand(); };
    m_streamer.startPresent();
    EXPECT_EQ(m_logic->data(), TavuPlayLogicData());
}

// Failures.

TEST_F(StreamerPlayLogicFollowingTest, passes_over_an_item_that_fails_while_it_plays)
{
    playAndStart(item("one"));
    m_logic->whenNext = [this] { m_logic->sendPlayCommand(item("two"), {}); };
    m_streamer.tellFailed(failure());
    EXPECT_EQ(m_skipped, QStringList{ QStringLiteral("one: gone") });
    EXPECT_EQ(m_streamer.expect(Kind::Play).roles, item("two"));
    m_streamer.startPresent();
    EXPECT_EQ(present(), QStringLiteral("two"));
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(StreamerPlayLogicFollowingTest, passes_over_an_item_that_never_sounded)
{
    play(item("one"));
    m_logic->whenNext = [this] {
        // The logic goes on from the failed item and not from the one before it.
        EXPECT_EQ(m_logic->started.last(), QStringLiteral("one"));
        m_logic->sendPlayCommand(item("two"), {});
    };
    m_streamer.tellFailed(failure());
    EXPECT_EQ(m_skipped, QStringList{ QStringLiteral("one: gone") });
    m_streamer.startPresent();
    EXPECT_EQ(present(), QStringLiteral("two"));
}

TEST_F(StreamerPlayLogicFollowingTest,
    ends_when_the_output_fails_since_no_other_item_would_fare_better)
{
    playAndStart(item("one"));
    CMError error(TrString("no device"));
    error.setName(Streamer::outputErrorName());
    m_streamer.tellFailed(error);
    EXPECT_TRUE(m_skipped.isEmpty());
    EXPECT_EQ(m_failures, QStringList{ QStringLiteral("no device") });
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Idle);
}

TEST_F(StreamerPlayLogicFollowingTest, passes_over_a_prepared_item_that_failed_when_its_turn_comes)
{
    playAndStart(item("one"));
    prepare(item("two"));
    m_streamer.tellNextFailed(failure());
    EXPECT_EQ(present(), QStringLiteral("one"));
    EXPECT_EQ(m_logic->state(), State::Playing);
    EXPECT_TRUE(m_skipped.isEmpty());

    m_logic->whenNext = [this] {
        EXPECT_EQ(m_logic->started.last(), QStringLiteral("two"));
        m_logic->sendPlayCommand(item("three"), {});
    };
    m_streamer.tellEnded();
    EXPECT_EQ(m_skipped, QStringList{ QStringLiteral("two: gone") });
    EXPECT_EQ(m_streamer.expect(Kind::Play).roles, item("three"));
}

TEST_F(StreamerPlayLogicFollowingTest, a_prepared_item_that_failed_can_be_replaced_in_time)
{
    playAndStart(item("one"));
    prepare(item("two"));
    m_streamer.tellNextFailed(failure());
    m_logic->sendSetNextMediaCommand(item("three"), {});
    m_streamer.startNext();
    EXPECT_EQ(present(), QStringLiteral("three"));
    EXPECT_TRUE(m_skipped.isEmpty());
}

TEST_F(StreamerPlayLogicFollowingTest, stops_with_the_error_when_nothing_can_follow)
{
    m_logic->nextEnabled = false;
    playAndStart(item("one"));
    m_streamer.tellFailed(failure());
    m_streamer.expect(Kind::Stop);
    EXPECT_EQ(m_logic->data(), TavuPlayLogicData());
    EXPECT_EQ(m_failures, QStringList{ QStringLiteral("gone") });
    EXPECT_TRUE(m_skipped.isEmpty());
}

TEST_F(StreamerPlayLogicFollowingTest, stops_when_the_logic_finds_nothing_to_follow_a_failed_item)
{
    playAndStart(item("one"));
    m_logic->whenNext = [this] { Q_EMIT m_logic->playbackFailed(failure("No more tracks.")); };
    m_streamer.tellFailed(failure());
    m_streamer.expect(Kind::Stop);
    EXPECT_EQ(m_logic->data(), TavuPlayLogicData());
    EXPECT_EQ(m_failures, QStringList{ QStringLiteral("No more tracks.") });
}

TEST_F(StreamerPlayLogicFollowingTest, a_lost_output_ends_playback_instead_of_skipping)
{
    playAndStart(item("one"));
    CMError lost = failure("no sound device");
    lost.setName(Streamer::outputErrorName());
    m_streamer.tellFailed(lost);
    EXPECT_EQ(m_failures, QStringList{ QStringLiteral("no sound device") });
    EXPECT_TRUE(m_skipped.isEmpty());
    EXPECT_EQ(m_logic->state(), State::Idle);
}

TEST_F(StreamerPlayLogicFollowingTest, a_failed_command_leaves_music_that_plays_alone)
{
    playAndStart(item("one"));
    Q_EMIT m_logic->playbackFailed(failure("No more tracks."));
    EXPECT_EQ(m_logic->state(), State::Playing);
    m_streamer.expectNothing();
}

TEST_F(StreamerPlayLogicFollowingTest, gives_up_after_five_failures_in_a_row)
{
    m_logic->whenNext = [this] { m_logic->sendPlayCommand(item("bad"), {}); };
    play(item("bad"));
    for (int number = 0; number < 5; ++number) {
        ASSERT_TRUE(m_failures.isEmpty());
        m_streamer.tellFailed(failure());
    }
    EXPECT_EQ(m_skipped.size(), 4);
    EXPECT_EQ(m_failures, QStringList{ QStringLiteral("gone") });
    EXPECT_EQ(m_logic->state(), State::Idle);
}

TEST_F(StreamerPlayLogicFollowingTest, tries_no_item_twice_when_none_can_be_played)
{
    const auto at = [](const char* name) {
        TavuRoles roles = item(name);
        roles.setPath(CMPath(QString::fromLatin1(name)));
        return roles;
    };
    bool first = false;
    m_logic->whenNext = [&] {
        m_logic->sendPlayCommand(at(std::exchange(first, !first) ? "one" : "two"), {});
    };
    play(at("one"));
    m_streamer.tellFailed(failure());
    m_streamer.tellFailed(failure());
    EXPECT_TRUE(waitUntil([&] { return m_logic->state() == State::Idle; }));
    EXPECT_EQ(m_streamer.count(Kind::Play), 2);
    EXPECT_EQ(m_skipped.size(), 2);
    EXPECT_EQ(m_failures, QStringList{ QStringLiteral("gone") });
}

TEST_F(StreamerPlayLogicFollowingTest, an_item_that_sounded_for_a_while_clears_the_count)
{
    m_logic->whenNext = [this] { m_logic->sendPlayCommand(item("next"), {}); };
    play(item("first"));
    for (int number = 0; number < 20; ++number) {
        m_streamer.startPresent();
        m_streamer.tellPosition(3001);
        m_streamer.tellFailed(failure());
    }
    EXPECT_EQ(m_skipped.size(), 20);
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(StreamerPlayLogicFollowingTest, a_new_play_command_clears_the_count)
{
    m_logic->whenNext = [this] { m_logic->sendPlayCommand(item("bad"), {}); };
    for (int round = 0; round < 3; ++round) {
        play(item("bad"));
        for (int number = 0; number < 4; ++number)
            m_streamer.tellFailed(failure());
    }
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(StreamerPlayLogicFollowingTest, a_listener_may_stop_playback_when_an_item_is_skipped)
{
    playAndStart(item("one"));
    QObject::connect(
        m_logic, &StreamerPlayLogic::mediaSkipped, m_logic, [this] { m_logic->sendStopCommand(); });
    m_streamer.tellFailed(failure());
    EXPECT_FALSE(m_logic->calls.contains(QStringLiteral("next")));
    EXPECT_EQ(m_logic->state(), State::Idle);
}

TEST_F(StreamerPlayLogicFollowingTest, a_pause_while_playback_waits_for_the_next_item_holds)
{
    playAndStart(item("one"));
    m_streamer.wantNextMedia();
    m_streamer.tellEnded();
    expectValue(m_logic->pause());
    m_streamer.forgetCommands();
    m_logic->sendSetNextMediaCommand(item("two"), {});
    m_streamer.expect(Kind::Play);
    m_streamer.expect(Kind::Pause);
    EXPECT_EQ(m_logic->state(), State::Paused);
    expectValue(m_logic->pause());
    m_streamer.expect(Kind::Resume);
    EXPECT_EQ(m_logic->state(), State::Playing);
}

TEST_F(StreamerPlayLogicFollowingTest, going_on_while_playback_waits_for_the_next_item_waits_on)
{
    playAndStart(item("one"));
    m_streamer.tellPosition(179000);
    m_streamer.wantNextMedia();
    m_streamer.tellEnded();
    expectValue(m_logic->pause());
    expectValue(m_logic->pause());
    EXPECT_EQ(m_logic->state(), State::Buffering);
    m_streamer.forgetCommands();
    m_logic->sendSetNextMediaCommand(item("two"), {});
    m_streamer.expect(Kind::Play);
    m_streamer.expectNothing();
    EXPECT_EQ(m_logic->state(), State::Buffering);
}

// A play command that takes its time.

TEST_F(StreamerPlayLogicFollowingTest,
    an_item_that_ends_while_a_play_is_under_way_leaves_playback_waiting)
{
    playAndStart(item("one"));
    m_streamer.tellPosition(179000);
    m_logic->playsLater = true;
    const auto reply = m_logic->play(TavuPlayLogicPlayArgs());
    m_streamer.tellEnded();
    EXPECT_EQ(m_logic->state(), State::Buffering);
    EXPECT_FALSE(m_logic->calls.contains(QStringLiteral("ended")));

    m_logic->sendPlayCommand(item("two"), {});
    m_logic->played.setValue(QVariant());
    expectValue(reply);
    m_streamer.startPresent();
    EXPECT_EQ(present(), QStringLiteral("two"));
    EXPECT_FALSE(m_logic->calls.contains(QStringLiteral("ended")));
}

TEST_F(StreamerPlayLogicFollowingTest, an_item_that_fails_while_a_play_is_under_way_is_not_skipped)
{
    playAndStart(item("one"));
    m_logic->playsLater = true;
    m_logic->play(TavuPlayLogicPlayArgs());
    m_streamer.tellFailed(failure());
    EXPECT_EQ(m_logic->state(), State::Buffering);
    EXPECT_FALSE(m_logic->calls.contains(QStringLiteral("next")));
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(StreamerPlayLogicFollowingTest, playback_that_waits_for_a_play_ends_when_that_fails)
{
    playAndStart(item("one"));
    m_logic->playsLater = true;
    m_logic->play(TavuPlayLogicPlayArgs());
    m_streamer.tellEnded();
    m_logic->played.setError(failure());
    EXPECT_EQ(m_logic->calls.count(QStringLiteral("ended")), 1);
    EXPECT_EQ(m_logic->state(), State::Idle);
}

TEST_F(StreamerPlayLogicFollowingTest, a_play_that_was_replaced_ends_nothing)
{
    playAndStart(item("one"));
    m_logic->playsLater = true;
    m_logic->play(TavuPlayLogicPlayArgs());
    const CMReply<QVariant> replaced = m_logic->played;
    m_streamer.tellEnded();
    m_logic->play(TavuPlayLogicPlayArgs());
    replaced.cancel();
    EXPECT_EQ(m_logic->state(), State::Buffering);
    EXPECT_FALSE(m_logic->calls.contains(QStringLiteral("ended")));
    m_logic->played.cancel();
    EXPECT_EQ(m_logic->state(), State::Idle);
}

TEST_F(StreamerPlayLogicFollowingTest, a_play_that_fails_while_an_item_sounds_leaves_it_alone)
{
    playAndStart(item("one"));
    m_logic->playsLater = true;
    m_logic->play(TavuPlayLogicPlayArgs());
    m_logic->played.setError(failure());
    EXPECT_EQ(m_logic->state(), State::Playing);
    m_streamer.tellEnded();
    EXPECT_EQ(m_logic->state(), State::Idle);
}

TEST_F(StreamerPlayLogicFollowingTest, a_stop_ends_playback_that_waits_for_a_play)
{
    playAndStart(item("one"));
    m_logic->playsLater = true;
    m_logic->play(TavuPlayLogicPlayArgs());
    m_streamer.tellEnded();
    expectValue(m_logic->stop(TavuPlayLogicStopReason::User));
    EXPECT_EQ(m_logic->state(), State::Idle);
    m_logic->played.cancel();
    EXPECT_EQ(m_logic->calls.count(QStringLiteral("ended")), 1);
}

// The streamer comes and goes.

TEST(StreamerPlayLogicDeathTest, needs_a_streamer)
{
    CMSubscribe subscribe;
    CMNodes nodes(&subscribe);
    ASSERT_EQ(Streamer::instance(), nullptr);
    EXPECT_DEATH(
        new ScriptedLogic(&nodes, CMPath(QStringLiteral("/s"))), "sets its streamer before");
}

TEST(StreamerPlayLogicWithoutStreamer, survives_the_end_of_the_streamer)
{
    CMSubscribe subscribe;
    CMNodes nodes(&subscribe);
    ScriptedLogic* logic = nullptr;
    {
        RecordingStreamer streamer;
        Streamer::setInstance(&streamer);
        logic = new ScriptedLogic(&nodes, CMPath(QStringLiteral("/s")));
    }
    logic->sendPlayCommand(item("one"), {});
    logic->sendSetNextMediaCommand(item("two"), {});
    logic->sendNoNextMediaCommand();
    expectError(logic->pause(), QStringLiteral("Nothing is playing."));
    expectValue(logic->seekTime(1));
    expectValue(logic->stop(TavuPlayLogicStopReason::User));
    EXPECT_EQ(logic->state(), State::Idle);
}

} // namespace
