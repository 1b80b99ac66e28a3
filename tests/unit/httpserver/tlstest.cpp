#include "serverfixture.h"

#include "testcertificate.h"

#include <QSslCertificate>
#include <QSslSocket>

using http::Request;
using http::Responder;
using http::Response;

class Tls : public ServerFixture
{
protected:
    Tls()
    {
        add("GET", "/a", [](const Request& request, const Responder& responder) {
            responder.send(Response::text(200, request.secure ? "secure" : "plain"));
        });
        add("GET", "/much", [](const Request&, const Responder& responder) {
            responder.sendBytes(QByteArray(4 * 1024 * 1024, 'a'), {});
        });
    }
    quint16 listen(const QByteArray& name)
    {
        server.setLimits(limits);
        const TestCertificate made = TestCertificate::make(name);
        return server.listen(
            QHostAddress::LocalHost, 0, http::tlsConfiguration(made.certificate, made.key));
    }
};

TEST_F(Tls, ServesRequests)
{
    RawPeer peer = RawPeer::tls(listen("music.test"));
    ASSERT_TRUE(peer.connected());
    EXPECT_EQ(peer.ask("GET", "/a").body, "secure");
    EXPECT_EQ(peer.ask("GET", "/much").body.size(), 4 * 1024 * 1024);
    EXPECT_EQ(peer.ask("GET", "/a", {}, "Connection: close\r\n").body, "secure");
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_EQ(RawPeer(port()).ask("GET", "/a").body, "plain");
}

TEST_F(Tls, ShowsEachListenersCertificate)
{
    for (const char* name : { "one.test", "two.test" }) {
        RawPeer peer = RawPeer::tls(listen(name));
        const auto* socket = qobject_cast<QSslSocket*>(peer.socket());
        EXPECT_EQ(
            socket->peerCertificate().subjectInfo(QSslCertificate::CommonName).value(0).toLatin1(),
            name);
    }
}

TEST_F(Tls, EndsPlainRequests)
{
    RawPeer peer(listen("music.test"));
    peer.request("GET", "/a");
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_FALSE(peer.received().contains("HTTP/1.1"));
    EXPECT_TRUE(waitUntil([&] { return server.connectionCount() == 0; }));
}

TEST_F(Tls, EndsHandshakesThatStall)
{
    limits.headTimeoutMs = 150;
    RawPeer peer(listen("music.test"));
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_TRUE(waitUntil([&] { return server.connectionCount() == 0; }));
}

TEST_F(Tls, AnswersMalformedRequests)
{
    RawPeer peer = RawPeer::tls(listen("music.test"));
    peer.send("GET /a\n");
    EXPECT_EQ(peer.answer().status, 400);
    EXPECT_TRUE(peer.waitForEnd());
}
