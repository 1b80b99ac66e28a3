#pragma once

#include "cmreply.h"
#include "cmvalueitem.h"
#include "httpclient.h"
#include "tavuamazonmusic.h"
#include "tavuurl.h"
#include "tavuvalue.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

/// The one way to the service. Adds the access token and the device's headers to each request,
/// follows redirects, holds requests back while there is no token, has the token renewed when the
/// service refuses it, and fails what waits when the session or the network goes away.
///
/// Every request returns at once. Its reply always ends with a value, later and on this object's
/// thread: the service's answer, whatever its HTTP code, or a made-up result with the code 403 (no
/// session) or 503 (no network); only a refusal for want of a session is there already when the
/// call returns. Everything runs on the thread that made the object.
class AmazonMusicConnect : public QObject
{
    Q_OBJECT

public:
    /// One request on its way. Copies share the reply, which is completed once.
    struct HttpRequest
    {
        enum Method : int { Get = 0, Post = 1 };

        TavuUrl url;
        Method method = Get;
        /// Headers and the redirect limit are filled in when the request is sent.
        HttpClientOptions options;
        QString body;
        /// A refusal has already had the token renewed for this request.
        bool renewAttempted = false;
        int redirectCount = 0;
        CMReply<HttpClient::Result> reply;
    };

    /// The settings must name a base URL.
    AmazonMusicConnect();
    ~AmazonMusicConnect() override;

    // Requests to the URL as given.
    CMReply<HttpClient::Result> get(const TavuUrl& url);
    /// The body is sent as Latin-1.
    CMReply<HttpClient::Result> post(const TavuUrl& url, const QString& body);
    CMReply<HttpClient::Result> sendPost(const TavuUrl& url);

    // Requests to scheme and host of the base URL and the rest of the URL given.
    CMReply<HttpClient::Result> sendBrowseRequest(const TavuUrl& url);
    CMReply<HttpClient::Result> sendReport(
        const TavuUrl& url, const TavuAmazonMusicPlaybackEventReport& report);
    CMReply<HttpClient::Result> sendUserSelect(const TavuUrl& url);
    CMReply<HttpClient::Result> sendRating(
        const TavuUrl& url, const TavuAmazonMusicTrackRatingRequest& request);

    /// The base URL with the path, the query items and the fragment of `url`.
    TavuUrl updateUrl(const TavuUrl& url) const;
    /// Where the service lives now. The service may move it.
    TavuUrl getBaseUrl() const;
    /// The access token; empty when there is none.
    QString getToken() const;

    /// Opens the session, or closes it and fails what waits with 403.
    void setLoggedIn(bool loggedIn);
    /// Completes the request's reply with an empty result that has the HTTP code `code`.
    void cancelRequest(const HttpRequest& request, int code);
    /// The same for every request that waits for a token, in the order of their arrival. Requests
    /// that have been sent go on.
    void cancelAllRequests(int code);
    /// Forgets the answers that are kept for use again.
    void clearCache();

public Q_SLOTS:
    void on_token_changed(const TavuValue& value);
    void on_networkState_changed(const TavuValue& value);
    void on_invalidSessionTimer_timeout();

private:
    CMReply<HttpClient::Result> start(
        HttpRequest::Method method, const TavuUrl& url, const QString& body);
    void send(const HttpRequest& request);
    void transmit(const HttpRequest& request);
    HttpClientHeaders headers() const;
    void sendDone(const HttpClient::Result& result, HttpRequest request);
    void redirect(const HttpClient::Result& result, HttpRequest request);
    bool movesBaseUrl(const HttpRequest& request, const TavuUrl& target) const;
    void moveBaseUrl(const TavuUrl& target);
    void renewToken(HttpRequest request);

    HttpClient* m_httpClient; // Owned.
    TavuUrl m_connectBaseUrl; // Never empty.
    CMValueItem* m_networkStateItem; // Owned.
    CMValueItem* m_tokenItem; // Owned.
    QString m_token; // Empty: none is held.
    bool m_sessionInvalid = true; // Requests are refused.
    QTimer m_invalidSessionTimer;
    QList<HttpRequest> m_queuedRequests; // Waiting for a token, in the order of arrival.
    QString m_deviceCapability; // Empty: the service is told nothing of the device.
};
