#include "httpclient.h"

#include <mutex>

namespace {

std::mutex mutex;

HttpClientConfig& sharedConfig()
{
    static HttpClientConfig config; // Guarded by mutex.
    return config;
}

} // namespace

void HttpClientConfig::setShared(const HttpClientConfig& config)
{
    const std::lock_guard<std::mutex> guard(mutex);
    sharedConfig() = config;
}

HttpClientConfig HttpClientConfig::shared()
{
    const std::lock_guard<std::mutex> guard(mutex);
    return sharedConfig();
}
