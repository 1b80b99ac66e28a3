#include "delivery.h"

#include "bending.h"

#include <QFile>

namespace emulator::faults {

using http::Responder;
using http::Response;
using http::Shaping;

namespace {

void send(const Responder& responder, const Answer& answer)
{
    if (answer.isFile())
        responder.sendFile(answer.file, answer.info);
    else
        responder.send(answer.response);
}

Shaping stopping(const Effect& effect, Shaping::Stop stop)
{
    Shaping shaping;
    shaping.stopAfterBytes = effect.number("after", 0);
    shaping.bytesPerSecond = effect.number("bytesPerSecond", 0);
    shaping.stop = stop;
    return shaping;
}

void sendChunked(const Responder& responder, const Response& response)
{
    Response head = response;
    head.headers.remove("Content-Length");
    responder.begin(head);
    responder.end();
}

// At the body's exact size a chunked answer stops before its last chunk.
void cutChunked(const Responder& responder, const Effect& effect, const Response& response)
{
    Shaping shaping;
    shaping.stopAfterBytes = effect.number("after", response.body.size());
    responder.shape(shaping);
    sendChunked(responder, response);
}

void sendSurplus(const Responder& responder, const Effect& effect, const Response& response)
{
    const auto more = static_cast<int>(effect.number("bytes", 100));
    responder.writeRaw(http::serialize(response) + QByteArray(more, '!'));
    responder.close();
}

void sendContradiction(const Responder& responder, const Effect& effect, const Response& response)
{
    QByteArray bytes = http::serialize(response);
    const int headEnd = bytes.indexOf("\r\n\r\n");
    if (effect.text("form", "two-lengths") == QLatin1String("two-lengths"))
        bytes.insert(
            headEnd, "\r\nContent-Length: " + QByteArray::number(response.body.size() + 7));
    else
        bytes.insert(headEnd, "\r\nTransfer-Encoding: chunked");
    responder.writeRaw(bytes);
    responder.close();
}

// The whole file as an answer at hand, for effects that change how an answer is framed.
Response inMemory(const Answer& answer)
{
    if (!answer.isFile())
        return answer.response;
    QFile file(answer.file);
    Response response;
    response.headers = answer.info.headers;
    response.headers.append("Content-Type", answer.info.contentType);
    if (file.open(QIODevice::ReadOnly))
        response.body = file.readAll();
    return response;
}

void deliverDisturbed(const Responder& responder, const Effect& effect, const Answer& answer)
{
    const auto is = [&effect](const char* kind) { return effect.kind == QLatin1String(kind); };
    if (is("chunked-cut"))
        return cutChunked(responder, effect, inMemory(answer));
    if (is("surplus"))
        return sendSurplus(responder, effect, inMemory(answer));
    if (is("lengths"))
        return sendContradiction(responder, effect, inMemory(answer));
    Shaping shaping;
    if (is("trickle"))
        shaping.bytesPerSecond = effect.number("bytesPerSecond", 1);
    else if (is("stall"))
        shaping = stopping(effect, Shaping::Stop::Hang);
    else if (is("reset"))
        shaping = stopping(effect, Shaping::Stop::Reset);
    else
        shaping = stopping(effect, Shaping::Stop::Close);
    responder.shape(shaping);
    send(responder, answer);
}

// Keeps the answer's right alive without using it, until the peer gives up.
void hang(const Responder& responder)
{
    responder.onClosed([responder] {});
}

void sendHeadersWithoutEnd(const Responder& responder)
{
    responder.writeRaw("HTTP/1.1 200 OK\r\n");
    const QByteArray fields = QByteArray("X-Filler: 0123456789abcdef0123456789\r\n").repeated(256);
    responder.onDrained([responder, fields] { responder.writeRaw(fields); });
    responder.writeRaw(fields);
}

void deliverRaw(const Responder& responder, const Effect& effect)
{
    const auto is = [&effect](const char* kind) { return effect.kind == QLatin1String(kind); };
    if (is("hang"))
        return hang(responder);
    if (is("endless-headers"))
        return sendHeadersWithoutEnd(responder);
    if (is("abort"))
        return responder.reset();
    if (is("garbage"))
        responder.writeRaw(effect.text("form", "noise") == QLatin1String("http09")
                ? QByteArray("{\"result\":\"#page\"}\r\n")
                : QByteArray("\x00\x13\xfe gibberish \x80\x81\r\n\r\n", 20));
    responder.close();
}

} // namespace

void deliver(const Responder& responder, Answer answer, const std::optional<Effect>& effect)
{
    if (!effect)
        return send(responder, answer);
    switch (effect->stage()) {
    case Stage::Raw:
        return deliverRaw(responder, *effect);
    case Stage::Deliver:
        return deliverDisturbed(responder, *effect, answer);
    case Stage::Bend:
        if (!answer.isFile())
            answer.response = bend(*effect, std::move(answer.response));
        if (effect->kind == QLatin1String("pad") && effect->isOn("chunked", false))
            return sendChunked(responder, answer.response);
        return send(responder, answer);
    case Stage::Prepare:
    case Stage::Replace:
        return send(responder, answer);
    }
}

} // namespace emulator::faults
