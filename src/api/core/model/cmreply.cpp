#include "cmreply.h"

#include "cmthreadhome.h"

#include <algorithm>
#include <chrono>
#include <limits>

CMReplyAbstractData::~CMReplyAbstractData() = default;

bool CMReplyAbstractData::isFinished() const
{
    const Lock guard = lock();
    return m_finished;
}

CMError CMReplyAbstractData::error() const
{
    const Lock guard = lock();
    return m_error;
}

void CMReplyAbstractData::finish()
{
    finishWith([] {});
}

void CMReplyAbstractData::setError(const CMError& error)
{
    CMError named(error);
    if (!named.isSet())
        named.setName(CMError::DefaultName());
    finishWith([&] { m_error = named; });
}

bool CMReplyAbstractData::waitForFinished(unsigned long ms)
{
    Lock guard = lock();
    const auto finished = [this] { return m_finished; };
    if (ms == std::numeric_limits<unsigned long>::max()) {
        m_condition.wait(guard, finished);
        return true;
    }
    // Beyond that the clock's arithmetic overflows; nobody waits that long.
    constexpr unsigned long longest = 365UL * 24 * 3600 * 1000;
    return m_condition.wait_for(guard, std::chrono::milliseconds(std::min(ms, longest)), finished);
}

void CMReplyAbstractData::addWatcher(CMReplyWatcher watcher)
{
    {
        const Lock guard = lock();
        if (!m_finished) {
            m_watchers.push_back(std::move(watcher));
            return;
        }
    }
    deliver({ watcher });
}

std::vector<CMReplyWatcher> CMReplyAbstractData::markFinished()
{
    m_finished = true;
    m_condition.notify_all();
    return std::move(m_watchers);
}

void CMReplyAbstractData::deliver(const std::vector<CMReplyWatcher>& watchers)
{
    const CMVoidReply reply(shared_from_this());
    for (const CMReplyWatcher& watcher : watchers) {
        const bool direct = watcher.type == Qt::DirectConnection
            || (watcher.type == Qt::AutoConnection && watcher.home->isCurrent());
        if (direct)
            watcher.function(reply);
        else
            watcher.home->post([function = watcher.function, reply] { function(reply); });
    }
}

CMError CMVoidReply::ErrorCancel()
{
    CMError error;
    error.setName(QStringLiteral("cancel"));
    error.setTitle(CMError::DefaultTitle());
    error.setMessage(TrString("Cancelled").toString());
    return error;
}

void CMVoidReply::addWatcher(Watcher watcher, Qt::ConnectionType type) const
{
    m_data->addWatcher({ std::move(watcher), type, CMThreadHome::current() });
}
