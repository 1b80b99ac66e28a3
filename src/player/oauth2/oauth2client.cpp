#include "oauth2client.h"

#include "oauth2answers.h"
#include "tavujson.h"

#include <QUrl>

namespace player {

namespace {

constexpr int timeoutMs = 30000;
constexpr int readLimit = 256 * 1024;

QByteArray encoded(const QString& text)
{
    return QUrl::toPercentEncoding(text);
}

QByteArray formOf(const OAuth2Client::Parameters& parameters)
{
    QByteArrayList items;
    for (const auto& [name, value] : parameters)
        items.append(encoded(name) + '=' + encoded(value));
    return items.join('&');
}

OAuth2Client::Answer::Kind kindOfFailure(HttpClientStatus status)
{
    switch (status) {
    case HttpClientStatus::InvalidUrl:
        return OAuth2Client::Answer::Refused;
    case HttpClientStatus::NameNotResolved:
    case HttpClientStatus::ConnectFailed:
    case HttpClientStatus::TlsFailed:
        return OAuth2Client::Answer::Unavailable;
    default:
        return OAuth2Client::Answer::Lost;
    }
}

/// For use within a sentence of ours.
QString reasonOf(const HttpClient::Result& result)
{
    QString reason = result.reason;
    if (reason.endsWith(QLatin1Char('.')))
        reason.chop(1);
    if (result.error == HttpClientStatus::TlsFailed)
        reason += QLatin1String("; check service.ca-file and the service's addresses in the "
                                "settings, and this machine's date");
    return reason;
}

bool isPassing(int code)
{
    return code >= 500 || code == 408 || code == 429;
}

OAuth2Client::Answer answerOf(const HttpClient::Result& result)
{
    using Answer = OAuth2Client::Answer;
    if (result.error != HttpClientStatus::Ok)
        return { kindOfFailure(result.error), {}, reasonOf(result) };
    const QVariant json = TavuJson::parse(result.data);
    const QVariantHash fields = json.toHash();
    const QString status = QStringLiteral("HTTP status %1").arg(result.code);
    if (isPassing(result.code))
        return { Answer::Unavailable, fields, status };
    if (result.code != 200)
        return { Answer::Refused, fields, status };
    if (json.type() != QVariant::Hash)
        return { Answer::Lost, {}, QStringLiteral("the answer is not a JSON object") };
    return { Answer::Success, fields, QString() };
}

} // namespace

OAuth2Client::OAuth2Client(const TavuOAuth2ServiceInfo& info, HttpClient& http)
    : m_info(info)
    , m_http(http)
{
}

void OAuth2Client::askForDeviceCode(
    const Parameters& parameters, const CMContext& context, Done done) const
{
    post(m_info.deviceCodeUrl(), parameters, Repeat::OnDeadConnection, context, std::move(done));
}

void OAuth2Client::askForToken(
    const Parameters& parameters, const CMContext& context, Done done) const
{
    post(m_info.tokenUrl(), parameters, Repeat::Never, context, std::move(done));
}

void OAuth2Client::post(const QString& url, const Parameters& parameters, Repeat repeat,
    const CMContext& context, Done done) const
{
    m_http.post(TavuUrl(url), formOf(withClient(parameters)), options(repeat),
        [alive = context.token(), done = std::move(done)](const HttpClient::Result& result) {
            if (!alive.expired())
                done(answerOf(result));
        });
}

OAuth2Client::Parameters OAuth2Client::withClient(const Parameters& parameters) const
{
    Parameters all = parameters;
    if (m_info.authMethod() == TavuOAuth2AuthMethod::Basic && !m_info.clientSecret().isEmpty())
        return all;
    all.append({ QStringLiteral("client_id"), m_info.clientId() });
    if (!m_info.clientSecret().isEmpty())
        all.append({ QStringLiteral("client_secret"), m_info.clientSecret() });
    return all;
}

HttpClientOptions OAuth2Client::options(Repeat repeat) const
{
    HttpClientHeaders headers;
    headers.insert("content-type", "application/x-www-form-urlencoded");
    headers.insert("accept", "application/json");
    if (m_info.authMethod() == TavuOAuth2AuthMethod::Basic && !m_info.clientSecret().isEmpty())
        headers.insert("authorization",
            "Basic "
                + (encoded(m_info.clientId()) + ':' + encoded(m_info.clientSecret())).toBase64());
    HttpClientOptions made;
    made.setHeaders(headers);
    made.setTimeoutMs(timeoutMs);
    made.setReadSizeLimit(readLimit);
    made.setRepeatable(repeat == Repeat::OnDeadConnection);
    return made;
}

} // namespace player
