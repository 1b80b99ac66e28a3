#pragma once

#include "house.h"
#include "printers.h"
#include "sound.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

/// A folder with an album of three short tracks.
struct Music
{
    static constexpr int trackMs = 2000;

    Music()
    {
        int seed = 0;
        for (const char* name : { "1 First", "2 Second", "3 Third" }) {
            QFile file(folder.filePath(QString::fromLatin1(name) + QLatin1String(".flac")));
            EXPECT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(flac(Sound::melody(trackMs, ++seed)));
        }
    }

    QTemporaryDir folder;
};

/// An album whose stream addresses may last for moments.
class Continuity : public ::testing::Test
{
protected:
    using Command = PlayerFacade::Command;
    static constexpr int idle = 0;
    static constexpr int buffering = 1;
    static constexpr int playing = 2;
    static constexpr int paused = 3;
    static constexpr int trackMs = Music::trackMs;
    static constexpr int patienceMs = 60000;
    static constexpr qint64 shortLifeMs = 1200;

    Continuity()
        : house([this](emulator::Settings& settings) {
            settings.musicFolder = music.folder.path();
            settings.documents.keyHeadersEvery = 0;
            settings.documents.stationChunk = 2;
        })
    {
        house.setOutput(QStringLiteral("audioconvert ! fakesink sync=true"));
    }

    void start()
    {
        house.startSignedIn();
        follow();
    }

    void restart()
    {
        house.stopPlayer();
        house.start();
        follow();
        ASSERT_TRUE(waitUntil([&] {
            return house.player().login().value(QStringLiteral("state"))
                == QLatin1String("loggedIn");
        }));
    }

    /// From now on keeps the titles in the order in which they sound.
    void follow()
    {
        heard.clear();
        QObject::connect(&house.player(), &PlayerFacade::playerChanged, &house.player(), [this] {
            const QString title = house.title();
            if (house.state() == playing && (heard.isEmpty() || heard.last() != title))
                heard.append(title);
        });
    }

    bool waitToHear(const QStringList& titles)
    {
        return waitUntil([&] { return heard == titles; }, patienceMs);
    }

    void playWithShortLives(const QString& steps)
    {
        house.fault("kind=chunk effect=expire in=1200 times=1");
        const QVariantHash row = house.row(steps);
        m_expiry = QDateTime::currentMSecsSinceEpoch() + shortLifeMs;
        valueOf(house.player().play(row));
        ASSERT_TRUE(house.waitForState(playing));
        m_expiry = QDateTime::currentMSecsSinceEpoch() + shortLifeMs;
    }

    void pauseBeyondExpiry()
    {
        house.command(Command::TogglePause);
        ASSERT_TRUE(house.waitForState(paused));
        ASSERT_TRUE(waitUntil([&] { return QDateTime::currentMSecsSinceEpoch() > m_expiry; }));
    }

    qint64 position()
    {
        return house.player().player().value(QStringLiteral("position")).toLongLong();
    }

    static QString album() { return QStringLiteral("Albums/Unknown album"); }
    static QString first() { return QStringLiteral("First"); }
    static QString second() { return QStringLiteral("Second"); }
    static QString third() { return QStringLiteral("Third"); }

    Music music;
    House house;
    QStringList heard;

private:
    qint64 m_expiry = 0;
};
