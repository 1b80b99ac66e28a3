#pragma once

#include "gstpointer.h"
#include "soundformat.h"

#include <mutex>

namespace player {

/// Learns the format of an item from what passes in its decoder. Every function may be called on
/// any thread.
class SoundFormatProbe
{
public:
    /// A part that the decoder's bin has taken in.
    void take(GstElement* part);
    /// Whether the event tells something new.
    bool heed(GstEvent* decoded);
    SoundFormat format() const;

private:
    bool heedCaps(GstEvent* event);
    bool heedTags(GstEvent* event);

    mutable std::mutex m_mutex; // Guards all.
    GstPointer<GstElement> m_decoder;
    SoundFormat m_format;
};

RawFormat rawFormatOf(const GstCaps* caps);
/// What an element is called, for people.
QString elementName(GstElement* element);

} // namespace player
