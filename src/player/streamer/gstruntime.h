#pragma once

namespace player {

/// Starts GStreamer for the process. Callable on any thread; later calls do nothing. It takes
/// memory, so it is left until something is to be played.
void initGStreamer();

} // namespace player
