#pragma once

#include "gstpointer.h"
#include "streamfailure.h"

#include <gst/gst.h>

namespace player {

/// Makes the sink that an output setting names: "auto", a device's id, the name of a GStreamer sink
/// element, or a description as gst-launch takes it, such as
/// "audioconvert ! audio/x-raw,format=S16LE,rate=48000 ! filesink location=/run/sound.fifo". The
/// sink has been opened; the caller gets a floating reference. Null when that cannot be done, and
/// `failure` says why.
GstElement* makeOutput(const QString& setting, StreamFailure& failure);

/// Whether a sink keeps to the clock.
bool isSyncedOutput(GstElement* sink);

/// The element at the sound's very end, which may lie within the output; null when there is none.
GstPointer<GstElement> lastOfOutput(GstElement* sink);

} // namespace player
