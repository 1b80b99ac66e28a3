#include "emulatorclient.h"
#include "musicfolder.h"

#include "rawpeer.h"
#include "tavuamazonmusic.h"
#include "tavujson.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QUrl>

using namespace emulator;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

// One album of five tracks, and a dial that is turned by the control address.
class DialOverHttp : public ::testing::Test
{
protected:
    void SetUp() override
    {
        for (int i = 1; i <= 5; ++i) {
            const QString file = m_client.musicFolder() + QStringLiteral("/one/%1.flac").arg(i);
            ASSERT_EQ(makeTone(file, samples::Format::Flac, tagged("A", "One", "x", i), 0.1)
                          .toStdString(),
                "");
        }
        ASSERT_EQ(m_client.start().toStdString(), "");
    }

    void turn(const QByteArray& rules)
    {
        const Reply reply = m_client.post(text("/emulator/faults"), rules);
        ASSERT_EQ(reply.status, 200) << reply.body.toStdString();
    }

    Reply albums() { return m_client.get(text("/albums/")); }

    // The bytes that come back when the page of albums is asked for once.
    QByteArray rawAlbums(bool untilEnd = true)
    {
        RawPeer peer(m_client.emulator().httpPort());
        peer.request("GET", "/albums/", {}, "authorization: " + m_client.bearer() + "\r\n");
        if (untilEnd)
            EXPECT_TRUE(peer.waitForEnd());
        else
            EXPECT_TRUE(peer.waitFor("\r\n\r\n"));
        return peer.received();
    }

    static int bodySize(const QByteArray& answer)
    {
        const int headEnd = answer.indexOf("\r\n\r\n");
        return headEnd < 0 ? 0 : answer.size() - headEnd - 4;
    }

    // How much of the body comes when at least `expected` bytes are waited for, and then a little
    // longer for what should not come.
    int bodyBeforeStall(const QByteArray& target, int expected)
    {
        RawPeer peer(m_client.emulator().httpPort());
        peer.request("GET", target, {}, "authorization: " + m_client.bearer() + "\r\n");
        EXPECT_TRUE(waitUntil([&] { return bodySize(peer.received()) >= expected; }));
        EXPECT_FALSE(peer.waitForEnd(100));
        return bodySize(peer.received());
    }

    LedgerEntry lastEntry() { return m_client.emulator().ledger().entries().back(); }

    QString audioUrl(int index = 0)
    {
        const TavuAmazonMusic chunk(m_client.document(text("/chunks/albums/")
            + m_client.document(text("/emulator/catalogue"))
                  .value(text("tracks"))
                  .toList()
                  .first()
                  .toHash()
                  .value(text("albumId"))
                  .toString()));
        const TavuAmazonMusicTrackInstance instance(
            chunk.trackInstances().__value(QStringLiteral("instance-%1").arg(index)).toHash());
        return TavuAmazonMusicTrackDefinition(
            chunk.trackDefinitions().__value(instance.trackDefinition().mid(1)).toHash())
            .audio()
            .uri();
    }

    EmulatorClient m_client;
};

} // namespace

TEST_F(DialOverHttp, HitsOnceAndTellsItInTheLedger)
{
    turn(R"({"name":"down","path":"/albums/","effect":"status","status":502,"times":1})");
    EXPECT_EQ(albums().status, 502);
    EXPECT_EQ(lastEntry().fault, text("down"));
    EXPECT_EQ(lastEntry().effect, text("status"));
    EXPECT_EQ(lastEntry().status, 502);
    EXPECT_EQ(albums().status, 200);
    EXPECT_TRUE(lastEntry().fault.isEmpty());
    const QVariantHash listed =
        m_client.document(text("/emulator/faults")).value(text("rules")).toList().first().toHash();
    EXPECT_EQ(listed.value(text("hits")).toInt(), 1);
}

