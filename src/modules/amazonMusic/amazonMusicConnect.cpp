#include "amazonMusicConnect.h"

#include "amazonMusicLog.h"
#include "amazonMusicSettings.h"
#include "amazonMusicTimes.h"
#include "cmroot.h"
#include "tavuconnect.h"
#include "tavupaths.h"

#include <utility>

namespace {

constexpr int maxRedirects = 5;
constexpr int readSizeLimit = 1048576;
constexpr unsigned long cacheSize = 1048576;

constexpr int forbidden = 403;
constexpr int serviceUnavailable = 503;

bool isRedirect(int code)
{
    AMAZON_MUSIC_ENTER();
    return code == 301 || code == 302 || code == 307 || code == 308;
}

bool isRefusal(int code)
{
    AMAZON_MUSIC_ENTER();
    return code == 401 || code == forbidden;
}

CMPath tokenServicePath(const QString& subpath)
{
    AMAZON_MUSIC_ENTER();
    return TavuOAuth2ServicePath().appendSubpath(TavuAmazonMusicName()).appendSubpath(subpath);
}

/// Whether the settings let the service move its base URL to `host`.
bool isOfServiceDomain(const QString& host)
{
    AMAZON_MUSIC_ENTER();
    const QString suffix = amazonMusicSetting(TavuAmazonMusicDomainSuffixPath()).string();
    return suffix.startsWith(QLatin1Char('.')) && host.endsWith(suffix, Qt::CaseSensitive);
}

} // namespace

AmazonMusicConnect::AmazonMusicConnect()
    : m_httpClient(new HttpClient(this, HttpClient::HttpDefault, true))
    , m_invalidSessionTimer(this)
{
    AMAZON_MUSIC_ENTER();
    m_connectBaseUrl =
        TavuUrl::fromEncoded(amazonMusicSetting(TavuAmazonMusicBaseUrlPath()).string().toUtf8());
    Q_ASSERT(!m_connectBaseUrl.isEmpty());
    m_httpClient->setCacheSize(cacheSize);
    m_invalidSessionTimer.setSingleShot(true);
    m_invalidSessionTimer.setInterval(amazonMusicTimes::invalidSession);
    tavuConnect(&m_invalidSessionTimer, SIGNAL(timeout()), this,
        SLOT(on_invalidSessionTimer_timeout()), Qt::AutoConnection);
    m_tokenItem = new CMValueItem(this, tokenServicePath(TavuOAuth2AccessTokenSubPath()), this,
        SLOT(on_token_changed(TavuValue)), Qt::AutoConnection);
    m_networkStateItem = new CMValueItem(this, TavuNetworkStateConnected(), this,
        SLOT(on_networkState_changed(TavuValue)), Qt::AutoConnection);
    m_deviceCapability = amazonMusicSetting(TavuAmazonMusicDeviceHDCapabilityPath()).string();
}

AmazonMusicConnect::~AmazonMusicConnect()
{
    AMAZON_MUSIC_ENTER();
}

CMReply<HttpClient::Result> AmazonMusicConnect::get(const TavuUrl& url)
{
    AMAZON_MUSIC_ENTER();
    return start(HttpRequest::Get, url, QString());
}

CMReply<HttpClient::Result> AmazonMusicConnect::post(const TavuUrl& url, const QString& body)
{
    AMAZON_MUSIC_ENTER();
    return start(HttpRequest::Post, url, body);
}

CMReply<HttpClient::Result> AmazonMusicConnect::sendPost(const TavuUrl& url)
{
    AMAZON_MUSIC_ENTER();
    return post(url, QString());
}

CMReply<HttpClient::Result> AmazonMusicConnect::sendBrowseRequest(const TavuUrl& url)
{
    AMAZON_MUSIC_ENTER();
    return get(updateUrl(url));
}

