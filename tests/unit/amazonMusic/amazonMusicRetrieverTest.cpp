#include "amazonMusicRetriever.h"

#include "amazonMusicConnect.h"
#include "amazonMusicParser.h"
#include "cmlistrowsnode.h"
#include "cmnodes.h"
#include "cmsubscribe.h"
#include "logcapture.h"
#include "replies.h"
#include "serviceDocuments.h"
#include "servicescript.h"
#include "tavuactionreply.h"
#include "tavupaths.h"
#include "testhost.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace serviceDocuments;

class AmazonMusicRetrieverTest : public testing::Test
{
protected:
    AmazonMusicRetrieverTest()
    {
        m_host.setBaseUrl(m_service.baseUrl());
        m_host.setToken(QStringLiteral("token"));
        m_connect = std::make_unique<AmazonMusicConnect>();
        m_connect->setLoggedIn(true);
        m_rows =
            CMListRowsNode::create(&m_nodes, CMPath(QStringLiteral("/AmazonMusic/stationsError")));
        m_retriever = std::make_unique<AmazonMusicRetriever>(m_connect.get(), &m_parser, m_rows);
    }

    void init(const QString& target, AmazonMusicRetriever::Type type)
    {
        m_retriever->init(m_service.url(target), type);
    }

    /// Rows of the station error node.
    QVariantList titlesShown()
    {
        const CMGetRowsRequest request(m_rows->path(), 0, 99, { TavuRoles::Title() });
        m_rows->getRowsRequest(request);
        return expectValue(request.reply()).rows();
    }

    ServiceScript m_service;
    TestHost m_host;
    CMSubscribe m_subscribe;
    CMNodes m_nodes{ &m_subscribe };
    AmazonMusicParser m_parser;
    std::unique_ptr<AmazonMusicConnect> m_connect;
    CMListRowsNode* m_rows = nullptr;
    std::unique_ptr<AmazonMusicRetriever> m_retriever;
};

TEST_F(AmazonMusicRetrieverTest, SaysSoWhenThereIsNothingToPlay)
{
    const LogCapture log;
    expectError(m_retriever->getFirstChunk(), QStringLiteral("Nothing to play"));
    EXPECT_TRUE(log.has(log4cplus::ERROR_LOG_LEVEL,
        QStringLiteral("Nothing to play - retriever is not initialized")));
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicRetrieverTest, FollowsAPlayableToTheChunkAndIndexThatItNames)
{
    init(QStringLiteral("/album#p"), AmazonMusicRetriever::Playable);
    const auto reply = m_retriever->getFirstChunk();
    m_service.expectRequest("GET", "/album");
    m_service.answer(200, playableBody(QStringLiteral("/chunks/1"), 7));
    m_service.expectRequest("GET", "/chunks/1");
    m_service.answer(200, chunkBody(tracks(10), QStringLiteral("/chunks/2"), 4));

    const AmazonMusicRetrieverChunk chunk = expectValue(reply);
    EXPECT_EQ(chunk.index, 7);
    EXPECT_EQ(chunk.chunkUrl, m_service.url(QStringLiteral("/chunks/1")));
    EXPECT_TRUE(chunk.trackUrl.isEmpty());
    ASSERT_EQ(chunk.tracks.size(), 10);
    EXPECT_EQ(chunk.tracks.at(9).trackDefinitionInst().title(), QStringLiteral("Title 9"));
    EXPECT_EQ(
        chunk.nextTrackPointer.chunkUrl(), m_service.url(QStringLiteral("/chunks/2")).toString());
    EXPECT_EQ(chunk.nextTrackPointer.indexWithinChunk(), 4);
}

TEST_F(AmazonMusicRetrieverTest, FollowsTheNextTrackPointer)
{
    AmazonMusicRetrieverChunk chunk;
    chunk.nextTrackPointer.setChunkUrl(m_service.url(QStringLiteral("/chunks/2?a=%2F")).toString());
    chunk.nextTrackPointer.setIndexWithinChunk(4);
    const auto reply = m_retriever->getNextChunk(chunk);
    m_service.expectRequest("GET", "/chunks/2?a=%2F");
    m_service.answer(200, chunkBody(tracks(5)));
    const AmazonMusicRetrieverChunk next = expectValue(reply);
    EXPECT_EQ(next.index, 4);
    EXPECT_EQ(next.tracks.size(), 5);
    EXPECT_TRUE(next.nextTrackPointer.isEmpty());
}

