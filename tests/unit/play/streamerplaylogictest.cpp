#include "streamerplaylogicfixture.h"

#include <QSet>

#include <limits>

namespace {

class StreamerPlayLogicTest : public StreamerPlayLogicFixture
{
};

// Playing.

TEST_F(StreamerPlayLogicTest, is_idle_at_first)
{
    EXPECT_EQ(m_logic->state(), State::Idle);
    EXPECT_EQ(m_logic->data(), TavuPlayLogicData());
    EXPECT_EQ(m_logic->playTime(), 0);
}

TEST_F(StreamerPlayLogicTest, buffers_as_soon_as_it_is_told_to_play)
{
    play(item("one"));
    const auto command = m_streamer.expect(Kind::Play);
    EXPECT_EQ(command.roles, item("one"));
    EXPECT_NE(command.id, 0U);
    EXPECT_EQ(m_logic->state(), State::Buffering);
    m_streamer.expectNothing();
}

TEST_F(StreamerPlayLogicTest, publishes_the_item_when_it_begins_to_sound)
{
    play(item("one"));
    m_streamer.startPresent();
    EXPECT_EQ(m_logic->started, QStringList{ QStringLiteral("one") });
    EXPECT_EQ(m_logic->mediaRoles.title(), QStringLiteral("album of one"));
    EXPECT_EQ(m_logic->data().trackRoles(), item("one"));
    EXPECT_EQ(m_logic->data().mediaRoles().title(), QStringLiteral("album of one"));
    EXPECT_TRUE(m_logic->data().controls().next());
    EXPECT_EQ(m_logic->state(), State::Playing);
    EXPECT_EQ(m_published.last(), m_logic->data());
}

TEST_F(StreamerPlayLogicTest, every_item_has_an_id_of_its_own)
{
    QSet<quint64> ids;
    for (int number = 0; number < 3; ++number) {
        play(item("same"));
        ids.insert(m_streamer.expect(Kind::Play).id);
        m_logic->sendSetNextMediaCommand(item("same"), {});
        ids.insert(m_streamer.expect(Kind::SetNextMedia).id);
    }
    EXPECT_EQ(ids.size(), 6);
}

TEST_F(StreamerPlayLogicTest, hands_the_attributes_on)
{
    const QVariantHash attributes{ { QStringLiteral("startPaused"), true } };
    m_logic->sendPlayCommand(item("one"), attributes);
    EXPECT_EQ(m_streamer.expect(Kind::Play).attributes, attributes);
    m_logic->sendSetNextMediaCommand(item("two"), attributes);
    EXPECT_EQ(m_streamer.expect(Kind::SetNextMedia).attributes, attributes);
}

TEST_F(StreamerPlayLogicTest, publishes_each_change_once)
{
    playAndStart(item("one"));
    const int before = m_published.size();
    m_streamer.tellState(State::Playing);
    m_streamer.tellState(State::Playing);
    EXPECT_EQ(m_published.size(), before);
    m_streamer.tellState(State::Buffering);
    EXPECT_EQ(m_published.size(), before + 1);
}

TEST_F(StreamerPlayLogicTest, hands_buffer_levels_on)
{
    playAndStart(item("one"));
    m_streamer.tellBufferLevel(99.9);
    EXPECT_EQ(m_logic->state(), State::Buffering);
    m_streamer.tellBufferLevel(100.0);
    EXPECT_EQ(m_levels, (QList<double>{ 99.9, 100.0 }));
}

TEST_F(StreamerPlayLogicTest, follows_roles_that_were_renewed)
{
    playAndStart(item("one"));
    m_streamer.tellRenewed(item("one, fresh"));
    EXPECT_EQ(present(), QStringLiteral("one, fresh"));
    EXPECT_TRUE(m_logic->data().controls().next());
}

// Late news.

TEST_F(StreamerPlayLogicTest, drops_news_of_an_item_that_was_replaced)
{
    playAndStart(item("one"));
    const quint64 old = m_streamer.presentId();
    play(item("two"));
    m_streamer.startPresent();
    const auto before = m_logic->data();
    const auto published = m_published.size();
    const auto positions = m_positions.size();

    Q_EMIT m_streamer.mediaStarted(old);
    Q_EMIT m_streamer.stateChanged(old, State::Buffering);
    Q_EMIT m_streamer.positionChanged(old, 99000);
    Q_EMIT m_streamer.bufferLevelChanged(old, 10.0);
    Q_EMIT m_streamer.nextMediaWanted(old);
    Q_EMIT m_streamer.ended(old);
    Q_EMIT m_streamer.failed(old, failure());
    Q_EMIT m_streamer.rolesRenewed(old, item("ghost"));

    EXPECT_EQ(m_logic->data(), before);
    EXPECT_LT(m_logic->playTime(), 99000);
    EXPECT_EQ(m_published.size(), published);
    EXPECT_EQ(m_positions.size(), positions);
    EXPECT_TRUE(m_levels.isEmpty());
    EXPECT_TRUE(m_failures.isEmpty());
    EXPECT_TRUE(m_skipped.isEmpty());
    EXPECT_EQ(m_logic->started, (QStringList{ QStringLiteral("one"), QStringLiteral("two") }));
    EXPECT_EQ(m_logic->calls, (QStringList{ QStringLiteral("play"), QStringLiteral("play") }));
}

TEST_F(StreamerPlayLogicTest, drops_news_of_an_item_that_was_stopped)
{
    playAndStart(item("one"));
    const quint64 old = m_streamer.presentId();
    m_logic->sendStopCommand();
    m_logic->calls.clear();
    Q_EMIT m_streamer.mediaStarted(old);
    Q_EMIT m_streamer.stateChanged(old, State::Playing);
    Q_EMIT m_streamer.ended(old);
    Q_EMIT m_streamer.failed(old, failure());
    Q_EMIT m_streamer.nextMediaWanted(old);
    EXPECT_EQ(m_logic->state(), State::Idle);
    EXPECT_TRUE(m_logic->calls.isEmpty());
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(StreamerPlayLogicTest, drops_news_of_no_item)
{
    Q_EMIT m_streamer.mediaStarted(0);
    Q_EMIT m_streamer.ended(0);
    Q_EMIT m_streamer.failed(0, failure());
    EXPECT_TRUE(m_logic->calls.isEmpty());
    EXPECT_TRUE(m_logic->started.isEmpty());
}

TEST_F(StreamerPlayLogicTest, drops_the_start_of_a_next_item_that_was_replaced)
{
    playAndStart(item("one"));
    prepare(item("two"));
    const quint64 old = m_streamer.nextId();
    m_logic->sendSetNextMediaCommand(item("three"), {});
    Q_EMIT m_streamer.mediaStarted(old);
    EXPECT_EQ(present(), QStringLiteral("one"));
    m_streamer.startNext();
    EXPECT_EQ(present(), QStringLiteral("three"));
}

// Position.

TEST_F(StreamerPlayLogicTest, the_position_runs_on_while_playing)
{
    playAndStart(item("one"));
    m_streamer.tellPosition(5000);
    EXPECT_GE(m_logic->playTime(), 5000);
    ASSERT_TRUE(waitUntil([&] { return m_logic->playTime() >= 5020; }));
    EXPECT_LT(m_logic->playTime(), 100000);
}

TEST_F(StreamerPlayLogicTest, the_position_stands_still_while_paused_or_buffering)
{
    playAndStart(item("one"));
    m_streamer.tellPosition(5000);
    m_streamer.tellState(State::Buffering);
    const qint64 position = m_logic->playTime();
    EXPECT_FALSE(waitUntil([&] { return m_logic->playTime() != position; }, 30));
    m_logic->pause();
    EXPECT_FALSE(waitUntil([&] { return m_logic->playTime() != position; }, 30));
}

TEST_F(StreamerPlayLogicTest, the_position_never_runs_past_the_end)
{
    playAndStart(item("short", 1000));
    m_streamer.tellPosition(990);
    ASSERT_TRUE(waitUntil([&] { return m_logic->playTime() == 1000; }));
    EXPECT_FALSE(waitUntil([&] { return m_logic->playTime() != 1000; }, 30));
}

TEST_F(StreamerPlayLogicTest, the_streamer_knows_better_when_an_item_is_longer_than_it_says)
{
    playAndStart(item("long", 1000));
    m_streamer.tellPosition(5000);
    EXPECT_GE(m_logic->playTime(), 5000);
}

TEST_F(StreamerPlayLogicTest, the_position_begins_at_the_start_time_of_the_item)
{
    TavuRoles roles = item("one");
    TavuMediaData media = roles.mediaData();
    TavuMetaData metaData;
    metaData.setStartTime(42000);
    media.setMetaData(metaData);
    roles.setMediaData(media);
    play(roles);
    EXPECT_EQ(m_logic->playTime(), 42000);
}

TEST_F(StreamerPlayLogicTest, tells_positions_as_they_come)
{
    playAndStart(item("one"));
    m_positions.clear();
    m_streamer.tellPosition(1000);
    m_streamer.tellPosition(1250);
    EXPECT_EQ(m_positions, (QList<qint64>{ 1000, 1250 }));
}

// Commands.

TEST_F(StreamerPlayLogicTest, pauses_and_goes_on)
{
    playAndStart(item("one"));
    expectValue(m_logic->pause());
    m_streamer.expect(Kind::Pause);
    EXPECT_EQ(m_logic->state(), State::Paused);
    expectValue(m_logic->pause());
    m_streamer.expect(Kind::Resume);
    EXPECT_EQ(m_logic->state(), State::Playing);
    m_streamer.expectNothing();
}

TEST_F(StreamerPlayLogicTest, a_pause_keeps_the_position)
{
    playAndStart(item("one"));
    m_streamer.tellPosition(7000);
    m_logic->pause();
    EXPECT_GE(m_logic->playTime(), 7000);
    EXPECT_LT(m_logic->playTime(), 17000);
}

TEST_F(StreamerPlayLogicTest, pause_and_seek_fail_when_nothing_plays)
{
    expectError(m_logic->pause(), QStringLiteral("Nothing is playing."));
    expectError(m_logic->seekTime(1000), QStringLiteral("Nothing is playing."));
    m_streamer.expectNothing();
    EXPECT_EQ(m_logic->state(), State::Idle);
}

TEST_F(StreamerPlayLogicTest, stop_when_idle_is_harmless)
{
    expectValue(m_logic->stop(TavuPlayLogicStopReason::User));
    EXPECT_EQ(m_logic->state(), State::Idle);
    EXPECT_TRUE(m_published.isEmpty());
}

TEST_F(StreamerPlayLogicTest, seeks_and_knows_the_new_position_at_once)
{
    playAndStart(item("one"));
    m_positions.clear();
    expectValue(m_logic->seekTime(60000));
    EXPECT_EQ(m_streamer.expect(Kind::SeekTime).position, 60000);
    EXPECT_GE(m_logic->playTime(), 60000);
    EXPECT_EQ(m_positions, QList<qint64>{ 60000 });
}

TEST_F(StreamerPlayLogicTest, a_position_outside_of_the_item_is_moved_to_its_nearer_end)
{
    playAndStart(item("one", 180000));
    m_logic->seekTime(-1);
    EXPECT_EQ(m_streamer.expect(Kind::SeekTime).position, 0);
    m_logic->seekTime(std::numeric_limits<qint64>::max());
    EXPECT_EQ(m_streamer.expect(Kind::SeekTime).position, 180000);
}

TEST_F(StreamerPlayLogicTest, an_item_of_unknown_length_has_no_far_end)
{
    playAndStart(item("live", 0));
    m_logic->seekTime(1LL << 40);
    EXPECT_EQ(m_streamer.expect(Kind::SeekTime).position, 1LL << 40);
}

TEST_F(StreamerPlayLogicTest, stop_ends_playback_before_it_returns)
{
    playAndStart(item("one"));
    m_streamer.tellPosition(5000);
    const auto reply = m_logic->stop(TavuPlayLogicStopReason::User);
    EXPECT_TRUE(reply.isFinished());
    m_streamer.expect(Kind::Stop);
    EXPECT_TRUE(m_logic->calls.contains(QStringLiteral("ended")));
    EXPECT_EQ(m_logic->stateAtEnd, State::Playing); // The override still sees what ended.
    EXPECT_EQ(m_logic->data(), TavuPlayLogicData());
    EXPECT_EQ(m_logic->playTime(), 0);
    EXPECT_EQ(m_published.last(), TavuPlayLogicData());
}

} // namespace
