#include "authority.h"
#include "clientFixture.h"
#include "logcapture.h"

#include <QSslCipher>
#include <QTemporaryFile>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

class HttpClientTls : public ClientFixture
{
protected:
    /// The client trusts the authority.
    void trust(const Authority& trusted)
    {
        ASSERT_TRUE(file.open());
        file.write(trusted.certificate());
        file.flush();
        config.caFile = file.fileName();
    }

    static void answer(const RawServer::Call& call) { call.answer("secret"); }

    /// The server was reached but never saw a request.
    static void expectNothingSent(const RawServer& server)
    {
        EXPECT_GT(server.connections(), 0);
        EXPECT_TRUE(server.calls().isEmpty());
    }

    /// The failure names its cause in the result and in the log.
    void expectRefused(RawServer& server, const QString& cause)
    {
        LogCapture log("HttpClient");
        const Result result = get(server.url("localhost", "/page?token=secret"));
        expectFailure(result, HttpClientStatus::TlsFailed);
        EXPECT_TRUE(result.reason.contains(cause, Qt::CaseInsensitive))
            << result.reason.toStdString();
        EXPECT_EQ(log.countContaining(log4cplus::WARN_LOG_LEVEL, result.reason), 1);
        EXPECT_FALSE(log.mentions(QStringLiteral("secret")));
        expectNothingSent(server);
    }

    Authority authority;
    QTemporaryFile file;
};

/// A listening socket whose queue is full: further connection attempts get no answer at all.
class BlackHole
{
public:
    BlackHole()
    {
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        bind(listener, where(), size);
        getsockname(listener, where(), &size);
        listen(listener, 0);
        for (int& filler : fillers) {
            filler = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
            connect(filler, where(), size);
        }
    }
    ~BlackHole()
    {
        close(listener);
        for (const int filler : fillers)
            close(filler);
    }
    Q_DISABLE_COPY_MOVE(BlackHole)
    TavuUrl url() const
    {
        return TavuUrl::fromEncoded(
            "http://127.0.0.1:" + QByteArray::number(ntohs(address.sin_port)) + '/');
    }

private:
    sockaddr* where() { return reinterpret_cast<sockaddr*>(&address); }

    int listener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    int fillers[4];
};

} // namespace

TEST_F(HttpClientTls, AuthorityOfTheSettingsIsTrusted)
{
    trust(authority);
    RawServer server(authority.server("localhost"), answer);
    EXPECT_EQ(get(server.url("localhost", "/")).data, "secret");
}

TEST_F(HttpClientTls, NamesAreCheckedAgainstTheUrlNotTheAddress)
{
    trust(authority);
    RawServer server(authority.server("music.example.test"), answer);
    config.connectTo.append(
        "music.example.test:443:127.0.0.1:" + QByteArray::number(server.serverPort()));
    EXPECT_EQ(get(TavuUrl::fromEncoded("https://music.example.test/")).data, "secret");
}

TEST_F(HttpClientTls, UnknownAuthorityIsRefused)
{
    RawServer server(authority.server("localhost"), answer);
    expectRefused(server, QStringLiteral("unable to get local issuer certificate"));
}

TEST_F(HttpClientTls, OtherAuthorityIsRefused)
{
    trust(Authority());
    RawServer server(authority.server("localhost"), answer);
    expectRefused(server, QStringLiteral("unable to get local issuer certificate"));
}

TEST_F(HttpClientTls, ExpiredCertificateIsRefused)
{
    trust(authority);
    RawServer server(authority.server("localhost", -1), answer);
    expectRefused(server, QStringLiteral("certificate has expired"));
}

TEST_F(HttpClientTls, CertificateOfAnotherHostIsRefused)
{
    trust(authority);
    RawServer server(authority.server("music.example.test"), answer);
    expectRefused(server, QStringLiteral("no alternative certificate subject name matches"));
}

