#pragma once

#include "../catalogue/catalogue.h"

#include <QString>

/// The layout of the service's URLs, in one place. All are paths from the root, encoded.
namespace emulator::documents::links {

using catalogue::Id;

QString artists();
QString artist(Id id);
QString albums();
QString album(Id id);
QString playlists();
QString playlist(Id id);
QString stations();
QString tracks();
QString messages();

/// Documents of things that can be played. `folder` is "albums", "playlists", "stations" or
/// "tracks".
QString playable(const QString& folder, Id id);
QString chunk(const QString& folder, Id id);
QString chunkFrom(const QString& folder, Id id, int place);
QString stationChunk(Id id, quint64 session, int position);

/// `context` says where the track stands, for example "albums-0123456789abcdef-2"; it comes back
/// with the reports about it.
QString instance(Id track, const QString& context);
QString events(Id track, const QString& context);
QString rating(Id track);

QString artwork(Id album);
/// A picture that is drawn from a name.
QString drawnArtwork(const QString& name);

} // namespace emulator::documents::links
