#include "httpsource.h"

#include "httpstream.h"

#include <gst/base/gstbasesrc.h>

#include <atomic>
#include <cstring>

namespace player {

namespace {

// Who looks for a place in the stream comes back to just before where it looked.
constexpr qint64 leadBytes = qint64{ 16 } * 1024;

struct Source
{
    std::shared_ptr<HttpStream> stream;
    Access access = Access::Linear;
    std::atomic<bool> seekable{ true };
};

struct HttpSource
{
    GstBaseSrc parent;
    Source* own;
};

struct HttpSourceClass
{
    GstBaseSrcClass parent;
};

gpointer parentClass = nullptr;

template <class T>
Source& of(T* object)
{
    return *reinterpret_cast<HttpSource*>(object)->own;
}

GstBuffer* bufferOf(ByteChunk chunk)
{
    using Bytes = decltype(chunk.bytes);
    auto* bytes = new Bytes(std::move(chunk.bytes));
    const auto release = [](gpointer data) { delete static_cast<Bytes*>(data); };
    // The stream keeps them too.
    return gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY,
        const_cast<std::uint8_t*>(bytes->get()), chunk.begin + chunk.size, chunk.begin, chunk.size,
        bytes, release);
}

/// Downstream asks for the size while it seeks.
void tellSize(GstBaseSrc* source, qint64 size)
{
    if (size < 0 || source->segment.duration == static_cast<guint64>(size))
        return;
    source->segment.duration = static_cast<guint64>(size);
    gst_element_post_message(
        &source->element, gst_message_new_duration_changed(&source->element.object));
}

GstFlowReturn flowOf(HttpStream::Read read)
{
    return read == HttpStream::Read::Data ? GST_FLOW_OK
        : read == HttpStream::Read::End   ? GST_FLOW_EOS
                                          : GST_FLOW_FLUSHING;
}

GstFlowReturn readPiece(HttpStream& stream, GstBuffer** buffer)
{
    ByteChunk chunk;
    const GstFlowReturn flow = flowOf(stream.read(chunk));
    if (flow == GST_FLOW_OK)
        *buffer = bufferOf(std::move(chunk));
    return flow;
}

/// All of what was asked for, up to the end.
GstFlowReturn readRange(HttpStream& stream, guint length, GstBuffer** buffer)
{
    GstBuffer* whole = gst_buffer_new();
    while (gst_buffer_get_size(whole) < length) {
        ByteChunk chunk;
        const HttpStream::Read read =
            stream.read(chunk, length - static_cast<guint>(gst_buffer_get_size(whole)));
        if (read == HttpStream::Read::Data) {
            whole = gst_buffer_append(whole, bufferOf(std::move(chunk)));
            continue;
        }
        if (read == HttpStream::Read::End && gst_buffer_get_size(whole) > 0)
            break;
        gst_buffer_unref(whole);
        return flowOf(read);
    }
    *buffer = whole;
    return GST_FLOW_OK;
}

GstFlowReturn create(GstBaseSrc* object, guint64 offset, guint length, GstBuffer** buffer)
{
    HttpStream& stream = *of(object).stream;
    const bool random = of(object).access == Access::Random;
    stream.seek(static_cast<qint64>(offset), random ? leadBytes : 0);
    const GstFlowReturn flow =
        random ? readRange(stream, length, buffer) : readPiece(stream, buffer);
    if (flow == GST_FLOW_OK)
        tellSize(object, stream.progress().size);
    return flow;
}

gboolean getSize(GstBaseSrc* object, guint64* size)
{
    const qint64 known = of(object).stream->progress().size;
    if (known < 0)
        return FALSE;
    *size = static_cast<guint64>(known);
    return TRUE;
}

gboolean isSeekable(GstBaseSrc* object)
{
    const Source& source = of(object);
    const bool seekable =
        source.access == Access::Random || (source.seekable && source.stream->isSeekable());
    return seekable ? TRUE : FALSE;
}

/// create() is told where to go on.
gboolean doSeek(GstBaseSrc*, GstSegment*)
{
    return TRUE;
}

gboolean unlock(GstBaseSrc* object)
{
    of(object).stream->setInterrupted(true);
    return TRUE;
}

gboolean unlockStop(GstBaseSrc* object)
{
    of(object).stream->setInterrupted(false);
    return TRUE;
}

gboolean answerScheduling(const Source& source, GstQuery* query)
{
    const bool random = source.access == Access::Random;
    const int flags = GST_SCHEDULING_FLAG_BANDWIDTH_LIMITED
        | (random ? GST_SCHEDULING_FLAG_SEEKABLE : GST_SCHEDULING_FLAG_SEQUENTIAL);
    gst_query_set_scheduling(query, GstSchedulingFlags(flags), 1, -1, 0);
    gst_query_add_scheduling_mode(query, GST_PAD_MODE_PUSH);
    if (random)
        gst_query_add_scheduling_mode(query, GST_PAD_MODE_PULL);
    return TRUE;
}

gboolean answer(GstBaseSrc* object, GstQuery* query)
{
    if (GST_QUERY_TYPE(query) == GST_QUERY_SCHEDULING)
        return answerScheduling(of(object), query);
    return GST_BASE_SRC_CLASS(parentClass)->query(object, query);
}

void finalize(GObject* object)
{
    delete reinterpret_cast<HttpSource*>(object)->own;
    G_OBJECT_CLASS(parentClass)->finalize(object);
}

void initClass(gpointer type, gpointer)
{
    parentClass = g_type_class_peek_parent(type);
    static GstStaticPadTemplate output =
        GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);
    gst_element_class_add_static_pad_template(GST_ELEMENT_CLASS(type), &output);
    gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(type), "HTTP stream", "Source/Network",
        "Hands out the bytes of a stream", "Tavu");
    G_OBJECT_CLASS(type)->finalize = finalize;
    GstBaseSrcClass* source = GST_BASE_SRC_CLASS(type);
    source->create = create;
    source->get_size = getSize;
    source->is_seekable = isSeekable;
    source->do_seek = doSeek;
    source->unlock = unlock;
    source->unlock_stop = unlockStop;
    source->query = answer;
}

void initObject(GTypeInstance* object, gpointer)
{
    auto* source = reinterpret_cast<HttpSource*>(object);
    source->own = new Source;
    gst_base_src_set_format(&source->parent, GST_FORMAT_BYTES);
}

GType httpSourceType()
{
    static const GType type = g_type_register_static_simple(GST_TYPE_BASE_SRC, "TavuHttpSource",
        sizeof(HttpSourceClass), initClass, sizeof(HttpSource), initObject, GTypeFlags(0));
    return type;
}

} // namespace

GstElement* makeHttpSource(const std::shared_ptr<HttpStream>& stream, Access access)
{
    auto* source = reinterpret_cast<HttpSource*>(
        g_object_new_with_properties(httpSourceType(), 0, nullptr, nullptr));
    source->own->stream = stream;
    source->own->access = access;
    return &source->parent.element;
}

void denySeeking(GstElement* httpSource)
{
    of(httpSource).seekable = false;
}

} // namespace player
