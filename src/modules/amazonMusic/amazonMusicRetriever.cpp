#include "amazonMusicRetriever.h"

#include "amazonMusicConnect.h"
#include "amazonMusicLog.h"
#include "amazonMusicParser.h"
#include "amazonMusicRedact.h"
#include "tavuactionreply.h"

namespace {

constexpr int ok = 200;
constexpr int conflict = 409;

// The values of "%1" and "%2".
QList<TrArg> outcome(const HttpClient::Result& result)
{
    AMAZON_MUSIC_ENTER();
    return { QString::number(result.code), HttpClient::toString(result.error) };
}

void fail(const CMVoidReply& reply, const CMError& error)
{
    AMAZON_MUSIC_ENTER();
    reply.setError(error);
    LOG4CPLUS_ERROR(logger(), error.message());
}

} // namespace

AmazonMusicRetriever::AmazonMusicRetriever(
    AmazonMusicConnect* connect, AmazonMusicParser* parser, CMListRowsNode* stationsErrorNode)
    : m_connect(connect)
    , m_parser(parser)
    , m_rowsNode(stationsErrorNode)
{
    AMAZON_MUSIC_ENTER();
}

AmazonMusicRetriever::~AmazonMusicRetriever()
{
    AMAZON_MUSIC_ENTER();
}

void AmazonMusicRetriever::init(const TavuUrl& url, Type type)
{
    AMAZON_MUSIC_ENTER_WITH("url " << url << " type: " << type);
    m_url = url;
    m_type = type;
}

CMReply<AmazonMusicRetrieverChunk> AmazonMusicRetriever::getFirstChunk()
{
    AMAZON_MUSIC_ENTER();
    auto reply = createReply<AmazonMusicRetrieverChunk>();
    switch (m_type) {
    case Playable:
        cmchain::whenSucceeded(fetchPlayable(m_url), reply, m_context,
            [this, reply](
                const TavuAmazonMusicPlayable& playable) { fetchPlayableDone(reply, playable); });
        break;
    case Track:
        fetchTrackUrl(reply, m_url);
        break;
    case None:
        reply.setError(
            CMError(TrCharData(trExtractContext("AmazonMusicRetriever"), "Nothing to play")));
        LOG4CPLUS_ERROR(logger(), "Nothing to play - retriever is not initialized");
        break;
    }
    return reply;
}

CMReply<AmazonMusicRetrieverChunk> AmazonMusicRetriever::getNextChunk(
    const AmazonMusicRetrieverChunk& chunk)
{
    AMAZON_MUSIC_ENTER();
    auto reply = createReply<AmazonMusicRetrieverChunk>();
    fetchPointer(reply, chunk.nextTrackPointer);
    return reply;
}

void AmazonMusicRetriever::cancel()
{
    AMAZON_MUSIC_ENTER();
    cancelActiveReplys();
}

CMReply<TavuAmazonMusicPlayable> AmazonMusicRetriever::fetchPlayable(const TavuUrl& url)
{
    AMAZON_MUSIC_ENTER();
    auto reply = createReply<TavuAmazonMusicPlayable>();
    cmchain::onSuccess(m_connect->sendBrowseRequest(url), m_context,
        [this, reply](const HttpClient::Result& result) { fetchPlayableFinished(result, reply); });
    return reply;
}

CMReply<TavuAmazonMusicTrackContainerChunkDescription> AmazonMusicRetriever::fetchChunkDescription(
    const TavuUrl& url)
{
    AMAZON_MUSIC_ENTER();
    auto reply = createReply<ChunkDescription>();
    cmchain::onSuccess(m_connect->sendBrowseRequest(url), m_context,
        [this, reply](
            const HttpClient::Result& result) { fetchChunkDescriptionFinished(result, reply); });
    return reply;
}

CMReply<TavuAmazonMusicTrackInstance> AmazonMusicRetriever::fetchTrackInstance(const TavuUrl& url)
{
    AMAZON_MUSIC_ENTER();
    auto reply = createReply<TavuAmazonMusicTrackInstance>();
    cmchain::onSuccess(m_connect->sendBrowseRequest(url), m_context,
        [this, reply](
            const HttpClient::Result& result) { fetchTrackInstanceFinished(result, reply); });
    return reply;
}

void AmazonMusicRetriever::fetchPlayableFinished(
    const HttpClient::Result& result, const CMReply<TavuAmazonMusicPlayable>& reply)
{
    AMAZON_MUSIC_ENTER_WITH("Status: " << result.error << " code: " << result.code
                                       << " output size: " << result.data.size());
    if (result.code == ok)
        return reply.setValue(m_parser->parsePlayableResponse(result.data, result.url));
    fail(reply,
        CMError(TrString(TrCharData(trExtractContext("AmazonMusicRetriever"),
                             "Failed to fetch playable, error: %1, status: %2"),
            outcome(result))));
}

void AmazonMusicRetriever::fetchChunkDescriptionFinished(
    const HttpClient::Result& result, const CMReply<ChunkDescription>& reply)
{
    AMAZON_MUSIC_ENTER_WITH("Status: " << result.error << " code: " << result.code
                                       << " output size: " << result.data.size());
    if (result.code == conflict)
        return refuseChunk(result.data, reply);
    if (result.code == ok)
        return reply.setValue(m_parser->parseChunkResponse(result.data, result.url));
    fail(reply,
        CMError(TrString(TrCharData(trExtractContext("AmazonMusicRetriever"),
                             "Failed to fetch chunk description, error: %1, status: %2"),
            outcome(result))));
}

