#include "workerFixture.h"

#include "amazonMusicReporter.h"
#include "cmnode.h"

#include <QDateTime>

namespace {

constexpr auto info = log4cplus::INFO_LOG_LEVEL;
constexpr auto trace = log4cplus::TRACE_LOG_LEVEL;

const char* const thanks = R"({"result": "#r", "trackRatingResponses": {
    "r": {"message": "Thanks for telling"}}})";

class BrowseActionsTest : public WorkerFixture
{
protected:
    BrowseActionsTest() { signIn(); }

    CMPath withUrl(const CMPath& path, const QString& target) const
    {
        return path.addParam(QStringLiteral("url"), service.url(target).toString());
    }

    CMReply<QVariant> post()
    {
        return activate(
            withUrl(TavuAmazonMusicBrowsePostActionPath(), QStringLiteral("/buy?x=%2F")), true);
    }

    CMReply<QVariant> rate(const QVariant& value)
    {
        return activate(withUrl(TavuAmazonMusicBrowseRatingPath(), QStringLiteral("/rate")), value);
    }

    /// What the service is told when the rating node is activated with `value`.
    QString thumbOf(const QVariant& value)
    {
        const auto reply = rate(value);
        const auto request = service.expectRequest("POST", "/rate");
        request.answer(200, thanks);
        endDialog(actionReply(reply).result().path());
        return request.json().value(QStringLiteral("thumbRating")).toString();
    }

    void endDialog(const CMPath& path)
    {
        delete worker().nodes()->find(path);
        settle();
    }
};

// Post actions.

TEST_F(BrowseActionsTest, PostToTheUrlOfThePathAsItIs)
{
    service.serveHost("elsewhere.test");
    destroyWorker();
    signIn();
    const auto reply =
        activate(TavuAmazonMusicBrowsePostActionPath().addParam(
                     QStringLiteral("url"), QStringLiteral("https://elsewhere.test/buy?x=%2F&y=z")),
            QVariant());
    const auto request = service.expectRequest("POST", "/buy?x=%2F&y=z");
    EXPECT_EQ(request.url(), QByteArray("https://elsewhere.test/buy?x=%2F&y=z"));
    EXPECT_TRUE(request.request().body.isEmpty());
    request.answer(200);
    expectCloseReply(reply);
}

TEST_F(BrowseActionsTest, CloseTheScreenWhateverTheServiceAnswersToAPost)
{
    for (const int status : { 200, 404, 500 }) {
        const auto reply = post();
        service.expectRequest("POST", "/buy?x=%2F").answer(status);
        expectCloseReply(reply);
    }
}

TEST_F(BrowseActionsTest, CloseTheScreenWhenNothingCanBePosted)
{
    expectCloseReply(activate(TavuAmazonMusicBrowsePostActionPath(), QVariant()));
}

TEST_F(BrowseActionsTest, RunFromTheEventLoop)
{
    const LogCapture log;
    const auto posted = post();
    const auto rated = rate(true);
    EXPECT_FALSE(log.mentions(QStringLiteral("_activated(")));
    service.expectRequest("POST", "/buy?x=%2F").answer(200);
    service.expectRequest("POST", "/rate").answer(200, thanks);
    expectCloseReply(posted);
    endDialog(actionReply(rated).result().path());
}

TEST_F(BrowseActionsTest, LogThePostAndItsAnswer)
{
    const LogCapture log;
    const auto reply = post();
    service.expectRequest("POST", "/buy?x=%2F").answer(500, "{\"why\": 1}");
    expectCloseReply(reply);

    const CMPath path =
        withUrl(TavuAmazonMusicBrowsePostActionPath(), QStringLiteral("/buy?x=%2F"));
    EXPECT_EQ(log.texts(info),
        (QStringList{ QStringLiteral("Request: ") + path.toEncoded(),
            QStringLiteral("Post action %1 reply code: 500 status: OK")
                .arg(service.url(QStringLiteral("/buy?x=%2F")).toString()) }));
    EXPECT_TRUE(log.has(trace, QStringLiteral("Response: {\"why\": 1}")));
}

