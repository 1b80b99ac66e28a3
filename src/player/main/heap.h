#pragma once

namespace player {

/// Settles how the process takes memory from the system, so that what it holds follows what it uses
/// over weeks. To be called once, before there are further threads.
void setUpHeap();

} // namespace player
