// How many reports a second go through the connection to the service, one after another, beside a
// bare POST of the same bytes?

#include "amazonMusicConnect.h"
#include "amazonMusicReporter.h"
#include "cmroot.h"
#include "loopbackanswerer.h"
#include "tavupaths.h"

#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include <QEventLoop>

namespace {

const QByteArray& answer()
{
    static const QByteArray text = "{}";
    return text;
}

std::size_t ignore(const char*, std::size_t size, std::size_t count, void*)
{
    return size * count;
}

void barePost(benchmark::State& state)
{
    const LoopbackAnswerer server(answer());
    const QByteArray body(250, ' '); // As long as a report.
    const QByteArray url = server.url();
    CURL* const easy = curl_easy_init();
    curl_easy_setopt(easy, CURLOPT_PROXY, "");
    curl_easy_setopt(easy, CURLOPT_URL, url.constData());
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, ignore);
    curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE, long(body.size()));
    curl_easy_setopt(easy, CURLOPT_POSTFIELDS, body.constData());
    for (auto _ : state) {
        if (curl_easy_perform(easy) != CURLE_OK)
            state.SkipWithError("the transfer failed");
    }
    curl_easy_cleanup(easy);
    state.SetItemsProcessed(state.iterations());
}

void signIn()
{
    CMRoot()->setValue(TavuNetworkStateConnected(), TavuValue::fromBool(true));
    CMRoot()->setValue(TavuOAuth2ServicePath()
                           .appendSubpath(TavuAmazonMusicName())
                           .appendSubpath(TavuOAuth2AccessTokenSubPath()),
        TavuValue::fromString(QStringLiteral("token")));
}

bool report(AmazonMusicReporter* reporter, const TavuUrl& url)
{
    const auto reply =
        reporter->userReportPlay(url, TavuAmazonMusicEventReason::TrackSelected, true, 1000);
    QEventLoop loop;
    reply.addWatcher([&](const CMVoidReply&) { loop.quit(); });
    if (!reply.isFinished())
        loop.exec();
    return !reply.value().error;
}

void reports(benchmark::State& state)
{
    const LoopbackAnswerer server(answer());
    const TavuUrl url = TavuUrl::fromEncoded(server.url());
    CMRoot()->setValue(TavuAmazonMusicBaseUrlPath(),
        TavuValue::fromString(url.resolved(TavuUrl(QStringLiteral("/"))).toString()));
    signIn();
    AmazonMusicConnect connect;
    AmazonMusicReporter reporter(nullptr, &connect);
    connect.setLoggedIn(true);
    for (auto _ : state) {
        if (!report(&reporter, url))
            state.SkipWithError("a report was refused");
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(barePost)->UseRealTime();
BENCHMARK(reports)->UseRealTime();

} // namespace
