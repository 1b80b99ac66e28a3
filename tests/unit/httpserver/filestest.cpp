#include "httpstaticfiles.h"
#include "serverfixture.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using http::ContentInfo;
using http::Request;
using http::Responder;

namespace {

void writeFile(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

} // namespace

class Ranges : public ServerFixture
{
protected:
    Ranges()
    {
        info.contentType = "audio/flac";
        info.etag = "\"v1\"";
        info.lastModified = "Sun, 06 Nov 1994 08:49:37 GMT";
        for (const char* method : { "GET", "POST" })
            add(method, "/a", [this](const Request&, const Responder& responder) {
                responder.sendBytes("0123456789", info);
            });
    }
    RawPeer::Answer ask(const QByteArray& fields, const QByteArray& method = "GET")
    {
        return RawPeer(port()).ask(method, "/a", {}, fields);
    }
    /// The status, the range and the body of the answer to one range.
    QByteArray part(const QByteArray& range)
    {
        const RawPeer::Answer answer = ask("Range: " + range + "\r\n");
        EXPECT_TRUE(answer.complete);
        return QByteArray::number(answer.status) + ' ' + answer.field("Content-Range") + ' '
            + answer.body;
    }

    ContentInfo info;
};

TEST_F(Ranges, GiveTheWholeToThoseWhoAskForNone)
{
    const RawPeer::Answer answer = ask({});
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "0123456789");
    EXPECT_EQ(answer.field("Content-Type"), "audio/flac");
    EXPECT_EQ(answer.field("Accept-Ranges"), "bytes");
    EXPECT_EQ(answer.field("ETag"), "\"v1\"");
    EXPECT_EQ(answer.field("Last-Modified"), info.lastModified);
}

TEST_F(Ranges, GiveTheirPart)
{
    EXPECT_EQ(part("bytes=0-3"), "206 bytes 0-3/10 0123");
    EXPECT_EQ(part("bytes=4-"), "206 bytes 4-9/10 456789");
    EXPECT_EQ(part("bytes=-3"), "206 bytes 7-9/10 789");
    EXPECT_EQ(part("bytes=-100"), "206 bytes 0-9/10 0123456789");
    EXPECT_EQ(part("bytes=9-9"), "206 bytes 9-9/10 9");
    EXPECT_EQ(part("bytes=5-99999999999999999999999"), "206 bytes 5-9/10 56789");
    EXPECT_EQ(part("BYTES=0-0"), "206 bytes 0-0/10 0");
}

TEST_F(Ranges, OutsideAreNotSatisfiable)
{
    EXPECT_EQ(part("bytes=10-"), "416 bytes */10 ");
    EXPECT_EQ(part("bytes=99999999999999999999999-"), "416 bytes */10 ");
    EXPECT_EQ(part("bytes=-0"), "416 bytes */10 ");
}

TEST_F(Ranges, ThatAreMalformedOrManyCountAsNone)
{
    for (const char* range : { "bytes=", "bytes=-", "bytes=a-b", "bytes=3-1", "bytes=0-1,4-5",
             "bytes=0-x", "items=0-1", "0-1", "bytes=1-+3", "bytes=--3" })
        EXPECT_EQ(part(range), "200  0123456789") << range;
}

TEST_F(Ranges, HoldOnlyForTheRepresentationThatIsMeant)
{
    const QByteArray range = "Range: bytes=0-3\r\n";
    EXPECT_EQ(ask(range + "If-Range: \"v1\"\r\n").status, 206);
    EXPECT_EQ(ask(range + "If-Range: \"v2\"\r\n").status, 200);
    EXPECT_EQ(ask(range + "If-Range: W/\"v1\"\r\n").status, 200);
    EXPECT_EQ(ask(range + "If-Range: " + info.lastModified + "\r\n").status, 206);
    EXPECT_EQ(ask(range + "If-Range: Mon, 07 Nov 1994 08:49:37 GMT\r\n").status, 200);
    info.etag = "W/\"v1\"";
    EXPECT_EQ(ask(range + "If-Range: W/\"v1\"\r\n").status, 200) << "alike is not the same";
    info.etag.clear();
    EXPECT_EQ(ask(range + "If-Range: \"v1\"\r\n").status, 200);
}

