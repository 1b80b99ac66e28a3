#include "branch.h"

#include "gstproperty.h"

#include <log4cplus/logger.h>
#include <log4cplus/loggingmacros.h>

#include <algorithm>
#include <limits>

namespace player {

namespace {

log4cplus::Logger& logger()
{
    static log4cplus::Logger logger =
        log4cplus::Logger::getInstance(LOG4CPLUS_TEXT("player.streamer.branch"));
    return logger;
}

constexpr guint64 decodedAheadNs = 2 * GST_SECOND;
// An end is too early when more than that is missing of the item.
constexpr qint64 missingAtMostMs = 2000;
// Taken where neither size nor duration tell: 320 kbit/s.
constexpr double usualBytesPerMs = 40.0;

constexpr char streamIdPrefix[] = "item/";

bool isSound(GstPad* pad)
{
    GstCaps* caps = gst_pad_get_current_caps(pad);
    if (!caps)
        caps = gst_pad_query_caps(pad, nullptr);
    const gchar* name = gst_structure_get_name(gst_caps_get_structure(caps, 0));
    const bool sound = g_str_has_prefix(name, "audio/x-raw") != FALSE;
    gst_caps_unref(caps);
    return sound;
}

GstElement* makeElement(const char* factory)
{
    GstElement* element = gst_element_factory_make(factory, nullptr);
    Q_ASSERT_X(element, factory, "belongs to GStreamer's base plug-ins");
    return element;
}

bool isOf(const GError* error, GQuark domain, std::initializer_list<int> codes)
{
    const auto same = [error](int code) { return error->code == code; };
    return error->domain == domain && std::any_of(codes.begin(), codes.end(), same);
}

GstElement* makeDecoder()
{
    GstElement* decoder = makeElement("decodebin");
    GstCaps* caps = gst_caps_new_empty_simple("audio/x-raw");
    // Pictures and films in a container are left alone.
    setProperty(decoder, "caps", caps);
    setProperty(decoder, "expose-all-streams", false);
    gst_caps_unref(caps);
    return decoder;
}

GstElement* makeQueue()
{
    GstElement* queue = makeElement("queue");
    setProperty(queue, "max-size-time", decodedAheadNs);
    setProperty(queue, "max-size-bytes", guint64{ 0 });
    setProperty(queue, "max-size-buffers", guint64{ 0 });
    return queue;
}

} // namespace

QByteArray branchStreamId(quint64 number)
{
    return streamIdPrefix + QByteArray::number(number);
}

quint64 branchOfStreamId(const char* streamId)
{
    const QByteArray id(streamId);
    return id.startsWith(streamIdPrefix) ? id.mid(int(sizeof streamIdPrefix) - 1).toULongLong() : 0;
}

Branch::Branch(quint64 number, TransferLoop& loop, const StreamRequest& request,
    const HttpOptions& options, Access access, StreamRemains remains, PipelineWatcher& watcher)
    : m_number(number)
    , m_access(access)
    , m_stream(std::make_shared<HttpStream>(loop, request, options, std::move(remains)))
    , m_watcher(watcher)
{
    m_stream->open();
    build();
    watchQueue();
}

Branch::~Branch()
{
    stop();
    m_stream->close();
}

void Branch::build()
{
    m_bin.reset(GST_ELEMENT(gst_object_ref_sink(gst_bin_new(nullptr))));
    m_bus.reset(gst_bus_new());
    gst_bus_set_sync_handler(m_bus.get(), &Branch::onMessage, this, nullptr);
    gst_element_set_bus(m_bin.get(), m_bus.get());

    m_source = makeHttpSource(m_stream, m_access);
    GstElement* decoder = makeDecoder();
    m_queue = makeQueue();
    for (GstElement* part : { m_source, decoder, m_queue })
        gst_bin_add(GST_BIN(m_bin.get()), part);
    gst_element_link(m_source, decoder);
    g_signal_connect(decoder, "element-added", G_CALLBACK(&Branch::onElementAdded), this);
    if (m_access == Access::Linear)
        g_signal_connect(decoder, "element-added", G_CALLBACK(&Branch::onLinearPart), this);
    g_signal_connect(decoder, "pad-added", G_CALLBACK(&Branch::onPadAdded), this);

    const GstPointer<GstPad> queued(gst_element_get_static_pad(m_queue, "src"));
    gst_element_add_pad(m_bin.get(), gst_ghost_pad_new("src", queued.get()));
}

void Branch::watchQueue()
{
    const GstPointer<GstPad> output(gst_element_get_static_pad(m_queue, "src"));
    constexpr auto watched = GstPadProbeType(GST_PAD_PROBE_TYPE_BUFFER
        | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH);
    gst_pad_add_probe(output.get(), watched, &Branch::onPassed, this, nullptr);
    g_signal_connect(m_queue, "underrun", G_CALLBACK(&Branch::onUnderrun), this);
}

GstPointer<GstPad> Branch::output() const
{
    return GstPointer<GstPad>(gst_element_get_static_pad(m_bin.get(), "src"));
}

void Branch::start()
{
    gst_element_set_state(m_bin.get(), GST_STATE_PAUSED);
}

void Branch::stop()
{
    gst_element_set_state(m_bin.get(), GST_STATE_NULL);
    gst_bus_set_sync_handler(m_bus.get(), nullptr, nullptr, nullptr);
}

void Branch::setSeeking(bool seeking)
{
    m_seeking = seeking;
    if (seeking)
        m_drained = false;
}

qint64 Branch::bufferedMs() const
{
    const HttpStream::Progress progress = m_stream->progress();
    if (progress.complete)
        return std::numeric_limits<qint64>::max();
    const guint64 decodedNs = numberProperty(m_queue, "current-level-time");
    const qint64 durationMs = m_stream->durationMs();
    const double bytesPerMs = progress.size > 0 && durationMs > 0
        ? static_cast<double>(progress.size) / static_cast<double>(durationMs)
        : usualBytesPerMs;
    return static_cast<qint64>(decodedNs / GST_MSECOND)
        + static_cast<qint64>(static_cast<double>(progress.buffered) / bytesPerMs);
}

bool Branch::isDry() const
{
    return numberProperty(m_queue, "current-level-buffers") == 0 && !m_drained
        && !m_stream->progress().complete;
}

qint64 Branch::streamDurationMs() const
{
    const GstPointer<GstPad> output(gst_element_get_static_pad(m_queue, "src"));
    gint64 duration = 0;
    if (!gst_pad_query_duration(output.get(), GST_FORMAT_TIME, &duration) || duration < 0)
        return 0;
    return duration / GST_MSECOND;
}

StreamFailure Branch::failure(StreamFailure otherwise) const
{
    StreamFailure own = m_stream->progress().failure;
    if (own.isSet())
        return own;
    otherwise.host = own.host;
    return otherwise;
}

bool Branch::isCutOff() const
{
    const HttpStream::Progress progress = m_stream->progress();
    if (progress.failure.isSet())
        return true;
    // A description alone may be wrong, and is not believed against an end that was confirmed. What
    // the stream's own head agrees with is: then the file itself was cut short.
    const qint64 described = m_stream->durationMs();
    const qint64 expected =
        progress.endConfirmed ? std::min(described, streamDurationMs()) : described;
    return expected > 0 && m_end / GST_MSECOND + missingAtMostMs < expected;
}

void Branch::linkDecoded(GstPad* pad)
{
    const GstPointer<GstPad> input(gst_element_get_static_pad(m_queue, "sink"));
    if (!gst_pad_is_linked(input.get()) && isSound(pad))
        gst_pad_link(pad, input.get());
}

GstBusSyncReply Branch::onMessage(GstBus*, GstMessage* message, gpointer self)
{
    auto* branch = static_cast<Branch*>(self);
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR)
        branch->takeError(message);
    else if (gst_message_has_name(message, "missing-plugin"))
        branch->takeMissing(message);
    gst_message_unref(message);
    return GST_BUS_DROP;
}

