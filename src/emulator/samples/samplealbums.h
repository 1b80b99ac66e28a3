#pragma once

#include <QString>

namespace emulator::samples {

/// Makes the sample albums in `folder` unless they are there: three albums, of which one in FLAC
/// and one in Opus are continuous pieces cut into tracks that join without a gap, and a playlist.
/// The folder appears complete or not at all. Takes some seconds. Returns what went wrong, for
/// people; empty on success.
QString makeSampleAlbums(const QString& folder);

} // namespace emulator::samples
