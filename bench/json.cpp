// How fast is TavuJson beside Qt's own reader, when both are to give hashes at every level?

#include "servicepage.h"
#include "tavujson.h"

#include <benchmark/benchmark.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QVariant hashes(const QJsonValue& value)
{
    if (value.isObject()) {
        const QJsonObject object = value.toObject();
        QVariantHash hash;
        hash.reserve(object.size());
        for (auto member = object.begin(); member != object.end(); ++member)
            hash.insert(member.key(), hashes(member.value()));
        return hash;
    }
    if (value.isArray()) {
        const QJsonArray array = value.toArray();
        QVariantList list;
        list.reserve(array.size());
        for (const QJsonValue& element : array)
            list.append(hashes(element));
        return list;
    }
    return value.toVariant();
}

void byTavuJson(benchmark::State& state)
{
    const QByteArray page = servicePage(static_cast<int>(state.range(0)));
    withEachAnswer(state, page,
        [](const QByteArray& body) { benchmark::DoNotOptimize(TavuJson::parse(body)); });
    state.SetBytesProcessed(state.iterations() * page.size());
}

void byQJsonDocument(benchmark::State& state)
{
    const QByteArray page = servicePage(static_cast<int>(state.range(0)));
    withEachAnswer(state, page, [](const QByteArray& body) {
        benchmark::DoNotOptimize(hashes(QJsonDocument::fromJson(body).object()));
    });
    state.SetBytesProcessed(state.iterations() * page.size());
}

BENCHMARK(byTavuJson)->Arg(50)->Arg(700);
BENCHMARK(byQJsonDocument)->Arg(50)->Arg(700);

} // namespace
