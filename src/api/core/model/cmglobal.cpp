#include "cmglobal.h"

QVariantList CMGlobal::itemRolesToList(const QStringList& roles, const TavuRoles& item)
{
    QVariantList values;
    values.reserve(roles.size());
    for (const QString& role : roles)
        values.append(item.__field(role));
    return values;
}

CMGlobal::RowsRange CMGlobal::rowsRange(int from, int to, int count)
{
    const int begin = qMax(from, 0);
    return { begin, qMax(begin, qMin(to, count - 1) + 1) };
}
