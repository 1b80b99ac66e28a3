#pragma once

#include "cmchain.h"
#include "httpclient.h"
#include "tavuoauth2serviceinfo.h"

#include <QList>
#include <QPair>
#include <QVariantHash>

#include <functional>

namespace player {

/// Asks the authorization server of one service, as the client that the service's info names.
class OAuth2Client
{
public:
    using Parameters = QList<QPair<QString, QString>>;

    struct Answer
    {
        enum Kind {
            Success,
            Refused, ///< The server has understood and says no.
            Unavailable, ///< It has not; asking again later may help.
            Lost, ///< It may have carried out the request, but its answer did not arrive.
        };
        Kind kind;
        QVariantHash json;
        /// For people; empty after a success.
        QString reason;
    };
    using Done = std::function<void(const Answer&)>;

    /// `http` must outlive the client.
    OAuth2Client(const TavuOAuth2ServiceInfo& info, HttpClient& http);

    const TavuOAuth2ServiceInfo& info() const { return m_info; }

    /// `done` is called once, from the event loop, unless the client or `context` has died by then.
    void askForDeviceCode(const Parameters& parameters, const CMContext& context, Done done) const;
    /// Sent once: a refresh token is used up by its answer, and polls are not to come in pairs.
    void askForToken(const Parameters& parameters, const CMContext& context, Done done) const;

private:
    enum class Repeat { Never, OnDeadConnection };
    void post(const QString& url, const Parameters& parameters, Repeat repeat,
        const CMContext& context, Done done) const;
    Parameters withClient(const Parameters& parameters) const;
    HttpClientOptions options(Repeat repeat) const;

    const TavuOAuth2ServiceInfo m_info;
    HttpClient& m_http;
};

} // namespace player
