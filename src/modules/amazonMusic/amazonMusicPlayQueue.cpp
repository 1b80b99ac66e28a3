#include "amazonMusicPlayQueue.h"

#include "amazonMusicLog.h"
#include "amazonMusicRetriever.h"
#include "amazonMusicSettings.h"
#include "tavupaths.h"

#include <cstdlib>
#include <utility>

namespace {

CMError failure(const char* message)
{
    AMAZON_MUSIC_ENTER();
    return CMError(TrString(TrCharData(trExtractContext("AmazonMusicPlayQueue"), message)));
}

} // namespace

AmazonMusicPlayQueue::AmazonMusicPlayQueue(
    AmazonMusicRetriever* retriever, TavuRolesAudioType::Enum audioType)
    : m_retriever(retriever)
    , m_noShuffle(audioType != TavuRolesAudioType::Tracks)
{
    AMAZON_MUSIC_ENTER_WITH(TavuRolesAudioType::toString(audioType));
    m_maxQueueSize = amazonMusicSetting(TavuAmazonMusicMaxQueueSizePath()).i32();
    watchChunk(m_retriever->getFirstChunk());
}

AmazonMusicPlayQueue::~AmazonMusicPlayQueue()
{
    AMAZON_MUSIC_ENTER();
    cancel();
}

bool AmazonMusicPlayQueue::shuffleSupported() const
{
    AMAZON_MUSIC_ENTER();
    return !m_noShuffle;
}

bool AmazonMusicPlayQueue::repeatSupported() const
{
    AMAZON_MUSIC_ENTER();
    return shuffleSupported();
}

int AmazonMusicPlayQueue::size() const
{
    AMAZON_MUSIC_ENTER();
    return m_naturalOrder.size();
}

CMReply<AmazonMusicTrack> AmazonMusicPlayQueue::getFirstTrack()
{
    AMAZON_MUSIC_ENTER_WITH("Initialized: " << m_initialized);
    CMReply<AmazonMusicTrack> reply = createReply();
    if (!m_initialized) {
        LOG4CPLUS_DEBUG(logger(), "Waiting for init");
        m_pendingReplies.append(reply);
    } else if (m_naturalOrder.isEmpty() || m_firstIndex >= m_naturalOrder.size()) {
        const CMError error = failure("Failed to get first chunk, nothing to play");
        reply.setError(error);
        LOG4CPLUS_ERROR(logger(), error.message());
    } else {
        reply.setValue(createAmazonMusicTrack(m_naturalOrder.at(m_firstIndex)));
    }
    return reply;
}

CMReply<AmazonMusicTrack> AmazonMusicPlayQueue::getNextTrack(
    const AmazonMusicTrack& track, bool shuffle, bool round)
{
    AMAZON_MUSIC_ENTER();
    return getNextPreviousTrack(track, shuffle, round, true);
}

CMReply<AmazonMusicTrack> AmazonMusicPlayQueue::getPreviousTrack(
    const AmazonMusicTrack& track, bool shuffle, bool round)
{
    AMAZON_MUSIC_ENTER();
    return getNextPreviousTrack(track, shuffle, round, false);
}

CMReply<AmazonMusicTrack> AmazonMusicPlayQueue::getNextPreviousTrack(
    const AmazonMusicTrack& track, bool shuffle, bool round, bool next)
{
    AMAZON_MUSIC_ENTER_WITH("Shuffle: " << shuffle << " round: " << round << " next: " << next);
    CMReply<AmazonMusicTrack> reply = createReply();
    if (!holds(track.naturalId())) {
        reply.setError(failure("Current track is not more available"));
        return reply;
    }
    const bool shuffled = shuffle && shuffleSupported();
    const Order& order = shuffled ? m_shuffledOrder : m_naturalOrder;
    const int size = order.size();
    int position = (shuffled ? presentShuffleId(track) : track.naturalId()) + (next ? 1 : -1);
    const bool inside = position >= 0 && position < size;
    if (!inside && !round) {
        stepPastEnd(reply, next);
        return reply;
    }
    if (inside) {
        LOG4CPLUS_DEBUG(logger(), "Next track id: " << position << " queue size: " << size);
    } else {
        position = position >= size ? position % size : position + size;
        LOG4CPLUS_DEBUG(logger(), "Next track rounded id: " << position);
    }
    reply.setValue(createAmazonMusicTrack(order.at(position)));
    return reply;
}

