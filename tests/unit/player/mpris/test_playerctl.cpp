#include "mprisfixture.h"

#include <QProcess>

namespace {

/// The tool that people use, against the player on a bus of the test's own.
class Playerctl : public MprisFixture
{
protected:
    Playerctl()
    {
        facade.m_player = playing("Blue", 3);
        start();
        reportPosition(42000);
    }

    /// What the tool prints.
    QString run(const QStringList& arguments)
    {
        QProcess tool;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(text("DBUS_SESSION_BUS_ADDRESS"), bus.address());
        tool.setProcessEnvironment(environment);
        tool.start(text("playerctl"), arguments);
        EXPECT_TRUE(waitUntil([&] { return tool.state() == QProcess::NotRunning; }));
        EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().toStdString();
        return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
    }
};

} // namespace

TEST_F(Playerctl, FindsThePlayer)
{
    EXPECT_EQ(run({ text("--list-all") }), text("tavu"));
}

TEST_F(Playerctl, ShowsWhatPlays)
{
    EXPECT_EQ(run({ text("status") }), text("Paused"));
    EXPECT_EQ(run({ text("metadata"), text("--format"),
                  text("{{artist}} - {{title}} ({{album}}) {{mpris:length}} {{mpris:artUrl}}") }),
        text("The Waves - Blue (Sea) 200000000 http://127.0.0.1/art.png"));
    EXPECT_EQ(run({ text("position") }), text("42.000000"));
    EXPECT_EQ(run({ text("loop") }), text("None"));
    EXPECT_EQ(run({ text("volume") }), text("0.500000"));
}

TEST_F(Playerctl, SteersThePlayer)
{
    run({ text("play-pause") });
    run({ text("next") });
    run({ text("previous") });
    run({ text("position"), text("10") });
    run({ text("volume"), text("0.2") });
    run({ text("shuffle"), text("On") });
    run({ text("stop") });
    EXPECT_EQ(told(),
        (QStringList{ text("command[\"Resume\"]"), text("command[\"Next\"]"),
            text("command[\"Previous\"]"), text("seek[10000]"), text("setVolume[20]"),
            text("setPlayMode[1]"), text("command[\"Stop\"]") }));
}
