#include "cmthreadhome.h"

#include "watchdog.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(CMThreadHome, is_one_per_thread)
{
    EXPECT_EQ(CMThreadHome::current(), CMThreadHome::current());
    EXPECT_TRUE(CMThreadHome::current()->isCurrent());
    std::shared_ptr<CMThreadHome> other;
    std::thread([&] { other = CMThreadHome::current(); }).join();
    EXPECT_NE(other, CMThreadHome::current());
    EXPECT_FALSE(other->isCurrent());
}

TEST(CMThreadHome, posts_into_the_event_loop_of_its_thread)
{
    const auto home = CMThreadHome::current();
    std::thread::id heardOn;
    std::thread([&] { home->post([&] { heardOn = std::this_thread::get_id(); }); }).join();
    EXPECT_EQ(heardOn, std::thread::id());
    ASSERT_TRUE(waitUntil([&] { return heardOn != std::thread::id(); }));
    EXPECT_EQ(heardOn, std::this_thread::get_id());
}

TEST(CMThreadHome, never_runs_a_posted_function_from_within_the_call)
{
    bool ran = false;
    CMThreadHome::current()->post([&] { ran = true; });
    EXPECT_FALSE(ran);
    EXPECT_TRUE(waitUntil([&] { return ran; }));
}

TEST(CMThreadHome, drops_what_is_posted_after_the_end_of_its_thread)
{
    std::shared_ptr<CMThreadHome> ended;
    std::thread([&] { ended = CMThreadHome::current(); }).join();
    const auto captured = std::make_shared<int>(1);
    ended->post([captured] {});
    EXPECT_EQ(captured.use_count(), 1);
}

} // namespace
