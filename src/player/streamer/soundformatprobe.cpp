#include "soundformatprobe.h"

#include <QRegularExpression>

#include <cstdlib>

namespace player {

namespace {

struct Codec
{
    const char* mediaType;
    const char* name;
    bool lossless;
};

// What lacks here is called by what the stream says of itself.
constexpr Codec codecs[] = {
    { "audio/x-flac", "FLAC", true },
    { "audio/x-alac", "ALAC", true },
    { "audio/x-wavpack", "WavPack", true },
    { "audio/x-raw", "PCM", true },
    { "audio/x-opus", "Opus", false },
    { "audio/x-vorbis", "Vorbis", false },
    { "audio/x-ac3", "Dolby Digital", false },
    { "audio/x-eac3", "Dolby Digital Plus", false },
};

int number(const GstStructure* structure, const char* field)
{
    gint value = 0;
    gst_structure_get_int(structure, field, &value);
    return value;
}

/// MPEG numbers its sounds by version and layer.
QString mpegName(const GstStructure* structure)
{
    if (number(structure, "mpegversion") != 1)
        return QStringLiteral("AAC");
    return QStringLiteral("MP%1").arg(qBound(1, number(structure, "layer"), 3));
}

void nameCodec(const GstStructure* encoded, SoundFormat& format)
{
    const gchar* type = gst_structure_get_name(encoded);
    if (g_str_equal(type, "audio/mpeg") != FALSE) {
        format.codec = mpegName(encoded);
        return;
    }
    for (const Codec& codec : codecs) {
        if (g_str_equal(type, codec.mediaType) != FALSE) {
            format.codec = QLatin1String(codec.name);
            format.lossless = codec.lossless;
        }
    }
}

GstCaps* encodedCaps(GstElement* decoder)
{
    const GstPointer<GstPad> pad(gst_element_get_static_pad(decoder, "sink"));
    return pad ? gst_pad_get_current_caps(pad.get()) : nullptr;
}

bool isAudioDecoder(GstElementFactory* factory)
{
    return gst_element_factory_list_is_type(
               factory, GST_ELEMENT_FACTORY_TYPE_DECODER | GST_ELEMENT_FACTORY_TYPE_MEDIA_AUDIO)
        != FALSE;
}

QString text(const GstTagList* tags, const char* name)
{
    gchar* value = nullptr;
    gst_tag_list_get_string(tags, name, &value);
    const GstOwned<char> owned(value);
    return QString::fromUtf8(value);
}

int bitRate(const GstTagList* tags)
{
    guint value = 0;
    if (gst_tag_list_get_uint(tags, GST_TAG_NOMINAL_BITRATE, &value) == FALSE)
        gst_tag_list_get_uint(tags, GST_TAG_BITRATE, &value);
    return static_cast<int>(value);
}

/// The mean of a variable rate trembles from second to second.
bool isOtherRate(int rate, int known)
{
    return rate > 0 && std::abs(rate - known) * 10 > known;
}

} // namespace

RawFormat rawFormatOf(const GstCaps* caps)
{
    const GstStructure* structure = gst_caps_get_structure(caps, 0);
    RawFormat raw;
    raw.sampleRate = number(structure, "rate");
    raw.channels = number(structure, "channels");
    // Such as "S16LE" or "S24_32LE", 24 bits that take the room of 32.
    static const QRegularExpression bits(QStringLiteral("^[A-Z]+(\\d+)"));
    const QString format = QString::fromUtf8(gst_structure_get_string(structure, "format"));
    raw.bitDepth = bits.match(format).captured(1).toInt();
    return raw;
}

QString elementName(GstElement* element)
{
    GstElementFactory* factory = gst_element_get_factory(element);
    return factory == nullptr ? QString()
                              : QString::fromUtf8(gst_element_factory_get_metadata(
                                  factory, GST_ELEMENT_METADATA_LONGNAME));
}

void SoundFormatProbe::take(GstElement* part)
{
    GstElementFactory* factory = gst_element_get_factory(part);
    if (!factory || !isAudioDecoder(factory))
        return;
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_decoder.reset(GST_ELEMENT(gst_object_ref(part)));
}

bool SoundFormatProbe::heed(GstEvent* decoded)
{
    switch (GST_EVENT_TYPE(decoded)) {
    case GST_EVENT_CAPS:
        return heedCaps(decoded);
    case GST_EVENT_TAG:
        return heedTags(decoded);
    default:
        return false;
    }
}

bool SoundFormatProbe::heedCaps(GstEvent* event)
{
    GstCaps* caps = nullptr;
    gst_event_parse_caps(event, &caps);
    const RawFormat raw = rawFormatOf(caps);
    const std::lock_guard<std::mutex> guard(m_mutex);
    GstCaps* encoded = m_decoder ? encodedCaps(m_decoder.get()) : gst_caps_ref(caps);
    if (encoded)
        nameCodec(gst_caps_get_structure(encoded, 0), m_format);
    m_format.decoder = m_decoder ? elementName(m_decoder.get()) : QString();
    m_format.sampleRate = raw.sampleRate;
    m_format.channels = raw.channels;
    m_format.bitDepth = 0;
    if (m_format.lossless) {
        // A decoder may hand 24 bits out as 32; a container that knows better says so.
        const int told = encoded ? number(gst_caps_get_structure(encoded, 0), "samplesize") : 0;
        m_format.bitDepth = told > 0 ? told : raw.bitDepth;
        m_format.bitRate = 0;
    }
    if (encoded)
        gst_caps_unref(encoded);
    return true;
}

bool SoundFormatProbe::heedTags(GstEvent* event)
{
    GstTagList* tags = nullptr;
    gst_event_parse_tag(event, &tags);
    const std::lock_guard<std::mutex> guard(m_mutex);
    const SoundFormat before = m_format;
    if (m_format.codec.isEmpty())
        m_format.codec = text(tags, GST_TAG_AUDIO_CODEC);
    if (m_format.container.isEmpty())
        m_format.container = text(tags, GST_TAG_CONTAINER_FORMAT);
    if (const int rate = bitRate(tags); !m_format.lossless && isOtherRate(rate, m_format.bitRate))
        m_format.bitRate = rate;
    return m_format.codec != before.codec || m_format.container != before.container
        || m_format.bitRate != before.bitRate;
}

SoundFormat SoundFormatProbe::format() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_format;
}

} // namespace player
