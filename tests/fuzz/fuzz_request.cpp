#include "fuzzbytes.h"
#include "httprequestparser.h"

#include <QByteArrayList>

using http::RequestParser;

namespace {

/// What is read from the bytes when they come in pieces of the given size.
QByteArrayList outcome(const QByteArray& bytes, int pieceSize)
{
    const http::Limits limits;
    RequestParser parser(limits);
    QByteArrayList read;
    QByteArray waiting;
    for (int position = 0; position < bytes.size(); position += pieceSize) {
        waiting += bytes.mid(position, pieceSize);
        RequestParser::State state = RequestParser::State::Head;
        while (state != RequestParser::State::NeedMore) {
            int used = 0;
            state = parser.feed(waiting.constData(), waiting.size(), &used);
            require(used >= 0 && used <= waiting.size(), "no more is used than was there");
            waiting.remove(0, used);
            if (state == RequestParser::State::Refused)
                return read += QByteArray::number(parser.status());
            if (state != RequestParser::State::Complete)
                continue;
            const http::Request& request = parser.request();
            require(request.body.size() <= limits.bodyBytes, "a body keeps to its limit");
            require(request.headers.values("Content-Length").size()
                        + request.headers.values("Transfer-Encoding").size()
                    <= 1,
                "a body has one end");
            read += request.method + ' ' + request.target + ' ' + request.body;
            parser.reset();
        }
    }
    return read;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = bytesOf(data, size);
    const QByteArrayList whole = outcome(bytes, qMax(1, bytes.size()));
    require(outcome(bytes, 7) == whole, "requests read the same however their bytes arrive");
    return 0;
}
