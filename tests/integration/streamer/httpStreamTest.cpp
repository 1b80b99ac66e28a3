#include "httpstream.h"

#include "soundserver.h"
#include "transferloop.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using namespace player;

constexpr int longMs = 3600 * 1000;

class HttpStreamTest : public ::testing::Test
{
protected:
    HttpStreamTest()
    {
        options.stallTimeoutMs = longMs;
        options.giveUpMs = longMs;
    }

    StreamRequest request(const QString& path) const
    {
        StreamRequest result;
        result.url = server.url(path).toUtf8();
        return result;
    }

    std::shared_ptr<HttpStream> opened(const QString& path, StreamRemains remains = {})
    {
        auto stream =
            std::make_shared<HttpStream>(loop, request(path), options, std::move(remains));
        m_opened.push_back(stream);
        stream->open();
        return stream;
    }

    /// Reads on another thread: the server lives in this one. Fewer bytes at the end.
    static QByteArray read(HttpStream& stream, int size)
    {
        QByteArray result;
        std::atomic<bool> done{ false };
        std::thread reader([&] {
            ByteChunk chunk;
            while (result.size() < size
                && stream.read(chunk, std::size_t(size - result.size())) == HttpStream::Read::Data)
                result.append(reinterpret_cast<const char*>(chunk.bytes.get() + chunk.begin),
                    static_cast<int>(chunk.size));
            done = true;
        });
        EXPECT_TRUE(waitUntil([&] { return done.load(); }));
        if (!done)
            stream.close();
        reader.join();
        return result;
    }

    void TearDown() override
    {
        for (const std::weak_ptr<HttpStream>& opened : m_opened) {
            if (const std::shared_ptr<HttpStream> stream = opened.lock())
                stream->close();
        }
    }

    /// Bytes that tell places apart.
    static QByteArray file(int size)
    {
        QByteArray bytes(size, Qt::Uninitialized);
        for (int i = 0; i < size; ++i)
            bytes[i] = static_cast<char>((i * 7 + i / 251) % 256);
        return bytes;
    }

    SoundServer server;
    HttpOptions options;
    TransferLoop loop;

private:
    std::vector<std::weak_ptr<HttpStream>> m_opened;
};

TEST_F(HttpStreamTest, IsGoneOnceItWasClosedAlthoughItWatchedForStalls)
{
    server.add(QStringLiteral("/a"), QByteArray(8 * 1024 * 1024, 'a'));
    std::shared_ptr<HttpStream> stream = opened(QStringLiteral("/a"));
    ASSERT_TRUE(waitUntil([&] { return stream->progress().buffered > 0; }));
    stream->close();
    const std::weak_ptr<HttpStream> left = stream;
    stream.reset();
    EXPECT_TRUE(waitUntil([&] { return left.expired(); }));
}

TEST_F(HttpStreamTest, GivesBackWhatItFetchedWhenItIsClosed)
{
    server.add(QStringLiteral("/a"), QByteArray(64 * 1024, 'a'));
    const std::shared_ptr<HttpStream> stream = opened(QStringLiteral("/a"));
    ASSERT_TRUE(waitUntil([&] { return stream->progress().complete; }));
    EXPECT_EQ(stream->progress().buffered, 64 * 1024);
    stream->close();
    EXPECT_TRUE(waitUntil([&] { return stream->progress().buffered == 0; }));
}

const QString path = QStringLiteral("/a");

TEST_F(HttpStreamTest, ReadsAgainWhatItReadAMomentAgo)
{
    const QByteArray bytes = file(300000);
    server.add(path, bytes);
    const auto stream = opened(path);
    EXPECT_EQ(read(*stream, 200000), bytes.left(200000));
    stream->seek(100000);
    EXPECT_EQ(read(*stream, 200000), bytes.mid(100000));
    stream->seek(0);
    EXPECT_EQ(read(*stream, 300000), bytes);
    EXPECT_EQ(server.askedFor(path), 1);
}

TEST_F(HttpStreamTest, FetchesOnlyWhatIsNotAtHandAfterALeapBack)
{
    const QByteArray bytes = file(3000000);
    server.add(path, bytes);
    options.aheadBytesAtMost = options.aheadBytesAtLeast = 100000;
    options.keptBytesAtMost = options.keptBytesAtLeast = 100000;
    const auto stream = opened(path);
    EXPECT_EQ(read(*stream, 100000), bytes.left(100000));
    stream->seek(2000000);
    EXPECT_EQ(read(*stream, 500000), bytes.mid(2000000, 500000));
    stream->seek(2000000);
    EXPECT_EQ(read(*stream, 500000), bytes.mid(2000000, 500000));
    stream->seek(0);
    EXPECT_EQ(read(*stream, 65000), bytes.left(65000)); // The beginning stays.
    QVector<QByteArray> asked;
    for (const SoundServer::Asked& request : server.requests(path)) {
        if (request.method == "GET")
            asked.append(request.range);
    }
    EXPECT_EQ(asked, (QVector<QByteArray>{ "", "bytes=2000000-", "bytes=2000000-" }));
    EXPECT_LE(stream->closeForAnother().bytes.footprint(), 400000);
}

// What sounds first is not to wait for what sounds later.
TEST_F(HttpStreamTest, FetchesLittleAtFirstAndThenMore)
{
    server.add(path, QByteArray(8 * 1024 * 1024, 'a'));
    options.aheadBytesAtMost = options.aheadBytesAtLeast = 1000000;
    options.aheadBytesAtStart = 100000;
    options.startMs = longMs;
    const auto starting = opened(path);
    ASSERT_TRUE(waitUntil([&] { return starting->progress().buffered >= 100000; }));
    EXPECT_FALSE(waitUntil([&] { return starting->progress().buffered > 200000; }, 200));
    EXPECT_EQ(read(*starting, 500000).size(), 500000);
    options.startMs = 1;
    const auto started = opened(path);
    EXPECT_TRUE(waitUntil([&] { return started->progress().buffered >= 1000000; }));
}

