#include "cmsubscribe.h"

#include "tavuconnect.h"

namespace {

const char* signalOf(CMSubscribe::ChangeType type)
{
    switch (type) {
    case CMSubscribe::ChangeType::Value:
        return SIGNAL(valueChanged(TavuValue));
    case CMSubscribe::ChangeType::Data:
        return SIGNAL(dataChanged(CMPath));
    case CMSubscribe::ChangeType::Rows:
        break;
    }
    return SIGNAL(rowsChanged(CMPath));
}

} // namespace

CMSubscribe::~CMSubscribe() = default;

void CMSubscribe::connectChange(ChangeType type, const CMPath& path, const QObject* receiver,
    const char* slot, Qt::ConnectionType connection)
{
    tavuConnect(channel(path).get(), signalOf(type), receiver, slot, connection);
}

void CMSubscribe::disconnectChange(
    ChangeType type, const CMPath& path, const QObject* receiver, const char* slot)
{
    if (const Channel present = presentChannel(path))
        QObject::disconnect(present.get(), signalOf(type), receiver, slot);
}

void CMSubscribe::notifyValue(const CMPath& path, const TavuValue& value)
{
    if (const Channel present = presentChannel(path))
        Q_EMIT present->valueChanged(value);
}

void CMSubscribe::notifyData(const CMPath& path)
{
    if (const Channel present = presentChannel(path))
        Q_EMIT present->dataChanged(path);
}

void CMSubscribe::notifyRows(const CMPath& path)
{
    if (const Channel present = presentChannel(path))
        Q_EMIT present->rowsChanged(path);
}

CMSubscribe::Channel CMSubscribe::channel(const CMPath& path)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    Channel& channel = m_channels[path.text()];
    if (!channel)
        channel = std::make_shared<CMChangeChannel>();
    return channel;
}

CMSubscribe::Channel CMSubscribe::presentChannel(const CMPath& path)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_channels.value(path.text());
}
