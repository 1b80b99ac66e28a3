#pragma once

#include <QByteArray>
#include <QString>

/// Sound as the tests use it: 16 bit, stereo, interleaved.
struct Sound
{
    QByteArray samples;
    int rate = 44100;

    static constexpr int frameSize = 4;

    int frames() const { return samples.size() / frameSize; }
    qint64 durationMs() const { return qint64{ frames() } * 1000 / rate; }
    /// From a frame on.
    QByteArray from(int frame) const { return samples.mid(frame * frameSize); }

    /// A melody over a noise that never repeats, so that any two places differ. Equal seeds give
    /// equal sounds.
    static Sound melody(int durationMs, int seed, int rate = 44100);
};

/// Encodes with a GStreamer description such as "flacenc". The file's bytes.
QByteArray encode(const Sound& sound, const QString& encoder);
/// What plain GStreamer makes of an encoded file, start to end.
QByteArray decode(const QByteArray& file, int rate = 44100);

QByteArray flac(const Sound& sound);
QByteArray mp3(const Sound& sound);
QByteArray opus(const Sound& sound);
QByteArray m4a(const Sound& sound);