CMReply<HttpClient::Result> AmazonMusicConnect::sendReport(
    const TavuUrl& url, const TavuAmazonMusicPlaybackEventReport& report)
{
    AMAZON_MUSIC_ENTER();
    return post(updateUrl(url), report.toJsonString());
}

CMReply<HttpClient::Result> AmazonMusicConnect::sendUserSelect(const TavuUrl& url)
{
    AMAZON_MUSIC_ENTER();
    return post(updateUrl(url), QString());
}

CMReply<HttpClient::Result> AmazonMusicConnect::sendRating(
    const TavuUrl& url, const TavuAmazonMusicTrackRatingRequest& request)
{
    AMAZON_MUSIC_ENTER();
    return post(updateUrl(url), request.toJsonString());
}

TavuUrl AmazonMusicConnect::updateUrl(const TavuUrl& url) const
{
    AMAZON_MUSIC_ENTER();
    TavuUrl updated(m_connectBaseUrl);
    updated.setPath(url.path());
    updated.setQueryItems(url.queryItems());
    updated.setFragment(url.fragment());
    return updated;
}

TavuUrl AmazonMusicConnect::getBaseUrl() const
{
    AMAZON_MUSIC_ENTER();
    return m_connectBaseUrl;
}

QString AmazonMusicConnect::getToken() const
{
    AMAZON_MUSIC_ENTER();
    return m_token;
}

CMReply<HttpClient::Result> AmazonMusicConnect::start(
    HttpRequest::Method method, const TavuUrl& url, const QString& body)
{
    AMAZON_MUSIC_ENTER();
    HttpRequest request;
    request.url = url;
    request.method = method;
    request.options.setTimeoutMs(amazonMusicTimes::requestTimeout);
    request.options.setReadSizeLimit(readSizeLimit);
    request.body = body;
    request.reply = CMReply<HttpClient::Result>::create();
    send(request);
    return request.reply;
}

void AmazonMusicConnect::send(const HttpRequest& request)
{
    AMAZON_MUSIC_ENTER();
    if (m_sessionInvalid)
        cancelRequest(request, forbidden);
    else if (!m_token.isEmpty())
        transmit(request);
    else
        m_queuedRequests.append(request);
}

void AmazonMusicConnect::transmit(const HttpRequest& request)
{
    AMAZON_MUSIC_ENTER();
    HttpClientOptions options(request.options);
    options.setHeaders(headers());
    options.setMaxRedirects(0);
    // The client is destroyed with this object and calls nobody back after that.
    const auto done = [this, request](
                          const HttpClient::Result& result) { sendDone(result, request); };
    if (request.method == HttpRequest::Post)
        m_httpClient->post(request.url, request.body.toLatin1(), options, done);
    else
        m_httpClient->get(request.url, options, done);
}

HttpClientHeaders AmazonMusicConnect::headers() const
{
    AMAZON_MUSIC_ENTER();
    HttpClientHeaders headers;
    headers.insert("authorization", "Bearer " + m_token.toUtf8());
    if (!m_deviceCapability.isEmpty()) {
        headers.insert("x-amzn-audio-drmtype", "WIDEVINE");
        headers.insert("x-amzn-audio-device-capability", m_deviceCapability.toUtf8());
    }
    return headers;
}

void AmazonMusicConnect::sendDone(const HttpClient::Result& result, HttpRequest request)
{
    AMAZON_MUSIC_ENTER();
    if (isRedirect(result.code)) {
        if (request.redirectCount < maxRedirects)
            return redirect(result, std::move(request));
        LOG4CPLUS_WARN(logger(), "Too many redirects, stopping loop: " << request.url);
    } else if (isRefusal(result.code) && !request.renewAttempted) {
        if (!m_token.isEmpty())
            return renewToken(std::move(request));
        if (!m_sessionInvalid)
            return m_queuedRequests.append(request);
    }
    request.reply.setValue(result);
}

