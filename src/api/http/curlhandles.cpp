#include "curlhandles.h"

namespace httpclient {

namespace {

constexpr size_t maxIdle = 4;

} // namespace

CurlHandles::~CurlHandles()
{
    for (CURL* handle : m_idle)
        curl_easy_cleanup(handle);
}

CURL* CurlHandles::take()
{
    if (m_idle.empty()) {
        CURL* const made = curl_easy_init();
        Q_ASSERT_X(made, "CurlHandles", "curl_easy_init");
        return made;
    }
    CURL* const handle = m_idle.back();
    m_idle.pop_back();
    return handle;
}

void CurlHandles::giveBack(CURL* handle)
{
    if (m_idle.size() >= maxIdle) {
        curl_easy_cleanup(handle);
        return;
    }
    curl_easy_reset(handle);
    m_idle.push_back(handle);
}

} // namespace httpclient
