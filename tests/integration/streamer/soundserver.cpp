#include "soundserver.h"

#include <memory>

namespace {

bool hasHeader(const http::Request& request, const QByteArray& line)
{
    const int colon = line.indexOf(':');
    return line.isEmpty() || request.headers.value(line.left(colon)) == line.mid(colon + 2);
}

http::Handler serving(const QByteArray& file, const SoundServer::Manner& manner)
{
    auto answers = std::make_shared<int>(0);
    return [=](const http::Request& request, const http::Responder& responder) {
        if (!hasHeader(request, manner.requiredHeader))
            return responder.send(http::Response::text(403, "no key"));
        if (++*answers <= manner.shapedAnswers)
            responder.shape(manner.shaping);
        if (!manner.chunked) {
            http::ContentInfo info;
            info.contentType = manner.contentType;
            info.ranges = manner.ranges;
            return responder.sendBytes(file, info);
        }
        http::Response head;
        head.headers.append("Content-Type", manner.contentType);
        responder.begin(head);
        responder.write(file);
        responder.end();
    };
}

} // namespace

SoundServer::SoundServer()
{
    http::Limits limits;
    limits.writeTimeoutMs = 0;
    m_server.setLimits(limits);
    m_server.setHandler([this](const http::Request& request, const http::Responder& responder) {
        handle(request, responder);
    });
    m_port = m_server.listen();
}

void SoundServer::add(const QString& path, const QByteArray& file)
{
    add(path, file, Manner());
}

void SoundServer::add(const QString& path, const QByteArray& file, const Manner& manner)
{
    m_handlers.insert(path, serving(file, manner));
}

void SoundServer::setHandler(const QString& path, http::Handler handler)
{
    m_handlers.insert(path, std::move(handler));
}

void SoundServer::setStatus(const QString& path, int status)
{
    setHandler(path, [status](const http::Request&, const http::Responder& responder) {
        responder.send(http::Response::text(status, "refused"));
    });
}

QString SoundServer::url(const QString& path) const
{
    return QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path);
}

QVector<SoundServer::Asked> SoundServer::requests(const QString& path) const
{
    QVector<Asked> result;
    for (const Asked& request : m_asked) {
        if (request.path == path)
            result.append(request);
    }
    return result;
}

int SoundServer::askedFor(const QString& path) const
{
    return requests(path).size();
}

void SoundServer::handle(const http::Request& request, const http::Responder& responder)
{
    m_asked.append({ request.path, request.headers.value("Range"), request.headers,
        request.peerPort, request.method });
    const http::Handler handler = m_handlers.value(request.path);
    if (handler)
        handler(request, responder);
    else
        responder.send(http::Response::text(404, "not here"));
}
