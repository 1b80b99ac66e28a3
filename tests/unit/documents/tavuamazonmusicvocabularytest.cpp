#include "tavuamazonmusicvocabulary.h"

#include "printers.h"

#include <gtest/gtest.h>

namespace {

using Reason = TavuAmazonMusicEventReason;
using Thumb = TavuAmazonMusicThumbRating;

// The play logic passes these by number.
static_assert(Reason::TrackSelected == 0);
static_assert(Reason::ContainerSelected == 1);
static_assert(Reason::AutoNext == 2);
static_assert(Reason::Unpause == 3);
static_assert(Reason::TrackEnd == 4);
static_assert(Reason::Pause == 5);
static_assert(Reason::Stop == 6);
static_assert(Reason::Next == 12);
static_assert(Reason::Previous == 13);
static_assert(Reason::Seek == 14);
static_assert(Thumb::None == 0);
static_assert(Thumb::Down == 1);
static_assert(Thumb::Neutral == 2);
static_assert(Thumb::Up == 3);

TEST(TavuAmazonMusicEvent, has_its_words)
{
    EXPECT_EQ(TavuAmazonMusicEvent::Start(), QStringLiteral("START"));
    EXPECT_EQ(TavuAmazonMusicEvent::Stop(), QStringLiteral("STOP"));
}

TEST(TavuAmazonMusicEventReason, has_its_words)
{
    const QStringList words{ QStringLiteral("TRACK_SELECTED"), QStringLiteral("CONTAINER_SELECTED"),
        QStringLiteral("AUTO_NEXT"), QStringLiteral("UNPAUSE"), QStringLiteral("TRACK_END"),
        QStringLiteral("PAUSE"), QStringLiteral("STOP"), QStringLiteral("RESERVED_7"),
        QStringLiteral("RESERVED_8"), QStringLiteral("RESERVED_9"), QStringLiteral("RESERVED_10"),
        QStringLiteral("RESERVED_11"), QStringLiteral("NEXT"), QStringLiteral("PREVIOUS"),
        QStringLiteral("SEEK") };
    for (int reason = 0; reason < words.size(); ++reason)
        EXPECT_EQ(Reason::toString(static_cast<Reason::Enum>(reason)), words.at(reason));
    EXPECT_EQ(Reason::BufferUnderflow(), QStringLiteral("BUFFER_UNDERFLOW"));
    EXPECT_EQ(Reason::toString(static_cast<Reason::Enum>(99)), QStringLiteral("RESERVED_99"));
}

TEST(TavuAmazonMusicThumbRating, has_its_words)
{
    EXPECT_EQ(Thumb::toString(Thumb::None), QStringLiteral("NONE"));
    EXPECT_EQ(Thumb::toString(Thumb::Down), QStringLiteral("DOWN"));
    EXPECT_EQ(Thumb::toString(Thumb::Neutral), QStringLiteral("NEUTRAL"));
    EXPECT_EQ(Thumb::toString(Thumb::Up), QStringLiteral("UP"));
    EXPECT_EQ(Thumb::toString(static_cast<Thumb::Enum>(99)), QStringLiteral("99"));
}

} // namespace