void Branch::takeError(GstMessage* message)
{
    GError* error = nullptr;
    gchar* details = nullptr;
    gst_message_parse_error(message, &error, &details);
    const GstOwned<GError> owned(error);
    const GstOwned<char> ownedDetails(details);
    LOG4CPLUS_DEBUG(logger(), error->message << ' ' << (details ? details : ""));
    StreamFailure failure;
    failure.kind = StreamFailure::Damaged;
    if (isOf(error, GST_STREAM_ERROR,
            { GST_STREAM_ERROR_TYPE_NOT_FOUND, GST_STREAM_ERROR_WRONG_TYPE }))
        failure.kind = StreamFailure::NotAudio;
    else if (isOf(error, GST_STREAM_ERROR, { GST_STREAM_ERROR_CODEC_NOT_FOUND })
        || isOf(error, GST_CORE_ERROR, { GST_CORE_ERROR_MISSING_PLUGIN }))
        failure = missing();
    m_watcher.branchFailed(m_number, failure);
}

void Branch::takeMissing(GstMessage* message)
{
    const GstStructure* told = gst_message_get_structure(message);
    const gchar* name = gst_structure_get_string(told, "name");
    const GValue* detail = gst_structure_get_value(told, "detail");
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_missingName = QString::fromUtf8(name);
    if (detail && g_type_check_value_holds(detail, GST_TYPE_CAPS) != FALSE) {
        const GstCaps* caps = gst_value_get_caps(detail);
        m_missingType = QString::fromUtf8(gst_structure_get_name(gst_caps_get_structure(caps, 0)));
    }
}

