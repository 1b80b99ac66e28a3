#include "connectFixture.h"

#include <QElapsedTimer>

namespace {

class AmazonMusicConnectTimeoutTest : public ConnectFixture
{
};

/// Takes as long as it says.
TEST_F(AmazonMusicConnectTimeoutTest, GivesAServiceThirtySecondsToAnswer)
{
    constexpr qint64 timeout = 30000;
    constexpr int slack = 5000;
    signIn();
    QElapsedTimer clock;
    clock.start();
    const Reply reply = get("/hangs");
    service.expectRequest("GET", "/hangs");

    ASSERT_TRUE(waitUntil([&] { return reply.isFinished(); }, timeout + slack));
    EXPECT_GE(clock.elapsed(), timeout - 100);
    EXPECT_EQ(reply.value().error, HttpClientStatus::Timeout);
    EXPECT_EQ(reply.value().code, 0);
}

} // namespace
