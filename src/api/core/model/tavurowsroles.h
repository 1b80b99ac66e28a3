#pragma once

#include "tavuenums.h"
#include "tavuhash.h"
#include "tavuroles.h"

/// The answer to a rows request: the container itself and a slice of its rows.
class TavuRowsRoles : public TavuHash
{
    TAVU_RECORD(TavuRowsRoles)
    /// The container.
    TAVU_FIELD(TavuRoles, roles, Roles)
    /// One list a row: the values of the requested roles, in the order of the request.
    TAVU_FIELD(QVariantList, rows, Rows)
    /// How many rows the container has in all.
    TAVU_FIELD(qint32, rowsCount, RowsCount)
    /// Counts the changes of the rows; a container that does not count them gives the asker's back.
    TAVU_FIELD(qint32, rowsVersion, RowsVersion)
    /// TavuRowsRolesType values: how the rows may be shown.
    TAVU_FIELD(QVariantList, type, Type)
};

Q_DECLARE_METATYPE(TavuRowsRoles)
