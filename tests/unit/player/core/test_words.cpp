#include "ratinglog.h"
#include "recenterrors.h"
#include "words.h"

#include <gtest/gtest.h>

namespace {

CMError error(const char* message)
{
    return CMError(TrString(QString::fromLatin1(message)));
}

CMError withScreen(CMError given)
{
    given.setActionReply({ { QStringLiteral("result"), QVariantHash() } });
    return given;
}

TEST(Words, are_the_services_own_where_it_has_a_screen)
{
    const QVariantList rows{ QVariantHash{ { QStringLiteral("title"), QStringLiteral("Headline") },
        { QStringLiteral("longDescription"), QStringLiteral("Explanation") } } };
    const player::Words words = player::wordsOf(error("message"), rows);
    EXPECT_EQ(words.title, QStringLiteral("Headline"));
    EXPECT_EQ(words.text, QStringLiteral("Explanation"));
}

TEST(Words, of_an_error_without_a_title_are_its_message)
{
    const player::Words words = player::wordsOf(error("message"));
    EXPECT_EQ(words.title, QStringLiteral("message"));
    EXPECT_EQ(words.text, QString());
    CMError titled = error("message");
    titled.setTitle(QStringLiteral("Title"));
    EXPECT_EQ(player::wordsOf(titled).title, QStringLiteral("Title"));
    EXPECT_EQ(player::wordsOf(titled).text, QStringLiteral("message"));
}

TEST(Words, tell_a_rating_that_the_service_did_not_take)
{
    EXPECT_TRUE(
        player::tellsOfFailure(QStringLiteral("Server response with code: 500, status: OK")));
    EXPECT_FALSE(player::tellsOfFailure(QStringLiteral("Thanks!")));
}

TEST(RecentErrors, tells_the_same_failure_once)
{
    player::RecentErrors recent;
    EXPECT_TRUE(recent.isNews(error("a")));
    EXPECT_FALSE(recent.isNews(error("a")));
    EXPECT_TRUE(recent.isNews(error("b")));
    EXPECT_TRUE(recent.isNews(error("a")));
}

TEST(RecentErrors, tells_the_same_of_what_was_done_next)
{
    player::RecentErrors recent;
    EXPECT_TRUE(recent.isNews(error("a")));
    recent.clear();
    EXPECT_TRUE(recent.isNews(error("a")));
    EXPECT_FALSE(recent.isNews(error("a")));
}

TEST(RecentErrors, tells_of_a_screen_that_comes_second)
{
    player::RecentErrors recent;
    EXPECT_TRUE(recent.isNews(error("a")));
    EXPECT_TRUE(recent.isNews(withScreen(error("a"))));
    EXPECT_FALSE(recent.isNews(withScreen(error("a"))));
}

TavuRoles track(const char* title, const char* path = "")
{
    TavuRoles roles;
    roles.setTitle(QString::fromLatin1(title));
    if (*path)
        roles.setPath(CMPath::fromEncoded(QString::fromLatin1(path)));
    return roles;
}

TEST(RatingLog, remembers_each_track_and_the_last_word_on_it)
{
    player::RatingLog ratings;
    EXPECT_EQ(ratings.ratingOf(track("A", "/a")), QString());
    ratings.rate(track("A", "/a"), player::Rating::Up);
    ratings.rate(track("B"), player::Rating::Down);
    EXPECT_EQ(ratings.ratingOf(track("Another title", "/a")), QStringLiteral("up"));
    EXPECT_EQ(ratings.ratingOf(track("B")), QStringLiteral("down"));
    EXPECT_EQ(ratings.ratingOf(track("A", "/b")), QString());
    ratings.rate(track("A", "/a"), player::Rating::Down);
    EXPECT_EQ(ratings.ratingOf(track("A", "/a")), QStringLiteral("down"));
}

TEST(RatingLog, forgets_the_oldest_beyond_five_hundred)
{
    player::RatingLog ratings;
    for (int number = 0; number <= 500; ++number)
        ratings.rate(track(QByteArray::number(number).constData()), player::Rating::Up);
    EXPECT_EQ(ratings.ratingOf(track("0")), QString());
    EXPECT_EQ(ratings.ratingOf(track("1")), QStringLiteral("up"));
}

} // namespace
