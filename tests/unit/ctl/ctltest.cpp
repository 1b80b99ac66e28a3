#include "controlserver.h"
#include "fakeplayer.h"
#include "printers.h"
#include "tavujson.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QTimer>

namespace {

QString text(const char* ascii)
{
    return QString::fromUtf8(ascii);
}

QVariantHash hash(const char* json)
{
    return TavuJson::parse(json).toHash();
}

/// Pages by their paths; all else as the fake player does it.
class Shop : public FakePlayer
{
public:
    CMReply<QVariant> rows(const QString& path, int from, int to) override
    {
        FakePlayer::rows(path, from, to);
        const auto reply = CMReply<QVariant>::create();
        const QVariantList list = pages.value(path);
        reply.setValue(QVariantHash{ { text("path"), path }, { text("rows"), list },
            { text("from"), from }, { text("count"), list.size() } });
        return reply;
    }

    CMReply<QVariant> play(const QVariantHash& row) override
    {
        const CMReply<QVariant> reply = FakePlayer::play(row);
        if (whenPlaying)
            whenPlaying();
        return reply;
    }

    QHash<QString, QVariantList> pages;
    std::function<void()> whenPlaying;
};

class Ctl : public ::testing::Test
{
protected:
    Ctl()
    {
        player.answerWith(QVariant());
        player.m_player = hash(R"({"state": 0, "error": null})");
        player.pages[QString()] = { hash(R"({"title": "Song", "type": 3, "path": "/song"})") };
        player.pages[text("/refused")] = {
            hash(R"({"title": "Not in your plan", "longDescription": "Larger plans play it.",
                     "type": 6})"),
            hash(R"({"title": "See plans", "type": 106,
                     "mediaData": {"resources": [{"uri": "https://plans.example/"}]}})"),
            hash(R"({"title": "Not now", "type": 102, "path": "/close"})"),
        };
        player.pages[text("/rated")] = { hash(R"({"title": "Thanks!", "type": 6})") };
        port = server.listen(QHostAddress::LocalHost, 0);
    }

    /// Runs the program to its end; returns its exit code.
    int run(const QStringList& arguments)
    {
        QProcess program;
        program.start(text(TAVU_CTL),
            QStringList{ text("--url"), text("http://127.0.0.1:%1").arg(port) } + arguments);
        EXPECT_TRUE(waitUntil([&] { return program.state() == QProcess::NotRunning; }));
        out = QString::fromUtf8(program.readAllStandardOutput()).trimmed();
        err = QString::fromUtf8(program.readAllStandardError()).trimmed();
        return program.exitCode();
    }

    QVariantHash refusedMessage()
    {
        return { { text("at"), text("now") }, { text("title"), text("Not in your plan") },
            { text("text"), text("Larger plans play it.") },
            { text("rows"), player.pages[text("/refused")] } };
    }

    Shop player;
    control::ControlServer server{ player, {} };
    quint16 port = 0;
    QString out;
    QString err;
};

} // namespace

TEST_F(Ctl, PrintsMessagesInTheWordsThatTheyHave)
{
    player.m_messages = { hash(R"({"at": "1", "title": "Thanks!", "text": ""})"),
        hash(R"({"at": "2", "title": "Skipped", "text": "Gone"})"),
        hash(R"({"at": "3", "title": "Error", "text": "No answer"})"), refusedMessage() };
    EXPECT_EQ(run({ text("messages") }), 0);
    EXPECT_EQ(out,
        text("1  Thanks!\n2  Skipped: Gone\n3  No answer\n"
             "now  Not in your plan: Larger plans play it.\n"
             "  (1) See plans  https://plans.example/\n  (2) Not now"));
}