TEST_F(BrowseActionsTest, ForgetKeptAnswersAfterAPost)
{
    const char* const page = R"({"result": "#n", "navigationNodeDescriptions": {"n": {}}})";
    const auto before = rows(TavuAmazonMusicBrowsePath());
    service.expectRequest("GET", "/").answer(200, page, { { "Cache-Control", "max-age=3600" } });
    expectValue(before);
    const auto posted = post();
    service.expectRequest("POST", "/buy?x=%2F").answer(204);
    expectCloseReply(posted);

    const auto after = rows(TavuAmazonMusicBrowsePath());
    service.expectRequest("GET", "/").answer(200, page);
    expectValue(after);
}

// Ratings.

TEST_F(BrowseActionsTest, RateUpForTrueAndDownForEverythingElse)
{
    for (const QVariant& up : { QVariant(true), QVariant(1), QVariant(QStringLiteral("true")) })
        EXPECT_EQ(thumbOf(up), QStringLiteral("UP"));
    for (const QVariant& down : { QVariant(false), QVariant(0), QVariant(QStringLiteral("false")),
             QVariant(), QVariant(QVariantHash{ { QStringLiteral("x"), true } }),
             QVariant(QVariantList{ true }) })
        EXPECT_EQ(thumbOf(down), QStringLiteral("DOWN"));
}

TEST_F(BrowseActionsTest, RateWithTheValueOfTheLikeItRole)
{
    EXPECT_EQ(thumbOf(QVariantHash{ { TavuRoles::LikeIt(), true } }), QStringLiteral("UP"));
    EXPECT_EQ(thumbOf(QVariantHash{ { TavuRoles::LikeIt(), false } }), QStringLiteral("DOWN"));
}

TEST_F(BrowseActionsTest, RateAtTheStartOfTheTrack)
{
    const auto reply = rate(true);
    const auto request = service.expectRequest("POST", "/rate");
    EXPECT_EQ(request.json().value(QStringLiteral("trackPosition")).toInt(), 0);
    request.answer(200, thanks);
    endDialog(actionReply(reply).result().path());
}

TEST_F(BrowseActionsTest, LogTheRatingsValue)
{
    const LogCapture log;
    thumbOf(true);
    EXPECT_EQ(log.count(trace,
                  QStringLiteral("Enter void CMAmazonMusicWorker::on_browseRating_activated("
                                 "const CMSetDataRequest&): value: true")),
        1);
}

TEST_F(BrowseActionsTest, LeadToAShortScreenWithTheServicesWords)
{
    const auto reply = rate(true);
    service.expectRequest("POST", "/rate").answer(200, thanks);

    const TavuActionReply action = actionReply(reply);
    EXPECT_EQ(action.xclass(), QStringLiteral("TavuActionReply"));
    EXPECT_FALSE(action.__contains(TavuActionReply::Events()));
    EXPECT_EQ(action.result().__hash().keys(), QStringList{ TavuRoles::Path() });
    const CMPath screen = action.result().path();
    EXPECT_TRUE(screen.text().startsWith(QStringLiteral("/AmazonMusic/dialog/")));

    const TavuRowsRoles shown =
        expectValue(rows(screen, { TavuRoles::Title(), TavuRoles::Type() }));
    EXPECT_EQ(
        shown.rows(), (QVariantList{ QVariantList{ QStringLiteral("Thanks for telling"), 6 } }));
    endDialog(screen);
    expectError(rows(screen));
}

TEST_F(BrowseActionsTest, ShowTheScreenForFiveSeconds)
{
    const auto reply = rate(true);
    service.expectRequest("POST", "/rate").answer(200, thanks);
    const CMPath screen = actionReply(reply).result().path();
    const qint64 made = screen.text().section(QLatin1Char('/'), -1).toLongLong();

    EXPECT_TRUE(waitUntil([&] { return worker().nodes()->find(screen) == nullptr; }));
    const qint64 shown = QDateTime::currentMSecsSinceEpoch() - made;
    // Coarse timers may be off by a twentieth.
    EXPECT_GE(shown, 4750);
    EXPECT_LT(shown, 8000);
}

TEST_F(BrowseActionsTest, FailTheActivationWithTheErrorOfTheRating)
{
    const auto reply = rate(true);
    const auto request = service.expectRequest("POST", "/rate");
    worker().findChild<AmazonMusicReporter*>()->cancel();

    expectCancelled(reply);
    request.answer(200, thanks);
    settle();
}

} // namespace
