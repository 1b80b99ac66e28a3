#pragma once

#include "amazonMusicRetrieverChunk.h"
#include "cmchain.h"
#include "cmlistrowsnode.h"
#include "cmreply.h"
#include "httpclient.h"
#include "tavuamazonmusic.h"
#include "tavuurl.h"

#include <QObject>
#include <QPointer>
#include <QSet>

class AmazonMusicConnect;
class AmazonMusicParser;

/// Turns the URL of something to play into chunks of tracks. Every operation returns at once; its
/// reply ends later on this object's thread: with what was fetched, with an error that says what
/// could not be, or by cancel(). An error on the way ends the whole operation unchanged.
class AmazonMusicRetriever : public QObject
{
    Q_OBJECT

public:
    /// What the URL given to init() names.
    enum Type : int { None = 0, Playable = 1, Track = 2 };

    /// `stationsErrorNode` shows the messages with which the service refuses a chunk. The three are
    /// not owned.
    AmazonMusicRetriever(
        AmazonMusicConnect* connect, AmazonMusicParser* parser, CMListRowsNode* stationsErrorNode);
    ~AmazonMusicRetriever() override;

    /// Says what is to be played. May be called again; what is under way goes on.
    void init(const TavuUrl& url, Type type);
    /// The first chunk of what init() named, with the index of the track to begin with.
    CMReply<AmazonMusicRetrieverChunk> getFirstChunk();
    /// The chunk that follows; its index is that of the first track to follow.
    CMReply<AmazonMusicRetrieverChunk> getNextChunk(const AmazonMusicRetrieverChunk& chunk);
    /// Ends every unfinished reply. What init() named stays.
    void cancel();

    CMReply<TavuAmazonMusicPlayable> fetchPlayable(const TavuUrl& url);
    CMReply<TavuAmazonMusicTrackContainerChunkDescription> fetchChunkDescription(
        const TavuUrl& url);
    CMReply<TavuAmazonMusicTrackInstance> fetchTrackInstance(const TavuUrl& url);

private:
    using ChunkDescription = TavuAmazonMusicTrackContainerChunkDescription;

    void fetchPlayableFinished(
        const HttpClient::Result& result, const CMReply<TavuAmazonMusicPlayable>& reply);
    void fetchChunkDescriptionFinished(
        const HttpClient::Result& result, const CMReply<ChunkDescription>& reply);
    void fetchTrackInstanceFinished(
        const HttpClient::Result& result, const CMReply<TavuAmazonMusicTrackInstance>& reply);
    void refuseChunk(const QByteArray& body, const CMReply<ChunkDescription>& reply);

    void fetchPlayableDone(
        const CMReply<AmazonMusicRetrieverChunk>& reply, const TavuAmazonMusicPlayable& playable);
    void fetchPointer(const CMReply<AmazonMusicRetrieverChunk>& reply,
        const TavuAmazonMusicTrackPointer& pointer);
    void fetchChunkUrl(
        const CMReply<AmazonMusicRetrieverChunk>& reply, const TavuUrl& url, int index);
    void fetchTrackUrl(const CMReply<AmazonMusicRetrieverChunk>& reply, const TavuUrl& url);
    void fetchTrackInstanceDone(const CMReply<AmazonMusicRetrieverChunk>& reply,
        const TavuAmazonMusicTrackInstance& instance, const TavuUrl& url);
    AmazonMusicRetrieverChunk createChunk(const ChunkDescription& description,
        const TavuUrl& chunkUrl, const TavuUrl& trackUrl, int index) const;

    void cancelActiveReplys();
    template <class T>
    CMReply<T> createReply();

    AmazonMusicConnect* m_connect;
    AmazonMusicParser* m_parser;
    QPointer<CMListRowsNode> m_rowsNode; // Owned by the node tree, which may go first.
    TavuUrl m_url;
    Type m_type = None;
    QSet<CMVoidReply> m_activeReplies; // Every reply made here and not finished.
    CMContext m_context;
};
