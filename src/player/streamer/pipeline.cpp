#include "pipeline.h"

#include "branch.h"
#include "gstproperty.h"
#include "output.h"
#include "soundformatprobe.h"

namespace player {

namespace {

GstElement* makeElement(const char* factory)
{
    GstElement* element = gst_element_factory_make(factory, nullptr);
    Q_ASSERT_X(element, factory, "belongs to GStreamer's base plug-ins");
    return element;
}

GstPointer<GstPad> inputOf(GstElement* sink)
{
    return GstPointer<GstPad>(sink ? gst_element_get_static_pad(sink, "sink") : nullptr);
}

} // namespace

Pipeline::Pipeline(GstElement* sink, PipelineWatcher& watcher)
    : m_watcher(watcher)
    , m_pipeline(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr))))
    , m_last(lastOfOutput(sink))
    , m_output(inputOf(m_last.get()))
    , m_synced(isSyncedOutput(sink))
{
    gst_segment_init(&m_segment, GST_FORMAT_TIME);
    build(sink);
    watchSink();
    watchOutput();
    const GstPointer<GstBus> bus(gst_element_get_bus(m_pipeline.get()));
    gst_bus_set_sync_handler(bus.get(), &Pipeline::onMessage, this, nullptr);
}

Pipeline::~Pipeline()
{
    gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
    if (m_outputWatch != 0)
        g_signal_handler_disconnect(m_output.get(), m_outputWatch);
    const GstPointer<GstBus> bus(gst_element_get_bus(m_pipeline.get()));
    gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
}

void Pipeline::build(GstElement* sink)
{
    m_concat = makeElement("concat");
    GstElement* convert = makeElement("audioconvert");
    GstElement* resample = makeElement("audioresample");
    m_volume = makeElement("volume");
    GstElement* before = nullptr;
    for (GstElement* part : { m_concat, convert, resample, m_volume, sink }) {
        gst_bin_add(GST_BIN(m_pipeline.get()), part);
        if (before)
            gst_element_link(before, part);
        before = part;
    }
}

void Pipeline::watchSink()
{
    const GstPointer<GstPad> pad(gst_element_get_static_pad(m_volume, "src"));
    constexpr auto watched = GstPadProbeType(GST_PAD_PROBE_TYPE_BUFFER
        | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH);
    gst_pad_add_probe(pad.get(), watched, &Pipeline::onPassed, this, nullptr);
}

void Pipeline::watchOutput()
{
    if (m_output)
        m_outputWatch = g_signal_connect(
            m_output.get(), "notify::caps", G_CALLBACK(&Pipeline::onOutputCaps), this);
}

void Pipeline::onOutputCaps(GstPad*, GParamSpec*, gpointer self)
{
    auto* pipeline = static_cast<Pipeline*>(self);
    pipeline->m_watcher.outputFormatChanged(pipeline->m_epoch);
}

RawFormat Pipeline::outputFormat() const
{
    GstCaps* caps = m_output ? gst_pad_get_current_caps(m_output.get()) : nullptr;
    if (!caps)
        return {};
    const RawFormat format = rawFormatOf(caps);
    gst_caps_unref(caps);
    return format;
}

QString Pipeline::outputElement() const
{
    return m_last ? elementName(m_last.get()) : QString();
}

void Pipeline::add(Branch& branch)
{
    const GstPointer<GstPad> input(gst_element_request_pad_simple(m_concat, "sink_%u"));
    // The branch is deliberately no sibling of concat.
    gst_pad_link_full(branch.output().get(), input.get(), GST_PAD_LINK_CHECK_NOTHING);
    branch.start();
}

void Pipeline::remove(Branch& branch)
{
    // In this order: a branch that waits for its turn inside concat could not stop otherwise.
    const GstPointer<GstPad> input(gst_pad_get_peer(branch.output().get()));
    if (input)
        gst_element_release_request_pad(m_concat, input.get());
    branch.stop();
}

void Pipeline::pause()
{
    m_playing = false;
    gst_element_set_state(m_pipeline.get(), GST_STATE_PAUSED);
}

bool Pipeline::play()
{
    m_playing = true;
    return gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_SUCCESS;
}

