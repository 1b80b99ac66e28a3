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
