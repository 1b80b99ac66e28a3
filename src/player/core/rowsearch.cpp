#include "rowsearch.h"

#include "rowsource.h"

#include <utility>

namespace player {

namespace {

constexpr int rowsAtOnce = 500;

} // namespace

struct RowSearch::Walk
{
    Wanted wanted;
    CMReply<QVariant> result = CMReply<QVariant>::create();
    QString page;
    int from = 0;
    int pages = 1;
    bool started = false;
    QVariant elsewhere; // The first that is wanted before the start.

    /// Whether the row ends the walk.
    bool isOver(const QVariant& row)
    {
        const TavuRoles roles(row.toHash());
        started = started || wanted.start(roles);
        if (!wanted.row(roles))
            return false;
        if (!started && !elsewhere.isValid())
            elsewhere = row;
        return started;
    }

    /// Moves on to the rows that follow; false when these were the last.
    bool goOn(const QVariantList& rows, int count)
    {
        const TavuRoles last(rows.isEmpty() ? QVariantHash() : rows.constLast().toHash());
        from += rows.size();
        if (!rows.isEmpty() && from < count)
            return true;
        if (leadsToNextPage(last))
            return turnTo(last.path());
        const CMPath first = std::exchange(wanted.firstPage, CMPath());
        return !elsewhere.isValid() && !first.isEmpty() && turnTo(first);
    }

    bool turnTo(const CMPath& next)
    {
        page = next.toEncoded();
        from = 0;
        return ++pages <= wanted.pagesAtMost;
    }
};

RowSearch::Fits RowSearch::rowOf(const TavuRoles& track)
{
    return [track](const TavuRoles& row) {
        return row.type() == TavuRolesType::Playable && isRowOf(row, track);
    };
}

RowSearch::RowSearch(Rows rows)
    : m_rows(std::move(rows))
{
}

CMReply<QVariant> RowSearch::find(const Wanted& wanted)
{
    auto walk = std::make_shared<Walk>();
    walk->wanted = wanted;
    walk->page = wanted.page.toEncoded();
    look(walk);
    return walk->result;
}

void RowSearch::look(const std::shared_ptr<Walk>& walk)
{
    cmchain::whenSucceeded(m_rows(walk->page, walk->from, walk->from + rowsAtOnce - 1),
        walk->result, m_context,
        [this, walk](const QVariant& answer) { seen(walk, answer.toHash()); });
}

void RowSearch::seen(const std::shared_ptr<Walk>& walk, const QVariantHash& answer)
{
    if (walk->result.isFinished())
        return;
    const QVariantList rows = answer.value(QStringLiteral("rows")).toList();
    for (const QVariant& row : rows) {
        if (walk->isOver(row))
            return walk->result.setValue(row);
    }
    if (walk->goOn(rows, answer.value(QStringLiteral("count")).toInt()))
        look(walk);
    else
        walk->result.setValue(walk->elsewhere);
}

} // namespace player
