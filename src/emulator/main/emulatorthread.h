#pragma once

#include "emulator.h"

#include <QThread>

#include <functional>
#include <memory>

namespace emulator {

/// An emulator on a thread of its own, for programs that talk to it over sockets from theirs.
class EmulatorThread
{
public:
    explicit EmulatorThread(const Settings& settings);
    /// Ends the emulator and its thread.
    ~EmulatorThread();

    /// Starts it and waits until its whole folder is scanned. Returns what keeps it from starting;
    /// empty on success.
    QString start();

    /// For what may be used from every thread, and what does not change once it has started.
    Emulator& emulator() { return *m_emulator; }

    /// Runs the function on the emulator's thread and waits for its end.
    void run(const std::function<void()>& function);

private:
    QThread m_thread;
    std::unique_ptr<QObject> m_context; ///< lives on the thread
    std::unique_ptr<Emulator> m_emulator;
    Settings m_settings;
};

} // namespace emulator
