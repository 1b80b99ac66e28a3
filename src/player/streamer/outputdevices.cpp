#include "outputdevices.h"

#include "gstpointer.h"
#include "gstruntime.h"

#include <algorithm>

namespace player {

namespace {

using GstMonitor = GstPointer<GstDeviceMonitor>;

GstMonitor makeMonitor()
{
    GstMonitor monitor(gst_device_monitor_new());
    gst_device_monitor_add_filter(monitor.get(), "Audio/Sink", nullptr);
    return monitor;
}

/// Calls `visit` with each device and its id. Devices of one name are told apart by a number.
template <class Visit>
void forEachDevice(GstDeviceMonitor* monitor, Visit visit)
{
    GList* devices = gst_device_monitor_get_devices(monitor);
    QStringList ids;
    for (const GList* entry = devices; entry; entry = entry->next) {
        auto* device = static_cast<GstDevice*>(entry->data);
        const GstOwned<char> name(gst_device_get_display_name(device));
        const QString text = QString::fromUtf8(name.get());
        QString id = outputDevicePrefix() + text;
        for (int number = 2; ids.contains(id); ++number)
            id = QStringLiteral("%1%2 #%3").arg(outputDevicePrefix(), text).arg(number);
        ids.append(id);
        visit(device, OutputDevice{ id, id.mid(outputDevicePrefix().size()) });
    }
    g_list_free_full(devices, gst_object_unref);
}

} // namespace

struct OutputDevices::Monitor
{
    explicit Monitor(OutputDevices* owner)
        : monitor(makeMonitor())
    {
        const GstPointer<GstBus> bus(gst_device_monitor_get_bus(monitor.get()));
        gst_bus_set_sync_handler(bus.get(), &Monitor::onMessage, owner, nullptr);
    }

    ~Monitor()
    {
        const GstPointer<GstBus> bus(gst_device_monitor_get_bus(monitor.get()));
        gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
        gst_device_monitor_stop(monitor.get());
    }
    Q_DISABLE_COPY_MOVE(Monitor)

    QVector<OutputDevice> list() const
    {
        QVector<OutputDevice> result;
        forEachDevice(
            monitor.get(), [&](GstDevice*, const OutputDevice& device) { result.append(device); });
        return result;
    }

    static GstBusSyncReply onMessage(GstBus*, GstMessage* message, gpointer data)
    {
        auto* owner = static_cast<OutputDevices*>(data);
        gst_message_unref(message);
        const auto ask = [owner] { owner->take(owner->m_monitor->list()); };
        QMetaObject::invokeMethod(owner, ask, Qt::QueuedConnection);
        return GST_BUS_DROP;
    }

    GstMonitor monitor;
};

OutputDevices::OutputDevices(QObject* parent)
    : QObject(parent)
{
}

OutputDevices::~OutputDevices()
{
    if (m_looking.joinable())
        m_looking.join();
}

QVector<OutputDevice> OutputDevices::devices()
{
    if (!m_looking.joinable())
        m_looking = std::thread([this] { look(); });
    return m_devices;
}

void OutputDevices::look()
{
    initGStreamer();
    m_monitor = std::make_unique<Monitor>(this);
    gst_device_monitor_start(m_monitor->monitor.get());
    const QVector<OutputDevice> found = m_monitor->list();
    QMetaObject::invokeMethod(
        this, [this, found] { take(found); }, Qt::QueuedConnection);
}

void OutputDevices::take(const QVector<OutputDevice>& devices)
{
    const auto same = [](const OutputDevice& a, const OutputDevice& b) { return a.id == b.id; };
    if (std::equal(devices.begin(), devices.end(), m_devices.begin(), m_devices.end(), same))
        return;
    m_devices = devices;
    Q_EMIT devicesChanged();
}

QString outputDevicePrefix()
{
    return QStringLiteral("device:");
}

GstElement* makeDeviceSink(const QString& id)
{
    GstElement* sink = nullptr;
    const GstMonitor monitor = makeMonitor();
    forEachDevice(monitor.get(), [&](GstDevice* device, const OutputDevice& found) {
        if (found.id == id && !sink)
            sink = gst_device_create_element(device, nullptr);
    });
    return sink;
}

} // namespace player
