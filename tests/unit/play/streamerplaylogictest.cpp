#include "streamerplaylogic.h"

#include "cmnodes.h"
#include "printers.h"
#include "replies.h"
#include "testhost.h"

#include <gtest/gtest.h>

#include <QSet>

#include <limits>

namespace {

using Kind = RecordingStreamer::Kind;
using State = TavuPlayLogicState;

TavuRoles item(const char* title, qint64 duration = 180000)
{
    TavuResource resource;
    resource.setDuration(duration);
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMediaData media;
    media.setResources(resources);
    TavuRoles roles;
    roles.setTitle(QString::fromLatin1(title));
    roles.setMediaData(media);
    return roles;
}

CMError failure(const char* message = "gone")
{
    return CMError(TrString(message));
}

/// A play logic that plays what the test tells it to.
class Logic : public StreamerPlayLogic
{
public:
    using StreamerPlayLogic::StreamerPlayLogic;

    using StreamerPlayLogic::sendNoNextMediaCommand;
    using StreamerPlayLogic::sendPlayCommand;
    using StreamerPlayLogic::sendSetNextMediaCommand;
    using StreamerPlayLogic::sendStopCommand;

    QStringList calls;
    QStringList started;
    TavuRoles mediaRoles;
    bool nextEnabled = true;
    bool playsLater = false; // A play command is answered by the test.
    CMReply<QVariant> played;
    std::function<void()> whenStarted = [] {};
    std::function<void()> whenWanted = [] {};
    std::function<void()> whenNext = [] {};
    State::Enum stateAtEnd = State::Idle;

protected:
    void playInternal(const CMSetDataRequest& request, const TavuPlayLogicPlayArgs& args) override
    {
        calls << QStringLiteral("play");
        played = request.reply();
        if (playsLater)
            return;
        sendPlayCommand(args.trackRoles(), QVariantHash());
        request.reply().setValue(QVariant());
    }
    void likeInternal(const CMSetDataRequest& request) override { request.reply().cancel(); }
    void dislikeInternal(const CMSetDataRequest& request) override { request.reply().cancel(); }
    void nextInternal(const CMSetDataRequest& request) override
    {
        calls << QStringLiteral("next");
        request.reply().setValue(QVariant());
        whenNext();
    }
    void previousInternal(const CMSetDataRequest& request) override { request.reply().cancel(); }
    void playbackEnded() override
    {
        calls << QStringLiteral("ended");
        stateAtEnd = state();
        StreamerPlayLogic::playbackEnded();
    }
    void prepareNextMedia() override
    {
        calls << QStringLiteral("prepare");
        whenWanted();
    }
    TavuPlayLogicData mediaPlaybackStarted(const TavuRoles& media, const TavuRoles& track) override
    {
        started << track.title();
        mediaRoles = media;
        whenStarted();
        TavuPlayLogicControls controls;
        controls.setNext(nextEnabled);
        TavuPlayLogicData data;
        data.setControls(controls);
        return data;
    }
};

class StreamerPlayLogicTest : public ::testing::Test
{
protected:
    StreamerPlayLogicTest()
    {
        QObject::connect(m_logic, &StreamerPlayLogic::playbackDataChanged, m_logic,
            [this](const TavuPlayLogicData& data) { m_published.append(data); });
        QObject::connect(m_logic, &StreamerPlayLogic::positionChanged, m_logic,
            [this](qint64 position) { m_positions.append(position); });
        QObject::connect(m_logic, &StreamerPlayLogic::playbackFailed, m_logic,
            [this](const CMError& error) { m_failures << error.message(); });
        QObject::connect(m_logic, &StreamerPlayLogic::mediaSkipped, m_logic,
            [this](const TavuRoles& roles, const CMError& error) {
                m_skipped << roles.title() + QLatin1String(": ") + error.message();
            });
        QObject::connect(m_logic, &StreamerPlayLogic::bufferLevelChanged, m_logic,
            [this](double percent) { m_levels.append(percent); });
    }

    /// A play command as it comes from outside.
    void play(const TavuRoles& roles)
    {
        TavuRoles media;
        media.setTitle(QStringLiteral("album of ") + roles.title());
        TavuPlayLogicPlayArgs args;
        args.setMediaRoles(media);
        args.setTrackRoles(roles);
        expectValue(m_logic->play(args));
    }

    void playAndStart(const TavuRoles& roles)
    {
        play(roles);
        m_streamer.startPresent();
        m_streamer.forgetCommands();
    }

    /// Hands the next item over when the streamer wants it.
    void prepare(const TavuRoles& roles)
    {
        m_logic->whenWanted = [this, roles] { m_logic->sendSetNextMediaCommand(roles, {}); };
        m_streamer.wantNextMedia();
        m_streamer.forgetCommands();
    }

