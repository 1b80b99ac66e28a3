#pragma once

#include "cmchain.h"
#include "tavuroles.h"

#include <QVariant>

#include <functional>
#include <memory>

namespace player {

/// Looks for a row in a list, from a page of it on. Lives in the thread of its owner.
class RowSearch
{
public:
    /// The rows `from` to `to` of a page, as the faces of the player get them.
    using Rows = std::function<CMReply<QVariant>(const QString& page, int from, int to)>;
    using Fits = std::function<bool(const TavuRoles&)>;

    /// Longer than this nobody waits for what a search finds.
    static constexpr int deadlineMs = 15000;

    /// A playable row that is the track's.
    static Fits rowOf(const TavuRoles& track);

    explicit RowSearch(Rows rows);

    /// What to look for, and where.
    struct Wanted
    {
        CMPath page;
        CMPath firstPage; ///< Looked through when `page` and those behind it do not have it.
        Fits start; ///< Of several rows the first one at or behind this one counts.
        Fits row;
        int pagesAtMost = 50;
    };

    /// The value is the row; invalid when there is none. Cancelling the reply ends the search.
    CMReply<QVariant> find(const Wanted& wanted);

private:
    struct Walk;

    void look(const std::shared_ptr<Walk>& walk);
    void seen(const std::shared_ptr<Walk>& walk, const QVariantHash& answer);

    Rows m_rows;
    CMContext m_context;
};

} // namespace player
