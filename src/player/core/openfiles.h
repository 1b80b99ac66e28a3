#pragma once

namespace player {

/// How many files and sockets the process may have open. Takes what the system lets it have: the
/// limit that a login shell sets is meant for programs that still count on few.
int openFilesAtMost();

} // namespace player
