#pragma once

#include "amazonMusicConnect.h"
#include "amazonMusicParser.h"
#include "amazonMusicPlayQueue.h"
#include "amazonMusicRetriever.h"
#include "replies.h"
#include "serviceDocuments.h"
#include "testhost.h"

#include <gtest/gtest.h>

#include <memory>

/// A play queue whose retriever waits for a token that never comes, so that every chunk it hears of
/// is one that the test gives it.
class PlayQueueFixture : public testing::Test
{
protected:
    PlayQueueFixture()
    {
        m_connect = std::make_unique<AmazonMusicConnect>();
        m_connect->setLoggedIn(true);
        m_retriever = std::make_unique<AmazonMusicRetriever>(m_connect.get(), &m_parser, nullptr);
        m_retriever->init(
            TavuUrl(QStringLiteral("https://service.example/p#p")), AmazonMusicRetriever::Playable);
    }

    AmazonMusicPlayQueue& makeQueue(TavuRolesAudioType::Enum type)
    {
        m_queue = std::make_unique<AmazonMusicPlayQueue>(m_retriever.get(), type);
        return *m_queue;
    }

    static AmazonMusicRetrieverChunk chunk(int count, int index, int firstId = 0)
    {
        AmazonMusicRetrieverChunk chunk;
        for (const serviceDocuments::Track& track : serviceDocuments::tracks(count, firstId)) {
            TavuAmazonMusicTrackInstance instance(track.instance());
            instance.setTrackDefinitionInst(track.definition());
            chunk.tracks.append(instance);
        }
        chunk.index = index;
        return chunk;
    }

    void giveChunk(const AmazonMusicRetrieverChunk& chunk)
    {
        const auto reply = CMReply<AmazonMusicRetrieverChunk>::create();
        reply.setValue(chunk);
        m_queue->onNextChunkReceived(reply);
    }

    void giveError(const CMError& error)
    {
        const auto reply = CMReply<AmazonMusicRetrieverChunk>::create();
        reply.setError(error);
        m_queue->onNextChunkReceived(reply);
    }

    AmazonMusicTrack next(const AmazonMusicTrack& track, bool shuffle, bool round)
    {
        return expectValue(m_queue->getNextTrack(track, shuffle, round));
    }

    AmazonMusicTrack previous(const AmazonMusicTrack& track, bool shuffle, bool round)
    {
        return expectValue(m_queue->getPreviousTrack(track, shuffle, round));
    }

    /// A track as the queue would have given it out.
    static AmazonMusicTrack at(int naturalId, int shuffleId = -1)
    {
        return AmazonMusicTrack(naturalId, shuffleId, TavuAmazonMusicTrackInstance());
    }

    /// The number that the track was made with.
    static QString idOf(const AmazonMusicTrack& track)
    {
        return track.trackInstance().trackDefinitionInst().title().mid(6);
    }

    /// The natural ids in shuffled order, the current track first.
    QList<int> shuffledIds(int current)
    {
        QList<int> ids{ current };
        AmazonMusicTrack track = at(current);
        for (int i = 1; i < m_queue->size(); ++i) {
            track = next(track, true, false);
            ids.append(track.naturalId());
        }
        return ids;
    }

    TestHost m_host;
    AmazonMusicParser m_parser;
    std::unique_ptr<AmazonMusicConnect> m_connect;
    std::unique_ptr<AmazonMusicRetriever> m_retriever;
    std::unique_ptr<AmazonMusicPlayQueue> m_queue;
};