TEST_F(DialOverHttp, IsListedAndCleared)
{
    turn(R"([{"effect":"hang","path":"/a"},{"effect":"status","path":"/b"}])");
    EXPECT_EQ(m_client.document(text("/emulator/faults")).value(text("rules")).toList().size(), 2);
    EXPECT_EQ(m_client.remove(text("/emulator/faults/1")).status, 200);
    EXPECT_EQ(m_client.remove(text("/emulator/faults/1")).status, 404);
    EXPECT_EQ(m_client.remove(text("/emulator/faults")).status, 200);
    EXPECT_TRUE(
        m_client.document(text("/emulator/faults")).value(text("rules")).toList().isEmpty());
    EXPECT_GT(
        m_client.document(text("/emulator/effects")).value(text("effects")).toList().size(), 20);
}

TEST_F(DialOverHttp, TakesAllRulesOfAListOrNone)
{
    const Reply reply =
        m_client.post(text("/emulator/faults"), R"([{"effect":"hang"},{"effect":"wat"}])");
    EXPECT_EQ(reply.status, 400);
    EXPECT_TRUE(reply.json().value(text("error")).toString().contains(text("wat")));
    EXPECT_EQ(m_client.post(text("/emulator/faults"), "17").status, 400);
    EXPECT_TRUE(m_client.emulator().dial().rules().empty());
}

TEST_F(DialOverHttp, DelaysTheAnswer)
{
    turn(R"({"path":"/albums/","delay":300,"times":1})");
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(albums().status, 200);
    EXPECT_GE(clock.elapsed(), 290);
}

TEST_F(DialOverHttp, RefusesTheTokenOnceOrForEver)
{
    turn(R"({"kind":"browse","effect":"unauthorized","times":1})");
    EXPECT_EQ(albums().status, 401);
    EXPECT_EQ(albums().status, 200);
    turn(R"({"kind":"browse","effect":"unauthorized","status":403})");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(albums().status, 403);
}

TEST_F(DialOverHttp, RedirectsToAnotherHost)
{
    turn(R"({"path":"/albums/","effect":"redirect","status":307,"toHost":"eu.music.localhost"})");
    const Reply reply = m_client.get(text("/albums/?offset=1"), { { "host", "music.localhost" } });
    EXPECT_EQ(reply.status, 307);
    EXPECT_EQ(reply.header("Location"), "http://eu.music.localhost/albums/?offset=1");
}

TEST_F(DialOverHttp, AnswersWithAConflict)
{
    turn(R"({"kind":"chunk","effect":"conflict","explanation":"No."})");
    const Reply reply = m_client.get(text("/chunks/stations/1"));
    EXPECT_EQ(reply.status, 409);
    EXPECT_TRUE(reply.body.contains("No."));
}

TEST_F(DialOverHttp, HangsUntilThePeerGivesUp)
{
    turn(R"({"path":"/albums/","effect":"hang","times":1})");
    {
        RawPeer peer(m_client.emulator().httpPort());
        peer.request("GET", "/albums/", {}, "authorization: " + m_client.bearer() + "\r\n");
        ASSERT_TRUE(waitUntil([&] {
            const std::vector<LedgerEntry> entries = m_client.emulator().ledger().entries();
            return !entries.empty() && entries.back().effect == text("hang");
        }));
        EXPECT_FALSE(waitUntil([&] { return !peer.received().isEmpty(); }, 200));
        EXPECT_TRUE(peer.connected());
    }
    EXPECT_EQ(lastEntry().status, 0);
    EXPECT_EQ(albums().status, 200);
}

