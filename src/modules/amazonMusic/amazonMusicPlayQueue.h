#pragma once

#include "amazonMusicRetrieverChunk.h"
#include "amazonMusicTrack.h"
#include "cmchain.h"
#include "cmreply.h"
#include "tavuenums.h"

#include <QList>
#include <QSet>
#include <QSharedPointer>
#include <QVector>

class AmazonMusicRetriever;

/// The tracks of one play, in the service's order and in a shuffled one. Content of the audio type
/// "tracks" is one chunk that can be shuffled and repeated; any other content can neither, grows
/// chunk by chunk when it is stepped past its end, and forgets its oldest tracks.
///
/// Every answer is a reply, which waits for a chunk when it must, and is finished already when the
/// call returns otherwise. Destroying the queue cancels the replies that wait; a chunk that arrives
/// later touches nothing. Everything runs on the thread of the retriever.
class AmazonMusicPlayQueue
{
public:
    /// One entry; both orders share it.
    struct TrackPointer
    {
        QSharedPointer<AmazonMusicRetrieverChunk> chunk;
        int index = 0; // Within the chunk's tracks.
        int naturalId = 0; // Place in the natural order.
        int shuffleId = 0; // Place in the shuffled order.
    };
    using Order = QVector<QSharedPointer<TrackPointer>>;

    /// Asks `retriever`, which is initialised, not owned, and outlives the queue, for the first
    /// chunk.
    AmazonMusicPlayQueue(AmazonMusicRetriever* retriever, TavuRolesAudioType::Enum audioType);
    virtual ~AmazonMusicPlayQueue();
    Q_DISABLE_COPY_MOVE(AmazonMusicPlayQueue)

    bool shuffleSupported() const;
    bool repeatSupported() const;
    /// How many tracks the queue holds.
    int size() const;

    /// The track to begin with.
    CMReply<AmazonMusicTrack> getFirstTrack();
    /// The track after (before) `track`, in the shuffled order when `shuffle` is set and supported.
    /// With `round` the two ends of the queue are joined; without it, stepping past an end fails,
    /// unless there is a chunk to come.
    CMReply<AmazonMusicTrack> getNextTrack(const AmazonMusicTrack& track, bool shuffle, bool round);
    CMReply<AmazonMusicTrack> getPreviousTrack(
        const AmazonMusicTrack& track, bool shuffle, bool round);
    CMReply<AmazonMusicTrack> getNextPreviousTrack(
        const AmazonMusicTrack& track, bool shuffle, bool round, bool next);

    /// Turning shuffle on makes a new shuffled order that begins with `current`; without a current
    /// track the order stays.
    void playModeChanged(const AmazonMusicTrack& current, bool shuffle);
    /// Cancels every reply that waits.
    void cancel();

    void onNextChunkReceived(const CMReply<AmazonMusicRetrieverChunk>& reply);
    /// Makes a new shuffled order that begins with the entry at `naturalId` of the natural order.
    void shuffleQueue(int naturalId);
    AmazonMusicTrack createAmazonMusicTrack(const QSharedPointer<TrackPointer>& entry) const;
    /// Logs an order, a line for each entry.
    void dumpQueue(const Order& order) const;

private:
    bool holds(int naturalId) const;
    int appendChunk(const AmazonMusicRetrieverChunk& chunk, bool first);
    int trim(int start);
    void unshuffle();
    int presentShuffleId(const AmazonMusicTrack& track) const;
    void stepPastEnd(const CMReply<AmazonMusicTrack>& reply, bool next);
    void failPending(const CMError& error);
    void requestNextChunk();
    void watchChunk(const CMReply<AmazonMusicRetrieverChunk>& reply);
    CMReply<AmazonMusicTrack> createReply();

    AmazonMusicRetriever* m_retriever;
    bool m_noShuffle;
    int m_maxQueueSize = 0; // Entries kept in front of the newest start position.
    bool m_initialized = false; // The first chunk's reply has finished.
    bool m_chunkReceived = false;
    int m_firstIndex = 0; // Natural id of the track to begin with.
    bool m_shuffle = false;
    QSharedPointer<AmazonMusicRetrieverChunk> m_currentChunk; // The newest.
    QList<CMReply<AmazonMusicTrack>> m_pendingReplies; // Waiting for a chunk.
    Order m_naturalOrder;
    Order m_shuffledOrder;
    QSet<CMVoidReply> m_activeReplies; // Made here and not finished.
    bool m_chunkRequested = false; // A next chunk is under way.
    CMContext m_context;
};