TEST_F(Ranges, YieldToNotModified)
{
    RawPeer::Answer answer = ask("Range: bytes=0-3\r\nIf-None-Match: \"v0\", W/\"v1\"\r\n");
    EXPECT_EQ(answer.status, 304);
    EXPECT_EQ(answer.field("ETag"), "\"v1\"");
    EXPECT_TRUE(answer.field("Content-Length").isEmpty());
    EXPECT_EQ(ask("If-None-Match: *\r\n").status, 304);
    EXPECT_EQ(ask("If-Modified-Since: " + info.lastModified + "\r\n").status, 304);
    EXPECT_EQ(
        ask("If-None-Match: \"v2\"\r\nIf-Modified-Since: " + info.lastModified + "\r\n").status,
        200);
}

TEST_F(Ranges, AnswerHeadWithTheirLength)
{
    const RawPeer::Answer answer = ask("Range: bytes=2-4\r\n", "HEAD");
    EXPECT_EQ(answer.status, 206);
    EXPECT_EQ(answer.field("Content-Length"), "3");
    EXPECT_EQ(answer.field("Content-Range"), "bytes 2-4/10");
}

TEST_F(Ranges, MeanNothingToOtherMethods)
{
    const RawPeer::Answer answer =
        RawPeer(port()).ask("POST", "/a", "x", "Range: bytes=0-3\r\nIf-None-Match: *\r\n");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "0123456789");
}

TEST_F(Ranges, CanBeSwitchedOff)
{
    info.ranges = false;
    const RawPeer::Answer answer = ask("Range: bytes=0-3\r\n");
    EXPECT_EQ(answer.status, 200);
    EXPECT_TRUE(answer.field("Accept-Ranges").isEmpty());
}

class Files : public ServerFixture
{
protected:
    QString at(const char* name) const { return folder.filePath(QLatin1String(name)); }

    QTemporaryDir folder;
};

TEST_F(Files, ComeWholeHoweverLarge)
{
    QByteArray bytes(5 * 1024 * 1024 + 17, Qt::Uninitialized);
    for (int i = 0; i < bytes.size(); ++i)
        bytes[i] = char(i * 31 + i / 4096);
    writeFile(at("large"), bytes);
    add("GET", "/a",
        [&](const Request&, const Responder& responder) { responder.sendFile(at("large"), {}); });
    RawPeer peer(port());
    EXPECT_TRUE(peer.ask("GET", "/a").body == bytes);
    EXPECT_TRUE(peer.ask("GET", "/a", {}, "Range: bytes=100000-4000000\r\n").body
        == bytes.mid(100000, 3900001));
    EXPECT_TRUE(peer.connected());
}

TEST_F(Files, AreNotReadAheadOfThePeer)
{
    const int size = 64 * 1024 * 1024;
    writeFile(at("large"), QByteArray(size, 'a'));
    qint64 most = 0;
    std::unique_ptr<Responder> kept;
    add("GET", "/a", [&](const Request&, const Responder& responder) {
        kept = std::make_unique<Responder>(responder);
        responder.sendFile(at("large"), {});
    });
    RawPeer peer(port());
    peer.request("GET", "/a");
    qint64 taken = 0;
    EXPECT_TRUE(waitUntil([&] {
        taken += peer.socket()->readAll().size();
        most = qMax(most, kept ? kept->pending() : 0);
        return taken > size;
    }));
    EXPECT_GT(most, 0);
    EXPECT_LE(most, 256 * 1024);
}

TEST_F(Files, ThatShrinkEndTheConnection)
{
    writeFile(at("shrinking"), QByteArray(32 * 1024 * 1024, 'a'));
    add("GET", "/a", [&](const Request&, const Responder& responder) {
        responder.sendFile(at("shrinking"), {});
    });
    RawPeer peer(port());
    peer.socket()->setReadBufferSize(1024);
    peer.request("GET", "/a");
    ASSERT_TRUE(waitUntil([&] { return peer.socket()->bytesAvailable() > 0; }));
    ASSERT_TRUE(QFile::resize(at("shrinking"), 1000));
    peer.socket()->setReadBufferSize(0);
    EXPECT_TRUE(peer.waitForEnd());
    EXPECT_FALSE(peer.answer().complete);
}

TEST_F(Files, ThatAreEmptyAreEmpty)
{
    writeFile(at("empty"), {});
    add("GET", "/a",
        [&](const Request&, const Responder& responder) { responder.sendFile(at("empty"), {}); });
    RawPeer peer(port());
    const RawPeer::Answer answer = peer.ask("GET", "/a");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.field("Content-Length"), "0");
    EXPECT_EQ(peer.ask("GET", "/a", {}, "Range: bytes=0-\r\n").status, 416);
}

TEST_F(Files, ThatAreMissingAreNotFound)
{
    add("GET", "/a",
        [&](const Request&, const Responder& responder) { responder.sendFile(at("missing"), {}); });
    EXPECT_EQ(RawPeer(port()).ask("GET", "/a").status, 404);
}