void Pipeline::reset()
{
    m_playing = false;
    gst_element_set_state(m_pipeline.get(), GST_STATE_READY);
    ++m_epoch;
    m_timeline.clear();
}

bool Pipeline::isStarved() const
{
    return gst_element_get_state(m_pipeline.get(), nullptr, nullptr, 0) == GST_STATE_CHANGE_ASYNC;
}

bool Pipeline::seek(qint64 positionMs)
{
    return gst_element_seek(m_pipeline.get(), 1.0, GST_FORMAT_TIME,
               GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE), GST_SEEK_TYPE_SET,
               positionMs * GST_MSECOND, GST_SEEK_TYPE_NONE, 0)
        != FALSE;
}

qint64 Pipeline::runningTime() const
{
    const GstPointer<GstClock> clock(gst_element_get_clock(m_pipeline.get()));
    if (!m_playing || !clock)
        return static_cast<qint64>(gst_element_get_start_time(m_pipeline.get()));
    const GstClockTime now = gst_clock_get_time(clock.get());
    return GST_CLOCK_DIFF(gst_element_get_base_time(m_pipeline.get()), now);
}

void Pipeline::setVolume(double factor, bool muted)
{
    setProperty(m_volume, "volume", factor);
    setProperty(m_volume, "mute", muted);
}

GstPadProbeReturn Pipeline::onPassed(GstPad*, GstPadProbeInfo* info, gpointer self)
{
    static_cast<Pipeline*>(self)->passed(info);
    return GST_PAD_PROBE_OK;
}

void Pipeline::passed(GstPadProbeInfo* info)
{
    if (info->type & GST_PAD_PROBE_TYPE_BUFFER)
        bufferPassed(GST_PAD_PROBE_INFO_BUFFER(info));
    else
        eventPassed(GST_PAD_PROBE_INFO_EVENT(info));
}

void Pipeline::eventPassed(GstEvent* event)
{
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_STREAM_START: {
        const gchar* id = nullptr;
        gst_event_parse_stream_start(event, &id);
        m_timeline.streamStarted(branchOfStreamId(id));
        break;
    }
    case GST_EVENT_SEGMENT:
        gst_event_copy_segment(event, &m_segment);
        m_timeline.segmentStarted(
            static_cast<qint64>(m_segment.base), static_cast<qint64>(m_segment.time));
        break;
    case GST_EVENT_FLUSH_STOP:
        m_timeline.flushed();
        break;
    default:
        break;
    }
}

void Pipeline::bufferPassed(GstBuffer* buffer)
{
    if (!GST_BUFFER_PTS_IS_VALID(buffer) || !GST_BUFFER_DURATION_IS_VALID(buffer))
        return;
    const GstClockTime end = GST_BUFFER_PTS(buffer) + GST_BUFFER_DURATION(buffer);
    const qint64 intoSegment = GST_CLOCK_DIFF(m_segment.start, end);
    m_timeline.bufferPassed(static_cast<qint64>(m_segment.base) + intoSegment);
}

GstBusSyncReply Pipeline::onMessage(GstBus*, GstMessage* message, gpointer self)
{
    static_cast<Pipeline*>(self)->take(message);
    gst_message_unref(message);
    return GST_BUS_DROP;
}

void Pipeline::take(GstMessage* message)
{
    const bool own = GST_MESSAGE_SRC(message) == GST_OBJECT_CAST(m_pipeline.get());
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ASYNC_DONE:
        if (own)
            m_watcher.prerolled(m_epoch);
        break;
    case GST_MESSAGE_STATE_CHANGED: {
        GstState state = GST_STATE_NULL;
        gst_message_parse_state_changed(message, nullptr, &state, nullptr);
        if (own && state == GST_STATE_PLAYING)
            m_watcher.playing(m_epoch);
        break;
    }
    case GST_MESSAGE_EOS:
        m_watcher.ended(m_epoch);
        break;
    case GST_MESSAGE_ERROR:
        takeError(message);
        break;
    default:
        break;
    }
}

void Pipeline::takeError(GstMessage* message)
{
    GError* error = nullptr;
    gst_message_parse_error(message, &error, nullptr);
    const GstOwned<GError> owned(error);
    m_watcher.outputFailed(m_epoch, QString::fromUtf8(error->message));
}

} // namespace player
