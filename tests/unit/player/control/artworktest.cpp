#include "controlfixture.h"

using control::Artwork;

class ArtworkOf : public ControlFixture
{
protected:
    using Done = std::function<void(const Artwork&)>;

    ArtworkOf()
    {
        options.fetchArtwork = [this](const QString& url, const Done& done) {
            asked += url;
            waiting += done;
        };
    }
    QByteArray iconOf(const QString& icon)
    {
        return shown({ { QStringLiteral("icon"), icon } })
            .value(QStringLiteral("icon"))
            .toString()
            .toLatin1();
    }
    std::unique_ptr<RawPeer> ask(const QByteArray& target)
    {
        auto peer = std::make_unique<RawPeer>(port());
        peer->request("GET", target);
        settle();
        return peer;
    }

    QStringList asked;
    QVector<Done> waiting;
};

TEST_F(ArtworkOf, TheWebIsShownUnderOurAddress)
{
    const QByteArray icon = iconOf(QStringLiteral("https://example.org/cover.jpg?token=x"));
    EXPECT_TRUE(icon.startsWith("/api/v1/artwork/"));
    EXPECT_FALSE(icon.contains("example"));
    EXPECT_EQ(iconOf(QStringLiteral("https://example.org/cover.jpg?token=x")), icon);
    EXPECT_NE(iconOf(QStringLiteral("https://example.org/other.jpg")), icon);
    EXPECT_EQ(iconOf(QStringLiteral("skin:iconMusic")), "skin:iconMusic");
    for (const char* other :
        { "", "file:///etc/passwd", "javascript:x", "/local", "data:image/png,x" })
        EXPECT_EQ(iconOf(QLatin1String(other)), "") << other;
}

TEST_F(ArtworkOf, AnAddressIsFetchedOnceAndKept)
{
    const QByteArray icon = iconOf(QStringLiteral("https://example.org/cover.jpg"));
    const auto first = ask(icon);
    const auto second = ask(icon);
    ASSERT_TRUE(waitUntil([&] { return waiting.size() == 1; }));
    EXPECT_EQ(asked, QStringList{ QStringLiteral("https://example.org/cover.jpg") });
    waiting[0]({ 200, "image/jpeg", "picture" });
    for (RawPeer* peer : { first.get(), second.get() }) {
        const RawPeer::Answer answer = peer->answer();
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(answer.body, "picture");
        EXPECT_EQ(answer.field("Content-Type"), "image/jpeg");
        EXPECT_EQ(answer.field("Content-Security-Policy"), "default-src 'none'; sandbox");
        EXPECT_EQ(answer.field("X-Content-Type-Options"), "nosniff");
    }
    const RawPeer::Answer kept = get(icon);
    EXPECT_EQ(kept.body, "picture");
    EXPECT_EQ(get(icon, "If-None-Match: " + kept.field("ETag") + "\r\n").status, 304);
    EXPECT_EQ(asked.size(), 1);
}

TEST_F(ArtworkOf, AnUnknownIdIsNotFound)
{
    EXPECT_EQ(get("/api/v1/artwork/0123456789abcdef0123").status, 404);
    EXPECT_EQ(get("/api/v1/artwork/https%3A%2F%2Fexample.org%2F").status, 404);
    EXPECT_TRUE(asked.isEmpty());
}

TEST_F(ArtworkOf, AnAddressThatFailsIsAskedAgain)
{
    const QByteArray icon = iconOf(QStringLiteral("https://example.org/cover.jpg"));
    const QVector<Artwork> failures{ { 0, {}, {} }, { 404, "image/png", "x" },
        { 200, "text/html", "<script>" }, { 200, {}, "x" } };
    for (const Artwork& failure : failures) {
        const auto peer = ask(icon);
        ASSERT_TRUE(waitUntil([&] { return waiting.size() == 1; }));
        waiting.takeFirst()(failure);
        EXPECT_EQ(peer->answer().status, 502);
    }
    EXPECT_EQ(asked.size(), failures.size());
}

TEST_F(ArtworkOf, AnAddressMayAnswerAfterEverybodyHasGone)
{
    const QByteArray icon = iconOf(QStringLiteral("https://example.org/cover.jpg"));
    ask(icon).reset();
    ASSERT_TRUE(waitUntil([&] { return waiting.size() == 1; }));
    settle();
    waiting[0]({ 200, "image/jpeg", "picture" });
    EXPECT_EQ(get(icon).body, "picture");
}

TEST(ArtworkStore, ForgetsWhatItsFetcherAnswersTooLate)
{
    std::function<void(const Artwork&)> late;
    auto store = std::make_unique<control::ArtworkStore>(
        [&](const QString&, const std::function<void(const Artwork&)>& done) { late = done; });
    const QString address = store->addressOf(QStringLiteral("https://example.org/a"));
    http::Server server;
    server.setHandler([&](const http::Request& request, const http::Responder& responder) {
        store->serve(request.segments.value(3), responder);
    });
    RawPeer peer(server.listen());
    peer.request("GET", address.toLatin1());
    ASSERT_TRUE(waitUntil([&] { return late != nullptr; }));
    store.reset();
    late({ 200, "image/png", "x" });
    EXPECT_EQ(peer.answer().status, 500);
}

TEST(ArtworkStore, KeepsTheAddressesThatWereSeenLast)
{
    control::ArtworkStore store(
        [](const QString& url, const std::function<void(const Artwork&)>& done) {
            done({ 200, "image/png", url.toLatin1() });
        });
    const auto address = [&](int i) {
        return store.addressOf(QStringLiteral("https://example.org/%1").arg(i)).toLatin1();
    };
    const QByteArray first = address(0);
    const QByteArray second = address(1);
    for (int i = 2; i < 5000; ++i) {
        address(i);
        address(0);
    }
    http::Server server;
    server.setHandler([&](const http::Request& request, const http::Responder& responder) {
        store.serve(request.segments.value(3), responder);
    });
    RawPeer peer(server.listen());
    EXPECT_EQ(peer.ask("GET", first).body, "https://example.org/0");
    EXPECT_EQ(peer.ask("GET", second).status, 404);
}
