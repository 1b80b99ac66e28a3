#pragma once

#include "streamerplaylogic.h"

#include "cmnodes.h"
#include "printers.h"
#include "replies.h"
#include "testhost.h"

#include <gtest/gtest.h>

#include <functional>

using Kind = RecordingStreamer::Kind;
using State = TavuPlayLogicState;

inline TavuRoles item(const char* title, qint64 duration = 180000)
{
    TavuResource resource;
    resource.setDuration(duration);
    TavuList<TavuResource> resources;
    resources.append(resource);
    TavuMediaData media;
    media.setResources(resources);
    TavuRoles roles;
    roles.setTitle(QString::fromLatin1(title));
    roles.setMediaData(media);
    return roles;
}

inline CMError failure(const char* message = "gone")
{
    return CMError(TrString(message));
}

/// A play logic that plays what the test tells it to.
class ScriptedLogic : public StreamerPlayLogic
{
public:
    using StreamerPlayLogic::StreamerPlayLogic;

    using StreamerPlayLogic::sendNoNextMediaCommand;
    using StreamerPlayLogic::sendPlayCommand;
    using StreamerPlayLogic::sendSetNextMediaCommand;
    using StreamerPlayLogic::sendStopCommand;

    QStringList calls;
    QStringList started;
    TavuRoles mediaRoles;
    bool nextEnabled = true;
    bool playsLater = false; // A play command is answered by the test.
    CMReply<QVariant> played;
    std::function<void()> whenStarted = [] {};
    std::function<void()> whenWanted = [] {};
    std::function<void()> whenNext = [] {};
    State::Enum stateAtEnd = State::Idle;

protected:
    void playInternal(const CMSetDataRequest& request, const TavuPlayLogicPlayArgs& args) override
    {
        calls << QStringLiteral("play");
        played = request.reply();
        if (playsLater)
            return;
        sendPlayCommand(args.trackRoles(), QVariantHash());
        request.reply().setValue(QVariant());
    }
    void likeInternal(const CMSetDataRequest& request) override { request.reply().cancel(); }
    void dislikeInternal(const CMSetDataRequest& request) override { request.reply().cancel(); }
    void nextInternal(const CMSetDataRequest& request) override
    {
        calls << QStringLiteral("next");
        request.reply().setValue(QVariant());
        whenNext();
    }
    void previousInternal(const CMSetDataRequest& request) override { request.reply().cancel(); }
    void playbackEnded() override
    {
        calls << QStringLiteral("ended");
        stateAtEnd = state();
        StreamerPlayLogic::playbackEnded();
    }
    void prepareNextMedia() override
    {
        calls << QStringLiteral("prepare");
        whenWanted();
    }
    TavuPlayLogicData mediaPlaybackStarted(const TavuRoles& media, const TavuRoles& track) override
    {
        started << track.title();
        mediaRoles = media;
        whenStarted();
        TavuPlayLogicControls controls;
        controls.setNext(nextEnabled);
        TavuPlayLogicData data;
        data.setControls(controls);
        return data;
    }
};

/// Such a logic in a host, with a streamer that records, and all that the logic has told.
class StreamerPlayLogicFixture : public ::testing::Test
{
protected:
    StreamerPlayLogicFixture()
    {
        QObject::connect(m_logic, &StreamerPlayLogic::playbackDataChanged, m_logic,
            [this](const TavuPlayLogicData& data) { m_published.append(data); });
        QObject::connect(m_logic, &StreamerPlayLogic::positionChanged, m_logic,
            [this](qint64 position) { m_positions.append(position); });
        QObject::connect(m_logic, &StreamerPlayLogic::playbackFailed, m_logic,
            [this](const CMError& error) { m_failures << error.message(); });
        QObject::connect(m_logic, &StreamerPlayLogic::mediaSkipped, m_logic,
            [this](const TavuRoles& roles, const CMError& error) {
                m_skipped << roles.title() + QLatin1String(": ") + error.message();
            });
        QObject::connect(m_logic, &StreamerPlayLogic::bufferLevelChanged, m_logic,
            [this](double percent) { m_levels.append(percent); });
    }

    /// A play command as it comes from outside.
    void play(const TavuRoles& roles)
    {
        TavuRoles media;
        media.setTitle(QStringLiteral("album of ") + roles.title());
        TavuPlayLogicPlayArgs args;
        args.setMediaRoles(media);
        args.setTrackRoles(roles);
        expectValue(m_logic->play(args));
    }

    void playAndStart(const TavuRoles& roles)
    {
        play(roles);
        m_streamer.startPresent();
        m_streamer.forgetCommands();
    }

    /// Hands the next item over when the streamer wants it.
    void prepare(const TavuRoles& roles)
    {
        m_logic->whenWanted = [this, roles] { m_logic->sendSetNextMediaCommand(roles, {}); };
        m_streamer.wantNextMedia();
        m_streamer.forgetCommands();
    }

    QString present() const { return m_logic->data().trackRoles().title(); }

    TestHost m_host;
    RecordingStreamer& m_streamer = m_host.streamer();
    CMSubscribe m_subscribe;
    CMNodes m_nodes{ &m_subscribe };
    ScriptedLogic* m_logic = new ScriptedLogic(&m_nodes, CMPath(QStringLiteral("/s/playLogic")));
    QList<TavuPlayLogicData> m_published;
    QList<qint64> m_positions;
    QList<double> m_levels;
    QStringList m_failures;
    QStringList m_skipped;
};