TEST_F(HttpStreamTest, AsksOnceForAnAddressThatIsRefused)
{
    server.setStatus(path, 403);
    const auto stream = opened(path);
    EXPECT_TRUE(read(*stream, 10).isEmpty());
    for (const int offset : { 1000, 0, 500000, 20 }) {
        stream->seek(offset);
        EXPECT_TRUE(read(*stream, 10).isEmpty());
    }
    EXPECT_EQ(stream->progress().failure.httpStatus, 403);
    const auto another = opened(path, stream->closeForAnother());
    EXPECT_TRUE(read(*another, 10).isEmpty());
    EXPECT_EQ(another->progress().failure.httpStatus, 403);
    EXPECT_EQ(server.askedFor(path), 1);
}

TEST_F(HttpStreamTest, TriesAnewAfterAFailureThatMayPass)
{
    server.setStatus(path, 500);
    const auto stream = opened(path);
    EXPECT_TRUE(read(*stream, 10).isEmpty());
    const QByteArray bytes = file(1000);
    server.add(path, bytes);
    stream->seek(100);
    EXPECT_EQ(read(*stream, 900), bytes.mid(100));
}

TEST_F(HttpStreamTest, GoesOnWithAnotherAddressWhereTheFirstWasRefused)
{
    const QByteArray bytes = file(300000);
    server.setHandler(
        path, [bytes](const http::Request& request, const http::Responder& responder) {
            if (request.headers.contains("Range"))
                return responder.send(http::Response::text(403, "expired"));
            http::Shaping cut;
            cut.stopAfterBytes = 120000;
            responder.shape(cut);
            responder.sendBytes(bytes, {});
        });
    const QString renewed = QStringLiteral("/renewed");
    server.add(renewed, bytes);
    const auto stream = opened(path);
    ASSERT_TRUE(waitUntil([&] { return stream->progress().failure.isSet(); }));
    EXPECT_EQ(read(*stream, 50000), bytes.left(50000));
    EXPECT_TRUE(stream->renew(request(renewed)));
    EXPECT_EQ(read(*stream, 300000), bytes.mid(50000));
    EXPECT_TRUE(stream->progress().endConfirmed);
    ASSERT_EQ(server.askedFor(renewed), 1);
    EXPECT_EQ(server.requests(renewed).first().range, "bytes=120000-");
}

TEST_F(HttpStreamTest, CannotGoOnOnceItsReaderHasMetTheEnd)
{
    server.setStatus(path, 403);
    const auto stream = opened(path);
    EXPECT_TRUE(read(*stream, 10).isEmpty());
    EXPECT_FALSE(stream->renew(request(path)));
}

TEST_F(HttpStreamTest, LeavesWhatItFetchedToAnother)
{
    const QByteArray bytes = file(200000);
    server.add(path, bytes);
    const auto stream = opened(path);
    EXPECT_EQ(read(*stream, 1000), bytes.left(1000));
    ASSERT_TRUE(waitUntil([&] { return stream->progress().complete; }));
    const QString renewed = QStringLiteral("/renewed");
    const auto another = opened(renewed, stream->closeForAnother());
    EXPECT_TRUE(another->progress().complete);
    EXPECT_EQ(read(*another, 200001), bytes);
    EXPECT_EQ(server.askedFor(renewed), 0);
}

class HttpStreamOther : public HttpStreamTest
{
protected:
    void serve(const QString& at, const QByteArray& bytes, const QByteArray& tag)
    {
        server.setHandler(at, [bytes, tag](const http::Request&, const http::Responder& responder) {
            http::ContentInfo info;
            info.etag = tag;
            info.ranges = true;
            responder.sendBytes(bytes, info);
        });
    }

    /// What is left of a stream that was cut short at `path`.
    StreamRemains cutShort()
    {
        options.aheadBytesAtMost = options.aheadBytesAtLeast = 50000;
        const auto stream = opened(path);
        EXPECT_EQ(read(*stream, 1000).size(), 1000);
        return stream->closeForAnother();
    }

    const QString renewed = QStringLiteral("/renewed");
};

TEST_F(HttpStreamOther, MixesNoBytesOfTwoResources)
{
    const QByteArray bytes = file(3000000);
    serve(path, bytes, "\"one\"");
    serve(renewed, bytes, "\"two\"");
    const auto another = opened(renewed, cutShort());
    EXPECT_LT(read(*another, 3000000).size(), 300000);
    EXPECT_EQ(another->progress().failure.kind, StreamFailure::Changed);
}

TEST_F(HttpStreamOther, SeesByItsLengthThatAResourceIsAnotherOne)
{
    serve(path, file(3000000), "");
    serve(renewed, file(3000001), "");
    const auto another = opened(renewed, cutShort());
    EXPECT_LT(read(*another, 3000000).size(), 300000);
    EXPECT_EQ(another->progress().failure.kind, StreamFailure::Changed);
}

TEST_F(HttpStreamOther, GoesOnAtAnotherAddressOfTheSameResource)
{
    const QByteArray bytes = file(3000000);
    serve(path, bytes, "\"one\"");
    serve(renewed, bytes, "\"one\"");
    const auto another = opened(renewed, cutShort());
    EXPECT_EQ(read(*another, 3000000), bytes);
}

} // namespace
