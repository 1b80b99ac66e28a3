#pragma once

#include "artworkstore.h"
#include "rowmemory.h"

#include <QVariant>

namespace control {

/// The player's records as clients see them: pictures under the player's own address, what a row
/// can do spelled out, nothing that only the player may know (keys of encrypted streams).
class ClientView
{
public:
    /// Both are not owned and must outlive the view.
    ClientView(RowMemory& rows, ArtworkStore& artwork);

    QVariantHash row(const QVariantHash& row) const;
    QVariantList rows(const QVariantList& rows) const;
    /// The value of PlayerFacade::rows.
    QVariantHash page(const QVariantHash& page) const;
    /// {result?, close?, value?} of the value of an activation or a command.
    QVariantHash actionReply(const QVariant& value) const;
    QVariantHash player(const QVariantHash& player) const;
    /// The value of PlayerFacade::queue, with null for rows that there are not.
    QVariantHash queue(const QVariantHash& queue) const;
    QVariantHash message(const QVariantHash& message) const;

private:
    QVariant rowOrNull(const QVariant& row) const;

    RowMemory& m_rows;
    ArtworkStore& m_artwork;
};

} // namespace control
