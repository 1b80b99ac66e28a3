#pragma once

#include "controlserver.h"
#include "fakeplayer.h"
#include "tavujson.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QProcess>

inline QString text(const char* ascii)
{
    return QString::fromUtf8(ascii);
}

inline QVariantHash hash(const char* json)
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

    /// One after the other, the last for good; none: as the fake player does it.
    QVariantHash login() const override
    {
        return logins.isEmpty()  ? FakePlayer::login()
            : logins.size() == 1 ? logins.first()
                                 : logins.takeFirst();
    }

    QHash<QString, QVariantList> pages;
    mutable QList<QVariantHash> logins;
    std::function<void()> whenPlaying;
};

class Ctl : public ::testing::Test
{
protected:
    Ctl()
    {
        player.answerWith(QVariant());
        player.m_login = hash(R"({"state": "loggedIn", "message": ""})");
        player.m_player = hash(R"({"state": 0, "error": null})");
        player.pages[QString()] = { hash(R"({"title": "Song", "type": 3, "path": "/song"})"),
            hash(R"({"title": "Renew", "type": 102, "path": "/renew"})") };
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
        return start(
            QStringList{ text("--url"), text("http://127.0.0.1:%1").arg(port) } + arguments);
    }

    int start(const QStringList& arguments)
    {
        QProcess program;
        program.start(text(TAVU_CTL), arguments);
        EXPECT_TRUE(waitUntil([&] { return program.state() == QProcess::NotRunning; }));
        out = QString::fromUtf8(program.readAllStandardOutput()).trimmed();
        err = QString::fromUtf8(program.readAllStandardError()).trimmed();
        return program.exitCode();
    }

    /// The one line of JSON on standard output.
    QVariant json() const
    {
        EXPECT_FALSE(out.contains(QLatin1Char('\n'))) << out.toStdString();
        return TavuJson::parse(out.toUtf8());
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
