#include "urlparts.h"

#include <curl/curl.h>

#include <memory>

namespace player {

namespace {

using Url = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

QByteArray part(CURLU* url, CURLUPart which, unsigned flags = 0)
{
    char* text = nullptr;
    if (curl_url_get(url, which, &text, flags) != CURLUE_OK)
        return {};
    QByteArray result(text);
    curl_free(text);
    return result;
}

} // namespace

UrlParts UrlParts::of(const QByteArray& url)
{
    const Url parsed(curl_url(), &curl_url_cleanup);
    if (url.contains('\0') || curl_url_set(parsed.get(), CURLUPART_URL, url.constData(), 0))
        return {};
    const QByteArray scheme = part(parsed.get(), CURLUPART_SCHEME).toLower();
    if (scheme != "http" && scheme != "https")
        return {};
    return { scheme, part(parsed.get(), CURLUPART_HOST).toLower(),
        part(parsed.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT),
        part(parsed.get(), CURLUPART_PATH) };
}

bool UrlParts::sameOrigin(const UrlParts& other) const
{
    return scheme == other.scheme && host == other.host && port == other.port;
}

QByteArray UrlParts::forLog() const
{
    return scheme + "://" + host + ':' + port + path;
}

} // namespace player
