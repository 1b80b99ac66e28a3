#include "rowmemory.h"

#include <gtest/gtest.h>

using control::RowMemory;

static QVariantHash row(int number)
{
    return { { QStringLiteral("title"), QStringLiteral("Row %1").arg(number) },
        { QStringLiteral("nested"),
            QVariantHash{ { QStringLiteral("list"), QVariantList{ 1, true } } } } };
}

TEST(RowMemory, GivesARowBackAsItWas)
{
    RowMemory memory;
    const QString ref = memory.remember(row(1));
    ASSERT_TRUE(memory.recall(ref));
    EXPECT_EQ(*memory.recall(ref), row(1));
    EXPECT_FALSE(memory.recall(QStringLiteral("unknown")));
    EXPECT_FALSE(memory.recall(QString()));
}

TEST(RowMemory, NamesEqualRowsAlike)
{
    RowMemory memory;
    EXPECT_EQ(memory.remember(row(1)), memory.remember(row(1)));
    EXPECT_NE(memory.remember(row(1)), memory.remember(row(2)));
}

TEST(RowMemory, ForgetsTheRowsThatWereUsedLongestAgo)
{
    RowMemory memory(1000);
    const QString first = memory.remember(row(1));
    const QString second = memory.remember(row(2));
    for (int i = 3; i < 100; ++i) {
        memory.remember(row(i));
        memory.recall(first);
    }
    EXPECT_TRUE(memory.recall(first));
    EXPECT_FALSE(memory.recall(second));
}
