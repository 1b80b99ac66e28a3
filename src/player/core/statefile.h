#pragma once

#include "rowsource.h"
#include "tavuhash.h"
#include "tavuroles.h"

#include <QString>

#include <optional>

namespace player {

/// A track as it is kept: enough to show it and to ask the service for it again, and no address
/// that could expire or give away more than what was listened to.
class KeptTrack : public TavuHash
{
    TAVU_RECORD(KeptTrack)
    TAVU_FIELD(QString, title, Title)
    TAVU_FIELD(QString, artist, Artist)
    TAVU_FIELD(QString, album, Album)
    /// Milliseconds.
    TAVU_FIELD(qint64, duration, Duration)
    /// Path and query of the track's document at the service.
    TAVU_FIELD(QString, document, Document)
    TAVU_FIELD(CMPath, playLogicPath, PlayLogicPath)
};

/// What the player keeps over its end.
class KeptState : public TavuHash
{
    TAVU_RECORD(KeptState)
    TAVU_FIELD(qint32, version, Version)
    TAVU_FIELD(qint32, playMode, PlayMode)
    /// 0 to 100.
    TAVU_FIELD(qint32, volume, Volume)
    TAVU_FIELD(bool, muted, Muted)
    /// Empty unless somebody has chosen one that the settings do not name.
    TAVU_FIELD(QString, output, Output)
    /// What plays or is paused; empty when nothing does.
    TAVU_FIELD(KeptTrack, track, Track)
    /// Where its row is from, without scheme and host; empty when that is not known.
    TAVU_FIELD(RowSource, source, Source)
    /// Milliseconds into the track.
    TAVU_FIELD(qint64, position, Position)
    TAVU_FIELD(bool, playing, Playing)
};

/// The state in a file of the state folder. A file that cannot be understood is set aside.
class StateFile
{
public:
    explicit StateFile(const QString& fileName);

    /// Nothing when there is no file or when it is damaged; only then `complaint` is set, for
    /// people.
    std::optional<KeptState> load(QString* complaint) const;
    /// Has the state on the disk when it returns true; else `error` says why not, and the file
    /// holds the one before.
    bool save(const KeptState& state, QString* error) const;

private:
    const QString m_fileName;
};

/// Empty for a track that names no document of its own.
KeptTrack keptTrack(const TavuRoles& track);
/// As a row that can be played; empty for an empty track. The scheme and the host that the kept
/// document lacks are those of `origin`, the service's base URL.
TavuRoles playableRow(const KeptTrack& track, const QString& origin);

/// The addresses in the source's paths lose scheme and host.
RowSource keptSource(const RowSource& source);
/// Undoes keptSource() for the service at `origin`.
RowSource sourceAt(const RowSource& kept, const QString& origin);

} // namespace player