class StaticFiles : public Files
{
protected:
    StaticFiles()
        : files(at("www"), { { "X-Policy", "strict" } })
    {
        writeFile(at("secret.txt"), "secret");
        writeFile(at("www/index.html"), "home");
        writeFile(at("www/sub/index.html"), "sub");
        writeFile(at("www/sub/app.js"), "code");
        writeFile(at("www/.hidden"), "secret");
        QFile::link(at("secret.txt"), at("www/link.txt"));
        QFile::link(at("www/sub"), at("www/alias"));
        add("GET", "/{rest*}", [this](const Request& request, const Responder& responder) {
            files.serve(request.segments, responder);
        });
    }
    RawPeer::Answer ask(const QByteArray& target, const QByteArray& fields = {})
    {
        return RawPeer(port()).ask("GET", target, {}, fields);
    }

    http::StaticFiles files;
};

TEST_F(StaticFiles, AreServedWithTypeAndFields)
{
    const RawPeer::Answer answer = ask("/sub/app.js?v=1");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "code");
    EXPECT_EQ(answer.field("Content-Type"), "text/javascript; charset=utf-8");
    EXPECT_EQ(answer.field("X-Policy"), "strict");
    EXPECT_EQ(answer.field("Cache-Control"), "no-cache");
    EXPECT_EQ(ask("/alias/app.js").body, "code");
}

TEST_F(StaticFiles, HaveAnIndex)
{
    EXPECT_EQ(ask("/").body, "home");
    EXPECT_EQ(ask("/sub/").body, "sub");
    EXPECT_EQ(ask("/sub").status, 404);
}

TEST_F(StaticFiles, AreRevalidatedByTheirTag)
{
    const QByteArray tag = ask("/").field("ETag");
    ASSERT_FALSE(tag.isEmpty());
    EXPECT_EQ(ask("/", "If-None-Match: " + tag + "\r\n").status, 304);
    writeFile(at("www/index.html"), "changed");
    EXPECT_EQ(ask("/", "If-None-Match: " + tag + "\r\n").body, "changed");
}

TEST_F(StaticFiles, AreNeverOutsideTheRoot)
{
    // Every way up, in every spelling of a dot and of a slash, at several depths.
    const QList<QByteArray> dots{ "..", "%2e%2e", "%2E.", ".%2e", "%252e%252e", "...", "..%00",
        "%c0%ae%c0%ae", "%uff0e%uff0e", ". .", "..;" };
    const QList<QByteArray> slashes{ "/", "%2f", "%2F", "\\", "%5c", "%255c", "%c0%af", "//" };
    int spellings = 0;
    for (const QByteArray& dot : dots)
        for (const QByteArray& slash : slashes)
            for (const char* start : { "/", "/sub/" }) {
                const QByteArray up = dot + slash;
                const RawPeer::Answer answer = ask(start + up + up + "secret.txt");
                ++spellings;
                EXPECT_TRUE(answer.status == 404 || answer.status == 400)
                    << (start + up).constData();
                EXPECT_FALSE(answer.body.contains("secret"));
            }
    for (const QByteArray& target : { QByteArray("//etc/passwd"), QByteArray("/%2fetc/passwd"),
             QByteArray("/file:///etc/passwd"), QByteArray("/c:/windows/win.ini"),
             QByteArray("/\\\\host\\share\\file"), QByteArray("/secret.txt%00.html"),
             QByteArray("/link.txt"), QByteArray("/.hidden"), QByteArray("/sub/./app.js"),
             QByteArray("/:/www/index.html"), "/" + at("secret.txt").toUtf8(),
             QByteArray("/index.html/"), QByteArray("/sub/../index.html") }) {
        const int status = ask(target).status;
        ++spellings;
        EXPECT_TRUE(status == 404 || status == 400) << target.constData() << " gave " << status;
    }
    EXPECT_GE(spellings, 180);
}

TEST(StaticFileTypes, AreKnownBySuffix)
{
    using http::StaticFiles;
    EXPECT_EQ(StaticFiles::contentType(QStringLiteral("a.HTML")), "text/html; charset=utf-8");
    EXPECT_EQ(StaticFiles::contentType(QStringLiteral("a.flac")), "audio/flac");
    EXPECT_EQ(StaticFiles::contentType(QStringLiteral("a.tar.svg")), "image/svg+xml");
    EXPECT_EQ(StaticFiles::contentType(QStringLiteral("a")), "application/octet-stream");
}
