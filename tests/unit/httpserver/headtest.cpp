#include "serverfixture.h"

using http::Request;
using http::Responder;
using http::Response;

namespace {

struct Malformed
{
    const char* name;
    QByteArray bytes;
    int status;
};

void PrintTo(const Malformed& malformed, std::ostream* out)
{
    *out << malformed.name;
}

class MalformedRequest : public ServerFixture, public ::testing::WithParamInterface<Malformed>
{
};

QByteArray post(const QByteArray& fields, const QByteArray& body)
{
    return "POST /a HTTP/1.1\r\nHost: x\r\n" + fields + "\r\n" + body;
}

QByteArray get(const QByteArray& target)
{
    return "GET " + target + " HTTP/1.1\r\nHost: x\r\n\r\n";
}

template <std::size_t size>
QByteArray withNul(const char (&text)[size])
{
    return QByteArray(text, int(size) - 1);
}

const Malformed table[] = {
    { "ContentLengthAndTransferEncoding",
        post("Content-Length: 5\r\nTransfer-Encoding: chunked\r\n", "0\r\n\r\n"), 400 },
    { "TransferEncodingAndContentLength",
        post("Transfer-Encoding: chunked\r\nContent-Length: 5\r\n", "0\r\n\r\n"), 400 },
    { "TransferEncodingTwice",
        post("Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n", "0\r\n\r\n"), 400 },
    { "TransferEncodingList", post("Transfer-Encoding: gzip, chunked\r\n", "0\r\n\r\n"), 400 },
    { "TransferEncodingUnknown", post("Transfer-Encoding: xchunked\r\n", "0\r\n\r\n"), 400 },
    { "TransferEncodingInOldVersion",
        "POST /a HTTP/1.0\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", 400 },
    { "ContentLengthTwice", post("Content-Length: 2\r\nContent-Length: 2\r\n", "ab"), 400 },
    { "ContentLengthList", post("Content-Length: 2, 2\r\n", "ab"), 400 },
    { "ContentLengthNegative", post("Content-Length: -2\r\n", "ab"), 400 },
    { "ContentLengthSigned", post("Content-Length: +2\r\n", "ab"), 400 },
    { "ContentLengthHex", post("Content-Length: 0x2\r\n", "ab"), 400 },
    { "ContentLengthEmpty", post("Content-Length: \r\n", "ab"), 400 },
    { "ContentLengthOverflow", post("Content-Length: 99999999999999999999999\r\n", "ab"), 400 },
    { "BareLineFeeds", "GET /a HTTP/1.1\nHost: x\n\n", 400 },
    { "BareLineFeedInField", "GET /a HTTP/1.1\r\nHost: x\nB: c\r\n\r\n", 400 },
    { "BareCarriageReturn", "GET /a HTTP/1.1\r\nHost: x\rB: c\r\n\r\n", 400 },
    { "FoldedField", "GET /a HTTP/1.1\r\nHost: x\r\nB: c\r\n d\r\n\r\n", 400 },
    { "FoldedFieldByTab", "GET /a HTTP/1.1\r\nHost: x\r\nB: c\r\n\td\r\n\r\n", 400 },
    { "FirstFieldFolded", "GET /a HTTP/1.1\r\n Host: x\r\n\r\n", 400 },
    { "SpaceBeforeColon", "GET /a HTTP/1.1\r\nHost : x\r\n\r\n", 400 },
    { "FieldWithoutName", "GET /a HTTP/1.1\r\nHost: x\r\n: y\r\n\r\n", 400 },
    { "FieldWithoutColon", "GET /a HTTP/1.1\r\nHost: x\r\nabc\r\n\r\n", 400 },
    { "ControlInField", "GET /a HTTP/1.1\r\nHost: x\r\nB: \x01\r\n\r\n", 400 },
    { "NulInField", withNul("GET /a HTTP/1.1\r\nHost: x\r\nB: \0\r\n\r\n"), 400 },
    { "NulInTarget", withNul("GET /a\0b HTTP/1.1\r\nHost: x\r\n\r\n"), 400 },
    { "EscapedNul", get("/a%00b"), 400 },
    { "BrokenEscape", get("/a%2"), 400 },
    { "WrongEscape", get("/a%zz"), 400 },
    { "BrokenEscapeInQuery", get("/a?b=%f"), 400 },
    { "OverlongUtf8", get("/a%c0%af"), 400 },
    { "Surrogate", get("/a%ed%a0%80"), 400 },
    { "CutUtf8", get("/a%e2%82"), 400 },
    { "Fragment", get("/a#b"), 400 },
    { "TargetWithoutSlash", get("a"), 400 },
    { "TargetMissing", "GET HTTP/1.1\r\nHost: x\r\n\r\n", 400 },
    { "TwoSpaces", "GET  /a HTTP/1.1\r\nHost: x\r\n\r\n", 400 },
    { "TabInRequestLine", "GET\t/a HTTP/1.1\r\nHost: x\r\n\r\n", 400 },
    { "MethodNotAToken", "G@T /a HTTP/1.1\r\nHost: x\r\n\r\n", 400 },
    { "NoVersion", "GET /a\r\nHost: x\r\n\r\n", 400 },
    { "VersionTwo", "GET /a HTTP/2.0\r\nHost: x\r\n\r\n", 505 },
    { "VersionNine", "GET /a HTTP/0.9\r\nHost: x\r\n\r\n", 505 },
    { "VersionGarbled", "GET /a HTTP/1.x\r\nHost: x\r\n\r\n", 400 },
    { "SpaceInTarget", "GET /a b HTTP/1.1\r\nHost: x\r\n\r\n", 400 },
    { "Garbage", "\x16\x03\x01\x02\x05\x01", 400 },
    { "NoHost", "GET /a HTTP/1.1\r\n\r\n", 400 },
    { "TwoHosts", "GET /a HTTP/1.1\r\nHost: x\r\nHost: x\r\n\r\n", 400 },
    { "UnknownExpectation", post("Expect: tea\r\nContent-Length: 2\r\n", "ab"), 417 },
    { "ChunkSizeNoHex", post("Transfer-Encoding: chunked\r\n", "g\r\n"), 400 },
    { "ChunkSizeNegative", post("Transfer-Encoding: chunked\r\n", "-1\r\n"), 400 },
    { "ChunkSizeOverflow", post("Transfer-Encoding: chunked\r\n", "fffffffffffffffffffff\r\n"),
        413 },
    { "ChunkSizeMissing", post("Transfer-Encoding: chunked\r\n", "\r\nabc"), 400 },
    { "ChunkSizeEndsInBareLineFeed", post("Transfer-Encoding: chunked\r\n", "2\nab\r\n0\r\n\r\n"),
        400 },
    { "ChunkSizeSpaced", post("Transfer-Encoding: chunked\r\n", "2 \r\nab\r\n0\r\n\r\n"), 400 },
    { "ChunkExtensionWithControl",
        post("Transfer-Encoding: chunked\r\n", "2;\x01\r\nab\r\n0\r\n\r\n"), 400 },
    { "LastChunkThenBareLineFeed", post("Transfer-Encoding: chunked\r\n", "0\r\n\n"), 400 },
    { "TrailerEndsInBareLineFeed", post("Transfer-Encoding: chunked\r\n", "0\r\nA: b\n\r\n"), 400 },
    { "ChunkWithoutItsEnd", post("Transfer-Encoding: chunked\r\n", "2\r\nabcd\r\n0\r\n\r\n"), 400 },
    { "ChunkSizeLineEndless", post("Transfer-Encoding: chunked\r\n", "1;" + QByteArray(20000, 'a')),
        400 },
    { "TrailersEndless",
        post("Transfer-Encoding: chunked\r\n", "0\r\n" + QByteArray("A: b\r\n").repeated(4000)),
        400 },
};

} // namespace