TEST_F(AmazonMusicRetrieverTest, SendsARequestForAnEmptyPointerToo)
{
    const auto reply = m_retriever->getNextChunk(AmazonMusicRetrieverChunk());
    m_service.expectRequest("GET", "/");
    m_service.answer(200, "{}");
    EXPECT_TRUE(expectValue(reply).tracks.isEmpty());
}

TEST_F(AmazonMusicRetrieverTest, ATrackIsAChunkOfOne)
{
    init(QStringLiteral("/tracks/5"), AmazonMusicRetriever::Track);
    const auto reply = m_retriever->getFirstChunk();
    m_service.expectRequest("GET", "/tracks/5");
    m_service.answer(200, trackBody(Track{ QStringLiteral("5") }));

    const AmazonMusicRetrieverChunk chunk = expectValue(reply);
    ASSERT_EQ(chunk.tracks.size(), 1);
    EXPECT_EQ(chunk.tracks.first().trackDefinitionInst().title(), QStringLiteral("Title 5"));
    EXPECT_EQ(chunk.index, 0);
    EXPECT_TRUE(chunk.chunkUrl.isEmpty());
    EXPECT_EQ(chunk.trackUrl, m_service.url(QStringLiteral("/tracks/5")));
    EXPECT_TRUE(chunk.nextTrackPointer.isEmpty());
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicRetrieverTest, ARefusedChunkShowsTheServicesMessage)
{
    const LogCapture log;
    const QByteArray body = ErrorReport{
        QStringLiteral("Too many skips"), QStringLiteral("You have skipped %1 too often."),
        { { QStringLiteral("Close"), {}, {}, false } }
    }.body();
    AmazonMusicRetrieverChunk chunk;
    chunk.nextTrackPointer.setChunkUrl(m_service.url(QStringLiteral("/chunks/2")).toString());
    const auto reply = m_retriever->getNextChunk(chunk);
    m_service.expectRequest("GET", "/chunks/2");
    m_service.answer(409, body);

    const CMError error = expectError(reply);
    EXPECT_EQ(error.name(), QStringLiteral("error"));
    EXPECT_EQ(error.title(), CMError::DefaultTitle());
    EXPECT_EQ(error.message(), QStringLiteral("You have skipped %1 too often."));
    const TavuActionReply action(error.actionReply());
    EXPECT_EQ(action.xclass(), QStringLiteral("TavuActionReply"));
    EXPECT_EQ(action.result().__hash().keys(), QStringList{ TavuRoles::Path() });
    EXPECT_EQ(action.result().path(), m_rows->path());
    EXPECT_EQ(titlesShown(),
        (QVariantList{ QVariant(QVariantList{ QStringLiteral("Too many skips") }),
            QVariant(QVariantList{ QStringLiteral("Close") }) }));
    EXPECT_TRUE(log.has(log4cplus::DEBUG_LOG_LEVEL,
        QStringLiteral("output json from HTTP response: ") + QString::fromUtf8(body)));
}

TEST_F(AmazonMusicRetrieverTest, RefusalsWithoutEndDoNotFillTheMemory)
{
    constexpr int refusals = 10000;
    constexpr int atOnce = 50;
    constexpr int rowsAtMost = 12000;
    m_service.always("GET", "/chunk", 409,
        ErrorReport{ QStringLiteral("Refused"), QStringLiteral("Not here."),
            { { QStringLiteral("Close"), QStringLiteral("close"), QString(), false } } }
            .body());
    for (int done = 0; done < refusals; done += atOnce) {
        QList<CMReply<TavuAmazonMusicTrackContainerChunkDescription>> replies;
        for (int i = 0; i < atOnce; ++i)
            replies.append(
                m_retriever->fetchChunkDescription(m_service.url(QStringLiteral("/chunk"))));
        for (const auto& reply : replies)
            EXPECT_EQ(expectError(reply).message(), QStringLiteral("Not here."));
    }
    EXPECT_EQ(m_service.servedCount("GET", "/chunk"), refusals);
    EXPECT_EQ(m_rows->rowsSize(), rowsAtMost);
}

TEST_F(AmazonMusicRetrieverTest, ARefusalIsAMessageForChunksAlone)
{
    init(QStringLiteral("/album#p"), AmazonMusicRetriever::Playable);
    const auto reply = m_retriever->getFirstChunk();
    m_service.expectRequest("GET", "/album");
    m_service.answer(409, ErrorReport{ QStringLiteral("Refused"), {}, {} }.body());
    expectError(reply,
        QStringLiteral("Failed to fetch playable, error: 409, status: ")
            + HttpClient::toString(HttpClientStatus::Ok));
    EXPECT_EQ(m_rows->rowsSize(), 0);
}

