#pragma once

#include <gst/gst.h>

#include <memory>

namespace player {

struct GstUnref
{
    template <class T>
    void operator()(T* object) const
    {
        gst_object_unref(object);
    }
};

/// An owned reference to a GStreamer object.
template <class T>
using GstPointer = std::unique_ptr<T, GstUnref>;

struct GstFree
{
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(char* text) const { g_free(text); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
};

template <class T>
using GstOwned = std::unique_ptr<T, GstFree>;

} // namespace player
