#pragma once

#include "gststreamer.h"
#include "printers.h"
#include "sound.h"
#include "soundserver.h"
#include "streamerear.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <memory>

/// A streamer whose sound goes to a file, an ear on it, and a server of sound.
class StreamerTest : public ::testing::Test
{
protected:
    enum Clock {
        Unsynced, ///< As fast as the data comes.
        Synced ///< In real time.
    };

    StreamerTest();

    /// Call it before anything else where the defaults do not serve.
    void makeStreamer(Clock clock, int rate = 44100, const player::HttpOptions& options = {});
    player::GstStreamer& streamer();
    StreamerEar& ear();

    TavuRoles roles(const QString& path, qint64 durationMs) const;
    static TavuRoles withKeys(const TavuRoles& roles, const QStringList& headers);
    static TavuRoles startingAt(const TavuRoles& roles, qint64 positionMs);
    /// A flac at "/<name>.flac", and its roles.
    TavuRoles flacRoles(const QString& name, const Sound& sound);

    /// What was heard so far.
    QByteArray captured() const;
    QString sinkDescription(Clock clock, int rate = 44100) const;

    SoundServer server;
    QTemporaryDir folder;

private:
    std::unique_ptr<player::GstStreamer> m_streamer;
    std::unique_ptr<StreamerEar> m_ear;
};

constexpr int buffering = 1;
constexpr int playing = 2;
constexpr int paused = 3;

/// Where two sounds first differ, for messages; -1 when they are equal.
int firstDifference(const QByteArray& a, const QByteArray& b);
::testing::AssertionResult soundsLike(const QByteArray& heard, const QByteArray& expected);
