#include "output.h"

#include "gstpointer.h"
#include "gstproperty.h"
#include "outputdevices.h"

#include <QRegularExpression>

namespace player {

namespace {

bool isName(const QString& setting)
{
    static const QRegularExpression name(QStringLiteral("^[A-Za-z0-9_-]+$"));
    return name.match(setting).hasMatch();
}

GstElement* parse(const QString& description, StreamFailure& failure)
{
    GError* error = nullptr;
    GstElement* bin = gst_parse_bin_from_description_full(description.toUtf8().constData(), TRUE,
        nullptr, GstParseFlags(GST_PARSE_FLAG_FATAL_ERRORS), &error);
    const GstOwned<GError> owned(error);
    if (!bin && error)
        failure.detail = QString::fromUtf8(error->message);
    return bin;
}

GstElement* make(const QString& setting, StreamFailure& failure)
{
    if (setting == QLatin1String("auto"))
        return gst_element_factory_make("autoaudiosink", nullptr);
    if (setting.startsWith(outputDevicePrefix()))
        return makeDeviceSink(setting);
    if (isName(setting))
        return gst_element_factory_make(setting.toUtf8().constData(), nullptr);
    return parse(setting, failure);
}

/// The word of the element that failed, when it said one.
QString errorOn(GstBus* bus)
{
    const GstOwned<GstMessage> message(gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR));
    if (!message)
        return {};
    GError* error = nullptr;
    gst_message_parse_error(message.get(), &error, nullptr);
    const GstOwned<GError> owned(error);
    return QString::fromUtf8(error->message);
}

bool open(GstElement* sink, StreamFailure& failure)
{
    const GstPointer<GstBus> bus(gst_bus_new());
    gst_element_set_bus(sink, bus.get());
    const bool opened = gst_element_set_state(sink, GST_STATE_READY) != GST_STATE_CHANGE_FAILURE;
    if (!opened)
        failure.detail = errorOn(bus.get());
    gst_element_set_bus(sink, nullptr);
    return opened;
}

void discard(GstElement* sink)
{
    gst_element_set_state(sink, GST_STATE_NULL);
    gst_object_unref(gst_object_ref_sink(sink));
}

/// A sink that was described is what was asked for, be it a silent one.
bool isAuto(const QString& setting)
{
    return setting == QLatin1String("auto") || setting == QLatin1String("autoaudiosink");
}

/// Where no device is to be had, autoaudiosink takes a sink that swallows everything.
bool isSilentAuto(GstElement* sink)
{
    if (!GST_IS_BIN(sink) || GST_BIN_NUMCHILDREN(sink) != 1)
        return false;
    const auto* child = static_cast<GstElement*>(GST_BIN_CHILDREN(sink)->data);
    GstElementFactory* factory = gst_element_get_factory(const_cast<GstElement*>(child));
    return factory != nullptr && g_str_equal(GST_OBJECT_NAME(factory), "fakesink") != FALSE;
}

bool keepsToClock(GstElement* element)
{
    if (!GST_OBJECT_FLAG_IS_SET(element, GST_ELEMENT_FLAG_SINK)
        || !g_object_class_find_property(G_OBJECT_GET_CLASS(element), "sync"))
        return false;
    return boolProperty(element, "sync");
}

} // namespace

GstElement* makeOutput(const QString& setting, StreamFailure& failure)
{
    GstElement* sink = make(setting, failure);
    if (!sink) {
        failure.kind = StreamFailure::OutputFailed;
        if (failure.detail.isEmpty())
            failure.detail = QStringLiteral("there is no output \"%1\".").arg(setting);
        return nullptr;
    }
    const bool opened = open(sink, failure);
    if (opened && !(isAuto(setting) && isSilentAuto(sink)))
        return sink;
    failure.kind = isAuto(setting) ? StreamFailure::NoOutput : StreamFailure::OutputFailed;
    discard(sink);
    return nullptr;
}

GstPointer<GstElement> lastOfOutput(GstElement* sink)
{
    if (!GST_IS_BIN(sink))
        return GstPointer<GstElement>(GST_ELEMENT(gst_object_ref(sink)));
    GstIterator* sinks = gst_bin_iterate_sinks(GST_BIN(sink));
    GValue found = G_VALUE_INIT;
    GstPointer<GstElement> last;
    if (gst_iterator_next(sinks, &found) == GST_ITERATOR_OK) {
        last = lastOfOutput(static_cast<GstElement*>(g_value_get_object(&found)));
        g_value_unset(&found);
    }
    gst_iterator_free(sinks);
    return last;
}

bool isSyncedOutput(GstElement* sink)
{
    if (!GST_IS_BIN(sink))
        return keepsToClock(sink);
    bool synced = false;
    GstIterator* all = gst_bin_iterate_recurse(GST_BIN(sink));
    gst_iterator_foreach(
        all,
        [](const GValue* value, gpointer result) {
            auto* element = static_cast<GstElement*>(g_value_get_object(value));
            if (!GST_IS_BIN(element) && keepsToClock(element))
                *static_cast<bool*>(result) = true;
        },
        &synced);
    gst_iterator_free(all);
    return synced;
}

} // namespace player
