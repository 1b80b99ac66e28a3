#include "streamertest.h"

#include <QFile>

#include <log4cplus/consoleappender.h>
#include <log4cplus/logger.h>

#include <algorithm>

StreamerTest::StreamerTest()
{
    static const bool configured = [] {
        log4cplus::Logger::getRoot().addAppender(
            log4cplus::SharedAppenderPtr(new log4cplus::ConsoleAppender(true, true)));
        const bool verbose = qEnvironmentVariableIsSet("TAVU_TEST_VERBOSE");
        log4cplus::Logger::getRoot().setLogLevel(
            verbose ? log4cplus::ALL_LOG_LEVEL : log4cplus::OFF_LOG_LEVEL);
        return true;
    }();
    Q_UNUSED(configured)
}

QString StreamerTest::sinkDescription(Clock clock, int rate) const
{
    return QStringLiteral("audioconvert ! audioresample ! audio/x-raw,format=S16LE,rate=%1,"
                          "channels=2,layout=interleaved ! filesink location=%2 append=true "
                          "buffer-mode=unbuffered sync=%3")
        .arg(rate)
        .arg(folder.filePath(QStringLiteral("heard")),
            clock == Synced ? QStringLiteral("true") : QStringLiteral("false"));
}

void StreamerTest::makeStreamer(Clock clock, int rate, const player::HttpOptions& options)
{
    m_streamer = std::make_unique<player::GstStreamer>(
        player::StreamerOptions{ options, sinkDescription(clock, rate) });
    m_ear = std::make_unique<StreamerEar>(m_streamer.get());
}

player::GstStreamer& StreamerTest::streamer()
{
    if (!m_streamer)
        makeStreamer(Unsynced);
    return *m_streamer;
}

StreamerEar& StreamerTest::ear()
{
    streamer();
    return *m_ear;
}

TavuRoles StreamerTest::roles(const QString& path, qint64 durationMs) const
{
    TavuResource resource;
    resource.setUri(path.contains(QLatin1String("://")) ? path : server.url(path));
    resource.setDuration(durationMs);
    TavuMediaData media;
    TavuList<TavuResource> resources;
    resources.append(resource.__variant());
    media.setResources(resources);
    TavuRoles result;
    result.setTitle(QStringLiteral("Song ") + path);
    result.setMediaData(media);
    return result;
}

TavuRoles StreamerTest::withKeys(const TavuRoles& roles, const QStringList& headers)
{
    TavuRoles result = roles;
    TavuMediaData media = roles.mediaData();
    TavuResource resource = media.firstResource();
    const QVariantHash crypto{ { QStringLiteral("token"), QStringLiteral("unused") },
        { QStringLiteral("key-headers"), headers } };
    resource.setCryptoData({ { QStringLiteral("amazonMusic"), crypto } });
    TavuList<TavuResource> resources;
    resources.append(resource.__variant());
    media.setResources(resources);
    result.setMediaData(media);
    return result;
}

TavuRoles StreamerTest::startingAt(const TavuRoles& roles, qint64 positionMs)
{
    TavuRoles result = roles;
    TavuMediaData media = roles.mediaData();
    TavuMetaData meta = media.metaData();
    meta.setStartTime(positionMs);
    media.setMetaData(meta);
    result.setMediaData(media);
    return result;
}

TavuRoles StreamerTest::flacRoles(const QString& name, const Sound& sound)
{
    const QString path = QStringLiteral("/%1.flac").arg(name);
    server.add(path, flac(sound));
    return roles(path, sound.durationMs());
}

QByteArray StreamerTest::captured() const
{
    QFile file(folder.filePath(QStringLiteral("heard")));
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

int firstDifference(const QByteArray& a, const QByteArray& b)
{
    const auto [left, right] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    return left == a.end() && right == b.end() ? -1 : static_cast<int>(left - a.begin());
}

::testing::AssertionResult soundsLike(const QByteArray& heard, const QByteArray& expected)
{
    const int difference = firstDifference(heard, expected);
    if (difference < 0)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
        << "frame " << difference / Sound::frameSize << " differs; " << heard.size() / 4
        << " frames heard, " << expected.size() / 4 << " expected; there "
        << heard.mid(difference / 4 * 4, 16).toHex(' ').toStdString() << " for "
        << expected.mid(difference / 4 * 4, 16).toHex(' ').toStdString();
}
