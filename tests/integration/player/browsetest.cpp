#include "house.h"
#include "printers.h"
#include "watchdog.h"

#include <gtest/gtest.h>

namespace {

QString titleOf(const QVariant& row)
{
    return row.toHash().value(QStringLiteral("title")).toString();
}

QStringList titles(const QVariantList& rows)
{
    QStringList list;
    for (const QVariant& row : rows)
        list.append(titleOf(row));
    return list;
}

TEST(Browse, shows_the_login_screens_for_every_path_until_the_user_has_signed_in)
{
    House house;
    house.start();
    for (const char* path : { "", "/AmazonMusic/browse?url=x", "/AmazonMusic/search" }) {
        const QVariantList rows = house.rows(QString::fromLatin1(path));
        ASSERT_FALSE(rows.isEmpty());
        EXPECT_EQ(titleOf(rows.first()), QStringLiteral("Sign in to Amazon Music")) << path;
    }
    EXPECT_TRUE(waitUntil([&] {
        return house.player().login().value(QStringLiteral("state")) == QLatin1String("waiting");
    }));
    const QString code = house.player().login().value(QStringLiteral("userCode")).toString();
    EXPECT_TRUE(titles(house.rows()).contains(code)) << code.toStdString();
    house.signIn();
    EXPECT_EQ(titles(house.rows()),
        QStringList({ QStringLiteral("Artists"), QStringLiteral("Albums"),
            QStringLiteral("Playlists"), QStringLiteral("Stations"), QStringLiteral("Tracks"),
            QStringLiteral("Messages") }));
}

TEST(Browse, offers_the_search_at_the_root_and_finds_what_is_there)
{
    House house;
    house.startSignedIn();
    const QVariantHash search = house.screen()
                                    .value(QStringLiteral("parent"))
                                    .toHash()
                                    .value(QStringLiteral("search"))
                                    .toHash();
    EXPECT_EQ(titleOf(search), QStringLiteral("Search Stations, Tracks, Artists or Albums"));
    const QString path = search.value(QStringLiteral("path")).toString();
    const QString found =
        valueOf(house.player().search(QStringLiteral("night & train"), path)).toString();
    EXPECT_TRUE(titles(house.rows(found)).contains(QStringLiteral("Night Trains")));
    const QString nothing =
        valueOf(house.player().search(QStringLiteral("zzzz"), QString())).toString();
    EXPECT_LE(house.rows(nothing).size(), 1);
}

TEST(Browse, follows_see_more_results_from_page_to_page)
{
    House house([](emulator::Settings& settings) { settings.documents.pageSize = 4; });
    house.startSignedIn();
    QVariantList page =
        house.rows(house.row(QStringLiteral("Tracks")).value(QStringLiteral("path")).toString());
    int tracks = 0;
    int pages = 1;
    while (titleOf(page.last()) == QLatin1String("See more results")) {
        EXPECT_EQ(page.size(), 5);
        tracks += page.size() - 1;
        page = house.rows(page.last().toHash().value(QStringLiteral("path")).toString());
        ++pages;
        ASSERT_LT(pages, 20);
    }
    tracks += page.size();
    EXPECT_EQ(tracks, 13);
    EXPECT_EQ(pages, 4);
}

TEST(Browse, answers_the_slice_that_was_asked_for_and_the_count_of_all)
{
    House house;
    house.startSignedIn();
    const QString path =
        house.row(QStringLiteral("Tracks")).value(QStringLiteral("path")).toString();
    const QVariantHash slice = house.screen(path, 2, 4);
    EXPECT_EQ(slice.value(QStringLiteral("rows")).toList().size(), 3);
    EXPECT_EQ(slice.value(QStringLiteral("count")).toInt(), 13);
}

TEST(Browse, shows_a_service_message_with_its_buttons_and_presses_them)
{
    House house;
    house.startSignedIn();
    const QVariantList items =
        house.rows(house.row(QStringLiteral("Messages")).value(QStringLiteral("path")).toString());
    int posted = 0;
    int closed = 0;
    int links = 0;
    for (const QVariant& item : items) {
        if (item.toHash().value(QStringLiteral("type")).toInt() != 1)
            continue;
        const CMReply<QVariant> opened =
            house.player().rows(item.toHash().value(QStringLiteral("path")).toString(), 0, 49);
        ASSERT_TRUE(waitUntil([&] { return opened.isFinished(); }));
        if (opened.error().isSet()) {
            // One of them is there to show how a folder fails.
            EXPECT_EQ(
                opened.error().message(), QStringLiteral("Unable to browse in to the folder."));
            continue;
        }
        const QVariantList screen = opened.value().toHash().value(QStringLiteral("rows")).toList();
        ASSERT_FALSE(screen.isEmpty()) << titleOf(item).toStdString();
        EXPECT_EQ(screen.first().toHash().value(QStringLiteral("type")).toInt(), 6);
        for (const QVariant& button : screen.mid(1)) {
            const QVariantHash row = button.toHash();
            if (row.value(QStringLiteral("type")).toInt() == 106) {
                ++links;
                continue;
            }
            const int before = house.requests("action");
            const QVariantHash answer =
                valueOf(house.player().activateRow(row, QVariant())).toHash();
            EXPECT_EQ(answer.value(QStringLiteral("xclass")), QStringLiteral("TavuActionReply"));
            EXPECT_EQ(answer.value(QStringLiteral("events")).toList().size(), 1);
            ++(house.requests("action") > before ? posted : closed);
        }
    }
    EXPECT_GT(posted, 0);
    EXPECT_GT(closed, 0);
    EXPECT_GT(links, 0);
}

TEST(Browse, shows_the_login_screens_again_after_the_logout)
{
    House house;
    house.startSignedIn();
    house.player().logout();
    EXPECT_TRUE(waitUntil([&] {
        return titleOf(house.rows().value(0)) == QLatin1String("Sign in to Amazon Music");
    }));
}

TEST(Browse, keeps_the_login_over_a_restart)
{
    House house;
    house.startSignedIn();
    house.stopPlayer();
    house.start();
    EXPECT_TRUE(
        waitUntil([&] { return titleOf(house.rows().value(0)) == QLatin1String("Artists"); }));
}

} // namespace