void AmazonMusicConnect::redirect(const HttpClient::Result& result, HttpRequest request)
{
    AMAZON_MUSIC_ENTER();
    TavuUrl target = TavuUrl::fromEncoded(result.headers.value("location"));
    target.setScheme(QStringLiteral("https"));
    if (movesBaseUrl(request, target))
        moveBaseUrl(target);
    request.url = target;
    ++request.redirectCount;
    send(request);
}

bool AmazonMusicConnect::movesBaseUrl(const HttpRequest& request, const TavuUrl& target) const
{
    AMAZON_MUSIC_ENTER();
    const QString baseHost = m_connectBaseUrl.host();
    return request.url.host() == baseHost && target.host() != baseHost
        && isOfServiceDomain(target.host()) && !request.renewAttempted;
}

void AmazonMusicConnect::moveBaseUrl(const TavuUrl& target)
{
    AMAZON_MUSIC_ENTER();
    m_connectBaseUrl = TavuUrl();
    m_connectBaseUrl.setScheme(target.scheme());
    m_connectBaseUrl.setHost(target.host());
    m_connectBaseUrl.setPath(QStringLiteral("/"));
    LOG4CPLUS_INFO(logger(), "Connect url changed to: " << m_connectBaseUrl);
}

void AmazonMusicConnect::renewToken(HttpRequest request)
{
    AMAZON_MUSIC_ENTER();
    LOG4CPLUS_ERROR(logger(), "Authentication required - renew token");
    m_token.clear();
    m_invalidSessionTimer.start();
    request.renewAttempted = true;
    m_queuedRequests.append(request);
    CMRoot()->invoke(
        tokenServicePath(TavuOAuth2RefreshTokenSubPath()), QVariant(), CMReply<QVariant>::create());
}

void AmazonMusicConnect::cancelRequest(const HttpRequest& request, int code)
{
    AMAZON_MUSIC_ENTER_WITH("request url: " << request.url << " code: " << code);
    HttpClient::Result result;
    result.url = request.url;
    result.code = code;
    request.reply.setValue(result);
}

void AmazonMusicConnect::cancelAllRequests(int code)
{
    AMAZON_MUSIC_ENTER();
    // Those that wait for the answers may send new requests at once.
    const QList<HttpRequest> requests = std::exchange(m_queuedRequests, {});
    for (const HttpRequest& request : requests)
        cancelRequest(request, code);
}

void AmazonMusicConnect::clearCache()
{
    AMAZON_MUSIC_ENTER();
    m_httpClient->clearCache();
}

void AmazonMusicConnect::setLoggedIn(bool loggedIn)
{
    AMAZON_MUSIC_ENTER();
    if (!loggedIn) {
        m_invalidSessionTimer.stop();
        m_sessionInvalid = true;
        return cancelAllRequests(forbidden);
    }
    m_sessionInvalid = false;
    if (m_token.isEmpty())
        m_invalidSessionTimer.start();
}

void AmazonMusicConnect::on_token_changed(const TavuValue& value)
{
    const QString token = value.string();
    AMAZON_MUSIC_ENTER_WITH("Is set: " << !token.isEmpty());
    m_token = token;
    if (token.isEmpty())
        return m_invalidSessionTimer.start();
    LOG4CPLUS_INFO(logger(), "Token changed, resending queued requests");
    m_invalidSessionTimer.stop();
    m_sessionInvalid = false;
    const QList<HttpRequest> requests = std::exchange(m_queuedRequests, {});
    for (const HttpRequest& request : requests)
        send(request);
}

void AmazonMusicConnect::on_networkState_changed(const TavuValue& value)
{
    AMAZON_MUSIC_ENTER();
    if (!value.bool_())
        cancelAllRequests(serviceUnavailable);
}

void AmazonMusicConnect::on_invalidSessionTimer_timeout()
{
    AMAZON_MUSIC_ENTER();
    m_sessionInvalid = true;
    cancelAllRequests(forbidden);
}
