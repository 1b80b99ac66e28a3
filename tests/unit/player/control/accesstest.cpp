#include "controlfixture.h"

#include <QHostInfo>

#include <vector>

class Access : public ControlFixture
{
protected:
    int getWith(const QByteArray& fields) { return get("/api/v1/login", fields).status; }
    RawPeer::Answer postWith(const QByteArray& fields)
    {
        player.answerWith(QVariant());
        return RawPeer(port()).ask("POST", "/api/v1/player/next", "{}", fields);
    }
    QByteArray here() { return QByteArray::number(port()); }
};

TEST_F(Access, IsGivenUnderOurOwnNames)
{
    options.hosts = QStringList{ QStringLiteral("Music.Example") };
    const QByteArray machine = QHostInfo::localHostName().toLatin1();
    for (const QByteArray& host : std::vector<QByteArray>{ "localhost", "127.0.0.1", "LOCALHOST",
             "localhost:" + here(), "127.0.0.1:1", "[::1]:80", "[::1]", "music.example",
             "music.example:8080", machine, machine + ".local" })
        EXPECT_EQ(getWith("Host: " + host + "\r\n"), 200) << host.constData();
}

TEST_F(Access, IsRefusedUnderForeignMissingOrSeveralNames)
{
    for (const QByteArray& host :
        std::vector<QByteArray>{ "evil.example", "localhost.evil.example", "evil.example:" + here(),
            "192.0.2.1", "127.0.0.1.nip.io", "", "1", "0x7f.1", "2130706433", "localhost:port",
            "localhost:99999", "[::1", "a@localhost", "localhost ." }) {
        const RawPeer::Answer answer = get("/api/v1/login", "Host: " + host + "\r\n");
        EXPECT_EQ(answer.status, 421) << host.constData();
        EXPECT_EQ(answer.field("Content-Type"), "application/problem+json");
    }
    EXPECT_EQ(getWith("Host: localhost\r\nHost: localhost\r\n"), 421);
    RawPeer none(port());
    none.send("GET /api/v1/login HTTP/1.1\r\n\r\n");
    EXPECT_EQ(none.answer().status, 421);
    RawPeer absolute(port());
    absolute.send("GET http://evil.example/api/v1/login HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_EQ(absolute.answer().status, 421);
}

TEST_F(Access, IsRefusedToAReboundPage)
{
    // The page of another site, whose name now points at our address.
    EXPECT_EQ(get("/", "Host: evil.example\r\n").status, 421);
    EXPECT_EQ(get("/api/v1/state", "Host: evil.example\r\n").status, 421);
    EXPECT_EQ(postWith("Host: evil.example\r\nOrigin: http://evil.example\r\n").status, 421);
    EXPECT_TRUE(player.calls.isEmpty());
}

TEST_F(Access, ToChangesIsRefusedToOtherSites)
{
    for (const QByteArray& origin :
        std::vector<QByteArray>{ "http://evil.example", "null", "", "https://localhost",
            "http://localhost:1", "file://", "http://127.0.0.1:" + here() + ".evil.example" }) {
        const RawPeer::Answer answer =
            postWith("Host: 127.0.0.1:" + here() + "\r\nOrigin: " + origin + "\r\n");
        EXPECT_EQ(answer.status, 403) << origin.constData();
        for (const auto& field : answer.fields)
            EXPECT_FALSE(field.first.startsWith("Access-Control")) << field.first.constData();
    }
    EXPECT_EQ(postWith("Origin: http://127.0.0.1:" + here() + "\r\nOrigin: http://evil.example\r\n")
                  .status,
        403);
    EXPECT_TRUE(player.calls.isEmpty());
}

TEST_F(Access, ToChangesIsGivenToOurOwnPageAndToPrograms)
{
    const QByteArray host = "127.0.0.1:" + here();
    EXPECT_EQ(postWith("Host: " + host + "\r\nOrigin: http://" + host + "\r\n").status, 200);
    EXPECT_EQ(postWith("Host: player.local\r\nOrigin: http://player.local\r\n").status, 421);
    EXPECT_EQ(postWith({}).status, 200);
}

TEST_F(Access, NeverLetsOtherSitesReadAlong)
{
    for (const char* method : { "GET", "OPTIONS" }) {
        const RawPeer::Answer answer = RawPeer(port()).ask(method, "/api/v1/state", {},
            "Origin: http://evil.example\r\nAccess-Control-Request-Method: POST\r\n");
        for (const auto& field : answer.fields)
            EXPECT_FALSE(field.first.startsWith("Access-Control")) << field.first.constData();
    }
}

TEST_F(Access, IsRefusedToWhatOtherSitesEmbed)
{
    for (const char* target : { "/api/v1/state", "/api/v1/rows", "/api/v1/events" }) {
        for (const char* site :
            { "cross-site", "same-site", "Cross-Site", "", "same-origin, none" }) {
            const RawPeer::Answer answer = RawPeer(port()).ask(
                "GET", target, {}, QByteArray("Sec-Fetch-Site: ") + site + "\r\n");
            EXPECT_EQ(answer.status, 403) << target << ' ' << site;
        }
    }
    EXPECT_TRUE(player.calls.isEmpty());
    for (const char* site : { "same-origin", "none" })
        EXPECT_EQ(
            RawPeer(port())
                .ask("GET", "/api/v1/state", {}, QByteArray("Sec-Fetch-Site: ") + site + "\r\n")
                .status,
            200);
    // A link to the page may stand anywhere.
    EXPECT_NE(RawPeer(port()).ask("GET", "/", {}, "Sec-Fetch-Site: cross-site\r\n").status, 403);
}

TEST_F(Access, ToChangesTakesJsonAlone)
{
    for (const char* type : { "text/plain", "application/x-www-form-urlencoded",
             "multipart/form-data; boundary=x", "application/jsonp", "text/json", "" })
        EXPECT_EQ(postWith(QByteArray("Content-Type: ") + type + "\r\n").status, 415) << type;
    RawPeer none(port());
    none.send("POST /api/v1/player/next HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_EQ(none.answer().status, 415);
    EXPECT_TRUE(player.calls.isEmpty());
    EXPECT_EQ(postWith("Content-Type: Application/JSON; charset=utf-8\r\n").status, 200);
}

TEST_F(Access, ToChangesIsNotGivenByGet)
{
    for (const http::Router::Route& route : server().routes()) {
        if (route.method != "POST" || route.pattern == QLatin1String("/api/v1/outputs"))
            continue;
        const RawPeer::Answer answer = get(route.pattern.toLatin1());
        EXPECT_EQ(answer.status, 405) << route.pattern.toLatin1().constData();
        EXPECT_EQ(answer.field("Allow"), "POST");
    }
    EXPECT_TRUE(player.calls.isEmpty());
}

TEST_F(Access, EndsAtUnknownPathsAndMethods)
{
    EXPECT_EQ(get("/api/v1/nothing").status, 404);
    EXPECT_EQ(get("/api/v2/state").status, 404);
    EXPECT_EQ(get("/api").status, 404);
    EXPECT_EQ(post("/api/v1/nothing").status, 404);
    EXPECT_EQ(post("/").status, 405);
    for (const char* method : { "OPTIONS", "TRACE", "PUT", "DELETE", "PATCH" }) {
        EXPECT_EQ(RawPeer(port()).ask(method, "/api/v1/state").status, 405) << method;
        EXPECT_EQ(RawPeer(port()).ask(method, "/").status, 405) << method;
    }
    const int status = RawPeer(port()).ask("CONNECT", "localhost:80").status;
    EXPECT_TRUE(status == 404 || status == 405);
    EXPECT_EQ(object(get("/api/v1/nothing")).value(QStringLiteral("status")).toInt(), 404);
}

/// Clients from elsewhere cannot be had on loopback; so the policy is asked directly.
class RemoteAccess : public ::testing::Test
{
protected:
    RemoteAccess()
    {
        head.method = "GET";
        head.path = QStringLiteral("/api/v1/state");
        head.segments =
            QStringList{ QStringLiteral("api"), QStringLiteral("v1"), QStringLiteral("state") };
        head.authority = "192.0.2.7:6680";
        head.headers.set("Host", head.authority);
        head.localAddress = QHostAddress(QStringLiteral("::ffff:192.0.2.7"));
        head.peer = QHostAddress(QStringLiteral("::ffff:192.0.2.8"));
    }
    int status(const QByteArray& token = "secret")
    {
        const auto refused = control::AccessPolicy({}, token).judge(head);
        return refused ? refused->status : 200;
    }

    http::Request head;
};

TEST_F(RemoteAccess, NeedsTheToken)
{
    EXPECT_EQ(status(), 401);
    head.headers.set("Authorization", "Bearer secret");
    EXPECT_EQ(status(), 200);
    head.headers.set("Authorization", "bearer secret");
    EXPECT_EQ(status(), 200);
    for (const char* wrong :
        { "Bearer secreT", "Bearer secret2", "Bearer ", "Basic secret", "secret" }) {
        head.headers.set("Authorization", wrong);
        EXPECT_EQ(status(), 401) << wrong;
    }
}

TEST_F(RemoteAccess, IsRefusedWithoutATokenOfOurOwn)
{
    EXPECT_EQ(status({}), 401);
    head.headers.set("Authorization", "Bearer ");
    EXPECT_EQ(status({}), 401);
}

TEST_F(RemoteAccess, TakesTheTokenFromTheAddressOfWhatIsRead)
{
    head.query = { { QStringLiteral("token"), QStringLiteral("secret") } };
    EXPECT_EQ(status(), 200);
    head.method = "POST";
    head.headers.set("Content-Type", "application/json");
    EXPECT_EQ(status(), 401);
}

TEST_F(RemoteAccess, IsGivenToThePageItself)
{
    head.segments = QStringList{ QStringLiteral("index.html") };
    EXPECT_EQ(status(), 200);
}

TEST_F(RemoteAccess, SaysHowToAsk)
{
    const auto refused = control::AccessPolicy({}, "secret").judge(head);
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->headers.value("WWW-Authenticate"), "Bearer");
    EXPECT_FALSE(refused->body.contains("secret"));
}

TEST_F(RemoteAccess, IsRefusedUnderAnotherAddress)
{
    head.authority = "192.0.2.9:6680";
    head.headers.set("Host", head.authority);
    head.headers.set("Authorization", "Bearer secret");
    EXPECT_EQ(status(), 421);
}

TEST_F(RemoteAccess, NeedsNoTokenOnTheSameMachine)
{
    for (const char* peer : { "127.0.0.1", "::1", "::ffff:127.0.0.1", "127.1.2.3" }) {
        head.peer = QHostAddress(QString::fromLatin1(peer));
        EXPECT_EQ(status(), 200) << peer;
    }
}
