#include "httpresponder.h"

#include "httpanswer.h"
#include "httpexchange.h"

#include <QBuffer>
#include <QFile>

namespace http {

Responder::Responder(std::shared_ptr<Exchange> exchange)
    : m_exchange(std::move(exchange))
{
}

bool Responder::isOpen() const
{
    const Answer* answer = m_exchange->answer();
    return answer != nullptr && answer->isOpen();
}

void Responder::onClosed(std::function<void()> closed) const
{
    if (Answer* answer = m_exchange->answer())
        answer->onClosed(std::move(closed));
}

void Responder::shape(const Shaping& shaping) const
{
    if (Answer* answer = m_exchange->answer())
        answer->shape(shaping);
}

void Responder::send(const Response& response) const
{
    if (Answer* answer = m_exchange->answer())
        answer->send(response);
}

void Responder::sendFile(const QString& file, const ContentInfo& info) const
{
    auto device = std::make_unique<QFile>(file);
    if (device->open(QIODevice::ReadOnly) && !device->isSequential())
        sendDevice(std::move(device), info);
    else
        send(Response::text(404, "404 Not Found\n"));
}

void Responder::sendDevice(std::unique_ptr<QIODevice> device, const ContentInfo& info) const
{
    if (Answer* answer = m_exchange->answer())
        answer->sendDevice(std::move(device), info);
}

void Responder::sendBytes(const QByteArray& bytes, const ContentInfo& info) const
{
    auto device = std::make_unique<QBuffer>();
    device->setData(bytes);
    device->open(QIODevice::ReadOnly);
    sendDevice(std::move(device), info);
}

void Responder::begin(const Response& head) const
{
    if (Answer* answer = m_exchange->answer())
        answer->begin(head);
}

void Responder::write(const QByteArray& piece) const
{
    if (Answer* answer = m_exchange->answer())
        answer->write(piece);
}

void Responder::end() const
{
    if (Answer* answer = m_exchange->answer())
        answer->end();
}

qint64 Responder::pending() const
{
    const Answer* answer = m_exchange->answer();
    return answer ? answer->pending() : 0;
}

void Responder::onDrained(std::function<void()> drained) const
{
    if (Answer* answer = m_exchange->answer())
        answer->onDrained(std::move(drained));
}

EventStream Responder::events(const Headers& headers) const
{
    if (Answer* answer = m_exchange->answer())
        answer->beginEvents(headers);
    return EventStream(m_exchange);
}

void Responder::writeRaw(const QByteArray& bytes) const
{
    if (Answer* answer = m_exchange->answer())
        answer->writeRaw(bytes);
}

void Responder::close() const
{
    if (Answer* answer = m_exchange->answer())
        answer->close();
}

void Responder::reset() const
{
    if (Answer* answer = m_exchange->answer())
        answer->reset();
}

} // namespace http
