#include "cmglobal.h"

QVariantList CMGlobal::itemRolesToList(const QStringList& roles, const TavuRoles& item)
{
    QVariantList values;
    values.reserve(roles.size());
    for (const QString& role : roles)
        values.append(item.__field(role));
    return values;
}
