#include "logcapture.h"
#include "playQueueFixture.h"
#include "servicescript.h"

#include <cstdlib>

namespace {

constexpr auto tracksType = TavuRolesAudioType::Tracks;
constexpr auto station = TavuRolesAudioType::Station;

const QString gone = QStringLiteral("Current track is not more available");
const QString endReached = QStringLiteral("End of queue reached");

class AmazonMusicPlayQueueTest : public PlayQueueFixture
{
};

TEST_F(AmazonMusicPlayQueueTest, OnlyTracksCanBeShuffledAndRepeated)
{
    EXPECT_TRUE(makeQueue(tracksType).shuffleSupported());
    EXPECT_TRUE(m_queue->repeatSupported());
    for (const int type : { 0, 2, 3, 77 }) {
        EXPECT_FALSE(makeQueue(static_cast<TavuRolesAudioType::Enum>(type)).shuffleSupported());
        EXPECT_FALSE(m_queue->repeatSupported());
    }
}

TEST_F(AmazonMusicPlayQueueTest, TheFirstTrackIsTheOneThatTheChunkNames)
{
    makeQueue(tracksType);
    giveChunk(chunk(10, 3));
    EXPECT_EQ(m_queue->size(), 10);
    const AmazonMusicTrack first = expectValue(m_queue->getFirstTrack());
    EXPECT_EQ(first.naturalId(), 3);
    EXPECT_EQ(idOf(first), QStringLiteral("3"));
    EXPECT_EQ(previous(first, false, false).naturalId(), 2);
    EXPECT_EQ(next(at(8), false, false).naturalId(), 9);
}

TEST_F(AmazonMusicPlayQueueTest, TheFirstTrackWaitsForTheFirstChunk)
{
    const LogCapture log;
    makeQueue(tracksType);
    const auto reply = m_queue->getFirstTrack();
    expectPending(reply);
    EXPECT_TRUE(log.has(log4cplus::DEBUG_LOG_LEVEL, QStringLiteral("Waiting for init")));
    giveChunk(chunk(10, 3));
    ASSERT_TRUE(reply.isFinished());
    EXPECT_EQ(reply.value().naturalId(), 3);
    EXPECT_TRUE(log.has(log4cplus::DEBUG_LOG_LEVEL, QStringLiteral("Setting next track")));
    EXPECT_EQ(log.countContaining(log4cplus::TRACE_LOG_LEVEL, QStringLiteral("Initialized: 0")), 1);
    expectValue(m_queue->getFirstTrack());
    EXPECT_EQ(log.countContaining(log4cplus::TRACE_LOG_LEVEL, QStringLiteral("Initialized: 1")), 1);
}

TEST_F(AmazonMusicPlayQueueTest, ALaterChunkBeginsAtItsIndex)
{
    makeQueue(station);
    giveChunk(chunk(3, 0));
    const auto reply = m_queue->getNextTrack(at(2), false, false);
    expectPending(reply);
    giveChunk(chunk(10, 4, 100));
    ASSERT_TRUE(reply.isFinished());
    EXPECT_EQ(m_queue->size(), 9);
    EXPECT_EQ(idOf(reply.value()), QStringLiteral("104"));
    EXPECT_EQ(reply.value().naturalId(), 3);
    EXPECT_EQ(reply.value().shuffleId(), 3);
    EXPECT_EQ(idOf(next(at(7), false, false)), QStringLiteral("109"));
}

TEST_F(AmazonMusicPlayQueueTest, AStationForgetsItsOldestTracks)
{
    m_host.setMaxQueueSize(50);
    makeQueue(station);
    giveChunk(chunk(55, 0));
    EXPECT_EQ(m_queue->size(), 55);
    const auto reply = m_queue->getNextTrack(at(54), false, false);
    giveChunk(chunk(5, 0, 55));

    EXPECT_EQ(m_queue->size(), 55);
    ASSERT_TRUE(reply.isFinished());
    EXPECT_EQ(reply.value().naturalId(), 50);
    EXPECT_EQ(idOf(reply.value()), QStringLiteral("55"));
    EXPECT_EQ(idOf(previous(at(1), false, false)), QStringLiteral("5"));
    for (int id = 0; id < 54; ++id) {
        const AmazonMusicTrack track = next(at(id), false, false);
        EXPECT_EQ(track.naturalId(), id + 1);
        EXPECT_EQ(idOf(track), QString::number(id + 6));
    }
    expectError(m_queue->getNextTrack(at(55), false, false), gone);
}

TEST_F(AmazonMusicPlayQueueTest, AStationKeepsWhatFitsExactly)
{
    m_host.setMaxQueueSize(55);
    makeQueue(station);
    giveChunk(chunk(55, 0));
    const auto reply = m_queue->getNextTrack(at(54), false, false);
    giveChunk(chunk(5, 0, 55));
    EXPECT_EQ(m_queue->size(), 60);
    EXPECT_EQ(expectValue(reply).naturalId(), 55);
}

TEST_F(AmazonMusicPlayQueueTest, AnAlbumIsNeverTrimmed)
{
    m_host.setMaxQueueSize(5);
    makeQueue(tracksType);
    giveChunk(chunk(40, 30));
    EXPECT_EQ(m_queue->size(), 40);
    EXPECT_EQ(expectValue(m_queue->getFirstTrack()).naturalId(), 30);
}

TEST_F(AmazonMusicPlayQueueTest, ShufflingFollowsTheSystemsRandomNumbers)
{
    makeQueue(tracksType);
    giveChunk(chunk(10, 0));
    std::srand(1);
    m_queue->shuffleQueue(3);
    EXPECT_EQ(shuffledIds(3), (QList<int>{ 3, 4, 7, 8, 0, 5, 2, 1, 6, 9 }));

    makeQueue(tracksType);
    giveChunk(chunk(5, 0));
    std::srand(1);
    m_queue->shuffleQueue(4);
    EXPECT_EQ(shuffledIds(4), (QList<int>{ 4, 3, 1, 2, 0 }));
}

TEST_F(AmazonMusicPlayQueueTest, AChunkIsShuffledAroundTheFirstTrackWhateverTheMode)
{
    makeQueue(tracksType);
    std::srand(1);
    giveChunk(chunk(10, 3));
    EXPECT_EQ(shuffledIds(3), (QList<int>{ 3, 4, 7, 8, 0, 5, 2, 1, 6, 9 }));
}

TEST_F(AmazonMusicPlayQueueTest, EveryShuffleStartsFromTheNaturalOrder)
{
    makeQueue(tracksType);
    giveChunk(chunk(10, 0));
    m_queue->shuffleQueue(7);
    std::srand(1);
    m_queue->shuffleQueue(3);
    EXPECT_EQ(shuffledIds(3), (QList<int>{ 3, 4, 7, 8, 0, 5, 2, 1, 6, 9 }));
}

TEST_F(AmazonMusicPlayQueueTest, AShuffledOrderHoldsEveryTrackOnceAndTheCurrentFirst)
{
    makeQueue(tracksType);
    giveChunk(chunk(50, 0));
    for (const int current : { 0, 1, 25, 49 }) {
        m_queue->shuffleQueue(current);
        AmazonMusicTrack track = next(at(current), true, false);
        QList<int> ids{ current, track.naturalId() };
        EXPECT_EQ(track.shuffleId(), 1);
        for (int place = 2; place < 50; ++place) {
            track = next(track, true, false);
            EXPECT_EQ(track.shuffleId(), place);
            ids.append(track.naturalId());
        }
        std::sort(ids.begin(), ids.end());
        for (int id = 0; id < 50; ++id)
            ASSERT_EQ(ids.at(id), id);
        expectError(m_queue->getNextTrack(track, true, false), endReached);
    }
}

TEST_F(AmazonMusicPlayQueueTest, ASingleTrackCanBeShuffled)
{
    makeQueue(tracksType);
    giveChunk(chunk(1, 0));
    m_queue->shuffleQueue(0);
    expectError(m_queue->getNextTrack(at(0), true, false), endReached);
    EXPECT_EQ(next(at(0), true, true).naturalId(), 0);
}

TEST_F(AmazonMusicPlayQueueTest, TurningShuffleOnShufflesAroundTheCurrentTrack)
{
    const LogCapture log;
    makeQueue(tracksType);
    giveChunk(chunk(10, 0));
    const AmazonMusicTrack current = next(at(2), false, false);
    std::srand(1);
    m_queue->playModeChanged(current, true);
    // Also for a track that was given out before its place changed.
    AmazonMusicTrack track = current;
    QList<int> ids{ 3 };
    for (int i = 1; i < 10; ++i) {
        track = next(track, true, false);
        ids.append(track.naturalId());
    }
    EXPECT_EQ(ids, (QList<int>{ 3, 4, 7, 8, 0, 5, 2, 1, 6, 9 }));
    EXPECT_EQ(log.countContaining(log4cplus::TRACE_LOG_LEVEL,
                  QStringLiteral("Play mode changed, shuffle: 1 old shuffle 0")),
        1);
    EXPECT_EQ(
        log.countContaining(log4cplus::TRACE_LOG_LEVEL, QStringLiteral("Current natural id: 3")),
        1);
}

TEST_F(AmazonMusicPlayQueueTest, TheSameModeAgainAndShuffleOffChangeNoOrder)
{
    makeQueue(tracksType);
    giveChunk(chunk(10, 0));
    std::srand(1);
    m_queue->playModeChanged(at(3), true);
    m_queue->playModeChanged(at(5), true);
    EXPECT_EQ(shuffledIds(3), (QList<int>{ 3, 4, 7, 8, 0, 5, 2, 1, 6, 9 }));
    m_queue->playModeChanged(at(5), false);
    EXPECT_EQ(shuffledIds(3), (QList<int>{ 3, 4, 7, 8, 0, 5, 2, 1, 6, 9 }));
    EXPECT_EQ(next(at(3), false, false).naturalId(), 4);
}

TEST_F(AmazonMusicPlayQueueTest, AModeChangeWithoutACurrentTrackKeepsTheOrderAndTheMode)
{
    makeQueue(tracksType);
    m_queue->playModeChanged(AmazonMusicTrack(), true); // Empty as yet.
    giveChunk(chunk(10, 0));
    m_queue->playModeChanged(AmazonMusicTrack(), false);
    std::srand(1);
    m_queue->shuffleQueue(3);
    m_queue->playModeChanged(AmazonMusicTrack(), true);
    m_queue->playModeChanged(at(5), true); // On already.
    EXPECT_EQ(shuffledIds(3), (QList<int>{ 3, 4, 7, 8, 0, 5, 2, 1, 6, 9 }));
}

TEST_F(AmazonMusicPlayQueueTest, AModeChangeLeavesAStationAlone)
{
    makeQueue(station);
    giveChunk(chunk(10, 0));
    m_queue->playModeChanged(at(3), true);
    for (int id = 0; id < 9; ++id)
        EXPECT_EQ(next(at(id, id), true, false).naturalId(), id + 1);
}

TEST_F(AmazonMusicPlayQueueTest, RepeatJoinsTheEnds)
{
    const LogCapture log;
    makeQueue(tracksType);
    giveChunk(chunk(10, 0));
    EXPECT_EQ(next(at(9), false, true).naturalId(), 0);
    EXPECT_EQ(previous(at(0), false, true).naturalId(), 9);
    EXPECT_TRUE(log.has(log4cplus::DEBUG_LOG_LEVEL, QStringLiteral("Next track rounded id: 0")));
    EXPECT_TRUE(log.has(log4cplus::DEBUG_LOG_LEVEL, QStringLiteral("Next track rounded id: 9")));
    std::srand(1);
    m_queue->shuffleQueue(3);
    EXPECT_EQ(next(at(9, 9), true, true).naturalId(), 3);
    EXPECT_EQ(previous(at(3, 0), true, true).naturalId(), 9);
}

TEST_F(AmazonMusicPlayQueueTest, ARepeatedStationWrapsToWhatItStillHolds)
{
    makeQueue(station);
    giveChunk(chunk(3, 0));
    const auto reply = m_queue->getNextTrack(at(2), false, true);
    ASSERT_TRUE(reply.isFinished());
    EXPECT_EQ(reply.value().naturalId(), 0);
}

TEST_F(AmazonMusicPlayQueueTest, StepsSayWhereTheyLead)
{
    const LogCapture log;
    makeQueue(tracksType);
    giveChunk(chunk(10, 0));
    next(at(3), true, false);
    next(at(3), false, false);
    EXPECT_TRUE(
        log.has(log4cplus::DEBUG_LOG_LEVEL, QStringLiteral("Next track id: 4 queue size: 10")));
    EXPECT_EQ(log.countContaining(
                  log4cplus::TRACE_LOG_LEVEL, QStringLiteral("Shuffle: 1 round: 0 next: 1")),
        1);
}

TEST_F(AmazonMusicPlayQueueTest, AnAlbumEndsAtBothEnds)
{
    const LogCapture log;
    makeQueue(tracksType);
    giveChunk(chunk(10, 0));
    expectError(m_queue->getNextTrack(at(9), false, false), endReached);
    expectError(m_queue->getPreviousTrack(at(0), false, false), endReached);
    EXPECT_TRUE(log.has(log4cplus::DEBUG_LOG_LEVEL, endReached));
}

TEST_F(AmazonMusicPlayQueueTest, AStationEndsAtItsBeginning)
{
    makeQueue(station);
    giveChunk(chunk(10, 0));
    expectError(m_queue->getPreviousTrack(at(0), false, false), endReached);
}

TEST_F(AmazonMusicPlayQueueTest, ATrackThatTheQueueDoesNotHoldIsGone)
{
    makeQueue(tracksType);
    expectError(m_queue->getNextTrack(at(0), false, false), gone);
    giveChunk(chunk(10, 0));
    expectError(m_queue->getNextTrack(AmazonMusicTrack(), false, true), gone);
    expectError(m_queue->getPreviousTrack(at(10), true, true), gone);
    expectError(m_queue->getNextTrack(at(-7), true, true), gone);
}

TEST_F(AmazonMusicPlayQueueTest, AFailedFirstChunkFailsWhoWaits)
{
    const LogCapture log;
    makeQueue(tracksType);
    const auto waiting = m_queue->getFirstTrack();
    CMError error(QStringLiteral("service says no"));
    error.setName(QStringLiteral("special"));
    giveError(error);
    EXPECT_EQ(expectError(waiting), error);
    const QString text = QStringLiteral("Failed to get first chunk, nothing to play");
    expectError(m_queue->getFirstTrack(), text);
    EXPECT_TRUE(log.has(log4cplus::ERROR_LOG_LEVEL, text));
}

TEST_F(AmazonMusicPlayQueueTest, AChunkWithoutTracksIsTheEnd)
{
    makeQueue(station);
    const auto first = m_queue->getFirstTrack();
    giveChunk(AmazonMusicRetrieverChunk());
    expectError(first, QStringLiteral("No more chunks to play"));

    makeQueue(station);
    giveChunk(chunk(3, 0));
    const auto next = m_queue->getNextTrack(at(2), false, false);
    giveChunk(AmazonMusicRetrieverChunk());
    expectError(next, QStringLiteral("No more chunks to play"));
    EXPECT_EQ(m_queue->size(), 3);
}

TEST_F(AmazonMusicPlayQueueTest, OneChunkAnswersAllWhoWait)
{
    makeQueue(station);
    giveChunk(chunk(3, 0));
    const auto one = m_queue->getNextTrack(at(2), false, false);
    const auto two = m_queue->getNextTrack(at(2), false, false);
    giveChunk(chunk(3, 0, 3));
    EXPECT_EQ(expectValue(one).naturalId(), 3);
    EXPECT_EQ(expectValue(two).naturalId(), 3);
}

TEST_F(AmazonMusicPlayQueueTest, CancelEndsWhoWaitsAndTheChunkStillArrives)
{
    makeQueue(station);
    const auto first = m_queue->getFirstTrack();
    m_queue->cancel();
    expectCancelled(first);
    giveChunk(chunk(3, 1));
    expectCancelled(first);
    EXPECT_EQ(expectValue(m_queue->getFirstTrack()).naturalId(), 1);
}

TEST_F(AmazonMusicPlayQueueTest, CancelStandsWhenAWatcherAsksForMore)
{
    makeQueue(station);
    CMReply<AmazonMusicTrack> second;
    const auto first = m_queue->getFirstTrack();
    first.addWatcher([&](const CMVoidReply&) { second = m_queue->getFirstTrack(); });
    m_queue->cancel();
    expectCancelled(first);
    expectPending(second);
}

TEST_F(AmazonMusicPlayQueueTest, ItsEndCancelsWhoWaits)
{
    const LogCapture log;
    makeQueue(station);
    const auto first = m_queue->getFirstTrack();
    m_queue.reset();
    expectCancelled(first);
    EXPECT_EQ(log.countContaining(log4cplus::TRACE_LOG_LEVEL,
                  QStringLiteral("Enter virtual AmazonMusicPlayQueue::~AmazonMusicPlayQueue()")),
        1);
}

TEST_F(AmazonMusicPlayQueueTest, WhoHearsOfATrackMayReplaceTheQueue)
{
    makeQueue(station);
    const auto one = m_queue->getFirstTrack();
    const auto two = m_queue->getFirstTrack();
    one.addWatcher([this](const CMVoidReply&) { m_queue.reset(); });
    giveChunk(chunk(3, 0));
    EXPECT_EQ(m_queue, nullptr);
    EXPECT_EQ(expectValue(one).naturalId(), 0);
    EXPECT_TRUE(two.isFinished());
}

TEST_F(AmazonMusicPlayQueueTest, DumpsAnOrderLineByLine)
{
    const LogCapture log;
    makeQueue(tracksType);
    auto held = QSharedPointer<AmazonMusicPlayQueue::TrackPointer>::create();
    held->chunk = QSharedPointer<AmazonMusicRetrieverChunk>::create(chunk(3, 0));
    held->index = 2;
    held->naturalId = 5;
    held->shuffleId = 7;
    const auto bare = QSharedPointer<AmazonMusicPlayQueue::TrackPointer>::create();
    m_queue->dumpQueue({ held, bare });
    EXPECT_EQ(log.texts(log4cplus::INFO_LOG_LEVEL),
        (QStringList{ QStringLiteral("0 natural 5 shuffle 7 chunk 1 index 2"),
            QStringLiteral("1 natural 0 shuffle 0 chunk 0 index 0") }));
}

using AmazonMusicPlayQueueDeathTest = AmazonMusicPlayQueueTest;

TEST_F(AmazonMusicPlayQueueDeathTest, AnEntryOutsideItsChunkIsFatal)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    makeQueue(tracksType);
    auto entry = QSharedPointer<AmazonMusicPlayQueue::TrackPointer>::create();
    entry->chunk = QSharedPointer<AmazonMusicRetrieverChunk>::create(chunk(3, 0));
    entry->index = 3;
    EXPECT_DEATH(m_queue->createAmazonMusicTrack(entry), "index out of range");
    entry->index = -1;
    EXPECT_DEATH(m_queue->createAmazonMusicTrack(entry), "index out of range");
}

