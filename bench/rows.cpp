// What does a rows request cost over the loopback beside a bare GET and a bare parse of the same
// page?

#include "amazonMusicBrowser.h"
#include "amazonMusicConnect.h"
#include "amazonMusicParser.h"
#include "cmroot.h"
#include "loopbackanswerer.h"
#include "servicepage.h"
#include "tavujson.h"
#include "tavupaths.h"

#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include <QEventLoop>

namespace {

std::size_t append(const char* data, std::size_t size, std::size_t count, void* body)
{
    static_cast<QByteArray*>(body)->append(data, static_cast<int>(size * count));
    return size * count;
}

void bareGetAndParse(benchmark::State& state)
{
    const LoopbackAnswerer server(servicePage(static_cast<int>(state.range(0))));
    CURL* const easy = curl_easy_init();
    curl_easy_setopt(easy, CURLOPT_PROXY, "");
    QByteArray body;
    const QByteArray url = server.url();
    curl_easy_setopt(easy, CURLOPT_URL, url.constData());
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &body);
    for (auto _ : state) {
        body.clear();
        if (curl_easy_perform(easy) != CURLE_OK)
            state.SkipWithError("the transfer failed");
        benchmark::DoNotOptimize(TavuJson::parse(body));
    }
    curl_easy_cleanup(easy);
}

/// Asks for the rows and turns the event loop until they are there.
int rowsOf(AmazonMusicBrowser* browser)
{
    const CMGetRowsRequest request(TavuAmazonMusicBrowsePath(), 0, 49,
        { TavuRoles::Title(), TavuRoles::Icon(), TavuRoles::Path(), TavuRoles::Type(),
            TavuRoles::MediaData() });
    QEventLoop loop;
    request.reply().addWatcher([&](const CMVoidReply&) { loop.quit(); });
    browser->browse(request);
    if (!request.reply().isFinished())
        loop.exec();
    return request.reply().value().rowsCount();
}

void rowsRequest(benchmark::State& state)
{
    const LoopbackAnswerer server(servicePage(static_cast<int>(state.range(0))));
    const TavuUrl base = TavuUrl::fromEncoded(server.url()).resolved(TavuUrl(QStringLiteral("/")));
    CMRoot()->setValue(TavuAmazonMusicBaseUrlPath(), TavuValue::fromString(base.toString()));
    CMRoot()->setValue(TavuNetworkStateConnected(), TavuValue::fromBool(true));
    CMRoot()->setValue(TavuOAuth2ServicePath()
                           .appendSubpath(TavuAmazonMusicName())
                           .appendSubpath(TavuOAuth2AccessTokenSubPath()),
        TavuValue::fromString(QStringLiteral("token")));
    AmazonMusicConnect connect;
    AmazonMusicParser parser;
    AmazonMusicBrowser browser(&connect, &parser);
    connect.setLoggedIn(true);
    if (rowsOf(&browser) != state.range(0) + 1)
        state.SkipWithError("rows are missing");
    for (auto _ : state)
        rowsOf(&browser);
}

BENCHMARK(bareGetAndParse)->Arg(50)->UseRealTime();
BENCHMARK(rowsRequest)->Arg(50)->UseRealTime();

} // namespace
