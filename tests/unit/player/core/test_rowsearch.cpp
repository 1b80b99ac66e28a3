#include "rowsearch.h"

#include "printers.h"

#include <gtest/gtest.h>

#include <QHash>
#include <QStringList>

using player::RowSearch;

namespace {

/// Pages of rows that are known by their titles alone; "> page" leads to the next page.
class RowSearchTest : public ::testing::Test
{
protected:
    RowSearchTest()
        : search([this](const QString& page, int from, int to) { return answer(page, from, to); })
    {
    }

    static TavuRoles row(const QString& text)
    {
        TavuRoles row;
        const bool leads = text.startsWith(QLatin1String("> "));
        row.setTitle(leads ? QStringLiteral("See more results") : text);
        row.setType(leads ? TavuRolesType::Folder : TavuRolesType::Playable);
        if (leads)
            row.setPath(CMPath(text.mid(2)));
        return row;
    }

    CMReply<QVariant> answer(const QString& page, int from, int to)
    {
        asked.append(page);
        auto reply = CMReply<QVariant>::create();
        if (!pages.contains(page)) {
            reply.setError(CMError(TrString("gone")));
            return reply;
        }
        QVariantList rows;
        const QStringList all = pages.value(page);
        const int end = qMin(qMin(to, from + rowsPerAnswer - 1), all.size() - 1);
        for (int i = from; i <= end; ++i) {
            QVariantHash roles = row(all.at(i)).__hash();
            roles.insert(QStringLiteral("place"), page + QString::number(i));
            rows.append(roles);
        }
        reply.setValue(QVariantHash{
            { QStringLiteral("rows"), rows }, { QStringLiteral("count"), all.size() } });
        return reply;
    }

    static RowSearch::Fits titled(const char* title)
    {
        const QString wanted = QString::fromLatin1(title);
        return [wanted](const TavuRoles& row) { return row.title() == wanted; };
    }

    /// Where the row was found, as page and place; empty when it was not.
    QString find(const char* page, const char* start, const char* wanted,
        const char* firstPage = "", int pagesAtMost = 50)
    {
        const auto reply = search.find({ CMPath(QString::fromLatin1(page)),
            CMPath(QString::fromLatin1(firstPage)), titled(start), titled(wanted), pagesAtMost });
        EXPECT_TRUE(reply.isFinished());
        failed = reply.error().isSet();
        return reply.value().toHash().value(QStringLiteral("place")).toString();
    }

    QHash<QString, QStringList> pages;
    QStringList asked;
    int rowsPerAnswer = 500;
    bool failed = false;
    RowSearch search;
};

TEST_F(RowSearchTest, finds_the_first_row_at_or_behind_the_start)
{
    pages[QStringLiteral("p")] = QStringLiteral("a b a c a").split(QLatin1Char(' '));
    EXPECT_EQ(find("p", "a", "a"), QStringLiteral("p0"));
    EXPECT_EQ(find("p", "b", "a"), QStringLiteral("p2"));
    EXPECT_EQ(find("p", "c", "a"), QStringLiteral("p4"));
}

TEST_F(RowSearchTest, takes_one_before_the_start_when_there_is_none_behind_it)
{
    pages[QStringLiteral("p")] = QStringLiteral("a b c").split(QLatin1Char(' '));
    EXPECT_EQ(find("p", "c", "a"), QStringLiteral("p0"));
    EXPECT_EQ(find("p", "gone", "b"), QStringLiteral("p1"));
    pages[QStringLiteral("q")] = QStringLiteral("a b a").split(QLatin1Char(' '));
    EXPECT_EQ(find("q", "gone", "a"), QStringLiteral("q0")) << "the first of them";
}

TEST_F(RowSearchTest, does_not_go_back_to_the_beginning_for_what_stands_before_the_start)
{
    pages[QStringLiteral("p")] = QStringLiteral("a b").split(QLatin1Char(' '));
    pages[QStringLiteral("q")] = QStringLiteral("a c").split(QLatin1Char(' '));
    EXPECT_EQ(find("q", "c", "a", "p"), QStringLiteral("q0"));
    EXPECT_EQ(asked, QStringList(QStringLiteral("q")));
}

TEST_F(RowSearchTest, asks_for_nothing_more_once_it_is_cancelled)
{
    QList<CMReply<QVariant>> open;
    RowSearch slow([&open](const QString&, int, int) {
        open.append(CMReply<QVariant>::create());
        return open.last();
    });
    const auto found =
        slow.find({ CMPath(QStringLiteral("p")), CMPath(), titled("a"), titled("a"), 50 });
    found.cancel();
    ASSERT_EQ(open.size(), 1);
    open.first().setValue(QVariantHash{
        { QStringLiteral("rows"), QVariantList{ row(QStringLiteral("b")).__variant() } },
        { QStringLiteral("count"), 2 } });
    EXPECT_EQ(open.size(), 1);
}

TEST_F(RowSearchTest, follows_pages_and_windows_of_pages)
{
    pages[QStringLiteral("p")] =
        QStringList{ QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("> q") };
    pages[QStringLiteral("q")] = QStringLiteral("c d e").split(QLatin1Char(' '));
    rowsPerAnswer = 2;
    EXPECT_EQ(find("p", "a", "e"), QStringLiteral("q2"));
    EXPECT_EQ(asked.size(), 4);
}

TEST_F(RowSearchTest, looks_at_the_beginning_of_the_list_last)
{
    pages[QStringLiteral("p")] = QStringList{ QStringLiteral("a"), QStringLiteral("> q") };
    pages[QStringLiteral("q")] = QStringList{ QStringLiteral("b") };
    EXPECT_EQ(find("q", "b", "a", "p"), QStringLiteral("p0"));
    EXPECT_EQ(asked, QStringList({ QStringLiteral("q"), QStringLiteral("p") }));
    EXPECT_EQ(find("q", "b", "gone", "p"), QString());
    EXPECT_FALSE(failed);
}

TEST_F(RowSearchTest, ends_where_pages_lead_in_a_circle)
{
    pages[QStringLiteral("p")] = QStringList{ QStringLiteral("a"), QStringLiteral("> p") };
    EXPECT_EQ(find("p", "a", "gone", "", 7), QString());
    EXPECT_EQ(asked.size(), 7);
    EXPECT_FALSE(failed);
}

TEST_F(RowSearchTest, an_empty_page_has_nothing_and_one_that_is_gone_is_an_error)
{
    pages[QStringLiteral("p")] = QStringList();
    EXPECT_EQ(find("p", "a", "a"), QString());
    EXPECT_FALSE(failed);
    EXPECT_EQ(find("nowhere", "a", "a"), QString());
    EXPECT_TRUE(failed);
}

} // namespace
