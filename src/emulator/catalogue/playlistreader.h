#pragma once

#include "musicfile.h"

#include <QByteArray>

namespace emulator::catalogue {

bool isPlaylistFile(const QString& name);

/// Reads the text of an M3U file. `path` is the file's own, relative to the library's root; the
/// entries come out relative to the root too. Entries that lead out of the library, and addresses
/// of the web, are left out. Text that is not UTF-8 is taken as Latin-1.
PlaylistFile parsePlaylist(const QString& path, const QByteArray& text, const QString& root);

} // namespace emulator::catalogue
