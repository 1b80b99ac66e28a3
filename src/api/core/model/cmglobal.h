#pragma once

#include "tavuexport.h"
#include "tavuroles.h"

#include <QStringList>
#include <QVariant>

namespace CMGlobal {

/// The values of `roles`, in that order; an invalid variant for each one that `item` has not.
TAVU_EXPORT QVariantList itemRolesToList(const QStringList& roles, const TavuRoles& item);

/// What a request for the rows `from` to `to`, both of them included, gets of `count` rows: those
/// from `begin` to before `end`.
struct RowsRange
{
    int begin = 0;
    int end = 0;
};
TAVU_EXPORT RowsRange rowsRange(int from, int to, int count);

} // namespace CMGlobal
