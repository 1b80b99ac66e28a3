#include "cmreply.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>
#include <vector>

namespace {

const auto forever = std::numeric_limits<unsigned long>::max();

std::vector<std::thread> threads(int count, const std::function<void(int)>& function)
{
    std::vector<std::thread> all;
    all.reserve(static_cast<std::size_t>(count));
    for (int number = 0; number < count; ++number)
        all.emplace_back(function, number);
    return all;
}

void join(std::vector<std::thread>& all)
{
    for (std::thread& thread : all)
        thread.join();
}

TEST(CMReplyThreads, three_waiting_threads_wake_with_the_value)
{
    const auto reply = CMReply<int>::create();
    std::atomic<int> waiting{ 0 };
    std::atomic<int> sum{ 0 };
    auto waiters = threads(3, [&](int) {
        ++waiting;
        EXPECT_TRUE(reply.waitForFinished(forever));
        sum += reply.value();
    });
    while (waiting < 3)
        std::this_thread::yield();
    EXPECT_EQ(sum, 0);
    reply.setValue(7);
    join(waiters);
    EXPECT_EQ(sum, 21);
}

TEST(CMReplyThreads, of_many_finishing_threads_exactly_one_wins)
{
    for (int round = 0; round < 200; ++round) {
        const auto reply = CMReply<int>::create();
        std::atomic<int> calls{ 0 };
        reply.addWatcher([&](const CMVoidReply&) { ++calls; }, Qt::DirectConnection);
        auto finishers = threads(4, [&](int number) {
            if (number == 3)
                reply.cancel();
            else
                reply.setValue(number + 1);
        });
        join(finishers);
        EXPECT_EQ(calls, 1);
        EXPECT_NE(reply.value() != 0, reply.error().isSet());
    }
}

TEST(CMReplyThreads, every_watcher_added_while_the_reply_finishes_runs_once)
{
    for (int round = 0; round < 200; ++round) {
        const auto reply = CMReply<int>::create();
        std::atomic<int> calls{ 0 };
        auto adders = threads(4, [&](int number) {
            if (number == 0)
                reply.setValue(1);
            for (int added = 0; added < 10; ++added)
                reply.addWatcher(
                    [&](const CMVoidReply& finished) {
                        EXPECT_TRUE(finished.isFinished());
                        ++calls;
                    },
                    Qt::DirectConnection);
        });
        join(adders);
        EXPECT_EQ(calls, 40);
    }
}

TEST(CMReplyThreads, handles_may_be_copied_and_dropped_on_every_thread)
{
    for (int round = 0; round < 100; ++round) {
        auto reply = CMReply<QString>::create();
        auto users = threads(4, [reply](int number) {
            const CMReply<QString> copy = reply;
            if (number == 1)
                copy.setValue(QStringLiteral("done"));
            copy.waitForFinished(forever);
            EXPECT_EQ(copy.value(), QStringLiteral("done"));
        });
        reply = CMReply<QString>();
        join(users);
    }
}

TEST(CMReplyThreads, a_watcher_may_use_the_reply_while_other_threads_do)
{
    for (int round = 0; round < 100; ++round) {
        const auto reply = CMReply<int>::create();
        std::atomic<int> calls{ 0 };
        reply.addWatcher(
            [&](const CMVoidReply& finished) {
                finished.cancel();
                finished.addWatcher([&](const CMVoidReply&) { ++calls; }, Qt::DirectConnection);
            },
            Qt::DirectConnection);
        auto others = threads(3, [&](int number) {
            reply.setValue(number + 1);
            EXPECT_FALSE(reply.error().isSet());
        });
        join(others);
        EXPECT_EQ(calls, 1);
    }
}

} // namespace
