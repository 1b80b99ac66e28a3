#include "emulatorclient.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTcpSocket>

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

class Hostile : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_client.settings.hostilePorts = true;
        ASSERT_EQ(m_client.start().toStdString(), "");
        QFile file(m_client.emulator().caFile());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        m_trust.setCaCertificates(QSslCertificate::fromDevice(&file, QSsl::Pem));
    }

    QString host(const char* name) const { return text(name) + text(".music.localhost"); }

    quint16 port(const char* name)
    {
        const auto ports = m_client.emulator().hostilePorts();
        const auto found = ports.find(host(name));
        return found == ports.end() ? quint16(0) : found->second;
    }

    // What a careful client thinks of the port; empty when it would go on.
    QList<QSslError::SslError> objections(const char* name)
    {
        QSslSocket socket;
        socket.setSslConfiguration(m_trust);
        QList<QSslError::SslError> found;
        QObject::connect(&socket, qOverload<const QList<QSslError>&>(&QSslSocket::sslErrors),
            [&found](const QList<QSslError>& errors) {
                for (const QSslError& error : errors)
                    found += error.error();
            });
        socket.connectToHostEncrypted(text("127.0.0.1"), port(name), host(name));
        EXPECT_FALSE(socket.waitForEncrypted(3000)) << name;
        return found;
    }

    QSslConfiguration m_trust = QSslConfiguration::defaultConfiguration();
    EmulatorClient m_client;
};

} // namespace

TEST_F(Hostile, CertificatesAreWrongInTheirOwnWayOnly)
{
    EXPECT_EQ(objections("expired"), QList<QSslError::SslError>{ QSslError::CertificateExpired });
    EXPECT_EQ(objections("wrong-host"), QList<QSslError::SslError>{ QSslError::HostNameMismatch });
    EXPECT_FALSE(objections("unknown-ca").contains(QSslError::HostNameMismatch));
    EXPECT_FALSE(objections("unknown-ca").isEmpty());
}

TEST_F(Hostile, OldTlsIsSpokenButByNoCarefulClient)
{
    objections("old-tls");
    QSslConfiguration careless = m_trust;
    careless.setProtocol(QSsl::TlsV1_1);
    careless.setBackendConfigurationOption("CipherString", QByteArray("ALL:@SECLEVEL=0"));
    QSslSocket socket;
    socket.setSslConfiguration(careless);
    socket.connectToHostEncrypted(text("127.0.0.1"), port("old-tls"), host("old-tls"));
    EXPECT_TRUE(socket.waitForEncrypted(3000)) << socket.errorString().toStdString();
    EXPECT_EQ(socket.sessionProtocol(), QSsl::TlsV1_1);
}

TEST_F(Hostile, PlainPortSpeaksHttp)
{
    const Reply reply = m_client.get(QStringLiteral("http://127.0.0.1:%1/").arg(port("plain")));
    EXPECT_EQ(reply.status, 200);
    objections("plain");
}

TEST_F(Hostile, StallTakesConnectionsAndSaysNothing)
{
    QTcpSocket socket;
    socket.connectToHost(text("127.0.0.1"), port("stall"));
    ASSERT_TRUE(socket.waitForConnected(3000));
    socket.write("hello");
    EXPECT_FALSE(socket.waitForReadyRead(200));
    EXPECT_EQ(socket.state(), QAbstractSocket::ConnectedState);
}

TEST_F(Hostile, RefusedPortRefuses)
{
    QTcpSocket socket;
    socket.connectToHost(text("127.0.0.1"), port("refused"));
    EXPECT_FALSE(socket.waitForConnected(3000));
    EXPECT_EQ(socket.error(), QAbstractSocket::ConnectionRefusedError);
}

TEST_F(Hostile, BlackHoleNeverAnswers)
{
    QTcpSocket socket;
    socket.connectToHost(text("127.0.0.1"), port("black-hole"));
    EXPECT_FALSE(socket.waitForConnected(300));
    EXPECT_EQ(socket.error(), QAbstractSocket::SocketTimeoutError);
}

TEST_F(Hostile, AreToldWhenTheEmulatorIsReadyAndOnlyThen)
{
    QVariantHash told;
    m_client.run([&] { told = m_client.emulator().description(); });
    EXPECT_EQ(told.value(text("hostilePorts")).toHash().size(), 8);
    m_client.settings.hostilePorts = false;
    ASSERT_EQ(m_client.restart().toStdString(), "");
    EXPECT_TRUE(m_client.emulator().hostilePorts().empty());
}
