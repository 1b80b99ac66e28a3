// What does shuffling a long queue cost beside shuffling its bare pointers?

#include "amazonMusicPlayQueue.h"
#include "amazonMusicRetriever.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>

namespace {

constexpr int entries = 100000;

void shuffleQueue(benchmark::State& state)
{
    AmazonMusicRetriever retriever(nullptr, nullptr, nullptr);
    AmazonMusicPlayQueue queue(&retriever, TavuRolesAudioType::Tracks);
    AmazonMusicRetrieverChunk chunk;
    chunk.tracks.resize(entries);
    const auto reply = CMReply<AmazonMusicRetrieverChunk>::create();
    reply.setValue(chunk);
    queue.onNextChunkReceived(reply);
    if (queue.size() != entries)
        state.SkipWithError("tracks are missing");
    for (auto _ : state)
        queue.shuffleQueue(entries / 2);
}

void shufflePointers(benchmark::State& state)
{
    AmazonMusicPlayQueue::Order order;
    for (int id = 0; id < entries; ++id)
        order.append(QSharedPointer<AmazonMusicPlayQueue::TrackPointer>::create());
    std::mt19937 random(1);
    for (auto _ : state)
        std::shuffle(order.begin(), order.end(), random);
}

BENCHMARK(shuffleQueue);
BENCHMARK(shufflePointers);

} // namespace
