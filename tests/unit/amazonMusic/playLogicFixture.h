#pragma once

#include "amazonMusicConnect.h"
#include "amazonMusicParser.h"
#include "amazonMusicPlayLogic.h"
#include "amazonMusicReporter.h"
#include "amazonMusicRetriever.h"
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

/// The play logic with the real connection, retriever and reporter, between a scripted service and
/// a recording streamer.
class PlayLogicFixture : public testing::Test
{
protected:
    using Kind = RecordingStreamer::Kind;
    using Track = serviceDocuments::Track;
    using Reply = CMReply<QVariant>;

    PlayLogicFixture()
    {
        m_host.setBaseUrl(m_service.baseUrl());
        m_host.setToken(QStringLiteral("token"));
        m_connect = std::make_unique<AmazonMusicConnect>();
        m_connect->setLoggedIn(true);
        m_rows =
            CMListRowsNode::create(&m_nodes, CMPath(QStringLiteral("/AmazonMusic/stationsError")));
        m_retriever = std::make_unique<AmazonMusicRetriever>(m_connect.get(), &m_parser, m_rows);
        m_reporter = std::make_unique<AmazonMusicReporter>(nullptr, m_connect.get());
        m_logic = new AmazonMusicPlayLogic(&m_nodes, TavuAmazonMusicPlayLogicPath(),
            m_connect.get(), m_retriever.get(), m_reporter.get());
        QObject::connect(m_logic, &StreamerPlayLogic::playbackFailed, m_logic,
            [this](const CMError& error) { m_failures.append(error); });
        QObject::connect(m_logic, &StreamerPlayLogic::mediaSkipped, m_logic,
            [this](const TavuRoles& roles, const CMError&) { m_skipped.append(roles.title()); });
        settle();
    }

    ~PlayLogicFixture() override { m_service.expectNoRequest(); }

    RecordingStreamer& streamer() { return m_host.streamer(); }

    // Rows.
    TavuRoles row(const QString& target, TavuRolesAudioType::Enum audioType) const
    {
        TavuResource resource;
        resource.setUri(m_service.url(target).toString());
        TavuList<TavuResource> resources;
        resources.append(resource);
        TavuMediaData mediaData;
        mediaData.setResources(resources);
        TavuRoles roles;
        roles.setType(TavuRolesType::Playable);
        roles.setAudioType(audioType);
        roles.setMediaData(mediaData);
        return roles;
    }

    /// A browsed row as the player passes it: the media roles say how to fetch.
    Reply playRow(TavuRolesAudioType::Enum audioType,
        const QString& target = QStringLiteral("/album#p"),
        TavuRolesType::Enum type = TavuRolesType::Playable)
    {
        TavuRoles roles = row(target, audioType);
        roles.setType(type);
        TavuPlayLogicPlayArgs args;
        args.setTrackRoles(roles);
        roles.setAudioType(TavuRolesAudioType::Station);
        args.setMediaRoles(roles);
        return m_logic->play(args);
    }
    Reply playAlbum() { return playRow(TavuRolesAudioType::Tracks); }
    Reply playStation() { return playRow(TavuRolesAudioType::Station); }

    /// The service has an album "/album#p" of these tracks, which begins at `index`.
    void offer(const QList<Track>& tracks, int index = 0, const QString& nextChunk = {})
    {
        m_service.always(
            "GET", "/album", 200, serviceDocuments::playableBody(QStringLiteral("/chunk"), index));
        m_service.always("GET", "/chunk", 200, serviceDocuments::chunkBody(tracks, nextChunk));
    }

    // Reports.
    ServiceRequest expectReport(const QString& id, const char* event, const char* reason)
    {
        return m_service.expectRequest(
            "POST", "/events/" + id.toLatin1(), [event, reason](const ServiceRequest& request) {
                const QVariantHash report = request.json();
                return report.value(QStringLiteral("event")) == QString::fromLatin1(event)
                    && report.value(QStringLiteral("reason")) == QString::fromLatin1(reason);
            });
    }
    void allowReport(const QString& id, const char* event, const char* reason)
    {
        expectReport(id, event, reason).answer(200);
    }
    static qint64 positionOf(const ServiceRequest& report)
    {
        return report.json().value(QStringLiteral("trackPosition")).toLongLong();
    }
    static bool isDirected(const ServiceRequest& report)
    {
        return report.json().value(QStringLiteral("isDirectedPlay")).toBool();
    }
    /// A refusal with an option to go on, or without one.
    static QByteArray refusal(const QList<serviceDocuments::Option>& options = {})
    {
        return serviceDocuments::ErrorReport{ QStringLiteral("Another device plays %1"),
            QStringLiteral("Stop it there first."), options }
            .body();
    }
    static serviceDocuments::Option resumeOption(const QString& uri)
    {
        return { QStringLiteral("Play here"), QStringLiteral("post"), uri, true };
    }

    // Playing.
    /// Plays the album and lets its first track sound.
    void startAlbum(const QList<Track>& tracks, int index = 0)
    {
        offer(tracks, index);
        finishStart(playAlbum(), tracks.at(index));
    }
    void startStation(const QList<Track>& tracks, int index = 0, const QString& nextChunk = {})
    {
        offer(tracks, index, nextChunk);
        finishStart(playStation(), tracks.at(index));
    }
    void finishStart(const Reply& reply, const Track& first)
    {
        allowReport(first.id, "START", "TRACK_SELECTED");
        expectValue(reply);
        EXPECT_EQ(streamer().expect(Kind::Play).roles.title(), QStringLiteral("Title ") + first.id);
        streamer().startPresent();
        EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Playing);
    }
    /// The streamer wants the next item and gets the track with this id.
    void prepareNext(const QString& id)
    {
        streamer().wantNextMedia();
        EXPECT_EQ(
            streamer().expect(Kind::SetNextMedia).roles.title(), QStringLiteral("Title ") + id);
    }
    QString playing() const { return m_logic->data().trackRoles().title(); }
    void pause()
    {
        expectValue(m_logic->pause());
        streamer().expect(Kind::Pause);
    }
    void setPlayMode(TavuPlayerPlayMode::Enum mode)
    {
        m_host.setPlayMode(mode);
        settle();
    }

    /// The rows of the screen that an answer leads to; the values of `role`.
    QStringList screenRows(const QVariantHash& actionReply, const QString& role)
    {
        const TavuActionReply action(actionReply);
        EXPECT_EQ(action.xclass(), QStringLiteral("TavuActionReply"));
        CMNode* node = m_nodes.find(action.result().path());
        if (!node) {
            ADD_FAILURE() << "no screen";
            return {};
        }
        const CMGetRowsRequest request(node->path(), 0, 99, { role });
        node->getRowsRequest(request);
        QStringList values;
        const QVariantList rows = expectValue(request.reply()).rows();
        for (const QVariant& row : rows)
            values.append(row.toList().value(0).toString());
        return values;
    }

    ServiceScript m_service;
    TestHost m_host;
    CMSubscribe m_subscribe;
    AmazonMusicParser m_parser;
    QList<CMError> m_failures;
    QStringList m_skipped;
    std::unique_ptr<AmazonMusicConnect> m_connect;
    std::unique_ptr<AmazonMusicRetriever> m_retriever;
    std::unique_ptr<AmazonMusicReporter> m_reporter;
    CMNodes m_nodes{ &m_subscribe };
    CMListRowsNode* m_rows = nullptr;
    AmazonMusicPlayLogic* m_logic = nullptr; // Owned by m_nodes.
};
