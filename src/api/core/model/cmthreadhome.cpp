#include "cmthreadhome.h"

#include <QThread>

struct CMThreadHome::Resident
{
    Resident() { home->m_resident = &object; }
    ~Resident()
    {
        const std::lock_guard<std::mutex> guard(home->m_mutex);
        home->m_resident = nullptr;
    }
    Q_DISABLE_COPY_MOVE(Resident)

    QObject object;
    std::shared_ptr<CMThreadHome> home = std::make_shared<CMThreadHome>();
};

std::shared_ptr<CMThreadHome> CMThreadHome::current()
{
    thread_local Resident resident;
    return resident.home;
}

bool CMThreadHome::isCurrent() const
{
    return current().get() == this;
}

void CMThreadHome::post(const std::function<void()>& function)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_resident)
        QMetaObject::invokeMethod(m_resident, function, Qt::QueuedConnection);
}
