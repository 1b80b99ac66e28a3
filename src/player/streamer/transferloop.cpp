#include "transferloop.h"

#include "httptransfer.h"

#include <curl/curl.h>

#include <algorithm>

namespace player {

struct TransferLoop::Curl
{
    Curl()
    {
        curl_global_init(CURL_GLOBAL_DEFAULT);
        multi = curl_multi_init();
        Q_ASSERT(multi);
        // One of the present item, one of the next, and spare ones.
        curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, 4L);
    }
    ~Curl() { curl_multi_cleanup(multi); }
    Q_DISABLE_COPY_MOVE(Curl)

    CURLM* multi = nullptr;
};

TransferLoop::TransferLoop()
    : m_curl(std::make_unique<Curl>())
    , m_thread([this] { run(); })
{
}

TransferLoop::~TransferLoop()
{
    post([this] { m_ending = true; });
    m_thread.join();
}

void TransferLoop::post(Task task)
{
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_tasks.push_back(std::move(task));
    }
    curl_multi_wakeup(m_curl->multi);
}

void TransferLoop::postDelayed(std::chrono::milliseconds delay, const void* owner, Task task)
{
    m_delayed.emplace(Clock::now() + delay, DelayedTask{ owner, std::move(task) });
}

void TransferLoop::cancelDelayed(const void* owner)
{
    for (auto delayed = m_delayed.begin(); delayed != m_delayed.end();)
        delayed = delayed->second.owner == owner ? m_delayed.erase(delayed) : std::next(delayed);
}

void TransferLoop::add(HttpTransfer& transfer)
{
    curl_multi_add_handle(m_curl->multi, transfer.handle());
}

void TransferLoop::remove(HttpTransfer& transfer)
{
    curl_multi_remove_handle(m_curl->multi, transfer.handle());
}

void TransferLoop::run()
{
    while (runTasks()) {
        runDelayedTasks();
        int running = 0;
        curl_multi_perform(m_curl->multi, &running);
        finishTransfers();
        curl_multi_poll(m_curl->multi, nullptr, 0, sleepMs(), nullptr);
    }
}

bool TransferLoop::runTasks()
{
    std::vector<Task> tasks;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        tasks.swap(m_tasks);
    }
    for (const Task& task : tasks)
        task();
    return !m_ending;
}

void TransferLoop::runDelayedTasks()
{
    const Clock::time_point now = Clock::now();
    while (!m_delayed.empty() && m_delayed.begin()->first <= now) {
        const Task task = std::move(m_delayed.begin()->second.run);
        m_delayed.erase(m_delayed.begin());
        task();
    }
}

void TransferLoop::finishTransfers()
{
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(m_curl->multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode code = message->data.result;
        HttpTransfer::of(message->easy_handle).finish(code);
    }
}

int TransferLoop::sleepMs() const
{
    constexpr int forLong = 24 * 3600 * 1000;
    if (m_delayed.empty())
        return forLong;
    const auto wait =
        std::chrono::ceil<std::chrono::milliseconds>(m_delayed.begin()->first - Clock::now());
    return static_cast<int>(std::clamp<qint64>(wait.count(), 0, forLong));
}

} // namespace player
