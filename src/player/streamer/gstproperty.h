#pragma once

#include <QtGlobal>

#include <gst/gst.h>

namespace player {

// Properties of GStreamer's objects by their types; GLib's own calls take any arguments at all.

class GstPropertyValue
{
public:
    explicit GstPropertyValue(GType type) { g_value_init(&m_value, type); }
    ~GstPropertyValue() { g_value_unset(&m_value); }
    Q_DISABLE_COPY_MOVE(GstPropertyValue)

    GValue* get() { return &m_value; }

private:
    GValue m_value = G_VALUE_INIT;
};

/// The value is converted to the property's own type of number.
inline void setProperty(GstElement* element, const char* name, guint64 number)
{
    GstPropertyValue value(G_TYPE_UINT64);
    g_value_set_uint64(value.get(), number);
    g_object_set_property(G_OBJECT(element), name, value.get());
}

inline void setProperty(GstElement* element, const char* name, double number)
{
    GstPropertyValue value(G_TYPE_DOUBLE);
    g_value_set_double(value.get(), number);
    g_object_set_property(G_OBJECT(element), name, value.get());
}

inline void setProperty(GstElement* element, const char* name, bool on)
{
    GstPropertyValue value(G_TYPE_BOOLEAN);
    g_value_set_boolean(value.get(), on ? TRUE : FALSE);
    g_object_set_property(G_OBJECT(element), name, value.get());
}

inline void setProperty(GstElement* element, const char* name, const GstCaps* caps)
{
    GstPropertyValue value(GST_TYPE_CAPS);
    gst_value_set_caps(value.get(), caps);
    g_object_set_property(G_OBJECT(element), name, value.get());
}

inline guint64 numberProperty(GstElement* element, const char* name)
{
    GstPropertyValue value(G_TYPE_UINT64);
    g_object_get_property(G_OBJECT(element), name, value.get());
    return g_value_get_uint64(value.get());
}

inline bool boolProperty(GstElement* element, const char* name)
{
    GstPropertyValue value(G_TYPE_BOOLEAN);
    g_object_get_property(G_OBJECT(element), name, value.get());
    return g_value_get_boolean(value.get()) != FALSE;
}

} // namespace player
