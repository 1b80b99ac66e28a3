#include "httprequestparser.h"

#include "httpbodyreader.h"
#include "httpheadscanner.h"
#include "httptarget.h"

#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>

#include <algorithm>
#include <cctype>
#include <limits>
#include <optional>

namespace http {

namespace beast = boost::beast::http;
/// Reads heads alone: its reader of chunks stops the program over some pieces that a peer may send.
using BeastParser = beast::request_parser<beast::empty_body>;

struct RequestParser::Private
{
    explicit Private(const Limits& given)
        : limits(given)
        , scanner(given)
    {
    }

    State refuse(int with)
    {
        status = with;
        return State::Refused;
    }

    State takeHead(const char* data, int length);
    State takeBody(const char* data, int size, int* consumed);
    int fill();
    int beginBody();
    bool framingIsClear() const;
    void takeFields();

    const Limits& limits;
    HeadScanner scanner;
    std::optional<BeastParser> parser;
    BodyReader body;
    Request request;
    int status = 0;
    bool headDone = false;
};

static QByteArray bytes(boost::beast::string_view text)
{
    return { text.data(), int(text.size()) };
}

static QByteArray firstLine(const char* data, int length)
{
    const QByteArray head = QByteArray::fromRawData(data, length);
    return head.left(head.indexOf("\r\n"));
}

/// Whether a request line ends in a version that is well written and not ours.
static bool namesOtherVersion(const QByteArray& line)
{
    const QByteArray version = line.mid(line.lastIndexOf(' ') + 1);
    const bool written = version.size() == 8 && version.startsWith("HTTP/") && version[6] == '.'
        && std::isdigit(version[5]) != 0 && std::isdigit(version[7]) != 0;
    return written && version != "HTTP/1.0" && version != "HTTP/1.1";
}

RequestParser::RequestParser(const Limits& limits)
    : d(std::make_unique<Private>(limits))
{
}

RequestParser::~RequestParser() = default;

void RequestParser::reset()
{
    d->scanner.reset();
    d->parser.reset();
    d->request = Request();
    d->status = 0;
    d->headDone = false;
}

Request& RequestParser::request()
{
    return d->request;
}

const Request& RequestParser::request() const
{
    return d->request;
}

int RequestParser::status() const
{
    return d->status;
}

bool RequestParser::isHttp10() const
{
    return d->parser && d->parser->get().version() == 10;
}

/// HTTP/1.0 connections are never kept: its clients that ask for it are rare, and proxies pass the
/// wish on without understanding it.
bool RequestParser::keepsAlive() const
{
    return d->parser && !isHttp10() && d->parser->keep_alive();
}

bool RequestParser::expectsContinue() const
{
    return d->request.headers.value("Expect").toLower() == "100-continue";
}

RequestParser::State RequestParser::feed(const char* data, int size, int* consumed)
{
    *consumed = 0;
    if (d->headDone)
        return d->takeBody(data, size, consumed);
    switch (d->scanner.scan(data, size)) {
    case HeadScanner::State::NeedMore:
        return State::NeedMore;
    case HeadScanner::State::Refused:
        return d->refuse(d->scanner.status());
    case HeadScanner::State::Complete:
        break;
    }
    *consumed = d->scanner.length();
    return d->takeHead(data, *consumed);
}

RequestParser::State RequestParser::Private::takeHead(const char* data, int length)
{
    while (length > 2 && data[0] == '\r') {
        data += 2;
        length -= 2;
    }
    parser.emplace();
    parser->header_limit(std::uint32_t(length) + 1);
    parser->body_limit(std::numeric_limits<std::uint64_t>::max());
    boost::beast::error_code error;
    parser->put(boost::asio::const_buffer(data, std::size_t(length)), error);
    if (error == beast::error::bad_version && namesOtherVersion(firstLine(data, length)))
        return refuse(505);
    if (error)
        return refuse(400);
    if (const int bad = fill())
        return refuse(bad);
    headDone = true;
    return State::Head;
}

/// Returns 0, or the status to refuse with.
int RequestParser::Private::fill()
{
    takeFields();
    const bool badTarget = !splitTarget(request);
    if (badTarget || !framingIsClear())
        return 400;
    const QByteArray expect = request.headers.value("Expect").toLower();
    if (!expect.isEmpty() && expect != "100-continue")
        return 417;
    return beginBody();
}

int RequestParser::Private::beginBody()
{
    if (parser->chunked())
        body.beginChunked(limits.bodyBytes);
    else
        body.beginLength(parser->content_length().value_or(0), limits.bodyBytes);
    return body.status();
}

void RequestParser::Private::takeFields()
{
    const auto& message = parser->get();
    request.method = bytes(message.method_string());
    request.target = bytes(message.target());
    for (const auto& field : message)
        request.headers.append(bytes(field.name_string()), bytes(field.value()));
}

static bool isNumber(const QByteArray& text)
{
    return !text.isEmpty()
        && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// Whether every reader of this head finds the same end of the body.
bool RequestParser::Private::framingIsClear() const
{
    const QList<QByteArray> lengths = request.headers.values("Content-Length");
    const QList<QByteArray> codings = request.headers.values("Transfer-Encoding");
    if (lengths.size() + codings.size() > 1)
        return false;
    if (!lengths.isEmpty())
        return isNumber(lengths.first());
    return codings.isEmpty()
        || (codings.first().toLower() == "chunked" && parser->get().version() == 11);
}

RequestParser::State RequestParser::Private::takeBody(const char* data, int size, int* consumed)
{
    switch (body.feed(data, size, consumed)) {
    case BodyReader::State::NeedMore:
        return State::NeedMore;
    case BodyReader::State::Refused:
        return refuse(body.status());
    case BodyReader::State::Complete:
        break;
    }
    request.body = body.body();
    return State::Complete;
}

} // namespace http