/// Content that grows has the reply wait for the chunk that follows.
void AmazonMusicPlayQueue::stepPastEnd(const CMReply<AmazonMusicTrack>& reply, bool next)
{
    AMAZON_MUSIC_ENTER();
    if (next && m_noShuffle) {
        m_pendingReplies.append(reply);
        requestNextChunk();
        return;
    }
    const CMError error = failure("End of queue reached");
    reply.setError(error);
    LOG4CPLUS_DEBUG(logger(), error.message());
}

void AmazonMusicPlayQueue::playModeChanged(const AmazonMusicTrack& current, bool shuffle)
{
    AMAZON_MUSIC_ENTER_WITH(
        "Play mode changed, shuffle: " << shuffle << " old shuffle " << m_shuffle);
    if (m_noShuffle || shuffle == m_shuffle)
        return;
    m_shuffle = shuffle;
    if (shuffle && holds(current.naturalId()))
        shuffleQueue(current.naturalId());
}

void AmazonMusicPlayQueue::cancel()
{
    AMAZON_MUSIC_ENTER();
    // A snapshot, as each reply leaves the set while it is cancelled.
    const QList<CMVoidReply> replies = m_activeReplies.values();
    for (const CMVoidReply& reply : replies)
        reply.cancel();
}

void AmazonMusicPlayQueue::onNextChunkReceived(const CMReply<AmazonMusicRetrieverChunk>& reply)
{
    AMAZON_MUSIC_ENTER();
    const bool first = !m_chunkReceived;
    m_initialized = true;
    m_chunkReceived = true;
    m_chunkRequested = false;
    if (reply.error().isSet())
        return failPending(reply.error());
    const AmazonMusicRetrieverChunk chunk = reply.value();
    if (chunk.tracks.isEmpty())
        return failPending(failure("No more chunks to play"));

    int start = appendChunk(chunk, first);
    if (shuffleSupported())
        shuffleQueue(m_firstIndex);
    else if (m_maxQueueSize < start)
        start = trim(start);
    LOG4CPLUS_DEBUG(logger(), "Setting next track");
    const AmazonMusicTrack track = createAmazonMusicTrack(m_naturalOrder.at(start));
    // Whoever hears of a track may replace this queue: nothing of it is touched from here on.
    const auto pending = std::exchange(m_pendingReplies, {});
    for (const CMReply<AmazonMusicTrack>& waiting : pending)
        waiting.setValue(track);
}

void AmazonMusicPlayQueue::shuffleQueue(int naturalId)
{
    AMAZON_MUSIC_ENTER_WITH("Current natural id: " << naturalId);
    unshuffle();
    const int size = m_shuffledOrder.size();
    QSharedPointer<TrackPointer>* const entries = m_shuffledOrder.data();
    for (int i = 1; i < size; ++i) {
        const int j = std::rand() % (i + 1);
        if (j != i)
            entries[i].swap(entries[j]);
    }
    for (int i = 0; i < size; ++i)
        entries[i]->shuffleId = i;

    const int place = m_naturalOrder.at(naturalId)->shuffleId;
    entries[0].swap(entries[place]);
    entries[place]->shuffleId = place;
    entries[0]->shuffleId = 0;
}

/// Brings the shuffled order back to the natural one. Once an album was shuffled its entries are
/// all there, each at its shuffle id, and are moved: to drop and take a reference to each of very
/// many entries in random order takes longer than to shuffle them.
void AmazonMusicPlayQueue::unshuffle()
{
    AMAZON_MUSIC_ENTER();
    const int size = m_naturalOrder.size();
    if (m_noShuffle || m_shuffledOrder.size() != size) {
        m_shuffledOrder = m_naturalOrder;
        return;
    }
    Order natural(size);
    QSharedPointer<TrackPointer>* const to = natural.data();
    QSharedPointer<TrackPointer>* const from = m_shuffledOrder.data();
    for (int i = 0; i < size; ++i)
        to[i].swap(from[m_naturalOrder.at(i)->shuffleId]);
    m_shuffledOrder.swap(natural);
}