TEST_P(MalformedRequest, IsRefusedAndTheConnectionEnds)
{
    bool handled = false;
    const auto note = [&](const Request&, const Responder& responder) {
        handled = true;
        responder.send(Response::text(200, "handled"));
    };
    add("GET", "/{rest*}", note);
    add("POST", "/{rest*}", note);
    RawPeer peer(port());
    peer.send(GetParam().bytes);
    const RawPeer::Answer answer = peer.answer();
    EXPECT_EQ(answer.status, GetParam().status);
    EXPECT_TRUE(answer.complete);
    EXPECT_EQ(answer.field("Connection"), "close");
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_FALSE(handled);
}

INSTANTIATE_TEST_SUITE_P(Table, MalformedRequest, ::testing::ValuesIn(table),
    [](const auto& row) { return std::string(row.param.name); });

class Head : public ServerFixture
{
protected:
    Request ask(const QByteArray& bytes)
    {
        Request seen;
        const auto note = [&](const Request& request, const Responder& responder) {
            seen = request;
            responder.send(Response::text(200, "ok"));
        };
        for (const char* method : { "GET", "POST", "OPTIONS", "CONNECT" })
            add(method, "/{rest*}", note);
        RawPeer peer(port());
        peer.send(bytes);
        EXPECT_EQ(peer.answer().status, 200);
        return seen;
    }
};

