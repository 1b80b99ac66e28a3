#include "connectFixture.h"

namespace {

/// More requests than anybody makes, and a session that comes and goes.
class AmazonMusicConnectFloodTest : public ConnectFixture
{
protected:
    static QString path(int number) { return QLatin1Char('/') + QString::number(number); }

    /// A request that ends within the client as soon as it is sent: it keeps its place in the
    /// order.
    void ask(int number)
    {
        const Reply reply = connect().get(url("none:" + path(number).toLatin1()));
        reply.onSuccess([this](const HttpClient::Result& result) {
            finished += result.url.path();
            codes += result.code;
        });
    }

    void askForAll()
    {
        for (int number = 0; number < requests; ++number) {
            ask(number);
            asked += path(number);
        }
    }

    static constexpr int requests = 10000;
    QStringList asked;
    QStringList finished;
    QList<int> codes;
};

TEST_F(AmazonMusicConnectFloodTest, SendsAllThatWaitsOnceAndInOrderWhenTheTokenComes)
{
    connect().setLoggedIn(true);
    askForAll();
    settle();
    EXPECT_TRUE(finished.isEmpty());

    host.setToken(QStringLiteral("T1"));

    EXPECT_TRUE(waitUntil([&] { return finished.size() >= requests; }, 30000));
    settle();
    EXPECT_TRUE(finished == asked);
    EXPECT_EQ(codes.count(0), requests);
}

TEST_F(AmazonMusicConnectFloodTest, RefusesAllThatWaitsOnceAndInOrderWhenNoTokenComes)
{
    connect().setLoggedIn(true);
    askForAll();

    // The timer of half a minute, shortened.
    connect().findChild<QTimer*>()->start(1);

    EXPECT_TRUE(waitUntil([&] { return finished.size() >= requests; }, 30000));
    host.setToken(QStringLiteral("T1"));
    settle();
    EXPECT_TRUE(finished == asked) << "nothing is sent late";
    EXPECT_EQ(codes.count(403), requests);
}

TEST_F(AmazonMusicConnectFloodTest, FinishesEachRequestOnceHoweverTheSessionFlaps)
{
    constexpr int flaps = 1000;
    int refused = 0;
    connect().setLoggedIn(true);
    for (int number = 0; number < flaps; ++number) {
        host.setToken(QString());
        ask(number);
        asked += path(number);
        if (number % 3 == 0) {
            connect().setLoggedIn(false);
            ++refused;
            connect().setLoggedIn(true);
        }
        host.setToken(QStringLiteral("T%1").arg(number));
    }

    EXPECT_TRUE(waitUntil([&] { return finished.size() >= flaps; }, 30000));
    settle();
    finished.sort();
    asked.sort();
    EXPECT_TRUE(finished == asked);
    EXPECT_EQ(codes.count(403), refused);
    EXPECT_EQ(codes.count(0), flaps - refused);
    EXPECT_FALSE(timer().isActive());
}

} // namespace
