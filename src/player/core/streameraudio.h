#pragma once

#include "audiocontrol.h"
#include "outputdevices.h"

namespace player {

class GstStreamer;

/// Volume and outputs of the GStreamer streamer. Lives in the streamer's thread.
class StreamerAudio : public AudioControl
{
    Q_OBJECT

public:
    /// `streamer` is not owned and must outlive this object.
    explicit StreamerAudio(GstStreamer* streamer, QObject* parent = nullptr);

    int volume() const override { return m_volume; }
    void setVolume(int volume) override;
    bool muted() const override { return m_muted; }
    void setMuted(bool muted) override;
    void setFade(double part) override;
    QVariantList outputs() const override;
    bool selectOutput(const QString& id) override;
    QString selectedOutput() const override;
    QVariantHash soundPath() const override { return m_soundPath; }

private:
    void updateSoundPath();

    GstStreamer* m_streamer;
    mutable OutputDevices m_devices; // Looks for them when they are first asked for.
    QVariantHash m_soundPath; // As told last.
    int m_volume = 100;
    bool m_muted = false;
};

} // namespace player
