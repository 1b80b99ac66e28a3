#include "recordingstreamer.h"

#include <gtest/gtest.h>

namespace {

TEST(Streamer, there_is_none_until_the_player_sets_one)
{
    EXPECT_EQ(Streamer::instance(), nullptr);
    RecordingStreamer streamer;
    EXPECT_EQ(Streamer::instance(), nullptr);
    Streamer::setInstance(&streamer);
    EXPECT_EQ(Streamer::instance(), &streamer);
    Streamer::setInstance(nullptr);
}

TEST(Streamer, there_is_none_after_it_has_gone)
{
    {
        RecordingStreamer streamer;
        Streamer::setInstance(&streamer);
    }
    EXPECT_EQ(Streamer::instance(), nullptr);
}

TEST(Streamer, another_one_that_goes_leaves_it_in_place)
{
    RecordingStreamer streamer;
    Streamer::setInstance(&streamer);
    {
        const RecordingStreamer other;
    }
    EXPECT_EQ(Streamer::instance(), &streamer);
}

} // namespace
