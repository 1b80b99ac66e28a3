#pragma once

#include "tavuplaylogic.h"

#include <QObject>
#include <QVariant>

namespace player {

/// What played since the player started, what plays, and what is known to follow. A play logic's
/// own queue is its secret; this is what can be told without it.
class PlayHistory : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// The last 50 tracks before the present one, oldest first: hashes of "at" (ISO 8601, when it
    /// began to sound last) and "row".
    QVariantList played() const;
    /// "from": the album, playlist or station that somebody chose, empty for a single track;
    /// "endless": whether that ends only when it is stopped; "played"; "current" and "next": rows,
    /// empty for none. Rows can be played again.
    QVariantHash queue() const;

    /// Somebody chose to play the row; what plays is from elsewhere until it does.
    void choose(const TavuRoles& row);
    /// The player goes on by itself, with this row of what was chosen.
    void goOnWith(const TavuRoles& row);
    /// What is shown to play now.
    void follow(const TavuPlayLogicData& shown);
    /// What will follow without a gap; empty when that is not known.
    void setNext(const TavuRoles& track);

Q_SIGNALS:
    /// queue() changed.
    void changed();

private:
    struct Entry
    {
        QString at;
        TavuRoles row;
    };

    bool beginWanted(const CMPath& origin);
    bool note(const TavuRoles& row);
    TavuRoles origin() const;

    QList<Entry> m_entries; // The present one is the last, once it has sounded.
    TavuRoles m_wanted; // Chosen, and not played so far.
    TavuRoles m_chosen;
    CMPath m_goneOnWith;
    CMPath m_origin; // Of the row that the present track came from.
    TavuRoles m_current;
    TavuRoles m_next;
};

/// The track as a row to show and to play again: without the address and the keys that it was
/// fetched with, where a fresh one can be asked for.
TavuRoles playedRow(const TavuRoles& track);

} // namespace player