TEST_F(HttpClientTls, UnreadableAuthorityFileIsNamed)
{
    config.caFile = QStringLiteral("/nowhere/authority.pem");
    RawServer server(authority.server("localhost"), answer);
    const Result result = get(server.url("localhost", "/"));
    expectFailure(result, HttpClientStatus::TlsFailed);
    EXPECT_TRUE(result.reason.contains(config.caFile)) << result.reason.toStdString();
}

TEST_F(HttpClientTls, ServerThatSpeaksTls11OnlyIsRefused)
{
    trust(authority);
    QSslConfiguration old = authority.server("localhost");
    old.setProtocol(QSsl::TlsV1_1);
    old.setBackendConfigurationOption("CipherString", QByteArray("DEFAULT@SECLEVEL=0"));
    RawServer server(old, answer);
    // The server is a working one, for a client that stoops so low.
    QSslSocket stooping;
    QSslConfiguration low = QSslConfiguration::defaultConfiguration();
    low.setProtocol(QSsl::TlsV1_1);
    low.setPeerVerifyMode(QSslSocket::VerifyNone);
    low.setBackendConfigurationOption("CipherString", QByteArray("DEFAULT@SECLEVEL=0"));
    stooping.setSslConfiguration(low);
    stooping.connectToHostEncrypted(QStringLiteral("127.0.0.1"), server.serverPort());
    EXPECT_TRUE(waitUntil([&] { return stooping.isEncrypted(); }))
        << stooping.errorString().toStdString();

    expectFailure(get(server.url("localhost", "/")), HttpClientStatus::TlsFailed);
    expectNothingSent(server);
}

TEST_F(HttpClientTls, PlainHttpOnTheTlsPortFailsWithoutWaitingForMore)
{
    RawServer server([](const RawServer::Call&) {});
    server.setOnConnection([](QTcpSocket* socket) { socket->write("HTTP/1.1 400 Bad\r\n\r\n"); });
    const TavuUrl url =
        TavuUrl::fromEncoded("https://127.0.0.1:" + QByteArray::number(server.serverPort()) + '/');
    expectFailure(get(url), HttpClientStatus::TlsFailed);
}

TEST_F(HttpClientTls, HandshakeThatStallsEndsWithTheConnectLimit)
{
    config.connectTimeoutMs = 200;
    RawServer server([](const RawServer::Call&) {});
    const TavuUrl url =
        TavuUrl::fromEncoded("https://127.0.0.1:" + QByteArray::number(server.serverPort()) + '/');
    expectFailure(get(url), HttpClientStatus::Timeout);
    EXPECT_TRUE(waitUntil([&] { return server.connections() > 0; }));
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(HttpClientTls, ConnectionAttemptWithoutAnswerEndsWithTheConnectLimit)
{
    config.connectTimeoutMs = 200;
    const BlackHole hole;
    expectFailure(get(hole.url()), HttpClientStatus::Timeout);
}

TEST_F(HttpClientTls, ConnectLimitIsFiveSeconds)
{
    EXPECT_EQ(HttpClientConfig().connectTimeoutMs, 5000);
}

TEST_F(HttpClientTls, PostIsSentOnceAlthoughTheKeptConnectionWasClosedMeanwhile)
{
    trust(authority);
    QTcpSocket* last = nullptr;
    RawServer server(authority.server("localhost"), [&last](const RawServer::Call& call) {
        last = call.socket;
        call.answer("heard");
    });
    const TavuUrl url = server.url("localhost", "/report");
    for (int round = 1; round <= 3; ++round) {
        EXPECT_EQ(post(url, "{}").data, "heard");
        last->disconnectFromHost();
        ASSERT_TRUE(waitUntil([&] { return server.ended() == round; }));
    }
    EXPECT_EQ(server.calls().size(), 3);
    EXPECT_EQ(server.connections(), 3);
}

TEST_F(HttpClientTls, KeptConnectionIsUsedAgain)
{
    trust(authority);
    RawServer server(authority.server("localhost"), answer);
    const TavuUrl url = server.url("localhost", "/");
    for (int round = 0; round < 5; ++round)
        EXPECT_EQ(post(url, "{}").data, "secret");
    EXPECT_EQ(server.connections(), 1);
}
