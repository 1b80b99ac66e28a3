// What do the documents and the rows of a page cost on top of reading its JSON? And does a row cost
// the same on a long page as on a short one?

#include "amazonMusicBrowser.h"
#include "amazonMusicParser.h"
#include "cmglobal.h"
#include "servicepage.h"
#include "tavujson.h"

#include <benchmark/benchmark.h>

namespace {

TavuUrl pageUrl()
{
    return TavuUrl::fromEncoded("https://service.example/folders/1?from=0");
}

// As the browser makes them of an answer.
QList<TavuRoles> rows(const QByteArray& body, const TavuUrl& url)
{
    const AmazonMusicParser parser;
    const AmazonMusicBrowser browser(nullptr, nullptr);
    auto page = parser.parseBrowseResponse(body, url);
    QVariantList items = page.itemsInst();
    page.__remove(TavuAmazonMusicNavigationNodeDescription::ItemsInst());
    QList<TavuRoles> rows;
    for (QVariant& item : items) {
        rows.append(browser.createRow(TavuAmazonMusicItemDescription(item.toHash()), url));
        item.clear();
    }
    return rows;
}

// As it answers a request for all of them.
QVariantList reply(const QList<TavuRoles>& rows)
{
    static const QStringList roles{ TavuRoles::Title(), TavuRoles::Icon(), TavuRoles::Path(),
        TavuRoles::Type(), TavuRoles::AudioType(), TavuRoles::ContainerType(),
        TavuRoles::ContainerPlayable(), TavuRoles::MediaData(), TavuRoles::LongDescription() };
    QVariantList lists;
    for (const TavuRoles& row : rows)
        lists.append(QVariant(CMGlobal::itemRolesToList(roles, row)));
    return lists;
}

void parse(benchmark::State& state)
{
    withEachAnswer(state, servicePage(static_cast<int>(state.range(0))),
        [](const QByteArray& body) { benchmark::DoNotOptimize(TavuJson::parse(body)); });
}

void bodyToRows(benchmark::State& state)
{
    const QByteArray page = servicePage(static_cast<int>(state.range(0)));
    if (rows(page, pageUrl()).size() != state.range(0))
        state.SkipWithError("rows are missing");
    withEachAnswer(state, page,
        [url = pageUrl()](const QByteArray& body) { benchmark::DoNotOptimize(rows(body, url)); });
}

void bodyToReply(benchmark::State& state)
{
    withEachAnswer(state, servicePage(static_cast<int>(state.range(0))),
        [url = pageUrl()](
            const QByteArray& body) { benchmark::DoNotOptimize(reply(rows(body, url))); });
}

BENCHMARK(parse)->Arg(50)->Arg(100)->Arg(200)->Arg(400)->Arg(700);
BENCHMARK(bodyToRows)->Arg(50)->Arg(100)->Arg(200)->Arg(400)->Arg(700);
BENCHMARK(bodyToReply)->Arg(50)->Arg(700);

} // namespace
