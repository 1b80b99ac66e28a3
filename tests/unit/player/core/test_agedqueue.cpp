#include "agedqueue.h"

#include "printers.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace {

class AgedQueueTest : public ::testing::Test
{
protected:
    void passOver(const char* titles, bool stepped = false)
    {
        for (const QString& title : QString::fromLatin1(titles).split(QLatin1Char(' '))) {
            TavuRoles track;
            track.setTitle(title);
            track.setPath(CMPath(title));
            queue.passOver(track, CMError(), stepped);
        }
    }
    QString first(bool stepped = false) const { return queue.firstPassedOver(stepped).title(); }
    QString told()
    {
        QStringList titles;
        queue.tellPassedOver(
            [&](const TavuRoles& track, const CMError&) { titles.append(track.title()); });
        return titles.join(QLatin1Char(' '));
    }

    player::AgedQueue queue;
};

TEST_F(AgedQueueTest, the_first_track_passed_over_is_the_one_that_would_have_followed)
{
    EXPECT_EQ(first(), QString());
    passOver("b c");
    EXPECT_EQ(first(), QStringLiteral("b"));
}

TEST_F(AgedQueueTest, what_a_step_passes_over_does_not_follow_by_itself)
{
    passOver("c d");
    passOver("a", true);
    EXPECT_EQ(first(), QStringLiteral("c"));
    EXPECT_EQ(first(true), QStringLiteral("a"));
    passOver("d", true);
    EXPECT_EQ(first(true), QStringLiteral("a")) << "what follows by itself is another search";
}

TEST_F(AgedQueueTest, a_track_that_comes_round_again_begins_another_search)
{
    passOver("b c");
    passOver("c b");
    EXPECT_EQ(first(), QStringLiteral("c"));
}

TEST_F(AgedQueueTest, each_track_is_told_of_once_and_then_forgotten)
{
    passOver("b c");
    passOver("b c", true);
    EXPECT_EQ(told(), QStringLiteral("b c"));
    EXPECT_EQ(told(), QString());
    EXPECT_EQ(first(), QString());
}

TEST_F(AgedQueueTest, another_queue_begins_young)
{
    passOver("b");
    queue.setRenewed();
    queue.begin();
    EXPECT_FALSE(queue.isRenewed());
    EXPECT_EQ(told(), QString());
}

} // namespace
