#include "cmglobal.h"

#include "printers.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace {

TEST(CMGlobal, lists_the_values_of_roles_in_their_order)
{
    TavuRoles item;
    item.setTitle(QStringLiteral("t"));
    item.setType(TavuRolesType::Folder);
    const QStringList roles{ TavuRoles::Type(), TavuRoles::Icon(), TavuRoles::Title(),
        TavuRoles::Type() };
    const QVariantList values = CMGlobal::itemRolesToList(roles, item);
    EXPECT_EQ(values, (QVariantList{ 1, QVariant(), QStringLiteral("t"), 1 }));
    EXPECT_FALSE(values.at(1).isValid());
}

TEST(CMGlobal, lists_nothing_for_no_roles)
{
    EXPECT_TRUE(CMGlobal::itemRolesToList({}, TavuRoles()).isEmpty());
}

TEST(CMGlobal, gives_of_the_rows_that_are_asked_for_those_that_there_are)
{
    const auto rows = [](int from, int to, int count) {
        const CMGlobal::RowsRange range = CMGlobal::rowsRange(from, to, count);
        return std::make_pair(range.begin, range.end - range.begin);
    };
    EXPECT_EQ(rows(0, 49, 60), std::make_pair(0, 50));
    EXPECT_EQ(rows(50, 99, 60), std::make_pair(50, 10));
    EXPECT_EQ(rows(59, 59, 60), std::make_pair(59, 1));
    EXPECT_EQ(rows(-3, 0, 60), std::make_pair(0, 1));
    EXPECT_EQ(rows(0, std::numeric_limits<int>::max(), 60), std::make_pair(0, 60));
    for (const auto& [from, to] : { std::make_pair(60, 99), { 5, 4 }, { -9, -1 } })
        EXPECT_EQ(rows(from, to, 60).second, 0) << from << ' ' << to;
    EXPECT_EQ(rows(0, 49, 0), std::make_pair(0, 0));
}

} // namespace
