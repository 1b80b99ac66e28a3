#pragma once

#include <gst/gst.h>

#include <memory>

namespace player {

class HttpStream;

/// How the elements behind a source get its bytes.
enum class Access {
    Linear, ///< Pushed one after the other; a seek begins anew elsewhere.
    Random ///< Asked for, wherever they lie. Dear, since each leap is a request of its own.
};

/// A GStreamer source element that hands out the bytes of `stream`. It ends where the stream ends,
/// also where that fails: what came before is heard, and the stream knows what went wrong. The
/// caller gets a floating reference.
GstElement* makeHttpSource(const std::shared_ptr<HttpStream>& stream, Access access);

/// From now on the stream counts as one that cannot be sought. Callable in the streaming threads.
void denySeeking(GstElement* httpSource);

} // namespace player
