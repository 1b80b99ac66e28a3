#include "httprequestparser.h"

#include <gtest/gtest.h>

#include <random>

using http::Limits;
using http::Request;
using http::RequestParser;

namespace {

/// What came of a run of bytes: each request in short, then how it ended.
QByteArrayList outcome(const QByteArray& bytes, const std::function<int()>& nextPiece)
{
    const Limits limits;
    RequestParser parser(limits);
    QByteArrayList outcome;
    QByteArray waiting;
    for (int position = 0; position < bytes.size();) {
        const QByteArray piece = bytes.mid(position, nextPiece());
        position += piece.size();
        waiting += piece;
        for (;;) {
            int used = 0;
            const RequestParser::State state =
                parser.feed(waiting.constData(), waiting.size(), &used);
            waiting.remove(0, used);
            if (state == RequestParser::State::NeedMore)
                break;
            if (state == RequestParser::State::Refused)
                return outcome += QByteArray::number(parser.status());
            if (state == RequestParser::State::Complete) {
                const Request& request = parser.request();
                outcome += request.method + ' ' + request.target + ' '
                    + QByteArray::number(request.headers.fields().size()) + ' ' + request.body;
                parser.reset();
            }
            if (waiting.isEmpty() && state == RequestParser::State::Complete)
                break;
        }
    }
    return outcome += "end";
}

const QByteArray several = "GET /a?b=c HTTP/1.1\r\nHost: x\r\n\r\n"
                           "POST /b HTTP/1.1\r\nHost: x\r\nContent-Length: 5\r\n\r\nhello"
                           "\r\nPOST /c HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n"
                           "5\r\nhello\r\n6;a=\"b\"\r\n world\r\n0\r\nTrailer: t\r\n\r\n"
                           "HEAD /d HTTP/1.0\r\n\r\n";

} // namespace

TEST(RequestParser, ReadsTheSameHoweverTheBytesArrive)
{
    const QByteArrayList expected{ "GET /a?b=c 1 ", "POST /b 2 hello", "POST /c 2 hello world",
        "HEAD /d 0 ", "end" };
    EXPECT_EQ(outcome(several, [] { return 1 << 20; }), expected);
    EXPECT_EQ(outcome(several, [] { return 1; }), expected);
    std::minstd_rand random(1);
    for (int round = 0; round < 500; ++round)
        ASSERT_EQ(outcome(several, [&] { return int(1 + random() % 20); }), expected);
}

TEST(RequestParser, ReadsAnEmptyChunkedBodyByteByByte)
{
    const QByteArray bytes =
        "POST /a HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n";
    const QByteArrayList expected{ "POST /a 2 ", "end" };
    for (int piece = 1; piece < 8; ++piece)
        EXPECT_EQ(outcome(bytes, [=] { return piece; }), expected) << piece;
}

TEST(RequestParser, JudgesDamagedBytesTheSameHoweverTheyArrive)
{
    std::minstd_rand random(2);
    int refused = 0;
    for (int round = 0; round < 5000; ++round) {
        QByteArray bytes = several;
        for (unsigned damage = 1 + random() % 3; damage > 0; --damage) {
            const int at = int(random() % unsigned(bytes.size()));
            if (random() % 2 == 0)
                bytes[at] = char(random() % 256);
            else
                bytes.remove(at, int(random() % 4));
        }
        const QByteArrayList whole = outcome(bytes, [] { return 1 << 20; });
        refused += whole.last() == "end" ? 0 : 1;
        ASSERT_EQ(outcome(bytes, [&] { return int(1 + random() % 20); }), whole)
            << bytes.toPercentEncoding().constData();
    }
    EXPECT_GT(refused, 1000);
}