TEST_F(AmazonMusicPlayQueueDeathTest, APointerOutsideItsChunkIsFatalThoughNobodyWaits)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    for (const auto type : { tracksType, station }) {
        makeQueue(type);
        EXPECT_DEATH(giveChunk(chunk(3, 3)), "index out of range");
        EXPECT_DEATH(giveChunk(chunk(3, -1)), "index out of range");
    }
    makeQueue(station);
    giveChunk(chunk(3, 0));
    EXPECT_DEATH(giveChunk(chunk(3, 3, 3)), "index out of range");
}

/// A queue over a service that answers.
class AmazonMusicPlayQueueServiceTest : public PlayQueueFixture
{
protected:
    AmazonMusicPlayQueueServiceTest()
    {
        m_host.setBaseUrl(m_service.baseUrl());
        m_host.setToken(QStringLiteral("token"));
        m_connect = std::make_unique<AmazonMusicConnect>();
        m_connect->setLoggedIn(true);
        m_retriever = std::make_unique<AmazonMusicRetriever>(m_connect.get(), &m_parser, nullptr);
        m_retriever->init(
            m_service.url(QStringLiteral("/album#p")), AmazonMusicRetriever::Playable);
    }

    void answerFirstChunk()
    {
        m_service.expectRequest("GET", "/album");
        m_service.answer(200, serviceDocuments::playableBody(QStringLiteral("/chunks/1"), 1));
        m_service.expectRequest("GET", "/chunks/1");
        m_service.answer(200,
            serviceDocuments::chunkBody(
                serviceDocuments::tracks(3), QStringLiteral("/chunks/2"), 1));
    }

