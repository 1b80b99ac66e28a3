#pragma once

#include "tavuhash.h"
#include "tavuroles.h"

#include <QHash>
#include <QString>
#include <QVariant>

namespace player {

/// Where a played row was found: what it takes to find it, and what follows it, once more.
class RowSource : public TavuHash
{
    TAVU_RECORD(RowSource)
    /// The page that lists the row; for a row that is a page itself, as an album's is, that page.
    TAVU_FIELD(CMPath, page, Page)
    /// Where the list begins that this page goes on; empty when it begins on this page.
    TAVU_FIELD(CMPath, firstPage, FirstPage)
    /// The row's title on that page; empty for the page as a whole.
    TAVU_FIELD(QString, row, Row)
    /// The row is a stream of tracks that the page does not list.
    TAVU_FIELD(bool, station, Station)
};

/// Empty for a row that does not tell where it was listed.
RowSource sourceOf(const TavuRoles& row);

/// Whether the row of a page is that of the track, or of the row of this title. Addresses do not
/// count, since they do not last; what one of the two does not tell fits.
bool isRowOf(const TavuRoles& row, const TavuRoles& track);

/// Whether both are the same track, whatever list or host they came from.
bool isSameTrack(const TavuRoles& one, const TavuRoles& other);

/// Whether the row leads to the page that goes on where its own ends.
bool leadsToNextPage(const TavuRoles& row);

/// Marks rows with the page that they were listed on, and where that list begins, so that a row
/// that is passed back tells where it is from.
class ListedRows
{
public:
    /// The "rows" of the answer are those of its "path".
    void mark(QVariantHash& answer);
    /// The row as the plug-in made it.
    static TavuRoles withoutMark(TavuRoles row);

private:
    QHash<QString, QString> m_firstPages; // Of the pages that others lead to.
};

} // namespace player