void AmazonMusicRetriever::fetchTrackInstanceFinished(
    const HttpClient::Result& result, const CMReply<TavuAmazonMusicTrackInstance>& reply)
{
    AMAZON_MUSIC_ENTER_WITH("Status: " << result.error << " code: " << result.code
                                       << " output size: " << result.data.size());
    if (result.code == ok)
        return reply.setValue(m_parser->parseTrackInstanceResponse(result.data, result.url));
    fail(reply,
        CMError(TrString(TrCharData(trExtractContext("AmazonMusicRetriever"),
                             "Failed to fetch track instance, error: %1, status: %2"),
            outcome(result))));
}

void AmazonMusicRetriever::refuseChunk(
    const QByteArray& body, const CMReply<ChunkDescription>& reply)
{
    AMAZON_MUSIC_ENTER();
    if (!m_rowsNode)
        return reply.cancel();
    LOG4CPLUS_DEBUG(logger(), "output json from HTTP response: " << body);
    const QList<TavuRoles> rows =
        m_parser->createErrorReportScreen(m_parser->parseGeneralErrorReport(body, QString()));
    for (const TavuRoles& row : rows)
        m_rowsNode->rowsAppend(row);

    TavuRoles screen;
    screen.setPath(m_rowsNode->path());
    TavuActionReply action;
    action.setXclass(QStringLiteral("TavuActionReply"));
    action.setResult(screen);
    CMError error;
    error.setName(QStringLiteral("error"));
    error.setMessage(rows.first().longDescription());
    error.setTitle(CMError::DefaultTitle());
    error.setActionReply(action.__hash());
    reply.setError(error);
}

void AmazonMusicRetriever::fetchPlayableDone(
    const CMReply<AmazonMusicRetrieverChunk>& reply, const TavuAmazonMusicPlayable& playable)
{
    AMAZON_MUSIC_ENTER();
    fetchPointer(reply, playable.naturalTrackPointer());
}

void AmazonMusicRetriever::fetchPointer(
    const CMReply<AmazonMusicRetrieverChunk>& reply, const TavuAmazonMusicTrackPointer& pointer)
{
    AMAZON_MUSIC_ENTER();
    fetchChunkUrl(
        reply, TavuUrl::fromEncoded(pointer.chunkUrl().toUtf8()), pointer.indexWithinChunk());
}

void AmazonMusicRetriever::fetchChunkUrl(
    const CMReply<AmazonMusicRetrieverChunk>& reply, const TavuUrl& url, int index)
{
    AMAZON_MUSIC_ENTER();
    cmchain::whenSucceeded(fetchChunkDescription(url), reply, m_context,
        [this, reply, url, index](const ChunkDescription& description) {
            reply.setValue(createChunk(description, url, TavuUrl(), index));
        });
}

void AmazonMusicRetriever::fetchTrackUrl(
    const CMReply<AmazonMusicRetrieverChunk>& reply, const TavuUrl& url)
{
    AMAZON_MUSIC_ENTER();
    cmchain::whenSucceeded(fetchTrackInstance(url), reply, m_context,
        [this, reply, url](const TavuAmazonMusicTrackInstance& instance) {
            fetchTrackInstanceDone(reply, instance, url);
        });
}

void AmazonMusicRetriever::fetchTrackInstanceDone(const CMReply<AmazonMusicRetrieverChunk>& reply,
    const TavuAmazonMusicTrackInstance& instance, const TavuUrl& url)
{
    // Made before the log line, as it traces and lines do not nest.
    const TavuAmazonMusicTrackInstance shown = amazonMusicRedact::instance(instance);
    AMAZON_MUSIC_ENTER_WITH(shown);
    TavuList<TavuAmazonMusicTrackInstance> items;
    items.append(instance);
    ChunkDescription description;
    description.setItemsInst(items);
    reply.setValue(createChunk(description, TavuUrl(), url, 0));
}

AmazonMusicRetrieverChunk AmazonMusicRetriever::createChunk(const ChunkDescription& description,
    const TavuUrl& chunkUrl, const TavuUrl& trackUrl, int index) const
{
    AMAZON_MUSIC_ENTER();
    const TavuList<TavuAmazonMusicTrackInstance> items = description.itemsInst();
    AmazonMusicRetrieverChunk chunk;
    chunk.tracks.reserve(items.size());
    for (int i = 0; i < items.size(); ++i)
        chunk.tracks.append(items.record(i));
    chunk.index = index;
    chunk.nextTrackPointer = description.nextTrackPointer();
    chunk.chunkUrl = chunkUrl;
    chunk.trackUrl = trackUrl;
    return chunk;
}

void AmazonMusicRetriever::cancelActiveReplys()
{
    AMAZON_MUSIC_ENTER();
    // A snapshot, as each reply leaves the set while it is cancelled.
    const QList<CMVoidReply> replies = m_activeReplies.values();
    for (const CMVoidReply& reply : replies)
        reply.cancel();
}

template <class T>
CMReply<T> AmazonMusicRetriever::createReply()
{
    AMAZON_MUSIC_ENTER();
    auto reply = CMReply<T>::create();
    m_activeReplies.insert(reply);
    cmchain::whenFinished(
        reply, m_context, [this](const CMReply<T>& finished) { m_activeReplies.remove(finished); });
    return reply;
}
