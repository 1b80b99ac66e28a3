#include "cmglobal.h"

#include "printers.h"

#include <gtest/gtest.h>

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

} // namespace
