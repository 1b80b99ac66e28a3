#include "tavuplaylogic.h"

#include "recordfields.h"

namespace {

TEST(TavuPlayLogicControls, fields)
{
    using Controls = TavuPlayLogicControls;
    EXPECT_FIELD(Controls, pause, Pause, true);
    EXPECT_FIELD(Controls, next, Next, true);
    EXPECT_FIELD(Controls, previous, Previous, true);
    EXPECT_FIELD(Controls, seekTime, SeekTime, true);
    EXPECT_FIELD(Controls, like, Like, true);
    EXPECT_FIELD(Controls, dislike, Dislike, true);
}

TEST(TavuPlayLogicPlayModesSupported, fields)
{
    using Modes = TavuPlayLogicPlayModesSupported;
    EXPECT_FIELD(Modes, repeatOne, RepeatOne, true);
    EXPECT_FIELD(Modes, shuffle, Shuffle, true);
    EXPECT_FIELD(Modes, shuffleRepeatOne, ShuffleRepeatOne, true);
    EXPECT_FIELD(Modes, shuffleRepeatAll, ShuffleRepeatAll, true);
    EXPECT_FIELD(Modes, repeatAll, RepeatAll, true);
}

TEST(TavuPlayLogicData, fields)
{
    using Data = TavuPlayLogicData;
    EXPECT_FIELD(Data, state, State, TavuPlayLogicState::Paused);
    EXPECT_FIELD(Data, controls, Controls, someRecord<TavuPlayLogicControls>());
    EXPECT_FIELD(Data, playModesSupported, PlayModesSupported,
        someRecord<TavuPlayLogicPlayModesSupported>());
    EXPECT_FIELD(Data, mediaRoles, MediaRoles, someRecord<TavuRoles>());
    EXPECT_FIELD(Data, trackRoles, TrackRoles, someRecord<TavuRoles>());
}

TEST(TavuPlayLogicPlayArgs, fields)
{
    EXPECT_FIELD(TavuPlayLogicPlayArgs, mediaRoles, MediaRoles, someRecord<TavuRoles>());
    EXPECT_FIELD(TavuPlayLogicPlayArgs, trackRoles, TrackRoles, someRecord<TavuRoles>());
}

TEST(TavuPlayLogicSeekArgs, fields)
{
    EXPECT_FIELD(TavuPlayLogicSeekArgs, seekTime, SeekTime, 1LL << 40);
}

TEST(TavuPlayLogicCommand, fields)
{
    EXPECT_FIELD(TavuPlayLogicCommand, command, Command, QStringLiteral("play"));
    EXPECT_FIELD(TavuPlayLogicCommand, args, Args, someRecord<TavuHash>().__hash());
}

TEST(TavuPlayLogicData, of_nothing_is_idle)
{
    EXPECT_EQ(TavuPlayLogicData().state(), TavuPlayLogicState::Idle);
}

} // namespace
