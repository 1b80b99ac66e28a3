#include "playhistory.h"

#include <QDateTime>

#include <utility>

namespace player {

namespace {

constexpr int entriesAtMost = 50;

bool isSame(const TavuRoles& a, const TavuRoles& b)
{
    return a.path() == b.path() && a.title() == b.title();
}

bool isStation(const TavuRoles& row)
{
    return row.type() == TavuRolesType::Playable && row.audioType() == TavuRolesAudioType::Station;
}

/// A path that names the track's own document leads to a fresh address each time.
bool canBeFetchedAnew(const TavuRoles& track)
{
    return track.path().hasParam(QStringLiteral("trackUrl"));
}

TavuList<TavuResource> durationOnly(const TavuRoles& track)
{
    TavuResource resource;
    resource.setDuration(track.mediaData().firstResource().duration());
    TavuList<TavuResource> resources;
    resources.append(resource);
    return resources;
}

} // namespace

TavuRoles playedRow(const TavuRoles& track)
{
    TavuRoles row = track;
    if (track.isEmpty())
        return row;
    row.setType(TavuRolesType::Playable);
    if (!canBeFetchedAnew(track))
        return row;
    row.setAudioType(TavuRolesAudioType::Tracks);
    TavuMediaData media = track.mediaData();
    TavuMetaData meta;
    meta.setArtist(media.metaData().artist());
    meta.setAlbum(media.metaData().album());
    meta.setTrack(media.metaData().track());
    meta.setPlayLogicPath(media.metaData().playLogicPath());
    media.setMetaData(meta);
    media.setResources(durationOnly(track));
    row.setMediaData(media);
    return row;
}

QVariantList PlayHistory::played() const
{
    QVariantList list;
    for (const Entry& entry : m_entries)
        list.append(QVariantHash{
            { QStringLiteral("at"), entry.at }, { QStringLiteral("row"), entry.row.__variant() } });
    const bool lastIsPresent =
        !m_entries.isEmpty() && !m_current.isEmpty() && isSame(m_entries.last().row, m_current);
    if (lastIsPresent)
        list.removeLast();
    return list.mid(qMax(0, list.size() - entriesAtMost));
}

QVariantHash PlayHistory::queue() const
{
    const TavuRoles from = origin();
    return {
        { QStringLiteral("from"), from.__variant() },
        { QStringLiteral("endless"), isStation(from) },
        { QStringLiteral("played"), played() },
        { QStringLiteral("current"), m_current.__variant() },
        { QStringLiteral("next"), (m_current.isEmpty() ? TavuRoles() : m_next).__variant() },
    };
}

/// Empty for a track that was chosen by itself.
TavuRoles PlayHistory::origin() const
{
    const bool isOfIt = m_chosen.path() == m_origin || m_goneOnWith == m_origin;
    const bool isThere = !m_current.isEmpty() && !m_origin.isEmpty() && isOfIt;
    const bool isMore = m_chosen.containerPlayable() || isStation(m_chosen);
    return isThere && isMore ? m_chosen : TavuRoles();
}

void PlayHistory::choose(const TavuRoles& row)
{
    m_wanted = row;
}

void PlayHistory::goOnWith(const TavuRoles& row)
{
    m_goneOnWith = row.path();
}

void PlayHistory::follow(const TavuPlayLogicData& shown)
{
    const bool idle = shown.state() == TavuPlayLogicState::Idle;
    const TavuRoles current = idle ? TavuRoles() : playedRow(shown.trackRoles());
    const CMPath origin = idle ? CMPath() : shown.mediaRoles().path();
    const bool sounds = shown.state() == TavuPlayLogicState::Playing;
    const bool noted = sounds && note(current);
    const bool begun = beginWanted(origin);
    if (!noted && !begun && isSame(current, m_current) && origin == m_origin)
        return;
    m_current = current;
    m_origin = origin;
    Q_EMIT changed();
}

/// What was chosen may never play.
bool PlayHistory::beginWanted(const CMPath& origin)
{
    if (m_wanted.isEmpty() || m_wanted.path() != origin)
        return false;
    m_chosen = std::exchange(m_wanted, TavuRoles());
    m_goneOnWith = CMPath();
    return true;
}

/// The same track again and again is one entry.
bool PlayHistory::note(const TavuRoles& row)
{
    if (row.isEmpty())
        return false;
    const bool again = !m_entries.isEmpty() && isSame(m_entries.last().row, row);
    if (again && isSame(row, m_current))
        return false;
    if (again)
        m_entries.removeLast();
    m_entries.append({ QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs), row });
    // One more than are told: the last may be the present one.
    if (m_entries.size() > entriesAtMost + 1)
        m_entries.removeFirst();
    return true;
}

void PlayHistory::setNext(const TavuRoles& track)
{
    const TavuRoles next = playedRow(track);
    if (next == m_next)
        return;
    m_next = next;
    Q_EMIT changed();
}

} // namespace player
