#pragma once

#include "tavuexport.h"

#include <QObject>

#include <functional>
#include <memory>
#include <mutex>

/// The way into a thread's event loop for those who may outlive the thread: what is posted after
/// its end is dropped.
class TAVU_EXPORT CMThreadHome
{
public:
    /// The home of the calling thread.
    static std::shared_ptr<CMThreadHome> current();

    bool isCurrent() const;
    /// Has the thread's event loop call `function`. Callable on any thread.
    void post(const std::function<void()>& function);

private:
    struct Resident;

    std::mutex m_mutex;
    QObject* m_resident = nullptr; // Guarded by m_mutex; null once the thread has ended.
};