StreamFailure Branch::missing() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const bool audio = m_missingType.startsWith(QLatin1String("audio/"));
    StreamFailure failure;
    failure.kind = audio ? StreamFailure::NoDecoder : StreamFailure::NotAudio;
    failure.detail = audio ? m_missingName : m_missingType;
    return failure;
}

/// The sink sees which item's data follows.
void Branch::namePart(GstPadProbeInfo* info) const
{
    GstEvent* event = GST_PAD_PROBE_INFO_EVENT(info);
    GstEvent* named = gst_event_new_stream_start(branchStreamId(m_number).constData());
    guint group = 0;
    if (gst_event_parse_group_id(event, &group))
        gst_event_set_group_id(named, group);
    gst_event_unref(event);
    info->data = named;
}

/// Nothing need come after a seek to the end.
void Branch::takeSegment(GstEvent* event)
{
    const GstSegment* segment = nullptr;
    gst_event_parse_segment(event, &segment);
    if (segment->format == GST_FORMAT_TIME)
        m_end = std::max<qint64>(m_end, static_cast<qint64>(segment->start));
}

GstPadProbeReturn Branch::eventPassed(GstPadProbeInfo* info)
{
    switch (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info))) {
    case GST_EVENT_STREAM_START:
        namePart(info);
        break;
    case GST_EVENT_SEGMENT:
        takeSegment(GST_PAD_PROBE_INFO_EVENT(info));
        break;
    case GST_EVENT_FLUSH_START:
    case GST_EVENT_FLUSH_STOP:
        if (m_seeking)
            m_end = 0;
        // A demuxer that looks about in its stream must not empty a sink that plays another item.
        return m_seeking ? GST_PAD_PROBE_OK : GST_PAD_PROBE_DROP;
    case GST_EVENT_EOS:
        m_drained = true;
        if (isCutOff()) {
            // The pipeline must take it neither for the end nor for the next item's turn.
            m_watcher.branchCutOff(m_number);
            return GST_PAD_PROBE_DROP;
        }
        m_watcher.branchDrained(m_number);
        break;
    default:
        if (m_format.heed(GST_PAD_PROBE_INFO_EVENT(info)))
            m_watcher.branchFormatChanged(m_number);
        break;
    }
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn Branch::bufferPassed(GstBuffer* buffer)
{
    ++m_passed;
    if (GST_BUFFER_PTS_IS_VALID(buffer) && GST_BUFFER_DURATION_IS_VALID(buffer))
        m_end = static_cast<qint64>(GST_BUFFER_PTS(buffer) + GST_BUFFER_DURATION(buffer));
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn Branch::onPassed(GstPad*, GstPadProbeInfo* info, gpointer self)
{
    auto* branch = static_cast<Branch*>(self);
    if (info->type & GST_PAD_PROBE_TYPE_BUFFER)
        return branch->bufferPassed(GST_PAD_PROBE_INFO_BUFFER(info));
    return branch->eventPassed(info);
}

void Branch::onElementAdded(GstBin*, GstElement* part, gpointer self)
{
    static_cast<Branch*>(self)->m_format.take(part);
}

void Branch::onLinearPart(GstBin*, GstElement* part, gpointer self)
{
    GstElementFactory* factory = gst_element_get_factory(part);
    if (!factory || !g_str_equal(GST_OBJECT_NAME(factory), "oggdemux"))
        return;
    // Where it could seek it would leap to the stream's end and back before it plays, and lose
    // samples on the way more often than not.
    auto* branch = static_cast<Branch*>(self);
    denySeeking(branch->m_source);
    branch->m_needsRandomAccess = true;
}

void Branch::onPadAdded(GstElement*, GstPad* pad, gpointer self)
{
    static_cast<Branch*>(self)->linkDecoded(pad);
}

void Branch::onUnderrun(GstElement*, gpointer self)
{
    auto* branch = static_cast<Branch*>(self);
    if (branch->m_passed > 0 && !branch->m_drained)
        branch->m_watcher.branchDry(branch->m_number);
}

} // namespace player
