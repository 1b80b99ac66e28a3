#include "httpstream.h"

#include "soundserver.h"
#include "transferloop.h"
#include "watchdog.h"

#include <gtest/gtest.h>

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

    std::shared_ptr<HttpStream> opened(const QString& path)
    {
        StreamRequest request;
        request.url = server.url(path).toUtf8();
        auto stream = std::make_shared<HttpStream>(loop, request, options);
        stream->open();
        return stream;
    }

    SoundServer server;
    HttpOptions options;
    TransferLoop loop;
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

} // namespace
