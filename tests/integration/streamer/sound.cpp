#include "sound.h"

#include "gstruntime.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtMath>

#include <gst/gst.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace {

QString rawCaps(int rate)
{
    return QStringLiteral("audio/x-raw,format=S16LE,channels=2,rate=%1,layout=interleaved")
        .arg(rate);
}

void run(const QString& description)
{
    player::initGStreamer();
    GError* error = nullptr;
    GstElement* pipeline = gst_parse_launch(description.toUtf8().constData(), &error);
    ASSERT_FALSE(error) << error->message;
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    GstBus* bus = gst_element_get_bus(pipeline);
    GstMessage* message = gst_bus_timed_pop_filtered(
        bus, 60 * GST_SECOND, GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    EXPECT_TRUE(message && GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS)
        << description.toStdString();
    if (message)
        gst_message_unref(message);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(bus);
    gst_object_unref(pipeline);
}

QByteArray transform(const QByteArray& input, const QString& description)
{
    const QTemporaryDir folder;
    QFile in(folder.filePath(QStringLiteral("in")));
    EXPECT_TRUE(in.open(QFile::WriteOnly));
    in.write(input);
    in.close();
    QFile out(folder.filePath(QStringLiteral("out")));
    run(QStringLiteral("filesrc location=%1 ! %2 ! filesink location=%3")
            .arg(in.fileName(), description, out.fileName()));
    EXPECT_TRUE(out.open(QFile::ReadOnly));
    return out.readAll();
}

} // namespace

Sound Sound::melody(int durationMs, int seed, int rate)
{
    Sound sound;
    sound.rate = rate;
    const int count = static_cast<int>(qint64{ durationMs } * rate / 1000);
    sound.samples.resize(count * frameSize);
    std::minstd_rand random(static_cast<unsigned>(seed));
    for (int frame = 0; frame < count; ++frame) {
        const int beat = frame / (rate / 4);
        const double pitch = 220.0 * qPow(2.0, ((beat * 7 + seed) % 12) / 12.0);
        const double tone = 8000.0 * qSin(2 * M_PI * pitch * frame / rate);
        const auto noise = static_cast<double>(random() % 801) - 400.0;
        const qint16 both[2] = { qint16(tone + noise), qint16(tone - noise) };
        std::memcpy(sound.samples.data() + frame * frameSize, both, sizeof both);
    }
    return sound;
}

QByteArray encode(const Sound& sound, const QString& encoder)
{
    return transform(sound.samples,
        QStringLiteral("rawaudioparse format=pcm pcm-format=s16le num-channels=2 sample-rate=%1 ! "
                       "audioconvert ! %2")
            .arg(sound.rate)
            .arg(encoder));
}

QByteArray decode(const QByteArray& file, int rate)
{
    return transform(
        file, QStringLiteral("decodebin ! audioconvert ! audioresample ! %1").arg(rawCaps(rate)));
}

QByteArray flac(const Sound& sound)
{
    return encode(sound, QStringLiteral("flacenc"));
}

QByteArray mp3(const Sound& sound)
{
    return encode(
        sound, QStringLiteral("lamemp3enc target=bitrate cbr=true bitrate=192 ! xingmux"));
}

QByteArray opus(const Sound& sound)
{
    return encode(sound, QStringLiteral("opusenc ! oggmux"));
}

QByteArray m4a(const Sound& sound)
{
    return encode(sound, QStringLiteral("avenc_aac ! mp4mux faststart=true"));
}
