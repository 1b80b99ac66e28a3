#include "artworkfetch.h"

namespace player {

namespace {

constexpr int timeoutMs = 15000;
constexpr int redirectsAtMost = 5;
constexpr int pictureAtMost = 8 * 1024 * 1024;
constexpr unsigned long cacheSize = 4 * 1024 * 1024;

HttpClientOptions options()
{
    HttpClientOptions options;
    options.setTimeoutMs(timeoutMs);
    options.setMaxRedirects(redirectsAtMost);
    options.setReadSizeLimit(pictureAtMost);
    return options;
}

} // namespace

ArtworkFetch::ArtworkFetch()
    : m_http(nullptr, HttpClient::HttpDefault, true)
{
    m_http.setCacheSize(cacheSize);
}

CMReply<ArtworkFetch::Picture> ArtworkFetch::fetch(const QString& url)
{
    const auto reply = CMReply<Picture>::create();
    m_http.get(TavuUrl(url), options(), [reply](const HttpClient::Result& result) {
        const QByteArray type = result.headers.value("content-type").toLower();
        if (result.code == 200 && type.startsWith("image/"))
            reply.setValue({ result.data, type });
        else
            reply.setError(CMError(TrString(
                TrCharData(trExtractContext("player"), "The picture cannot be fetched."))));
    });
    return reply;
}

} // namespace player
