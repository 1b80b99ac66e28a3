#include "lag.h"
#include "output.h"
#include "outputdevices.h"
#include "streamertest.h"
#include "watchdog.h"

#include <QFile>

#include <gst/gst.h>

namespace {

class StreamerOutput : public StreamerTest
{
protected:
    void useOutput(const QString& setting)
    {
        m_streamer = std::make_unique<player::GstStreamer>(player::StreamerOptions{ {}, setting });
        m_ear = std::make_unique<StreamerEar>(m_streamer.get());
    }

    QString otherSink(const QString& name) const
    {
        return sinkDescription(Synced).replace(
            QLatin1String("/heard "), QLatin1Char('/') + name + QLatin1Char(' '));
    }

    QByteArray heardIn(const QString& name) const
    {
        QFile file(folder.filePath(name));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<player::GstStreamer> m_streamer;
    std::unique_ptr<StreamerEar> m_ear;
    Sound song = Sound::melody(2000, 1);
};

bool hasSoundDevice()
{
    gst_init(nullptr, nullptr);
    player::StreamFailure failure;
    GstElement* sink = player::makeOutput(QStringLiteral("auto"), failure);
    if (!sink)
        return false;
    gst_element_set_state(sink, GST_STATE_NULL);
    gst_object_unref(gst_object_ref_sink(sink));
    return true;
}

// Whichever this machine has: never a silent playback into nothing.
TEST_F(StreamerOutput, playsOnADeviceOrSaysThatThereIsNone)
{
    useOutput(QStringLiteral("auto"));
    m_streamer->play(1, flacRoles(QStringLiteral("a"), song), {});
    if (hasSoundDevice()) {
        EXPECT_TRUE(m_ear->hears(QStringLiteral("started"), 1));
        return;
    }
    ASSERT_TRUE(m_ear->hears(QStringLiteral("failed"), 1));
    EXPECT_EQ(m_ear->error(1).message(),
        QStringLiteral("There is no sound device. Please connect one or set another output."));
    EXPECT_EQ(m_ear->error(1).name(), player::outputErrorName());
    EXPECT_EQ(m_ear->count(QStringLiteral("started"), 1), 0);
}

TEST_F(StreamerOutput, namesAnOutputThatDoesNotExist)
{
    useOutput(QStringLiteral("nosuchsink"));
    m_streamer->play(1, flacRoles(QStringLiteral("a"), song), {});
    ASSERT_TRUE(m_ear->hears(QStringLiteral("failed"), 1));
    EXPECT_EQ(m_ear->error(1).message(),
        QStringLiteral("The sound output failed: there is no output \"nosuchsink\". Please check "
                       "it or set another output."));
}

TEST_F(StreamerOutput, tellsWhatIsWrongWithADescription)
{
    useOutput(QStringLiteral("audioconvert ! nosuchsink"));
    m_streamer->play(1, flacRoles(QStringLiteral("a"), song), {});
    ASSERT_TRUE(m_ear->hears(QStringLiteral("failed"), 1));
    EXPECT_TRUE(m_ear->error(1).message().contains(QLatin1String("nosuchsink")))
        << m_ear->error(1).message().toStdString();
}

TEST_F(StreamerOutput, tellsWhyAnOutputCannotBeOpened)
{
    useOutput(QStringLiteral("audioconvert ! filesink location=/no/such/folder/file"));
    m_streamer->play(1, flacRoles(QStringLiteral("a"), song), {});
    ASSERT_TRUE(m_ear->hears(QStringLiteral("failed"), 1));
    EXPECT_TRUE(m_ear->error(1).message().contains(QLatin1String("/no/such/folder/file")))
        << m_ear->error(1).message().toStdString();
    EXPECT_EQ(m_ear->error(1).name(), player::outputErrorName());
}

TEST_F(StreamerOutput, takesASinkByItsName)
{
    useOutput(QStringLiteral("fakesink"));
    m_streamer->play(1, flacRoles(QStringLiteral("a"), song), {});
    m_streamer->setNoNextMedia();
    EXPECT_TRUE(m_ear->hears(QStringLiteral("ended"), 1));
}

TEST_F(StreamerOutput, goesOnElsewhereAtTheSamePlace)
{
    useOutput(sinkDescription(Synced));
    m_streamer->play(1, flacRoles(QStringLiteral("a"), song), {});
    m_streamer->setNextMedia(2, flacRoles(QStringLiteral("b"), Sound::melody(500, 2)), {});
    ASSERT_TRUE(m_ear->hearsPositionFrom(1, 700));
    EXPECT_FALSE(m_streamer->setOutput(otherSink(QStringLiteral("elsewhere"))).isSet());
    EXPECT_EQ(m_streamer->output(), otherSink(QStringLiteral("elsewhere")));
    ASSERT_TRUE(m_ear->hears(QStringLiteral("started"), 2));
    m_streamer->setNoNextMedia();
    ASSERT_TRUE(m_ear->hears(QStringLiteral("ended"), 2));
    const QByteArray whole = song.samples + Sound::melody(500, 2).samples;
    const QByteArray rest = heardIn(QStringLiteral("elsewhere"));
    EXPECT_TRUE(whole.endsWith(rest));
    const int switched = (whole.size() - rest.size()) / 4;
    EXPECT_NEAR(switched, heardIn(QStringLiteral("heard")).size() / 4, 44100 / 4);
    EXPECT_EQ(m_ear->count(QStringLiteral("started"), 1), 1);
}

TEST_F(StreamerOutput, staysWhereItIsWhenTheOtherOutputCannotBeHad)
{
    useOutput(sinkDescription(Synced));
    m_streamer->play(1, flacRoles(QStringLiteral("a"), song), {});
    ASSERT_TRUE(m_ear->hearsState(1, playing));
    EXPECT_TRUE(m_streamer->setOutput(QStringLiteral("nosuchsink")).isSet());
    EXPECT_EQ(m_streamer->output(), sinkDescription(Synced));
    m_streamer->setNoNextMedia();
    ASSERT_TRUE(m_ear->hears(QStringLiteral("ended"), 1));
    EXPECT_TRUE(soundsLike(heardIn(QStringLiteral("heard")), song.samples));
}

// As a device does that is pulled out.
TEST_F(StreamerOutput, pausesWhenTheOutputIsLostAndTriesAnewOnResume)
{
    const QString breaking = QStringLiteral("identity name=cable error-after=15 ! ");
    useOutput(breaking + sinkDescription(Synced));
    QStringList lost;
    QObject::connect(m_streamer.get(), &player::GstStreamer::outputLost,
        [&](const CMError& error) { lost.append(error.message()); });
    m_streamer->play(1, flacRoles(QStringLiteral("a"), song), {});
    m_streamer->setNoNextMedia();
    ASSERT_TRUE(m_ear->hearsState(1, paused));
    ASSERT_EQ(lost.size(), 1);
    EXPECT_TRUE(lost.first().startsWith(QLatin1String("The sound output failed: ")));
    EXPECT_EQ(m_ear->count(QStringLiteral("failed"), 1), 0);
    const qint64 where = m_ear->position(1);
    EXPECT_GT(where, 500);
    m_ear->forget();
    const Lag lag;
    m_streamer->resume();
    ASSERT_TRUE(m_ear->hearsState(1, playing));
    EXPECT_GE(m_ear->position(1), where - 100);
    EXPECT_LE(m_ear->position(1), where + 100 + lag.worstMs());
}

double loudness(const QByteArray& sound)
{
    const auto* samples = reinterpret_cast<const qint16*>(sound.constData());
    double sum = 0;
    for (int i = 0; i < sound.size() / 2; ++i)
        sum += std::abs(samples[i]);
    return sum / (sound.size() / 2);
}

TEST_F(StreamerOutput, keepsVolumeAndMuteFromItemToItem)
{
    const double full = loudness(song.samples);
    const TavuRoles a = flacRoles(QStringLiteral("a"), song);
    int before = 0;
    const auto play = [&] {
        streamer().play(1, a, {});
        streamer().setNoNextMedia();
        EXPECT_TRUE(ear().hears(QStringLiteral("ended"), 1));
        ear().forget();
        const QByteArray heard = captured().mid(before);
        before = captured().size();
        EXPECT_EQ(heard.size(), song.samples.size());
        return loudness(heard) / full;
    };
    EXPECT_DOUBLE_EQ(play(), 1.0);
    streamer().setVolume(50);
    EXPECT_NEAR(play(), 0.125, 0.01) << "the ear's scale is cubic";
    EXPECT_NEAR(play(), 0.125, 0.01);
    streamer().setMuted(true);
    EXPECT_EQ(play(), 0.0);
    streamer().setMuted(false);
    streamer().setVolume(0);
    EXPECT_EQ(play(), 0.0);
    streamer().setVolume(1000);
    EXPECT_DOUBLE_EQ(play(), 1.0);
    streamer().setFade(0.5);
    EXPECT_NEAR(play(), 0.125, 0.01) << "a fade leaves the volume what it is";
    streamer().setFade(1.0);
    EXPECT_DOUBLE_EQ(play(), 1.0);
}

TEST_F(StreamerOutput, doesNotWaitForTheDevicesThatItLooksFor)
{
    // On a machine that has some.
    player::OutputDevices devices;
    EXPECT_TRUE(devices.devices().isEmpty()) << "nothing is known yet";
}

TEST_F(StreamerOutput, refusesADeviceThatIsNotThere)
{
    const CMError error = streamer().setOutput(QStringLiteral("device:Gramophone"));
    EXPECT_EQ(error.message(),
        QStringLiteral("The sound output failed: there is no output \"device:Gramophone\". Please "
                       "check it or set another output."));
}

} // namespace