AmazonMusicTrack AmazonMusicPlayQueue::createAmazonMusicTrack(
    const QSharedPointer<TrackPointer>& entry) const
{
    AMAZON_MUSIC_ENTER();
    const QVector<TavuAmazonMusicTrackInstance>& tracks = entry->chunk->tracks;
    Q_ASSERT_X(entry->index >= 0 && entry->index < tracks.size(), "AmazonMusicPlayQueue",
        "index out of range");
    return AmazonMusicTrack(entry->naturalId, entry->shuffleId, tracks.at(entry->index));
}

void AmazonMusicPlayQueue::dumpQueue(const Order& order) const
{
    AMAZON_MUSIC_ENTER();
    for (int i = 0; i < order.size(); ++i) {
        const QSharedPointer<TrackPointer>& entry = order.at(i);
        LOG4CPLUS_INFO(logger(),
            i << " natural " << entry->naturalId << " shuffle " << entry->shuffleId << " chunk "
              << (entry->chunk ? 1 : 0) << " index " << entry->index);
    }
}

bool AmazonMusicPlayQueue::holds(int naturalId) const
{
    AMAZON_MUSIC_ENTER();
    return naturalId >= 0 && naturalId < m_naturalOrder.size();
}

/// The shuffle id that a track was made with is out of date once the queue was shuffled anew.
int AmazonMusicPlayQueue::presentShuffleId(const AmazonMusicTrack& track) const
{
    AMAZON_MUSIC_ENTER();
    return m_naturalOrder.at(track.naturalId())->shuffleId;
}

/// Returns the natural id of the entry that the chunk's index names; -1 when it names none.
int AmazonMusicPlayQueue::appendChunk(const AmazonMusicRetrieverChunk& chunk, bool first)
{
    AMAZON_MUSIC_ENTER();
    m_currentChunk = QSharedPointer<AmazonMusicRetrieverChunk>::create(chunk);
    m_naturalOrder.reserve(m_naturalOrder.size() + chunk.tracks.size());
    int start = -1;
    for (int i = first ? 0 : qMax(0, chunk.index); i < chunk.tracks.size(); ++i) {
        const int id = m_naturalOrder.size();
        if (i == chunk.index)
            start = id;
        m_naturalOrder.append(
            QSharedPointer<TrackPointer>::create(TrackPointer{ m_currentChunk, i, id, id }));
    }
    if (first)
        m_firstIndex = chunk.index;
    return start;
}

/// Forgets the oldest entries and returns where the one at `start` is now.
int AmazonMusicPlayQueue::trim(int start)
{
    AMAZON_MUSIC_ENTER();
    m_naturalOrder.remove(0, start - m_maxQueueSize);
    for (int i = 0; i < m_naturalOrder.size(); ++i)
        m_naturalOrder.at(i)->naturalId = i;
    return m_maxQueueSize;
}

void AmazonMusicPlayQueue::failPending(const CMError& error)
{
    AMAZON_MUSIC_ENTER();
    const auto pending = std::exchange(m_pendingReplies, {});
    for (const CMReply<AmazonMusicTrack>& waiting : pending)
        waiting.setError(error);
}

void AmazonMusicPlayQueue::requestNextChunk()
{
    AMAZON_MUSIC_ENTER();
    // The chunk that is under way answers all who wait. Asked for twice, its tracks would stand
    // twice in the queue.
    if (m_chunkRequested)
        return;
    m_chunkRequested = true;
    watchChunk(m_retriever->getNextChunk(*m_currentChunk));
}

void AmazonMusicPlayQueue::watchChunk(const CMReply<AmazonMusicRetrieverChunk>& reply)
{
    AMAZON_MUSIC_ENTER();
    cmchain::whenFinished(
        reply, m_context, [this](const CMReply<AmazonMusicRetrieverChunk>& finished) {
            onNextChunkReceived(finished);
        });
}

CMReply<AmazonMusicTrack> AmazonMusicPlayQueue::createReply()
{
    AMAZON_MUSIC_ENTER();
    auto reply = CMReply<AmazonMusicTrack>::create();
    m_activeReplies.insert(reply);
    cmchain::whenFinished(reply, m_context,
        [this](const CMReply<AmazonMusicTrack>& finished) { m_activeReplies.remove(finished); });
    return reply;
}
