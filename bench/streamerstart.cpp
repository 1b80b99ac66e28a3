// How long does it take from a play command to the first sample at the output, beside the same
// track in bare GStreamer with its own HTTP source? Both write their samples into a pipe.

#include "gstruntime.h"
#include "gststreamer.h"
#include "loopbackanswerer.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <gst/gst.h>
#include <poll.h>
#include <unistd.h>

#include <array>

namespace {

/// Where the samples go; tells whether some have come.
class Ear
{
public:
    Ear()
    {
        if (::pipe2(m_ends.data(), O_NONBLOCK | O_CLOEXEC) != 0)
            qFatal("no pipe");
    }
    ~Ear()
    {
        ::close(m_ends[0]);
        ::close(m_ends[1]);
    }
    Q_DISABLE_COPY_MOVE(Ear)

    QString sink() const
    {
        return QStringLiteral("audioconvert ! audio/x-raw,format=S16LE ! fdsink sync=false fd=%1")
            .arg(m_ends[1]);
    }

    bool hears(int waitMs) const
    {
        pollfd read{ m_ends[0], POLLIN, 0 };
        return ::poll(&read, 1, waitMs) > 0;
    }

    void forget() const
    {
        std::array<char, 65536> buffer{};
        while (::read(m_ends[0], buffer.data(), buffer.size()) > 0) { }
    }

private:
    std::array<int, 2> m_ends{ -1, -1 };
};

class Streamer
{
public:
    Streamer(const Ear& ear, const QByteArray& url)
        : m_ear(ear)
        , m_streamer({ {}, ear.sink() })
    {
        TavuResource resource;
        resource.setUri(QString::fromLatin1(url));
        resource.setDuration(3000);
        TavuMediaData media;
        media.setResources(QVariantList{ resource.__variant() });
        m_roles.setMediaData(media);
    }

    bool play()
    {
        QElapsedTimer watchdog;
        watchdog.start();
        m_streamer.play(++m_id, m_roles, {});
        while (!m_ear.hears(0) && watchdog.elapsed() < 5000)
            QCoreApplication::processEvents(QEventLoop::AllEvents);
        return m_ear.hears(0);
    }

    void stop()
    {
        m_streamer.stop();
        QCoreApplication::processEvents();
    }

private:
    const Ear& m_ear;
    player::GstStreamer m_streamer;
    TavuRoles m_roles;
    quint64 m_id = 0;
};

class BareGStreamer
{
public:
    BareGStreamer(const Ear& ear, const QByteArray& url)
        : m_ear(ear)
        , m_description("uridecodebin3 uri=" + url
              + " ! queue ! audioconvert ! audioresample ! volume ! " + ear.sink().toLatin1())
    {
    }

    bool play()
    {
        m_pipeline = gst_parse_launch(m_description.constData(), nullptr);
        gst_element_set_state(m_pipeline, GST_STATE_PLAYING);
        return m_ear.hears(5000);
    }

    void stop()
    {
        gst_element_set_state(m_pipeline, GST_STATE_NULL);
        gst_object_unref(m_pipeline);
    }

private:
    const Ear& m_ear;
    const QByteArray m_description;
    GstElement* m_pipeline = nullptr;
};

QByteArray encoded(const QByteArray& encoder)
{
    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("track"));
    const QByteArray description = "audiotestsrc wave=pink-noise num-buffers=141 ! "
                                   "audio/x-raw,rate=48000,channels=2,format=S16LE ! "
        + encoder + " ! filesink location=" + name.toUtf8();
    GstElement* pipeline = gst_parse_launch(description.constData(), nullptr);
    GstBus* bus = gst_element_get_bus(pipeline);
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    gst_message_unref(gst_bus_timed_pop_filtered(
        bus, GST_CLOCK_TIME_NONE, GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(bus);
    gst_object_unref(pipeline);
    QFile file(name);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

struct Flac
{
    static constexpr const char* encoder = "flacenc";
};

struct Mp3
{
    static constexpr const char* encoder = "lamemp3enc ! xingmux";
};

template <class Format>
QByteArray url()
{
    static const LoopbackAnswerer answerer(encoded(Format::encoder), "application/octet-stream");
    return answerer.url();
}

template <class Player, class Format>
void play(benchmark::State& state)
{
    player::initGStreamer();
    const Ear ear;
    Player player(ear, url<Format>());
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        if (!player.play())
            state.SkipWithError("nothing is heard");
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) / 1e9);
        player.stop();
        ear.forget();
    }
}

BENCHMARK_TEMPLATE(play, Streamer, Flac)->UseManualTime();
BENCHMARK_TEMPLATE(play, BareGStreamer, Flac)->UseManualTime();
BENCHMARK_TEMPLATE(play, Streamer, Mp3)->UseManualTime();
BENCHMARK_TEMPLATE(play, BareGStreamer, Mp3)->UseManualTime();

} // namespace
