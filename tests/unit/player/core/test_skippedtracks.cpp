#include "skippedtracks.h"

#include "watchdog.h"

#include <gtest/gtest.h>

namespace {

class SkippedTracksTest : public ::testing::Test
{
protected:
    SkippedTracksTest()
    {
        QObject::connect(&skipped, &player::SkippedTracks::told, &skipped,
            [this](const QString& title, const QString& text) { told << title << text; });
    }
    void skip(const QStringList& titles, const char* reason = "gone")
    {
        for (const QString& title : titles)
            skipped.add(title, QString::fromLatin1(reason));
    }

    player::SkippedTracks skipped;
    QStringList told;
};

TEST_F(SkippedTracksTest, one_track_is_named_in_the_title)
{
    skip({ QStringLiteral("50 %1 of it") });
    ASSERT_TRUE(waitUntil([this] { return !told.isEmpty(); }));
    EXPECT_EQ(
        told, QStringList({ QStringLiteral("Skipped “50 %1 of it”"), QStringLiteral("gone") }));
}

TEST_F(SkippedTracksTest, a_run_of_them_is_told_once)
{
    skip({ QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c") });
    EXPECT_TRUE(told.isEmpty());
    skipped.flush();
    EXPECT_EQ(
        told, QStringList({ QStringLiteral("Skipped 3 tracks"), QStringLiteral("gone\na, b, c") }));
    skipped.flush();
    EXPECT_EQ(told.size(), 2);
}

TEST_F(SkippedTracksTest, each_reason_is_told_in_its_turn)
{
    skip({ QStringLiteral("a") });
    skip({ QStringLiteral("b") }, "not in your plan");
    skipped.flush();
    EXPECT_EQ(told,
        QStringList({ QStringLiteral("Skipped “a”"), QStringLiteral("gone"),
            QStringLiteral("Skipped “b”"), QStringLiteral("not in your plan") }));
}

TEST_F(SkippedTracksTest, a_long_run_names_the_first_of_them)
{
    skip(QString(QStringLiteral("a b c d e f g")).split(QLatin1Char(' ')));
    skipped.flush();
    EXPECT_EQ(told.last(), QStringLiteral("gone\na, b, c, d, e, …"));
}

} // namespace
