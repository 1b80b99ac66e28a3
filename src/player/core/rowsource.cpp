#include "rowsource.h"

#include <QRegularExpression>
#include <QTime>

#include <cstdlib>

namespace player {

namespace {

constexpr int firstPagesAtMost = 1024;
// A row tells a duration in whole seconds.
constexpr qint64 durationTolerance = 2000;

QString listedOn()
{
    return QStringLiteral("listedOn");
}

QString listBeginsOn()
{
    return QStringLiteral("listBeginsOn");
}

CMPath pathAt(const TavuRoles& row, const QString& mark)
{
    return CMPath::fromEncoded(tavuvariant::toText(row.__value(mark)));
}

/// A title on a page may end with the duration, as in "A Song (00:03:20)".
struct ListedTitle
{
    QString title;
    qint64 duration = 0; // Milliseconds; 0 when it tells none.
};

ListedTitle listedTitle(const QString& text)
{
    static const QRegularExpression clock(QStringLiteral("^(.*) \\((\\d\\d:\\d\\d:\\d\\d)\\)$"),
        QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = clock.match(text);
    if (!match.hasMatch())
        return { text };
    return { match.captured(1), QTime::fromString(match.captured(2)).msecsSinceStartOfDay() };
}

bool fits(const QString& one, const QString& other)
{
    return one.isEmpty() || other.isEmpty() || one == other;
}

bool fits(qint64 one, qint64 other)
{
    return one <= 0 || other <= 0 || std::abs(one - other) <= durationTolerance;
}

bool hasTitleOf(const TavuRoles& row, const TavuRoles& track)
{
    if (row.title() == track.title())
        return true;
    const ListedTitle listed = listedTitle(row.title());
    return listed.title == track.title()
        && fits(listed.duration, track.mediaData().firstResource().duration());
}

} // namespace

RowSource sourceOf(const TavuRoles& row)
{
    RowSource source;
    if (row.containerPlayable()) {
        source.setPage(row.path());
        return source;
    }
    const CMPath page = pathAt(row, listedOn());
    if (page.isEmpty())
        return source;
    source.setPage(page);
    const CMPath first = pathAt(row, listBeginsOn());
    if (!first.isEmpty())
        source.setFirstPage(first);
    source.setRow(row.title());
    if (row.audioType() == TavuRolesAudioType::Station)
        source.setStation(true);
    return source;
}

bool isRowOf(const TavuRoles& row, const TavuRoles& track)
{
    const TavuMetaData listed = row.mediaData().metaData();
    const TavuMetaData wanted = track.mediaData().metaData();
    return !track.title().isEmpty() && hasTitleOf(row, track)
        && fits(listed.artist(), wanted.artist()) && fits(listed.album(), wanted.album());
}

bool isSameTrack(const TavuRoles& one, const TavuRoles& other)
{
    if (one.isEmpty() || other.isEmpty())
        return false;
    if (!one.path().isEmpty() && one.path() == other.path())
        return true;
    return isRowOf(one, other)
        && fits(one.mediaData().firstResource().duration(),
            other.mediaData().firstResource().duration());
}

bool leadsToNextPage(const TavuRoles& row)
{
    return row.type() == TavuRolesType::Folder && row.title() == QLatin1String("See more results");
}

void ListedRows::mark(QVariantHash& answer)
{
    const QString page = answer.value(QStringLiteral("path")).toString();
    QVariantList rows = answer.take(QStringLiteral("rows")).toList();
    const auto first = m_firstPages.constFind(page);
    const bool goesOn = first != m_firstPages.constEnd();
    for (QVariant& each : rows) {
        QVariantHash row = each.toHash();
        row.insert(listedOn(), page);
        if (goesOn)
            row.insert(listBeginsOn(), *first);
        each = row;
    }
    answer.insert(QStringLiteral("rows"), rows);
    const TavuRoles last(rows.isEmpty() ? QVariantHash() : rows.constLast().toHash());
    if (!leadsToNextPage(last))
        return;
    const QString begins = goesOn ? *first : page;
    if (m_firstPages.size() >= firstPagesAtMost)
        m_firstPages.clear();
    m_firstPages.insert(last.path().toEncoded(), begins);
}

TavuRoles ListedRows::withoutMark(TavuRoles row)
{
    row.__remove(listedOn());
    row.__remove(listBeginsOn());
    return row;
}

} // namespace player
