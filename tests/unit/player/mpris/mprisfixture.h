#pragma once

#include "fakeplayer.h"
#include "mpris.h"
#include "printers.h"
#include "privatebus.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QDateTime>

/// The player's D-Bus face over a player that notes what it is asked.
class MprisFixture : public ::testing::Test
{
protected:
    MprisFixture()
    {
        facade.answerWith(QVariant());
        facade.m_player = idle();
    }

    static QString text(const char* ascii) { return QString::fromLatin1(ascii); }
    static QVariantHash idle()
    {
        return { { text("state"), 0 }, { text("mode"), 0 }, { text("volume"), 50 },
            { text("mute"), false } };
    }
    static QVariantHash playing(const char* title = "Blue", int state = 2)
    {
        QVariantHash made = idle();
        made.insert(text("state"), state);
        made.insert(text("title"), text(title));
        made.insert(text("artist"), text("The Waves"));
        made.insert(text("album"), text("Sea"));
        made.insert(text("artwork"), text("http://127.0.0.1/art.png"));
        made.insert(text("duration"), 200000);
        made.insert(text("controls"),
            QVariantHash{ { text("pause"), true }, { text("next"), true },
                { text("previous"), true }, { text("seek"), true } });
        return made;
    }
    void show(const QVariantHash& player)
    {
        facade.m_player = player;
        Q_EMIT facade.playerChanged();
    }
    void reportPosition(qint64 ms)
    {
        Q_EMIT facade.positionChanged(ms, QDateTime::currentMSecsSinceEpoch());
    }
    void start() { mpris = std::make_unique<player::Mpris>(&facade, text("Tavu"), bus.connect()); }
    QStringList told()
    {
        const QStringList calls = facade.told();
        facade.calls.clear();
        return calls;
    }

    PrivateBus bus;
    FakePlayer facade;
    std::unique_ptr<player::Mpris> mpris;
};
