#include "urlpolicy.h"

#include <curl/curl.h>

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace httpclient {

namespace {

constexpr int longestUrl = 32 * 1024;

using UrlHandle = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

UrlHandle makeUrl()
{
    return { curl_url(), &curl_url_cleanup };
}

QByteArray part(CURLU* url, CURLUPart which, unsigned flags = 0)
{
    char* text = nullptr;
    if (curl_url_get(url, which, &text, flags) != CURLUE_OK)
        return QByteArray();
    QByteArray copy(text);
    curl_free(text);
    return copy;
}

bool isWebScheme(const QByteArray& scheme)
{
    return scheme == "http" || scheme == "https";
}

/// As the transfer reads the URL; empty when it cannot.
QByteArray hostAsSent(const QByteArray& url)
{
    const UrlHandle handle = makeUrl();
    if (curl_url_set(handle.get(), CURLUPART_URL, url.constData(), 0) != CURLUE_OK)
        return QByteArray();
    QByteArray host = part(handle.get(), CURLUPART_HOST).toLower();
    if (host.startsWith('[') && host.endsWith(']'))
        host = host.mid(1, host.size() - 2);
    return host;
}

int effectivePort(const TavuUrl& url)
{
    if (url.port() >= 0)
        return url.port();
    return url.scheme() == QLatin1String("https") ? 443 : 80;
}

bool isLocal(const in_addr& address)
{
    const quint32 number = ntohl(address.s_addr);
    const quint32 network = number >> 24;
    return network == 0 || network == 127 || number >> 16 == 0xa9fe;
}

bool isLocal(const in6_addr& address)
{
    in_addr mapped{};
    std::memcpy(&mapped, address.s6_addr + 12, sizeof mapped);
    return IN6_IS_ADDR_LOOPBACK(&address) || IN6_IS_ADDR_UNSPECIFIED(&address)
        || IN6_IS_ADDR_LINKLOCAL(&address) || (IN6_IS_ADDR_V4MAPPED(&address) && isLocal(mapped));
}

bool isLocalName(const QByteArray& host)
{
    in_addr v4{};
    in6_addr v6{};
    if (inet_pton(AF_INET, host.constData(), &v4) == 1)
        return isLocal(v4);
    if (inet_pton(AF_INET6, host.constData(), &v6) == 1)
        return isLocal(v6);
    return host == "localhost" || host.endsWith(".localhost");
}

bool isMapped(const HttpClientConfig& config)
{
    return std::any_of(config.connectTo.begin(), config.connectTo.end(),
        [&](const QByteArray& mapping) { return mapping.startsWith(config.baseHost + ':'); });
}

bool isTokenCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
        || (c != '\0' && std::strchr("!#$%&'*+-.^_`|~", c) != nullptr);
}

bool isControlCharacter(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 0x20 && c != '\t') || byte == 0x7f;
}

} // namespace

QByteArray target(const TavuUrl& url)
{
    if (!url.isValid() || url.hasUserInfo() || !isWebScheme(url.scheme().toLatin1()))
        return QByteArray();
    TavuUrl withoutFragment = url;
    withoutFragment.setFragment(QString());
    QByteArray encoded = withoutFragment.toEncoded();
    const QByteArray host = url.host().toLatin1();
    if (host.isEmpty() || encoded.size() > longestUrl || hostAsSent(encoded) != host)
        return QByteArray();
    return encoded;
}

QByteArray resolvedLocation(const QByteArray& base, const QByteArray& reference)
{
    const UrlHandle handle = makeUrl();
    const auto set = [&](const QByteArray& text) {
        return curl_url_set(handle.get(), CURLUPART_URL, text.constData(), CURLU_URLENCODE)
            == CURLUE_OK;
    };
    if (reference.isEmpty() || !set(base) || !set(reference))
        return QByteArray();
    if (!isWebScheme(part(handle.get(), CURLUPART_SCHEME)))
        return QByteArray();
    return part(handle.get(), CURLUPART_URL);
}

bool downgrades(const TavuUrl& from, const TavuUrl& to)
{
    const QLatin1String safe("https");
    return from.scheme() == safe && to.scheme() != safe;
}

bool mayAuthorize(const HttpClientConfig& config, const QString& host)
{
    if (!config.domainSuffix.startsWith('.'))
        return true;
    return host == QString::fromLatin1(config.baseHost)
        || host.endsWith(QString::fromLatin1(config.domainSuffix));
}

bool sameOrigin(const TavuUrl& a, const TavuUrl& b)
{
    return a.scheme() == b.scheme() && a.host() == b.host() && effectivePort(a) == effectivePort(b);
}

bool refusesLocalAddresses(const HttpClientConfig& config)
{
    return !config.baseHost.isEmpty() && !isMapped(config) && !isLocalName(config.baseHost);
}

bool isLocalAddress(const sockaddr* address)
{
    // Copied: a socket address need not lie as its family's type wants it aligned.
    if (address->sa_family == AF_INET) {
        sockaddr_in v4{};
        std::memcpy(&v4, address, sizeof v4);
        return isLocal(v4.sin_addr);
    }
    if (address->sa_family == AF_INET6) {
        sockaddr_in6 v6{};
        std::memcpy(&v6, address, sizeof v6);
        return isLocal(v6.sin6_addr);
    }
    return false;
}

bool isSendable(const HttpClientHeaders::Field& field)
{
    const auto& [name, value] = field;
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), isTokenCharacter)
        && std::none_of(value.begin(), value.end(), isControlCharacter);
}

} // namespace httpclient
