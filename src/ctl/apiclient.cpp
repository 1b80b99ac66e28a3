#include "apiclient.h"

#include "messages.h"
#include "tavujson.h"

#include <QEventLoop>

namespace ctl {

namespace {

// Longer than the player's own deadline, so that its words reach the user.
constexpr int timeoutMs = 40000;
constexpr int answerAtMost = 8 * 1024 * 1024;

QString problemOf(const HttpClient::Result& result, const QVariantHash& body, const QString& base)
{
    if (result.code == 0)
        return QStringLiteral(
            "No player answers at %1 (%2). Start it, or name its address with --url.")
            .arg(base, HttpClient::toString(result.error));
    if (result.code < 400)
        return QString();
    const QString title = body.value(QStringLiteral("title")).toString();
    const QString detail = body.value(QStringLiteral("detail")).toString();
    if (title.isEmpty() && detail.isEmpty())
        return QStringLiteral("The player answered with code %1.").arg(result.code);
    return words(title, detail);
}

} // namespace

ApiClient::ApiClient(const QString& base, const QString& token)
    : m_base(base)
    , m_token(token)
    , m_http(nullptr, HttpClient::HttpDefault, false)
{
}

TavuUrl ApiClient::url(const QString& path) const
{
    return TavuUrl(m_base + QLatin1String("/api/v1") + path);
}

HttpClientOptions ApiClient::options() const
{
    HttpClientOptions options;
    options.setTimeoutMs(timeoutMs);
    options.setReadSizeLimit(answerAtMost);
    if (!m_token.isEmpty()) {
        HttpClientHeaders headers;
        headers.insert("authorization", "Bearer " + m_token.toUtf8());
        options.setHeaders(headers);
    }
    return options;
}

Answer ApiClient::get(const QString& path, const QList<QPair<QString, QString>>& query)
{
    TavuUrl target = url(path);
    for (const auto& [name, value] : query)
        target.addQueryItem(name, value);
    return wait(
        [&](const HttpClient::Callback& callback) { m_http.get(target, options(), callback); });
}

Answer ApiClient::post(const QString& path, const QVariantHash& body)
{
    const QByteArray json = TavuJson::toJson(body);
    return wait([&](const HttpClient::Callback& callback) {
        m_http.post(url(path), json, options(), callback);
    });
}

Answer ApiClient::wait(const std::function<void(const HttpClient::Callback&)>& send)
{
    QEventLoop loop;
    Answer answer;
    send([&](const HttpClient::Result& result) {
        answer.code = result.code;
        answer.body = TavuJson::parse(result.data).toHash();
        answer.problem = problemOf(result, answer.body, m_base);
        loop.quit();
    });
    loop.exec();
    return answer;
}

} // namespace ctl
