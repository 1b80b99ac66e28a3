// What does a request through HttpClient cost beside the same request through bare libcurl?
// Both keep their connection; the peer answers at once.

#include "httpclient.h"
#include "loopbackanswerer.h"

#include <benchmark/benchmark.h>

#include <curl/curl.h>

#include <QCoreApplication>

namespace {

size_t append(char* data, size_t, size_t count, void* body)
{
    static_cast<QByteArray*>(body)->append(data, int(count));
    return count;
}

/// One handle, used again: the floor.
class BareCurl
{
public:
    BareCurl(const QByteArray& url, const QByteArray& post)
        : m_post(post)
    {
        m_fields = curl_slist_append(m_fields, "Expect:");
        curl_easy_setopt(m_easy, CURLOPT_URL, url.constData());
        curl_easy_setopt(m_easy, CURLOPT_PROXY, "");
        curl_easy_setopt(m_easy, CURLOPT_HTTPHEADER, m_fields);
        curl_easy_setopt(m_easy, CURLOPT_WRITEFUNCTION, &append);
        curl_easy_setopt(m_easy, CURLOPT_WRITEDATA, &m_body);
        if (m_post.isEmpty())
            return;
        curl_easy_setopt(m_easy, CURLOPT_POSTFIELDSIZE, long(m_post.size()));
        curl_easy_setopt(m_easy, CURLOPT_POSTFIELDS, m_post.constData());
    }
    ~BareCurl()
    {
        curl_easy_cleanup(m_easy);
        curl_slist_free_all(m_fields);
    }
    Q_DISABLE_COPY_MOVE(BareCurl)

    bool request()
    {
        m_body.clear();
        return curl_easy_perform(m_easy) == CURLE_OK && !m_body.isEmpty();
    }

private:
    CURL* const m_easy = curl_easy_init();
    curl_slist* m_fields = nullptr;
    const QByteArray m_post;
    QByteArray m_body;
};

class ThroughClient
{
public:
    ThroughClient(const QByteArray& url, const QByteArray& post)
        : m_url(TavuUrl::fromEncoded(url))
        , m_post(post)
    {
        HttpClientHeaders headers;
        headers.insert("authorization", "Bearer some-token");
        m_options.setHeaders(headers);
        m_options.setTimeoutMs(30000);
        m_options.setReadSizeLimit(1024 * 1024);
    }

    bool request()
    {
        bool done = false;
        bool good = false;
        const auto callback = [&](const HttpClient::Result& result) {
            done = true;
            good = result.code == 200 && !result.data.isEmpty();
        };
        if (m_post.isEmpty())
            m_client.get(m_url, m_options, callback);
        else
            m_client.post(m_url, m_post, m_options, callback);
        while (!done)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return good;
    }

private:
    HttpClient m_client{ nullptr, HttpClient::HttpDefault, true };
    HttpClientOptions m_options;
    const TavuUrl m_url;
    const QByteArray m_post;
};

template <class Way>
void run(benchmark::State& state, const QByteArray& post, int answerBytes)
{
    const LoopbackAnswerer answerer(QByteArray(answerBytes, 'x'));
    Way way(answerer.url(), post);
    for (auto _ : state) {
        if (!way.request()) {
            state.SkipWithError("the request failed");
            break;
        }
    }
}

template <class Way>
void get(benchmark::State& state)
{
    run<Way>(state, QByteArray(), int(state.range(0)));
}

template <class Way>
void post(benchmark::State& state)
{
    run<Way>(state, QByteArray(300, 'x'), 2);
}

} // namespace

BENCHMARK(get<BareCurl>)->Arg(20L * 1024)->UseRealTime();
BENCHMARK(get<ThroughClient>)->Arg(20L * 1024)->UseRealTime();
BENCHMARK(post<BareCurl>)->UseRealTime();
BENCHMARK(post<ThroughClient>)->UseRealTime();