TEST_F(AmazonMusicRetrieverTest, AMissingPlayableSaysCodeAndStatus)
{
    const LogCapture log;
    init(QStringLiteral("/album#p"), AmazonMusicRetriever::Playable);
    const auto reply = m_retriever->getFirstChunk();
    m_service.expectRequest("GET", "/album");
    m_service.answer(404);
    const QString text = QStringLiteral("Failed to fetch playable, error: 404, status: ")
        + HttpClient::toString(HttpClientStatus::Ok);
    expectError(reply, text);
    EXPECT_TRUE(log.has(log4cplus::ERROR_LOG_LEVEL, text));
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicRetrieverTest, AMissingChunkSaysCodeAndStatus)
{
    const LogCapture log;
    const auto reply = m_retriever->fetchChunkDescription(m_service.url(QStringLiteral("/chunk")));
    m_service.expectRequest("GET", "/chunk");
    m_service.answer(500);
    const QString text = QStringLiteral("Failed to fetch chunk description, error: 500, status: ")
        + HttpClient::toString(HttpClientStatus::Ok);
    expectError(reply, text);
    EXPECT_TRUE(log.has(log4cplus::ERROR_LOG_LEVEL, text));
}

TEST_F(AmazonMusicRetrieverTest, AnUnreachableTrackSaysCodeAndStatus)
{
    const LogCapture log;
    const auto reply = m_retriever->fetchTrackInstance(m_service.url(QStringLiteral("/track")));
    // Each connection that dies in the first request on it is final.
    m_service.expectRequest("GET", "/track").cut();
    ASSERT_TRUE(expectFinished(reply));
    const QString text = reply.error().message();
    EXPECT_TRUE(
        text.startsWith(QStringLiteral("Failed to fetch track instance, error: 0, status: ")))
        << text.toStdString();
    EXPECT_FALSE(text.endsWith(HttpClient::toString(HttpClientStatus::Ok)));
    EXPECT_TRUE(log.has(log4cplus::ERROR_LOG_LEVEL, text));
}

TEST_F(AmazonMusicRetrieverTest, TheFirstErrorOfAChainReachesTheEndUnchanged)
{
    init(QStringLiteral("/album#p"), AmazonMusicRetriever::Playable);
    const auto reply = m_retriever->getFirstChunk();
    m_service.expectRequest("GET", "/album");
    m_service.answer(200, playableBody(QStringLiteral("/chunks/1"), 0));
    m_service.expectRequest("GET", "/chunks/1");
    m_service.answer(404);
    expectError(reply,
        QStringLiteral("Failed to fetch chunk description, error: 404, status: ")
            + HttpClient::toString(HttpClientStatus::Ok));
}

TEST_F(AmazonMusicRetrieverTest, SaysWhatEachFetchBrought)
{
    const LogCapture log;
    const TavuUrl url = m_service.url(QStringLiteral("/a"));
    const QList<CMVoidReply> replies{ m_retriever->fetchPlayable(url),
        m_retriever->fetchChunkDescription(url), m_retriever->fetchTrackInstance(url) };
    for (int i = 0; i < replies.size(); ++i)
        m_service.expectRequest("GET", "/a").answer(200, "{}");
    for (const CMVoidReply& reply : replies)
        expectFinished(reply);
    for (const char* step : { "fetchPlayableFinished", "fetchChunkDescriptionFinished",
             "fetchTrackInstanceFinished" }) {
        const QStringList traces = log.texts(log4cplus::TRACE_LOG_LEVEL)
                                       .filter(QStringLiteral("Enter void AmazonMusicRetriever::")
                                           + QString::fromLatin1(step));
        ASSERT_EQ(traces.size(), 1) << step;
        EXPECT_TRUE(traces.first().endsWith(QStringLiteral("): Status: ")
            + HttpClient::toString(HttpClientStatus::Ok)
            + QStringLiteral(" code: 200 output size: 2")))
            << traces.first().toStdString();
    }
}

TEST_F(AmazonMusicRetrieverTest, SaysWhatItIsToPlay)
{
    const LogCapture log;
    m_retriever->init(
        TavuUrl(QStringLiteral("https://service.example/x")), AmazonMusicRetriever::Track);
    EXPECT_EQ(log.countContaining(log4cplus::TRACE_LOG_LEVEL,
                  QStringLiteral("url https://service.example/x type: 2")),
        1);
}

