#pragma once

#include <QObject>
#include <QVariant>

/// The sound's way: volume, outputs, and what is known of it. What the player steers of its
/// streamer besides playing. Lives in the main thread.
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
    /// The part of the volume that sounds, 1.0 to 0.0; the volume itself stays what it is.
    virtual void setFade(double part) = 0;
    /// Hashes of "id", "name", "selected".
    virtual QVariantList outputs() const = 0;
    /// False, and nothing changed, when the output is not there.
    virtual bool selectOutput(const QString& id) = 0;
    virtual QString selectedOutput() const = 0;
    /// The way that the sound of the present item takes, as far as it is known; empty while none
    /// sounds. "codec" (such as "FLAC"), "lossless", "sampleRate" (Hz), "channels", "bitDepth" (of
    /// lossless sound), "bitRate" (bit/s, of other sound), "decoder" (its name), "source"
    /// {"container" (such as "Ogg"), "encrypted" (it was fetched with keys of its own), "renewed"
    /// (from an address that replaced an expired one)}, "output" {"name", "sink", "sampleRate",
    /// "channels", "bitDepth"}. What is not known is not there.
    virtual QVariantHash soundPath() const = 0;

Q_SIGNALS:
    void volumeChanged();
    void outputsChanged();
    void soundPathChanged();
};
