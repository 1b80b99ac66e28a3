#include "encoder.h"

#include <attachedpictureframe.h>
#include <flacfile.h>
#include <id3v2tag.h>
#include <mp4file.h>
#include <mp4tag.h>
#include <mpegfile.h>
#include <opusfile.h>
#include <tpropertymap.h>

#include <gst/app/gstappsrc.h>
#include <gst/gst.h>

#include <QFile>
#include <QStringList>

#include <memory>

namespace emulator::samples {

namespace {

struct Unref
{
    void operator()(void* object) const { gst_object_unref(object); }
};
using Element = std::unique_ptr<GstElement, Unref>;

QStringList encoderChain(Format format)
{
    switch (format) {
    case Format::Flac:
        return { QStringLiteral("flacenc") };
    case Format::Opus:
        return { QStringLiteral("opusenc"), QStringLiteral("oggmux") };
    case Format::Mp3:
        return { QStringLiteral("lamemp3enc"), QStringLiteral("id3v2mux") };
    case Format::M4a:
        return { QStringLiteral("avenc_aac"), QStringLiteral("mp4mux") };
    }
    return {};
}

// Adds an element to the pipeline behind `last`; null when it is not installed.
GstElement* append(GstElement* pipeline, GstElement* last, const QString& factory)
{
    GstElement* element = gst_element_factory_make(factory.toLatin1().constData(), nullptr);
    if (!element)
        return nullptr;
    // Without an index of the whole file a reader knows the length only at a constant bit rate.
    if (factory == QLatin1String("lamemp3enc")) {
        gst_util_set_object_arg(G_OBJECT(element), "target", "bitrate");
        gst_util_set_object_arg(G_OBJECT(element), "cbr", "true");
    }
    gst_bin_add(GST_BIN(pipeline), element);
    if (last && !gst_element_link(last, element))
        return nullptr;
    return element;
}

void setText(GstElement* element, const char* property, const QByteArray& text)
{
    GValue value = G_VALUE_INIT;
    g_value_init(&value, G_TYPE_STRING);
    g_value_set_string(&value, text.constData());
    g_object_set_property(G_OBJECT(element), property, &value);
    g_value_unset(&value);
}

void feed(GstElement* source, const Sound& sound)
{
    const QString format =
        QStringLiteral("audio/x-raw,format=S16LE,layout=interleaved,channels=2,rate=%1")
            .arg(sound.rate);
    GstCaps* caps = gst_caps_from_string(format.toLatin1().constData());
    gst_app_src_set_caps(GST_APP_SRC(source), caps);
    gst_caps_unref(caps);
    gst_util_set_object_arg(G_OBJECT(source), "format", "time");
    const gsize bytes = sound.samples.size() * sizeof(int16_t);
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, bytes, nullptr);
    gst_buffer_fill(buffer, 0, sound.samples.data(), bytes);
    GST_BUFFER_PTS(buffer) = 0;
    GST_BUFFER_DURATION(buffer) =
        gst_util_uint64_scale(sound.frames(), GST_SECOND, static_cast<guint64>(sound.rate));
    gst_app_src_push_buffer(GST_APP_SRC(source), buffer);
    gst_app_src_end_of_stream(GST_APP_SRC(source));
}

QString runToEnd(GstElement* pipeline)
{
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    const std::unique_ptr<GstBus, Unref> bus(gst_element_get_bus(pipeline));
    GstMessage* message = gst_bus_timed_pop_filtered(bus.get(), 60 * GST_SECOND,
        static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    QString problem;
    if (!message) {
        problem = QStringLiteral("the encoder does not come to an end");
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        problem = QString::fromUtf8(error->message);
        g_error_free(error);
    }
    if (message)
        gst_message_unref(message);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    return problem;
}

TagLib::String toTagLib(const QString& text)
{
    return { text.toUtf8().toStdString(), TagLib::String::UTF8 };
}

TagLib::ByteVector toTagLib(const QByteArray& bytes)
{
    return { bytes.constData(), static_cast<unsigned>(bytes.size()) };
}

TagLib::PropertyMap propertiesOf(const catalogue::Tags& tags)
{
    TagLib::PropertyMap properties;
    const auto put = [&properties](const char* key, const QString& value) {
        if (!value.isEmpty() && value != QLatin1String("0"))
            properties.insert(key, TagLib::StringList(toTagLib(value)));
    };
    put("TITLE", tags.title);
    put("ARTIST", tags.artist);
    put("ALBUMARTIST", tags.albumArtist);
    put("ALBUM", tags.album);
    put("GENRE", tags.genre);
    put("TRACKNUMBER", QString::number(tags.number));
    put("DISCNUMBER", QString::number(tags.disc));
    put("DATE", QString::number(tags.year));
    return properties;
}

std::unique_ptr<TagLib::FLAC::Picture> flacPicture(const catalogue::Picture& cover)
{
    auto picture = std::make_unique<TagLib::FLAC::Picture>();
    picture->setType(TagLib::FLAC::Picture::FrontCover);
    picture->setMimeType(cover.mimeType.toStdString());
    picture->setData(toTagLib(cover.bytes));
    return picture;
}

// TagLib owns the picture that it is given.
void addPicture(TagLib::File& file, const catalogue::Picture& cover)
{
    if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file)) {
        flac->addPicture(flacPicture(cover).release());
    } else if (auto* opus = dynamic_cast<TagLib::Ogg::Opus::File*>(&file)) {
        opus->tag()->addPicture(flacPicture(cover).release());
    } else if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file)) {
        auto picture = std::make_unique<TagLib::ID3v2::AttachedPictureFrame>();
        picture->setType(TagLib::ID3v2::AttachedPictureFrame::FrontCover);
        picture->setMimeType(cover.mimeType.toStdString());
        picture->setPicture(toTagLib(cover.bytes));
        mpeg->ID3v2Tag(true)->addFrame(picture.release());
    } else if (auto* mp4 = dynamic_cast<TagLib::MP4::File*>(&file)) {
        TagLib::MP4::CoverArtList covers;
        covers.append(TagLib::MP4::CoverArt(TagLib::MP4::CoverArt::PNG, toTagLib(cover.bytes)));
        mp4->tag()->setItem("covr", covers);
    }
}

