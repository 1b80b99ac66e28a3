#pragma once

#include "capture.h"
#include "house.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QFile>

/// One long track, whose every place sounds different, at a service whose stream addresses last for
/// moments.
class LongTrack : public ::testing::Test
{
protected:
    static constexpr int idle = 0;
    static constexpr int playing = 2;
    static constexpr int paused = 3;
    static constexpr int trackMs = 150000;
    static constexpr int halfSecond = 44100 / 2; // Frames.

    LongTrack()
        : original(Sound::melody(trackMs, 7))
    {
        QFile file(music.filePath(QStringLiteral("Long Road.flac")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(flac(original));
    }

    std::unique_ptr<House> makeHouse(const QString& pace)
    {
        auto house = std::make_unique<House>([this](emulator::Settings& settings) {
            settings.musicFolder = music.path();
            settings.documents.keyHeadersEvery = 0;
        });
        house->setOutput(capture.output(pace));
        return house;
    }

    void playTrack(House& house)
    {
        house.play(QStringLiteral("Albums/Unknown album/Long Road"));
        ASSERT_TRUE(house.waitForState(playing));
    }

    bool waitForMoreSound(int ms)
    {
        constexpr int bytesPerMs = 44100 * Sound::frameSize / 1000;
        const qint64 wanted = capture.size() + qint64{ ms } * bytesPerMs;
        return waitUntil([&] { return capture.size() >= wanted; }, 30000);
    }

    QTemporaryDir music;
    const Sound original;
    Capture capture;
};
