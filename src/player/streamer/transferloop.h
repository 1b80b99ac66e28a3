#pragma once

#include <QtGlobal>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace player {

class HttpTransfer;

/// The thread in which streams are transferred. It keeps their connections for the next ones, and
/// sleeps when nothing moves.
class TransferLoop
{
public:
    using Task = std::function<void()>;

    TransferLoop();
    /// Runs what was posted, then ends the thread. No transfer may be left by then.
    ~TransferLoop();
    Q_DISABLE_COPY_MOVE(TransferLoop)

    /// Has the loop's thread run `task`, after those posted before. Callable on any thread.
    void post(Task task);

    // In the loop's thread only.

    /// Runs `task` later, unless its owner cancels it first.
    void postDelayed(std::chrono::milliseconds delay, const void* owner, Task task);
    /// Drops all that `owner` has posted for later.
    void cancelDelayed(const void* owner);
    void add(HttpTransfer& transfer);
    void remove(HttpTransfer& transfer);

private:
    using Clock = std::chrono::steady_clock;
    struct Curl;
    struct DelayedTask
    {
        const void* owner;
        Task run;
    };

    void run();
    bool runTasks();
    void runDelayedTasks();
    void finishTransfers();
    int sleepMs() const;

    std::unique_ptr<Curl> m_curl;
    std::multimap<Clock::time_point, DelayedTask> m_delayed; // The loop's thread only.
    std::mutex m_mutex;
    std::vector<Task> m_tasks; // Guarded by m_mutex.
    bool m_ending = false; // The loop's thread only.
    std::thread m_thread;
};

} // namespace player
