#pragma once

#include <benchmark/benchmark.h>

#include <QByteArray>

/// A page of the service with so many rows, three tracks to each album, as long and as deep as the
/// service makes them: about 1.2 kB a row.
QByteArray servicePage(int items);

/// Calls `work(body)` in each turn of a bench with a copy of `page` that the clock does not see
/// made: the HTTP client hands over each answer in a buffer of its own. Without one the heap would
/// never be put in order between two turns, which spares a short page a sixth and a long one
/// nothing.
template <class Work>
void withEachAnswer(benchmark::State& state, const QByteArray& page, Work&& work)
{
    for (auto _ : state) {
        state.PauseTiming();
        const QByteArray body(page.constData(), page.size());
        state.ResumeTiming();
        work(body);
    }
}
