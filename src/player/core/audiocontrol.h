#pragma once

#include <QObject>
#include <QVariant>

/// The sound's way out: volume and outputs. What the player steers of its streamer besides playing.
/// Lives in the main thread.
class AudioControl : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// 0 to 100.
    virtual int volume() const = 0;
    virtual void setVolume(int volume) = 0;
    virtual bool muted() const = 0;
    virtual void setMuted(bool muted) = 0;
    /// Hashes of "id", "name", "selected".
    virtual QVariantList outputs() const = 0;
    /// False, and nothing changed, when the output is not there.
    virtual bool selectOutput(const QString& id) = 0;
    virtual QString selectedOutput() const = 0;

Q_SIGNALS:
    void volumeChanged();
    void outputsChanged();
};