    QString present() const { return m_logic->data().trackRoles().title(); }

    TestHost m_host;
    RecordingStreamer& m_streamer = m_host.streamer();
    CMSubscribe m_subscribe;
    CMNodes m_nodes{ &m_subscribe };
    Logic* m_logic = new Logic(&m_nodes, CMPath(QStringLiteral("/s/playLogic")));
    QList<TavuPlayLogicData> m_published;
    QList<qint64> m_positions;
    QList<double> m_levels;
    QStringList m_failures;
    QStringList m_skipped;
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

// What follows.

TEST_F(StreamerPlayLogicTest, asks_for_what_follows_when_the_streamer_wants_it)
{
    playAndStart(item("one"));
    prepare(item("two"));
    EXPECT_TRUE(m_logic->calls.contains(QStringLiteral("prepare")));
    m_streamer.startNext();
    EXPECT_EQ(present(), QStringLiteral("two"));
    EXPECT_EQ(m_logic->started, (QStringList{ QStringLiteral("one"), QStringLiteral("two") }));
    EXPECT_LT(m_logic->playTime(), 10000);
}

TEST_F(StreamerPlayLogicTest, playback_ends_when_nothing_follows)
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

TEST_F(StreamerPlayLogicTest, waits_for_the_next_item_when_the_present_one_ends_first)
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

TEST_F(StreamerPlayLogicTest, ends_when_it_waited_for_nothing)
{
    playAndStart(item("one"));
    m_streamer.wantNextMedia();
    m_streamer.tellEnded();
    m_logic->sendNoNextMediaCommand();
    EXPECT_EQ(m_logic->calls.last(), QStringLiteral("ended"));
    EXPECT_EQ(m_logic->state(), State::Idle);
    m_streamer.expectNothing();
}

TEST_F(StreamerPlayLogicTest, a_next_item_that_comes_after_a_stop_does_not_play)
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

TEST_F(StreamerPlayLogicTest, a_next_item_that_comes_after_a_stop_at_the_end_does_not_play)
{
    playAndStart(item("one"));
    m_streamer.wantNextMedia();
    m_streamer.tellEnded();
    m_logic->sendStopCommand();
    m_streamer.forgetCommands();
    m_logic->sendSetNextMediaCommand(item("two"), {});
    m_streamer.expectNothing();
}

TEST_F(StreamerPlayLogicTest, a_logic_that_stops_when_an_item_starts_stays_stopped)
{
    play(item("one"));
    m_logic->whenStarted = [this] { m_logic->sendStopCommand(); };
    m_streamer.startPresent();
    EXPECT_EQ(m_logic->data(), TavuPlayLogicData());
}

// Failures.

TEST_F(StreamerPlayLogicTest, passes_over_an_item_that_fails_while_it_plays)
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

TEST_F(StreamerPlayLogicTest, passes_over_an_item_that_never_sounded)
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

TEST_F(StreamerPlayLogicTest, ends_when_the_output_fails_since_no_other_item_would_fare_better)
{
    playAndStart(item("one"));
    CMError error(TrString("no device"));
    error.setName(Streamer::outputErrorName());
    m_streamer.tellFailed(error);
    EXPECT_TRUE(m_skipped.isEmpty());
    EXPECT_EQ(m_failures, QStringList{ QStringLiteral("no device") });
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Idle);
}

TEST_F(StreamerPlayLogicTest, passes_over_a_prepared_item_that_failed_when_its_turn_comes)
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

TEST_F(StreamerPlayLogicTest, a_prepared_item_that_failed_can_be_replaced_in_time)
{
    playAndStart(item("one"));
    prepare(item("two"));
    m_streamer.tellNextFailed(failure());
    m_logic->sendSetNextMediaCommand(item("three"), {});
    m_streamer.startNext();
    EXPECT_EQ(present(), QStringLiteral("three"));
    EXPECT_TRUE(m_skipped.isEmpty());
}

TEST_F(StreamerPlayLogicTest, stops_with_the_error_when_nothing_can_follow)
{
    m_logic->nextEnabled = false;
    playAndStart(item("one"));
    m_streamer.tellFailed(failure());
    m_streamer.expect(Kind::Stop);
    EXPECT_EQ(m_logic->data(), TavuPlayLogicData());
    EXPECT_EQ(m_failures, QStringList{ QStringLiteral("gone") });
    EXPECT_TRUE(m_skipped.isEmpty());
}

TEST_F(StreamerPlayLogicTest, stops_when_the_logic_finds_nothing_to_follow_a_failed_item)
{
    playAndStart(item("one"));
    m_logic->whenNext = [this] { Q_EMIT m_logic->playbackFailed(failure("No more tracks.")); };
    m_streamer.tellFailed(failure());
    m_streamer.expect(Kind::Stop);
    EXPECT_EQ(m_logic->data(), TavuPlayLogicData());
    EXPECT_EQ(m_failures, QStringList{ QStringLiteral("No more tracks.") });
}

TEST_F(StreamerPlayLogicTest, a_lost_output_ends_playback_instead_of_skipping)
{
    playAndStart(item("one"));
    CMError lost = failure("no sound device");
    lost.setName(Streamer::outputErrorName());
    m_streamer.tellFailed(lost);
    EXPECT_EQ(m_failures, QStringList{ QStringLiteral("no sound device") });
    EXPECT_TRUE(m_skipped.isEmpty());
    EXPECT_EQ(m_logic->state(), State::Idle);
}

TEST_F(StreamerPlayLogicTest, a_failed_command_leaves_music_that_plays_alone)
{
    playAndStart(item("one"));
    Q_EMIT m_logic->playbackFailed(failure("No more tracks."));
    EXPECT_EQ(m_logic->state(), State::Playing);
    m_streamer.expectNothing();
}

TEST_F(StreamerPlayLogicTest, gives_up_after_five_failures_in_a_row)
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

TEST_F(StreamerPlayLogicTest, an_item_that_sounded_for_a_while_clears_the_count)
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

TEST_F(StreamerPlayLogicTest, a_new_play_command_clears_the_count)
{
    m_logic->whenNext = [this] { m_logic->sendPlayCommand(item("bad"), {}); };
    for (int round = 0; round < 3; ++round) {
        play(item("bad"));
        for (int number = 0; number < 4; ++number)
            m_streamer.tellFailed(failure());
    }
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(StreamerPlayLogicTest, a_listener_may_stop_playback_when_an_item_is_skipped)
{
    playAndStart(item("one"));
    QObject::connect(
        m_logic, &StreamerPlayLogic::mediaSkipped, m_logic, [this] { m_logic->sendStopCommand(); });
    m_streamer.tellFailed(failure());
    EXPECT_FALSE(m_logic->calls.contains(QStringLiteral("next")));
    EXPECT_EQ(m_logic->state(), State::Idle);
}

// A play command that takes its time.

TEST_F(StreamerPlayLogicTest, an_item_that_ends_while_a_play_is_under_way_leaves_playback_waiting)
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

TEST_F(StreamerPlayLogicTest, an_item_that_fails_while_a_play_is_under_way_is_not_skipped)
{
    playAndStart(item("one"));
    m_logic->playsLater = true;
    m_logic->play(TavuPlayLogicPlayArgs());
    m_streamer.tellFailed(failure());
    EXPECT_EQ(m_logic->state(), State::Buffering);
    EXPECT_FALSE(m_logic->calls.contains(QStringLiteral("next")));
    EXPECT_TRUE(m_failures.isEmpty());
}

TEST_F(StreamerPlayLogicTest, playback_that_waits_for_a_play_ends_when_that_fails)
{
    playAndStart(item("one"));
    m_logic->playsLater = true;
    m_logic->play(TavuPlayLogicPlayArgs());
    m_streamer.tellEnded();
    m_logic->played.setError(failure());
    EXPECT_EQ(m_logic->calls.count(QStringLiteral("ended")), 1);
    EXPECT_EQ(m_logic->state(), State::Idle);
}

TEST_F(StreamerPlayLogicTest, a_play_that_was_replaced_ends_nothing)
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

TEST_F(StreamerPlayLogicTest, a_play_that_fails_while_an_item_sounds_leaves_it_alone)
{
    playAndStart(item("one"));
    m_logic->playsLater = true;
    m_logic->play(TavuPlayLogicPlayArgs());
    m_logic->played.setError(failure());
    EXPECT_EQ(m_logic->state(), State::Playing);
    m_streamer.tellEnded();
    EXPECT_EQ(m_logic->state(), State::Idle);
}

TEST_F(StreamerPlayLogicTest, a_stop_ends_playback_that_waits_for_a_play)
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
    EXPECT_DEATH(new Logic(&nodes, CMPath(QStringLiteral("/s"))), "sets its streamer before");
}

TEST(StreamerPlayLogicWithoutStreamer, survives_the_end_of_the_streamer)
{
    CMSubscribe subscribe;
    CMNodes nodes(&subscribe);
    Logic* logic = nullptr;
    {
        RecordingStreamer streamer;
        Streamer::setInstance(&streamer);
        logic = new Logic(&nodes, CMPath(QStringLiteral("/s")));
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
