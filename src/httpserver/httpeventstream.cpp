#include "httpeventstream.h"

#include "httpanswer.h"
#include "httpexchange.h"

namespace http {

EventStream::EventStream(std::shared_ptr<Exchange> exchange)
    : m_exchange(std::move(exchange))
{
}

bool EventStream::isOpen() const
{
    const Answer* answer = m_exchange ? m_exchange->answer() : nullptr;
    return answer != nullptr && answer->isOpen() && answer->isEventStream();
}

void EventStream::onClosed(std::function<void()> closed) const
{
    if (Answer* answer = m_exchange ? m_exchange->answer() : nullptr)
        answer->onClosed(std::move(closed));
}

bool EventStream::send(const QByteArray& id, const QByteArray& event, const QByteArray& data) const
{
    return send(format(id, event, data));
}

bool EventStream::send(const QByteArray& formatted) const
{
    Answer* answer = m_exchange ? m_exchange->answer() : nullptr;
    return answer != nullptr && answer->sendEvent(formatted);
}

void EventStream::close() const
{
    if (Answer* answer = m_exchange ? m_exchange->answer() : nullptr)
        answer->end();
}

namespace {

/// Each line of the data needs its own field, whichever way the line ends.
void appendData(QByteArray& formatted, QByteArray data)
{
    data.replace("\r\n", "\n").replace('\r', '\n');
    for (const QByteArray& line : data.split('\n'))
        formatted += "data: " + line + '\n';
}

QByteArray oneLine(QByteArray text)
{
    return text.replace('\r', ' ').replace('\n', ' ').replace('\0', ' ');
}

} // namespace

QByteArray EventStream::format(
    const QByteArray& id, const QByteArray& event, const QByteArray& data)
{
    QByteArray formatted;
    if (!id.isEmpty())
        formatted += "id: " + oneLine(id) + '\n';
    if (!event.isEmpty())
        formatted += "event: " + oneLine(event) + '\n';
    appendData(formatted, data);
    return formatted += '\n';
}

} // namespace http
