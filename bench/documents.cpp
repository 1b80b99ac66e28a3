// What do the documents and the rows of a page cost on top of reading its JSON? And does a row cost
// the same on a long page as on a short one?

#include "amazonMusicBrowser.h"
#include "amazonMusicParser.h"
#include "cmglobal.h"
#include "servicepage.h"
#include "tavujson.h"

#include <benchmark/benchmark.h>

namespace {

const QStringList& roles()
{
    static const QStringList all{ TavuRoles::Title(), TavuRoles::Icon(), TavuRoles::Path(),
        TavuRoles::Type(), TavuRoles::AudioType(), TavuRoles::ContainerType(),
        TavuRoles::ContainerPlayable(), TavuRoles::MediaData(), TavuRoles::LongDescription() };
    return all;
}

QVariantList rows(const QByteArray& body, const TavuUrl& url)
{
    const AmazonMusicParser parser;
    const AmazonMusicBrowser browser(nullptr, nullptr);
    const auto page = parser.parseBrowseResponse(body, url);
    const QVariantList items = page.itemsInst();
    QVariantList all;
    for (const QVariant& item : items) {
        const TavuAmazonMusicItemDescription description(item.toHash());
        all.append(
            QVariant(CMGlobal::itemRolesToList(roles(), browser.createRow(description, url))));
    }
    return all;
}

void parse(benchmark::State& state)
{
    const QByteArray body = servicePage(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(TavuJson::parse(body));
}

void bodyToRows(benchmark::State& state)
{
    const QByteArray body = servicePage(static_cast<int>(state.range(0)));
    const TavuUrl url = TavuUrl::fromEncoded("https://service.example/folders/1?from=0");
    if (rows(body, url).size() != state.range(0))
        state.SkipWithError("rows are missing");
    for (auto _ : state)
        benchmark::DoNotOptimize(rows(body, url));
}

BENCHMARK(parse)->Arg(50)->Arg(700);
BENCHMARK(bodyToRows)->Arg(50)->Arg(700);

} // namespace
