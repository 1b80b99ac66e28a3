#include "streamertest.h"
#include "testcertificate.h"

#include <QFile>

namespace {

class StreamerTls : public StreamerTest
{
protected:
    StreamerTls()
    {
        secure = server.server().listen(QHostAddress::LocalHost, 0,
            http::tlsConfiguration(certificate.certificate, certificate.key));
        QFile file(folder.filePath(QStringLiteral("ca.pem")));
        EXPECT_TRUE(file.open(QFile::WriteOnly));
        file.write(certificate.certificate);
    }

    player::HttpOptions trusting() const
    {
        player::HttpOptions options;
        options.caFile = folder.filePath(QStringLiteral("ca.pem"));
        options.connectTo = { "eu.music.example:443:127.0.0.1:" + QByteArray::number(secure) };
        return options;
    }

    TavuRoles named(const QString& host)
    {
        server.add(QStringLiteral("/a.flac"), flac(song));
        return roles(QStringLiteral("https://%1/a.flac").arg(host), song.durationMs());
    }

    TestCertificate certificate = TestCertificate::make("eu.music.example");
    quint16 secure = 0;
    Sound song = Sound::melody(1000, 1);
};

TEST_F(StreamerTls, playsFromAMappedNameUnderAnAddedAuthority)
{
    makeStreamer(Unsynced, 44100, trusting());
    streamer().play(1, named(QStringLiteral("eu.music.example")), {});
    streamer().setNoNextMedia();
    ASSERT_TRUE(ear().hears(QStringLiteral("ended"), 1));
    EXPECT_TRUE(soundsLike(captured(), song.samples));
    EXPECT_EQ(server.asked().first().headers.value("Host"), "eu.music.example");
}

TEST_F(StreamerTls, refusesAnUnknownAuthority)
{
    player::HttpOptions options = trusting();
    options.caFile.clear();
    makeStreamer(Unsynced, 44100, options);
    streamer().play(1, named(QStringLiteral("eu.music.example")), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("failed"), 1));
    EXPECT_TRUE(ear().error(1).message().startsWith(QLatin1String(
        "Cannot play \"Song https://eu.music.example/a.flac\". The connection to eu.music.example "
        "is not secure: ")));
    EXPECT_TRUE(ear().error(1).message().endsWith(
        QLatin1String(". Please check service.ca-file in the settings.")));
    EXPECT_TRUE(server.asked().isEmpty());
}

TEST_F(StreamerTls, refusesACertificateForAnotherName)
{
    player::HttpOptions options = trusting();
    options.connectTo = { "us.music.example:443:127.0.0.1:" + QByteArray::number(secure) };
    makeStreamer(Unsynced, 44100, options);
    streamer().play(1, named(QStringLiteral("us.music.example")), {});
    ASSERT_TRUE(ear().hears(QStringLiteral("failed"), 1));
    EXPECT_TRUE(server.asked().isEmpty());
}

TEST_F(StreamerTls, refusesARedirectToAnInsecureAddress)
{
    makeStreamer(Unsynced, 44100, trusting());
    const TavuRoles item = named(QStringLiteral("eu.music.example"));
    server.setHandler(
        QStringLiteral("/a.flac"), [this](const http::Request&, const auto& responder) {
            responder.send(
                http::Response::redirect(302, server.url(QStringLiteral("/b.flac")).toLatin1()));
        });
    streamer().play(1, item, {});
    ASSERT_TRUE(ear().hears(QStringLiteral("failed"), 1));
    EXPECT_TRUE(ear().error(1).message().endsWith(QLatin1String(
        "eu.music.example redirects to an insecure address. Please choose something else.")));
    EXPECT_EQ(server.asked().size(), 1);
}

TEST_F(StreamerTls, resolvesNamesUnderLocalhostByItself)
{
    server.add(QStringLiteral("/a.flac"), flac(song));
    streamer().play(1,
        roles(QStringLiteral("http://eu.music.localhost:%1/a.flac").arg(server.port()), 1000), {});
    streamer().setNoNextMedia();
    EXPECT_TRUE(ear().hears(QStringLiteral("ended"), 1));
}

} // namespace
