#pragma once

#include "tavuexport.h"
#include "tavuroles.h"

#include <QStringList>
#include <QVariant>

namespace CMGlobal {

/// The values of `roles`, in that order; an invalid variant for each one that `item` has not.
TAVU_EXPORT QVariantList itemRolesToList(const QStringList& roles, const TavuRoles& item);

} // namespace CMGlobal
