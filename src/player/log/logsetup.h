#pragma once

#include <QString>

namespace player {

/// Sends every logger's lines, redacted, to a file (rotated at 10 MiB, three kept) or, with an
/// empty name, to standard error. `level` is trace, debug, info, warn, error or off. Returns an
/// empty text, or what is wrong and what to do. Call it on the main thread, after log4cplus's
/// Initializer.
QString setUpLog(const QString& level, const QString& fileName);

} // namespace player
