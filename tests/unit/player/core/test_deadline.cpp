#include "deadline.h"

#include "watchdog.h"

#include <gtest/gtest.h>

namespace {

TEST(Deadline, fails_a_reply_that_nobody_answers)
{
    const auto reply = CMReply<QVariant>::create();
    player::withDeadline(reply, 1);
    ASSERT_TRUE(waitUntil([&] { return reply.isFinished(); }));
    EXPECT_EQ(reply.error().message(),
        QStringLiteral("The service has not answered in time. Please try again."));
}

TEST(Deadline, leaves_an_answer_alone)
{
    const auto reply = CMReply<QVariant>::create();
    player::withDeadline(reply, 1);
    reply.setValue(5);
    settle();
    EXPECT_FALSE(reply.error().isSet());
    EXPECT_EQ(reply.value().toInt(), 5);
}

} // namespace