TEST_F(DialOverHttp, CutsResetsAndStallsInTheBody)
{
    turn(R"({"path":"/albums/","effect":"cut","after":20,"times":1})");
    const QByteArray cut = rawAlbums();
    EXPECT_EQ(cut.mid(cut.indexOf("\r\n\r\n") + 4).size(), 20);
    turn(R"({"path":"/albums/","effect":"cut","after":20,"bytesPerSecond":100,"times":1})");
    QElapsedTimer clock;
    clock.start();
    rawAlbums();
    EXPECT_GE(clock.elapsed(), 150);
    turn(R"({"path":"/albums/","effect":"reset","after":10,"times":1})");
    EXPECT_EQ(albums().error, QNetworkReply::RemoteHostClosedError);
    turn(R"({"path":"/albums/","effect":"stall","after":10,"times":1})");
    EXPECT_EQ(bodyBeforeStall("/albums/", 10), 10);
}

TEST_F(DialOverHttp, TricklesTheBody)
{
    turn(R"({"path":"/albums/","effect":"trickle","bytesPerSecond":50,"times":1})");
    RawPeer peer(m_client.emulator().httpPort());
    QElapsedTimer clock;
    clock.start();
    peer.request("GET", "/albums/", {}, "authorization: " + m_client.bearer() + "\r\n");
    EXPECT_TRUE(waitUntil([&] { return bodySize(peer.received()) >= 20; }));
    EXPECT_GE(clock.elapsed(), 200);
    EXPECT_LT(bodySize(peer.received()), 20 + 50 * (clock.elapsed() / 1000 + 1));
}

TEST_F(DialOverHttp, LeavesTheLastChunkOut)
{
    turn(R"({"path":"/albums/","effect":"chunked-cut","times":1})");
    const QByteArray answer = rawAlbums();
    EXPECT_TRUE(answer.toLower().contains("transfer-encoding: chunked"));
    EXPECT_TRUE(answer.endsWith("}\r\n")) << "all of the body";
    EXPECT_FALSE(answer.contains("\r\n0\r\n"));
}

TEST_F(DialOverHttp, LiesAboutTheLength)
{
    turn(R"({"path":"/albums/","effect":"surplus","bytes":30,"times":1})");
    EXPECT_TRUE(rawAlbums().endsWith("}" + QByteArray(30, '!')));
    turn(R"({"path":"/albums/","effect":"lengths","times":1})");
    EXPECT_EQ(rawAlbums().count("Content-Length: "), 2);
    turn(R"({"path":"/albums/","effect":"lengths","form":"length-and-chunked","times":1})");
    const QByteArray both = rawAlbums();
    EXPECT_EQ(both.count("Content-Length: "), 1);
    EXPECT_EQ(both.count("Transfer-Encoding: chunked"), 1);
}

TEST_F(DialOverHttp, SpeaksNonsenseOrNothing)
{
    turn(R"({"path":"/albums/","effect":"garbage","times":1})");
    EXPECT_FALSE(rawAlbums().startsWith("HTTP/1"));
    turn(R"({"path":"/albums/","effect":"garbage","form":"http09","times":1})");
    EXPECT_TRUE(rawAlbums().startsWith("{"));
    turn(R"({"path":"/albums/","effect":"close","times":1})");
    EXPECT_TRUE(rawAlbums().isEmpty());
    turn(R"({"path":"/albums/","effect":"abort","times":1})");
    EXPECT_TRUE(rawAlbums().isEmpty());
}

TEST_F(DialOverHttp, SendsHeadersWithoutEnd)
{
    turn(R"({"path":"/albums/","effect":"endless-headers","times":1})");
    RawPeer peer(m_client.emulator().httpPort());
    peer.request("GET", "/albums/", {}, "authorization: " + m_client.bearer() + "\r\n");
    EXPECT_TRUE(waitUntil([&] { return peer.received().size() > 512 * 1024; }));
    EXPECT_FALSE(peer.received().contains("\r\n\r\n"));
}

TEST_F(DialOverHttp, PadsWithAndWithoutALength)
{
    turn(R"({"path":"/albums/","effect":"pad","bytes":50000,"times":1})");
    EXPECT_EQ(albums().body.size(), 50000);
    turn(R"({"path":"/albums/","effect":"pad","bytes":50001,"chunked":true,"times":1})");
    const Reply chunked = albums();
    EXPECT_EQ(chunked.body.size(), 50001);
    EXPECT_TRUE(chunked.header("Content-Length").isEmpty());
}

