#include "messagelog.h"

#include <gtest/gtest.h>

namespace {

TEST(MessageLog, keeps_the_last_twenty_oldest_first)
{
    player::MessageLog log;
    for (int number = 1; number <= 25; ++number)
        log.add(QStringLiteral("info"), QString::number(number), QString(), QString());
    ASSERT_EQ(log.messages().size(), 20);
    EXPECT_EQ(log.messages().first().toHash().value(QStringLiteral("title")), QStringLiteral("6"));
    EXPECT_EQ(log.messages().last().toHash().value(QStringLiteral("id")).toInt(), 25);
}

TEST(MessageLog, adds_rows_only_when_there_are_some)
{
    player::MessageLog log;
    EXPECT_FALSE(
        log.add(QStringLiteral("error"), QStringLiteral("t"), QStringLiteral("x"), QString())
            .contains(QStringLiteral("rows")));
    EXPECT_TRUE(
        log.add(QStringLiteral("error"), QString(), QString(), QString(), { QVariantHash() })
            .contains(QStringLiteral("rows")));
}

} // namespace