    ServiceScript m_service;
};

TEST_F(AmazonMusicPlayQueueServiceTest, FetchesTheFirstChunkByItself)
{
    makeQueue(tracksType);
    answerFirstChunk();
    EXPECT_EQ(expectValue(m_queue->getFirstTrack()).naturalId(), 1);
}

TEST_F(AmazonMusicPlayQueueServiceTest, AnAlbumNeverAsksForASecondChunk)
{
    makeQueue(tracksType);
    const auto first = m_queue->getFirstTrack();
    answerFirstChunk();
    expectValue(first);
    expectError(m_queue->getNextTrack(at(2), false, false), endReached);
    EXPECT_EQ(next(at(2), false, true).naturalId(), 0);
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicPlayQueueServiceTest, ARepeatedStationAsksForNoChunkEither)
{
    makeQueue(station);
    const auto first = m_queue->getFirstTrack();
    answerFirstChunk();
    expectValue(first);
    EXPECT_EQ(next(at(2), false, true).naturalId(), 0);
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicPlayQueueServiceTest, AStationAsksForItsNextChunkOnceAtATime)
{
    makeQueue(station);
    const auto first = m_queue->getFirstTrack();
    answerFirstChunk();
    expectValue(first);
    const auto one = m_queue->getNextTrack(at(2), false, false);
    const auto two = m_queue->getNextTrack(at(2), false, false);
    m_service.expectRequest("GET", "/chunks/2");
    m_service.expectNoRequest();
    m_service.answer(200,
        serviceDocuments::chunkBody(
            serviceDocuments::tracks(3, 3), QStringLiteral("/chunks/3"), 0));
    EXPECT_EQ(idOf(expectValue(one)), QStringLiteral("4"));
    EXPECT_EQ(idOf(expectValue(two)), QStringLiteral("4"));
    EXPECT_EQ(m_queue->size(), 5);

    const auto three = m_queue->getNextTrack(at(4), false, false);
    m_service.expectRequest("GET", "/chunks/3");
    m_service.answer(500);
    EXPECT_TRUE(expectError(three).message().startsWith(
        QStringLiteral("Failed to fetch chunk description, error: 500")));
    m_queue->getNextTrack(at(4), false, false);
    m_service.expectRequest("GET", "/chunks/3");
}

TEST_F(AmazonMusicPlayQueueServiceTest, AChunkAfterItsEndTouchesNothing)
{
    makeQueue(station);
    const auto first = m_queue->getFirstTrack();
    m_service.expectRequest("GET", "/album");
    m_service.answer(200, serviceDocuments::playableBody(QStringLiteral("/chunks/1"), 1));
    const ServiceRequest chunk = m_service.expectRequest("GET", "/chunks/1");
    m_queue.reset();
    expectCancelled(first);
    chunk.answer(200, serviceDocuments::chunkBody(serviceDocuments::tracks(3)));
    m_service.expectNoRequest();
}

TEST_F(AmazonMusicPlayQueueServiceTest, WithoutASessionItHasNothingToPlay)
{
    m_connect->setLoggedIn(false);
    makeQueue(station);
    expectError(
        m_queue->getFirstTrack(), QStringLiteral("Failed to get first chunk, nothing to play"));
}

} // namespace
