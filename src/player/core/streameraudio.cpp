#include "streameraudio.h"

#include "gststreamer.h"

namespace player {

namespace {

QVariantHash output(const QString& id, const QString& name, const QString& selected)
{
    return { { QStringLiteral("id"), id }, { QStringLiteral("name"), name },
        { QStringLiteral("selected"), id == selected } };
}

/// What is not known is not there.
void insertKnown(QVariantHash& hash, const QString& key, const QString& text)
{
    if (!text.isEmpty())
        hash.insert(key, text);
}

void insertKnown(QVariantHash& hash, const QString& key, int number)
{
    if (number > 0)
        hash.insert(key, number);
}

QVariantHash outputPath(const SoundPath& path, const QString& name)
{
    QVariantHash output{ { QStringLiteral("name"), name } };
    insertKnown(output, QStringLiteral("sink"), path.outputElement);
    insertKnown(output, QStringLiteral("sampleRate"), path.output.sampleRate);
    insertKnown(output, QStringLiteral("channels"), path.output.channels);
    insertKnown(output, QStringLiteral("bitDepth"), path.output.bitDepth);
    return output;
}

QVariantHash sourcePath(const SoundPath& path)
{
    QVariantHash source{ { QStringLiteral("encrypted"), path.encrypted },
        { QStringLiteral("renewed"), path.renewed } };
    insertKnown(source, QStringLiteral("container"), path.format.container);
    return source;
}

QVariantHash described(const SoundPath& path, const QString& outputName)
{
    const SoundFormat& format = path.format;
    QVariantHash described{ { QStringLiteral("source"), sourcePath(path) },
        { QStringLiteral("output"), outputPath(path, outputName) } };
    if (format.codec.isEmpty())
        return described;
    described.insert(QStringLiteral("codec"), format.codec);
    described.insert(QStringLiteral("lossless"), format.lossless);
    insertKnown(described, QStringLiteral("sampleRate"), format.sampleRate);
    insertKnown(described, QStringLiteral("channels"), format.channels);
    insertKnown(described, QStringLiteral("bitDepth"), format.bitDepth);
    insertKnown(described, QStringLiteral("bitRate"), format.bitRate);
    insertKnown(described, QStringLiteral("decoder"), format.decoder);
    return described;
}

QString systemDefault()
{
    return QStringLiteral("System default");
}

/// What outputs() calls it, without looking for the devices.
QString outputName(const QString& id)
{
    if (id == QLatin1String("auto"))
        return systemDefault();
    return id.startsWith(outputDevicePrefix()) ? id.mid(outputDevicePrefix().size()) : id;
}

} // namespace

StreamerAudio::StreamerAudio(GstStreamer* streamer, QObject* parent)
    : AudioControl(parent)
    , m_streamer(streamer)
{
    connect(streamer, &GstStreamer::soundPathChanged, this, &StreamerAudio::updateSoundPath);
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

void StreamerAudio::setFade(double part)
{
    m_streamer->setFade(part);
}

QVariantList StreamerAudio::outputs() const
{
    const QString selected = selectedOutput();
    QVariantList list{ output(QStringLiteral("auto"), systemDefault(), selected) };
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

void StreamerAudio::updateSoundPath()
{
    const auto path = m_streamer->soundPath();
    const QVariantHash now = path ? described(*path, outputName(selectedOutput())) : QVariantHash();
    if (now == m_soundPath)
        return;
    m_soundPath = now;
    Q_EMIT soundPathChanged();
}

QString StreamerAudio::selectedOutput() const
{
    return m_streamer->output();
}

} // namespace player
