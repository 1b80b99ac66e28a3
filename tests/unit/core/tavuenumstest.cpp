#include "tavuenums.h"

#include "printers.h"

#include <gtest/gtest.h>

#include <QSet>

namespace {

// These numbers are the interface between host and plug-ins: they never change.
static_assert(TavuRolesType::None == 0);
static_assert(TavuRolesType::Folder == 1);
static_assert(TavuRolesType::Playable == 3);
static_assert(TavuRolesType::Message == 6);
static_assert(TavuRolesType::Action == 102);
static_assert(TavuRolesType::Link == 106);

static_assert(TavuRolesAudioType::None == 0);
static_assert(TavuRolesAudioType::Tracks == 1);
static_assert(TavuRolesAudioType::Station == 2);

static_assert(TavuRolesContainerType::None == 0);
static_assert(TavuRolesContainerType::Album == 2);
static_assert(TavuRolesContainerType::List == 100);
static_assert(TavuRolesContainerType::Search == 101);

static_assert(TavuRowsRolesType::List == 0);

static_assert(TavuEventRowsType::None == 0);
static_assert(TavuEventRowsType::Close == 1);

static_assert(TavuOAuth2AuthMethod::Basic == 0);
static_assert(TavuOAuth2AuthMethod::RequestBody == 1);

static_assert(TavuPlayLogicStopReason::Service == 0);
static_assert(TavuPlayLogicStopReason::User == 1);
static_assert(TavuPlayLogicStopReason::Replaced == 2);

static_assert(TavuPlayLogicState::Idle == 0);
static_assert(TavuPlayLogicState::Buffering == 1);
static_assert(TavuPlayLogicState::Playing == 2);
static_assert(TavuPlayLogicState::Paused == 3);

static_assert(TavuPlayerPlayMode::Normal == 0);
static_assert(TavuPlayerPlayMode::Shuffle == 1);
static_assert(TavuPlayerPlayMode::RepeatOne == 2);
static_assert(TavuPlayerPlayMode::ShuffleRepeatOne == 3);
static_assert(TavuPlayerPlayMode::RepeatAll == 4);
static_assert(TavuPlayerPlayMode::ShuffleRepeatAll == 5);

template <class Enumeration>
void expectNames(std::initializer_list<typename Enumeration::Enum> values)
{
    QSet<QString> names;
    for (const auto value : values) {
        const QString name = Enumeration::toString(value);
        bool isNumber = false;
        name.toInt(&isNumber);
        EXPECT_FALSE(isNumber) << value;
        names.insert(name);
    }
    EXPECT_EQ(names.size(), static_cast<int>(values.size()));
    EXPECT_EQ(Enumeration::toString(static_cast<typename Enumeration::Enum>(4711)),
        QStringLiteral("4711"));
}

TEST(TavuEnums, every_value_has_a_name_and_every_other_number_prints_as_it_is)
{
    using Type = TavuRolesType;
    expectNames<Type>(
        { Type::None, Type::Folder, Type::Playable, Type::Message, Type::Action, Type::Link });
    using Audio = TavuRolesAudioType;
    expectNames<Audio>({ Audio::None, Audio::Tracks, Audio::Station });
    using Container = TavuRolesContainerType;
    expectNames<Container>(
        { Container::None, Container::Album, Container::List, Container::Search });
    using State = TavuPlayLogicState;
    expectNames<State>({ State::Idle, State::Buffering, State::Playing, State::Paused });
    using Mode = TavuPlayerPlayMode;
    expectNames<Mode>({ Mode::Normal, Mode::Shuffle, Mode::RepeatOne, Mode::ShuffleRepeatOne,
        Mode::RepeatAll, Mode::ShuffleRepeatAll });
}

TEST(TavuEnums, bit_0_of_a_play_mode_is_shuffle_and_bit_2_repeats_all)
{
    for (const auto mode : { TavuPlayerPlayMode::Shuffle, TavuPlayerPlayMode::ShuffleRepeatOne,
             TavuPlayerPlayMode::ShuffleRepeatAll })
        EXPECT_TRUE(mode & 1);
    for (const auto mode : { TavuPlayerPlayMode::RepeatAll, TavuPlayerPlayMode::ShuffleRepeatAll })
        EXPECT_TRUE(mode & 4);
    EXPECT_FALSE(TavuPlayerPlayMode::RepeatOne & 5);
}

} // namespace