TEST_F(AmazonMusicRetrieverTest, LogsNoKeysOfATrack)
{
    const LogCapture log;
    Track track{ QStringLiteral("5") };
    track.uri = QStringLiteral("https://cdn.example/5?signature=hidden");
    track.keyHeaders = { { QStringLiteral("X-Key"), QStringLiteral("hidden") } };
    init(QStringLiteral("/tracks/5"), AmazonMusicRetriever::Track);
    const auto reply = m_retriever->getFirstChunk();
    m_service.expectRequest("GET", "/tracks/5");
    m_service.answer(200, trackBody(track));
    expectValue(reply);
    const QStringList shown = log.texts(log4cplus::TRACE_LOG_LEVEL)
                                  .filter(QStringLiteral("AmazonMusicRetriever::"
                                                         "fetchTrackInstanceDone("));
    ASSERT_EQ(shown.size(), 1);
    EXPECT_TRUE(shown.first().contains(QStringLiteral("Title 5")));
    EXPECT_FALSE(log.mentions(QStringLiteral("hidden")));
}

TEST_F(AmazonMusicRetrieverTest, CancelEndsEveryReplyOfAChain)
{
    init(QStringLiteral("/album#p"), AmazonMusicRetriever::Playable);
    const auto chunk = m_retriever->getFirstChunk();
    const auto playable = m_retriever->fetchPlayable(m_service.url(QStringLiteral("/other#p")));
    const ServiceRequest pending = m_service.expectRequest("GET", "/album");
    m_service.expectRequest("GET", "/other");
    m_retriever->cancel();
    expectCancelled(chunk);
    expectCancelled(playable);

    // A late answer leads nowhere.
    pending.answer(200, playableBody(QStringLiteral("/chunks/1"), 0));
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicRetrieverTest, CancelStandsWhenAWatcherAsksForMore)
{
    init(QStringLiteral("/album#p"), AmazonMusicRetriever::Playable);
    CMReply<AmazonMusicRetrieverChunk> second;
    const auto first = m_retriever->getFirstChunk();
    first.addWatcher([&](const CMVoidReply&) { second = m_retriever->getFirstChunk(); });
    m_retriever->cancel();
    expectCancelled(first);
    expectPending(second);
}

TEST_F(AmazonMusicRetrieverTest, ALaterInitLeavesWhatIsUnderWayAlone)
{
    init(QStringLiteral("/first"), AmazonMusicRetriever::Track);
    const auto first = m_retriever->getFirstChunk();
    init(QStringLiteral("/second"), AmazonMusicRetriever::Track);
    const auto second = m_retriever->getFirstChunk();
    m_service.expectRequest("GET", "/first").answer(200, trackBody(Track{ QStringLiteral("1") }));
    m_service.expectRequest("GET", "/second").answer(200, trackBody(Track{ QStringLiteral("2") }));
    EXPECT_EQ(expectValue(first).trackUrl, m_service.url(QStringLiteral("/first")));
    EXPECT_EQ(expectValue(second).trackUrl, m_service.url(QStringLiteral("/second")));
}

TEST_F(AmazonMusicRetrieverTest, AnAnswerAfterItsEndTouchesNothing)
{
    init(QStringLiteral("/album#p"), AmazonMusicRetriever::Playable);
    const auto reply = m_retriever->getFirstChunk();
    const ServiceRequest pending = m_service.expectRequest("GET", "/album");
    m_retriever.reset();
    pending.answer(200, playableBody(QStringLiteral("/chunks/1"), 0));
    m_service.expectNoRequest();
    EXPECT_FALSE(reply.isFinished());
}

TEST_F(AmazonMusicRetrieverTest, BodiesThatAreNoDocumentsGiveEmptyOnes)
{
    for (const char* body : { "", "<html>", "[1,2]", "{\"playables\":7}" }) {
        const auto reply = m_retriever->fetchPlayable(m_service.url(QStringLiteral("/album#p")));
        m_service.expectRequest("GET", "/album");
        m_service.answer(200, body);
        EXPECT_TRUE(expectValue(reply).naturalTrackPointer().chunkUrl().isEmpty()) << body;
    }
}

TEST_F(AmazonMusicRetrieverTest, MayOutliveTheNodeTree)
{
    const auto reply = m_retriever->fetchChunkDescription(m_service.url(QStringLiteral("/chunk")));
    const auto request = m_service.expectRequest("GET", "/chunk");
    delete m_rows;
    request.answer(409, ErrorReport{ QStringLiteral("Refused"), {}, {} }.body());
    expectCancelled(reply);
}

} // namespace
