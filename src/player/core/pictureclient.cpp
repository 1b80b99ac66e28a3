#include "pictureclient.h"

namespace player {

namespace {

constexpr int timeoutMs = 15000;
constexpr int redirectsAtMost = 5;
constexpr int pictureAtMost = 8 * 1024 * 1024;

HttpClientOptions options()
{
    HttpClientOptions options;
    options.setTimeoutMs(timeoutMs);
    options.setMaxRedirects(redirectsAtMost);
    options.setReadSizeLimit(pictureAtMost);
    return options;
}

} // namespace

PictureClient::PictureClient()
    : m_http(nullptr, HttpClient::HttpDefault, false)
{
}

void PictureClient::fetch(
    const QString& url, const std::function<void(const control::Artwork&)>& done)
{
    m_http.get(TavuUrl(url), options(), [done](const HttpClient::Result& result) {
        done({ result.code, result.headers.value("content-type"), result.data });
    });
}

} // namespace player
