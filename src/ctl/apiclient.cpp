#include "apiclient.h"

#include "messages.h"
#include "tavujson.h"

#include <QEventLoop>

namespace ctl {

namespace {

// Longer than the player's own deadline, so that its words reach the user.
constexpr int timeoutMs = 40000;
constexpr int answerAtMost = 8 * 1024 * 1024;

QString nobodyAnswers(const QString& base, HttpClientStatus why)
{
    return QStringLiteral("No player answers at %1 (%2). Start it, or name its address with --url.")
        .arg(base, HttpClient::toString(why));
}

QString isNoPlayer(const QString& base, int code)
{
    return QStringLiteral("What answers at %1 is no player (code %2). Name the player's address "
                          "with --url.")
        .arg(base)
        .arg(code);
}

QString tokenNeeded(bool given)
{
    return given ? QStringLiteral("The token is not this player's. The player prints it when it "
                                  "starts; give it with --token or TAVU_TOKEN.")
                 : QStringLiteral("This player asks for its token, which it prints when it starts. "
                                  "Give it with --token or TAVU_TOKEN.");
}

QString wordsOf(int code, const QVariantHash& body)
{
    const QString title = body.value(QStringLiteral("title")).toString();
    const QString detail = body.value(QStringLiteral("detail")).toString();
    // The titles of refused requests are HTTP's own, such as "Bad Request".
    return code < 409 && !detail.isEmpty() ? detail : words(title, detail);
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
        answer.problem = problemOf(result, answer.body);
        loop.quit();
    });
    loop.exec();
    return answer;
}

QString ApiClient::problemOf(const HttpClient::Result& result, const QVariantHash& body) const
{
    if (result.code == 0)
        return nobodyAnswers(m_base, result.error);
    if (result.code == 401)
        return tokenNeeded(!m_token.isEmpty());
    const bool isJson = TavuJson::parse(result.data).type() == QVariant::Hash;
    if (!isJson || (result.code >= 400 && !body.contains(QStringLiteral("title"))))
        return isNoPlayer(m_base, result.code);
    return result.code < 400 ? QString() : wordsOf(result.code, body);
}

} // namespace ctl
