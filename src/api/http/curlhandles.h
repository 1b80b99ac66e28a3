#pragma once

#include <QtGlobal>

#include <curl/curl.h>

#include <vector>

namespace httpclient {

/// Transfer handles that are used again: with them their buffers and TLS sessions. Of one thread.
class CurlHandles
{
public:
    CurlHandles() = default;
    ~CurlHandles();
    Q_DISABLE_COPY_MOVE(CurlHandles)

    /// A handle without any options, to be given back.
    CURL* take();
    void giveBack(CURL* handle);

private:
    std::vector<CURL*> m_idle;
};

} // namespace httpclient
