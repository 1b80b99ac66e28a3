#include "servicereports.h"

#include "tavuroles.h"

namespace player {

QVariantList latestReport(const QVariantList& rows)
{
    int begin = rows.size() - 1;
    while (begin > 0 && TavuRoles(rows.at(begin).toHash()).type() != TavuRolesType::Message)
        --begin;
    return rows.mid(qMax(begin, 0));
}

} // namespace player