TEST_F(DialOverHttp, LetsAddressesExpireEarly)
{
    turn(R"({"kind":"chunk","effect":"expire","in":-1000,"times":1})");
    EXPECT_EQ(m_client.get(audioUrl()).status, 403);
    turn(R"({"kind":"chunk","effect":"expire","in":-1000,"status":410,"times":1})");
    EXPECT_EQ(m_client.get(audioUrl()).status, 410);
    EXPECT_EQ(m_client.get(audioUrl()).status, 200);
}

TEST_F(DialOverHttp, LedgerTellsWhoSendsTheBearer)
{
    const auto sent = [this] { return lastEntry().details.value(text("bearerSent")).toBool(); };
    albums();
    EXPECT_TRUE(sent());
    m_client.get(text("/albums/"), { { "authorization", "Basic abc" } });
    EXPECT_FALSE(sent());
    m_client.get(audioUrl(), { { "authorization", "Bearer abc" } });
    EXPECT_TRUE(sent());
}

TEST_F(DialOverHttp, ProtectsEveryTrack)
{
    turn(R"({"kind":"chunk","effect":"key-headers","times":1})");
    EXPECT_EQ(m_client.get(audioUrl()).status, 403);
    EXPECT_EQ(m_client.get(audioUrl()).status, 200);
}

TEST_F(DialOverHttp, DisturbsSoundToo)
{
    const QString url = audioUrl();
    turn(R"({"kind":"audio","effect":"status","status":410,"times":1})");
    EXPECT_EQ(m_client.get(url).status, 410);
    turn(R"({"kind":"audio","effect":"no-ranges","times":1})");
    const Reply whole = m_client.get(url, { { "range", "bytes=10-19" } });
    EXPECT_EQ(whole.status, 200);
    EXPECT_TRUE(whole.header("Accept-Ranges").isEmpty());
    turn(R"({"kind":"audio","effect":"stall","after":1000,"times":1})");
    EXPECT_EQ(
        bodyBeforeStall(QUrl(url).toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority), 1000),
        1000);
    turn(R"({"kind":"audio","effect":"chunked-cut","after":1000,"times":1})");
    const Reply chunked = m_client.get(url);
    EXPECT_EQ(chunked.body.size(), 1000);
    EXPECT_TRUE(chunked.header("Content-Length").isEmpty());
    turn(R"({"kind":"audio","effect":"body","text":"<html>","type":"text/html","times":1})");
    EXPECT_EQ(m_client.get(url).body, "<html>");
}

TEST_F(DialOverHttp, CanBeSetWhenTheEmulatorStarts)
{
    m_client.settings.faults = {
        *faults::parseRule(text("path=/albums/ effect=status times=1")).rule
    };
    ASSERT_EQ(m_client.restart().toStdString(), "");
    EXPECT_EQ(albums().status, 503);
    EXPECT_EQ(albums().status, 200);
}

TEST_F(DialOverHttp, EndsWithAnswersStillHanging)
{
    turn(R"([{"path":"/albums/","effect":"hang"},{"path":"/tracks/","delay":60000}])");
    RawPeer hanging(m_client.emulator().httpPort());
    hanging.request("GET", "/albums/", {}, "authorization: " + m_client.bearer() + "\r\n");
    RawPeer delayed(m_client.emulator().httpPort());
    delayed.request("GET", "/tracks/", {}, "authorization: " + m_client.bearer() + "\r\n");
    EXPECT_TRUE(waitUntil([this] { return m_client.emulator().ledger().lastSerial() >= 2; }));
    EXPECT_EQ(m_client.restart().toStdString(), "");
    EXPECT_EQ(m_client.get(text("/")).status, 200);
}