TEST_F(Head, DecodesPathSegmentsAndQuery)
{
    const Request request = ask(get("/a%2Fb/%C3%BC/?q=a%26b+c&empty=&flag&q=2"));
    EXPECT_EQ(request.target, "/a%2Fb/%C3%BC/?q=a%26b+c&empty=&flag&q=2");
    const QStringList segments{ QStringLiteral("a/b"), QStringLiteral("\u00fc"), QString() };
    EXPECT_EQ(request.segments, segments);
    EXPECT_EQ(request.path, QStringLiteral("/a/b/\u00fc/"));
    EXPECT_EQ(request.queryValue(QStringLiteral("q")), QStringLiteral("a&b+c"));
    EXPECT_TRUE(request.hasQuery(QStringLiteral("empty")));
    EXPECT_TRUE(request.hasQuery(QStringLiteral("flag")));
    EXPECT_FALSE(request.hasQuery(QStringLiteral("other")));
    EXPECT_EQ(request.query.size(), 4);
}

TEST_F(Head, KeepsFieldsInOrderAndComparesNamesWithoutCase)
{
    const Request request = ask("GET / HTTP/1.1\r\nHost: h:1\r\nX-A:  one \r\nx-a: two\r\n\r\n");
    EXPECT_EQ(request.headers.value("X-a"), "one");
    const QList<QByteArray> both{ "one", "two" };
    EXPECT_EQ(request.headers.values("x-A"), both);
    EXPECT_EQ(request.authority, "h:1");
    EXPECT_TRUE(request.segments.isEmpty());
}

TEST_F(Head, TakesTheAuthorityOfAnAbsoluteTarget)
{
    const Request request = ask("GET http://other:80?x=1 HTTP/1.1\r\nHost: h\r\n\r\n");
    EXPECT_EQ(request.authority, "other:80");
    EXPECT_EQ(request.path, QStringLiteral("/"));
    EXPECT_EQ(request.queryValue(QStringLiteral("x")), QStringLiteral("1"));
}

TEST_F(Head, SkipsEmptyLinesBeforeTheRequest)
{
    EXPECT_EQ(ask("\r\n\r\nGET /a HTTP/1.1\r\nHost: x\r\n\r\n").path, QStringLiteral("/a"));
}

TEST_F(Head, KnowsPeerAndListener)
{
    const Request request = ask(get("/"));
    EXPECT_TRUE(request.peer.isLoopback());
    EXPECT_GT(request.peerPort, 0);
    EXPECT_EQ(request.localPort, port());
    EXPECT_FALSE(request.secure);
}

TEST_F(Head, ReadsChunkedBodiesAndIgnoresTrailers)
{
    const Request request = ask(post("Transfer-Encoding: chunked\r\n",
        "3;x=y\r\nabc\r\n10\r\n0123456789abcdef\r\n0\r\nHost: evil\r\nX: y\r\n\r\n"));
    EXPECT_EQ(request.body, "abc0123456789abcdef");
    EXPECT_EQ(request.headers.value("Host"), "x");
    EXPECT_FALSE(request.headers.contains("X"));
}

TEST_F(Head, ReadsABodyThatComesByteByByte)
{
    QByteArray body;
    add("POST", "/slow", [&](const Request& request, const Responder& responder) {
        body = request.body;
        responder.send(Response::text(200, "ok"));
    });
    RawPeer peer(port());
    for (const char byte :
        QByteArray("POST /slow HTTP/1.1\r\nHost: x\r\nContent-Length: 3\r\n\r\nabc")) {
        peer.send(QByteArray(1, byte));
        settle();
    }
    EXPECT_EQ(peer.answer().status, 200);
    EXPECT_EQ(body, "abc");
}

TEST_F(Head, AnswersExpectContinueBeforeTheBody)
{
    add("POST", "/a", [](const Request& request, const Responder& responder) {
        responder.send(Response::text(200, request.body));
    });
    RawPeer peer(port());
    peer.send("POST /a HTTP/1.1\r\nHost: x\r\nContent-Length: 2\r\nExpect: 100-continue\r\n\r\n");
    EXPECT_EQ(peer.answer().status, 100);
    peer.send("ab");
    EXPECT_EQ(peer.answer().body, "ab");
}

TEST_F(Head, DoesNotAskForABodyThatIsThere)
{
    const QByteArray fields = "Content-Length: 2\r\nExpect: 100-continue\r\n";
    EXPECT_EQ(ask(post(fields, "ab")).body, "ab");
}

TEST_F(Head, IsJudgedByTheGuardBeforeTheBodyComes)
{
    server.setGuard([](const Request& head) -> std::optional<Response> {
        EXPECT_TRUE(head.body.isEmpty());
        return Response::text(403, "no " + head.method);
    });
    RawPeer peer(port());
    peer.send("POST /a HTTP/1.1\r\nHost: x\r\nHost: y\r\nContent-Length: 100\r\n\r\n");
    const RawPeer::Answer answer = peer.answer();
    EXPECT_EQ(answer.status, 403);
    EXPECT_EQ(answer.body, "no POST");
    EXPECT_TRUE(peer.waitForEnd());
}
