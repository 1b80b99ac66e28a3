#include "streameraudio.h"

#include "gststreamer.h"

namespace player {

namespace {

QVariantHash output(const QString& id, const QString& name, const QString& selected)
{
    return { { QStringLiteral("id"), id }, { QStringLiteral("name"), name },
        { QStringLiteral("selected"), id == selected } };
}

} // namespace

StreamerAudio::StreamerAudio(GstStreamer* streamer, QObject* parent)
    : AudioControl(parent)
    , m_streamer(streamer)
{
    connect(&m_devices, &OutputDevices::devicesChanged, this, &AudioControl::outputsChanged);
}

void StreamerAudio::setVolume(int volume)
{
    if (volume == m_volume)
        return;
    m_volume = volume;
    m_streamer->setVolume(volume);
    Q_EMIT volumeChanged();
}

void StreamerAudio::setMuted(bool muted)
{
    if (muted == m_muted)
        return;
    m_muted = muted;
    m_streamer->setMuted(muted);
    Q_EMIT volumeChanged();
}

QVariantList StreamerAudio::outputs() const
{
    const QString selected = selectedOutput();
    QVariantList list{ output(QStringLiteral("auto"), QStringLiteral("System default"), selected) };
    bool found = selected == QLatin1String("auto");
    for (const OutputDevice& device : m_devices.devices()) {
        list.append(output(device.id, device.name, selected));
        found = found || device.id == selected;
    }
    // What the settings file names: an element, or a description.
    if (!found)
        list.append(output(selected, selected, selected));
    return list;
}

bool StreamerAudio::selectOutput(const QString& id)
{
    bool known = false;
    for (const QVariant& candidate : outputs())
        known = known || candidate.toHash().value(QStringLiteral("id")) == id;
    // A description could name any element; it comes from the settings file alone.
    if (!known || m_streamer->setOutput(id).isSet())
        return false;
    Q_EMIT outputsChanged();
    return true;
}

QString StreamerAudio::selectedOutput() const
{
    return m_streamer->output();
}

} // namespace player