TEST_F(Ctl, PressesAButtonOfTheLatestMessageThatHasAny)
{
    player.m_messages = { refusedMessage(), hash(R"({"at": "2", "title": "Later"})") };
    EXPECT_EQ(run({ text("press"), text("2") }), 0);
    ASSERT_EQ(player.calls.last().name, text("activateRow"));
    EXPECT_EQ(player.calls.last().arguments.first().toHash().value(text("title")), text("Not now"));
    EXPECT_EQ(run({ text("press"), text("see"), text("plans") }), 0);
    EXPECT_EQ(out, text("https://plans.example/"));
    EXPECT_EQ(run({ text("press"), text("3") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: There is no button \"3\"."));
}

TEST_F(Ctl, PlayEndsWellOnceItSounds)
{
    player.whenPlaying = [this] { player.m_player = hash(R"({"state": 1, "error": null})"); };
    QTimer soon;
    soon.start(20);
    QObject::connect(&soon, &QTimer::timeout, [this] {
        if (player.m_player.value(text("state")) == 1)
            player.m_player = hash(R"({"state": 2, "error": null})");
    });
    EXPECT_EQ(run({ text("play"), text("Song") }), 0);
    EXPECT_EQ(player.calls.last().name, text("play"));
    EXPECT_EQ(player.m_player.value(text("state")).toInt(), 2);
}

TEST_F(Ctl, PlayFailsWithAStreamThatCannotBePlayed)
{
    player.whenPlaying = [this] {
        player.m_player = hash(R"({"state": 0, "error": {"title": "Error", "detail": "Gone"}})");
    };
    EXPECT_EQ(run({ text("play"), text("Song") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: Gone"));
}

TEST_F(Ctl, PlayThatIsRefusedShowsTheServicesWordsAndButtons)
{
    player.failWith(CMError(hash(R"({"name": "error", "title": "Error", "message": "No",
        "actionReply": {"xclass": "TavuActionReply", "result": {"path": "/refused"}}})")));
    EXPECT_EQ(run({ text("play"), text("Song") }), 1);
    EXPECT_EQ(out, QString());
    EXPECT_EQ(err,
        text("tavu-ctl: Not in your plan: Larger plans play it.\n"
             "  (1) See plans  https://plans.example/\n  (2) Not now\n"
             "tavu-ctl: To press a button: tavu-ctl press NUMBER"));
}

TEST_F(Ctl, CommandsThatFailSayWhy)
{
    player.failWith(CMError(hash(R"({"name": "error", "title": "Error", "message": "No next"})")));
    EXPECT_EQ(run({ text("next") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: No next"));
}

TEST_F(Ctl, PrintsWhatTheServiceSaysToARating)
{
    player.answerWith(hash(R"({"xclass": "TavuActionReply", "result": {"path": "/rated"}})"));
    EXPECT_EQ(run({ text("like") }), 0);
    EXPECT_EQ(out, text("Thanks!"));
}

TEST_F(Ctl, StatusTellsARating)
{
    player.m_player = hash(R"({"state": 2, "title": "Song", "rating": "up", "error": null})");
    EXPECT_EQ(run({ text("status") }), 0);
    EXPECT_TRUE(out.contains(text("rated up"))) << out.toStdString();
}

TEST_F(Ctl, WithoutAPlayerEndsWithACodeOfItsOwn)
{
    port = 1;
    EXPECT_EQ(run({ text("status") }), 7);
    EXPECT_TRUE(err.contains(text("No player answers at http://127.0.0.1:1"))) << err.toStdString();
}

TEST_F(Ctl, ListsTheRowsOfAScreenByNumberOrTitle)
{
    player.pages[QString()] = { hash(R"({"title": "Albums", "type": 1, "path": "/albums"})"),
        hash(R"({"title": "Home", "type": 6, "longDescription": "Nothing new."})") };
    player.pages[text("/albums")] = {
        hash(R"({"title": "One", "type": 1, "path": "/one", "containerPlayable": true,
                 "mediaData": {"metaData": {"artist": "Ann"}}})"),
        hash(R"({"title": "2", "type": 1, "path": "/two"})"),
    };
    EXPECT_EQ(run({ text("ls") }), 0);
    EXPECT_EQ(out, text("1. [ ] Albums\n  2.     Home\n         Nothing new."));
    for (const char* row : { "1", "Albums", "albums" }) {
        EXPECT_EQ(run({ text("ls"), text(row) }), 0);
        EXPECT_TRUE(out.contains(text(" One - Ann\n"))) << out.toStdString();
    }
    // A title counts before a number.
    EXPECT_EQ(run({ text("ls"), text("Albums/2") }), 0);
    EXPECT_EQ(player.calls.last().arguments.first(), text("/two"));
    EXPECT_EQ(run({ text("ls"), text("Albums/3") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: There is no row \"3\" in \"Albums\"."));
    EXPECT_EQ(run({ text("ls"), text("Songs") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: There is no row \"Songs\" at the root."));
}

TEST_F(Ctl, ListsAsJson)
{
    EXPECT_EQ(run({ text("--json"), text("ls") }), 0);
    const QVariantList rows = TavuJson::parse(out.toUtf8()).toList();
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(rows.first().toHash().value(text("title")), text("Song"));
}

TEST_F(Ctl, SearchesForAllWordsAndListsWhatIsFound)
{
    player.answerWith(text("/found"));
    player.pages[text("/found")] = { hash(R"({"title": "Tune", "type": 3, "path": "/tune"})") };
    EXPECT_EQ(run({ text("search"), text("a"), text("tune & more") }), 0);
    EXPECT_TRUE(player.told().join(text(" ")).contains(text("search[\"a tune & more\"")))
        << player.told().join(text(" ")).toStdString();
    EXPECT_EQ(out, text("1.  >  Tune"));
    player.pages[text("/found")].clear();
    EXPECT_EQ(run({ text("search"), text("no") }), 0);
    EXPECT_EQ(out, text("Nothing found for \"no\"."));
}

TEST_F(Ctl, PassesTransportCommandsOn)
{
    const std::vector<std::pair<QStringList, const char*>> commands{
        { { text("pause") }, R"(command["TogglePause"])" },
        { { text("resume") }, R"(command["Resume"])" },
        { { text("next") }, R"(command["Next"])" },
        { { text("prev") }, R"(command["Previous"])" },
        { { text("stop") }, R"(command["Stop"])" },
        { { text("like") }, R"(command["Like"])" },
        { { text("dislike") }, R"(command["Dislike"])" },
        { { text("seek"), text("61.5") }, "seek[61500]" },
        { { text("volume"), text("40") }, "setVolume[40]" },
        { { text("mode"), text("5") }, "setPlayMode[5]" },
        { { text("logout") }, "logout[]" },
    };
    for (const auto& [arguments, told] : commands) {
        player.calls.clear();
        EXPECT_EQ(run(arguments), 0) << told << err.toStdString();
        ASSERT_EQ(player.told().size(), 1) << told;
        EXPECT_EQ(player.told().first(), text(told));
    }
}

TEST_F(Ctl, ShowsTheCodeOfALoginAndWaitsForItsEnd)
{
    player.m_login = hash(R"({"state": "starting"})");
    QTimer steps;
    steps.start(20);
    int asked = 0;
    QObject::connect(&steps, &QTimer::timeout, [&] {
        if (player.calls.isEmpty() || player.calls.last().name != text("startLogin"))
            return;
        ++asked;
        player.m_login = asked < 30 ? hash(R"({"state": "waiting", "userCode": "AB-12",
                       "verificationUri": "https://login.example/",
                       "verificationUriComplete": "https://login.example/?c=AB-12"})")
                                    : hash(R"({"state": "loggedIn"})");
    });
    EXPECT_EQ(run({ text("login") }), 0);
    EXPECT_EQ(out,
        text("Open https://login.example/ on any device and enter the code AB-12\n"
             "or open https://login.example/?c=AB-12\nSigned in."));
}

TEST_F(Ctl, ALoginThatFailsSaysWhy)
{
    player.m_login = hash(R"({"state": "failed", "message": "The code has ended."})");
    EXPECT_EQ(run({ text("login") }), 1);
    EXPECT_EQ(err, text("tavu-ctl: The code has ended."));
}

TEST_F(Ctl, StatusTellsWhatPlaysAndHow)
{
    player.m_login = hash(R"({"state": "loggedIn"})");
    player.m_player = hash(R"({"state": 2, "title": "Song", "artist": "Ann", "position": 61000,
        "duration": 3725000, "volume": 40, "mute": true, "mode": 5, "error": null})");
    EXPECT_EQ(run({ text("status") }), 0);
    EXPECT_EQ(out,
        text("playing  1:01 / 1:02:05\nSong - Ann\nvolume 40 (muted), mode shuffle, repeat all"));
    EXPECT_EQ(run({ text("--json"), text("status") }), 0);
    EXPECT_EQ(
        TavuJson::parse(out.toUtf8()).toHash().value(text("player")).toHash().value(text("title")),
        text("Song"));
    player.m_login = hash(R"({"state": "waiting"})");
    EXPECT_EQ(run({ text("status") }), 0);
    EXPECT_TRUE(out.endsWith(text("Not signed in. Run \"tavu-ctl login\"."))) << out.toStdString();
}
