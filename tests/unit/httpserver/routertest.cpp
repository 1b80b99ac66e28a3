#include "serverfixture.h"

using http::Request;
using http::Responder;
using http::Response;

class Router : public ServerFixture
{
protected:
    void name(const QByteArray& method, const char* pattern, const QByteArray& name)
    {
        add(method, pattern, [name](const Request& request, const Responder& responder) {
            QByteArray body = name;
            for (auto it = request.parameters.begin(); it != request.parameters.end(); ++it)
                body += ' ' + it.key().toUtf8() + '=' + it.value().toUtf8();
            responder.send(Response::text(200, body));
        });
    }
    RawPeer::Answer ask(const QByteArray& method, const QByteArray& target)
    {
        return RawPeer(port()).ask(method, target);
    }
};

TEST_F(Router, PrefersLiteralsToPlaceholdersToTheRest)
{
    name("GET", "/a/{rest*}", "rest");
    name("GET", "/a/{id}", "one");
    name("GET", "/a/b", "literal");
    EXPECT_EQ(ask("GET", "/a/b").body, "literal");
    EXPECT_EQ(ask("GET", "/a/c").body, "one id=c");
    EXPECT_EQ(ask("GET", "/a/c/d").body, "rest rest=c/d");
    EXPECT_EQ(ask("GET", "/a").body, "rest rest=");
    EXPECT_EQ(ask("GET", "/a/").body, "rest rest=");
}

TEST_F(Router, PlaceholderTakesAnEscapedSlash)
{
    name("GET", "/a/{id}", "one");
    EXPECT_EQ(ask("GET", "/a/b%2Fc").body, "one id=b/c");
    EXPECT_EQ(ask("GET", "/a/b/c").status, 404);
    EXPECT_EQ(ask("GET", "/a/").status, 404);
}

TEST_F(Router, RefusesUnknownPathsAndMethods)
{
    name("GET", "/a", "get");
    name("POST", "/a", "post");
    EXPECT_EQ(ask("GET", "/b").status, 404);
    EXPECT_EQ(ask("GET", "/A").status, 404);
    for (const char* method : { "OPTIONS", "TRACE", "PUT", "DELETE", "BREW" }) {
        const RawPeer::Answer answer = ask(method, "/a");
        EXPECT_EQ(answer.status, 405) << method;
        EXPECT_EQ(answer.field("Allow"), "GET, HEAD, POST") << method;
    }
}

TEST_F(Router, RefusesProxyRequestsAndTheAsterisk)
{
    name("GET", "/a", "get");
    EXPECT_EQ(ask("CONNECT", "example.org:443").status, 404);
    EXPECT_EQ(ask("OPTIONS", "*").status, 404);
}

TEST_F(Router, AnswersHeadByGet)
{
    name("GET", "/a", "get");
    const RawPeer::Answer answer = ask("HEAD", "/a");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.field("Content-Length"), "3");
    EXPECT_TRUE(answer.body.isEmpty());
}

TEST_F(Router, LetsTheOwnerWordTheRefusal)
{
    name("GET", "/a", "get");
    router.setRefusal([](const Request& request, int status, const QByteArray& allow) {
        return Response::json(status, "[\"" + request.method + "\",\"" + allow + "\"]");
    });
    const RawPeer::Answer answer = ask("POST", "/a");
    EXPECT_EQ(answer.status, 405);
    EXPECT_EQ(answer.body, "[\"POST\",\"GET, HEAD\"]");
    EXPECT_EQ(answer.field("Allow"), "GET, HEAD");
    EXPECT_EQ(ask("POST", "/b").body, "[\"POST\",\"\"]");
}

TEST_F(Router, ListsItsRoutes)
{
    name("GET", "/a", "get");
    name("POST", "/b/{c}", "post");
    const QVector<http::Router::Route> routes = router.routes();
    ASSERT_EQ(routes.size(), 2);
    EXPECT_EQ(routes[1].method, "POST");
    EXPECT_EQ(routes[1].pattern, QStringLiteral("/b/{c}"));
}