std::unique_ptr<TagLib::File> openTagged(const QString& file, Format format)
{
    const QByteArray name = QFile::encodeName(file);
    switch (format) {
    case Format::Flac:
        return std::make_unique<TagLib::FLAC::File>(name.constData());
    case Format::Opus:
        return std::make_unique<TagLib::Ogg::Opus::File>(name.constData());
    case Format::Mp3:
        return std::make_unique<TagLib::MPEG::File>(name.constData());
    case Format::M4a:
        return std::make_unique<TagLib::MP4::File>(name.constData());
    }
    return nullptr;
}

} // namespace

QString suffixOf(Format format)
{
    switch (format) {
    case Format::Flac:
        return QStringLiteral("flac");
    case Format::Opus:
        return QStringLiteral("opus");
    case Format::Mp3:
        return QStringLiteral("mp3");
    case Format::M4a:
        return QStringLiteral("m4a");
    }
    return {};
}

QString encode(const Sound& sound, Format format, const QString& file)
{
    gst_init(nullptr, nullptr);
    const Element pipeline(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr))));
    GstElement* source = append(pipeline.get(), nullptr, QStringLiteral("appsrc"));
    GstElement* last = source;
    const QStringList chain = QStringList{ QStringLiteral("audioconvert") } + encoderChain(format)
        + QStringList{ QStringLiteral("filesink") };
    for (const QString& factory : chain) {
        last = last ? append(pipeline.get(), last, factory) : nullptr;
        if (!last)
            return QStringLiteral("the GStreamer element \"%1\" is missing; install the packages "
                                  "gstreamer1.0-plugins-base, -good, -ugly and -libav")
                .arg(factory);
    }
    setText(last, "location", QFile::encodeName(file));
    feed(source, sound);
    return runToEnd(pipeline.get());
}

QString writeTags(const QString& file, Format format, const catalogue::Tags& tags,
    const catalogue::Picture& cover)
{
    const std::unique_ptr<TagLib::File> audio = openTagged(file, format);
    if (!audio->isValid())
        return QStringLiteral("%1 cannot be tagged").arg(file);
    audio->setProperties(propertiesOf(tags));
    if (!cover.bytes.isEmpty())
        addPicture(*audio, cover);
    return audio->save() ? QString() : QStringLiteral("%1 cannot be tagged").arg(file);
}

} // namespace emulator::samples
