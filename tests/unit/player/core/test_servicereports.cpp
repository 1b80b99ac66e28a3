#include "printers.h"
#include "servicereports.h"
#include "tavuroles.h"

#include <gtest/gtest.h>

namespace {

using namespace player;

QVariantList rows(const QStringList& titles)
{
    QVariantList rows;
    for (const QString& title : titles) {
        TavuRoles row;
        row.setTitle(title);
        row.setType(
            title.startsWith(QLatin1Char('-')) ? TavuRolesType::Action : TavuRolesType::Message);
        rows.append(row.__variant());
    }
    return rows;
}

QStringList texts(const char* words)
{
    return QString::fromUtf8(words).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QStringList titles(const QVariantList& rows)
{
    QStringList titles;
    for (const QVariant& row : rows)
        titles.append(TavuRoles(row.toHash()).title());
    return titles;
}

TEST(ServiceReports, the_latest_is_the_one_to_show_with_its_own_buttons_alone)
{
    EXPECT_EQ(titles(latestReport(rows(texts("old -a -b mid new -c -d")))), texts("new -c -d"));
    EXPECT_EQ(titles(latestReport(rows(texts("old -a new")))), texts("new"));
    EXPECT_EQ(titles(latestReport(rows(texts("one -a")))), texts("one -a"));
}

TEST(ServiceReports, rows_without_a_report_stay)
{
    EXPECT_EQ(titles(latestReport(rows(texts("-x -y")))), texts("-x -y"));
    EXPECT_EQ(latestReport({}), QVariantList());
}

} // namespace
