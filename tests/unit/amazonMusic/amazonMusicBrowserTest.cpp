#include "amazonMusicBrowser.h"

#include "amazonMusicParser.h"
#include "cmlistrowsnode.h"
#include "cmnodes.h"
#include "connectFixture.h"
#include "tavupaths.h"

#include <limits>

namespace {

constexpr auto debug = log4cplus::DEBUG_LOG_LEVEL;
constexpr auto error = log4cplus::ERROR_LOG_LEVEL;
constexpr auto trace = log4cplus::TRACE_LOG_LEVEL;

const QString browseSignature =
    QStringLiteral("void AmazonMusicBrowser::browse(const CMGetRowsRequest&)");

/// A page of `count` items called "0", "1", …, with a further page or without.
QByteArray pageOf(int count, bool more)
{
    QByteArrayList items;
    QByteArrayList descriptions;
    for (int index = 0; index < count; ++index) {
        const QByteArray key = QByteArray::number(index);
        items += "\"#" + key + '"';
        descriptions += '"' + key + R"(": {"itemLabel": ")" + key + R"("})";
    }
    return R"({"result": "#n", "navigationNodeDescriptions": {"n": {"items": [)" + items.join(',')
        + R"(], "nextPage": ")" + (more ? "?page=2" : "") + R"("}}, "itemDescriptions": {)"
        + descriptions.join(',') + "}}";
}

const QByteArray errorReport = R"({"result": "#e1", "generalErrorReports": {
    "e1": {"brief": "First", "options": [{"label": "Close"}]}, "e2": {"brief": "Second"}}})";

class AmazonMusicBrowserTest : public ConnectFixture
{
protected:
    AmazonMusicBrowserTest() { signIn(); }

    CMReply<TavuRowsRoles> browse(
        const CMPath& path, int from = 0, int to = 49, int rowsVersion = 0)
    {
        const CMGetRowsRequest request(
            path, from, to, { TavuRoles::Title(), TavuRoles::Type() }, rowsVersion);
        browser.browse(request);
        return request.reply();
    }

    TavuRowsRoles browsePage(const QByteArray& page, int from, int to)
    {
        const auto reply = browse(TavuAmazonMusicBrowsePath(), from, to);
        service.expectRequest("GET", "/").answer(200, page);
        return expectValue(reply);
    }

    static CMPath pathTo(const char* param, const QByteArray& value)
    {
        return TavuAmazonMusicBrowsePath().addParam(
            QString::fromLatin1(param), QString::fromUtf8(value));
    }

    static QStringList titles(const TavuRowsRoles& rows)
    {
        QStringList titles;
        for (const QVariant& row : rows.rows())
            titles += row.toList().value(0).toString();
        return titles;
    }

    AmazonMusicParser parser;
    AmazonMusicBrowser browser{ &connect(), &parser };
    CMSubscribe subscribe;
    CMNodes nodes{ &subscribe };
};

TEST_F(AmazonMusicBrowserTest, FetchesTheBaseUrlForTheBrowsePathItself)
{
    const LogCapture log;
    const auto reply = browse(TavuAmazonMusicBrowsePath());
    service.expectRequest("GET", "/").answer(200, pageOf(2, false));

    const TavuRowsRoles rows = expectValue(reply);
    EXPECT_EQ(titles(rows), (QStringList{ QStringLiteral("0"), QStringLiteral("1") }));
    EXPECT_EQ(rows.rowsCount(), 2);
    EXPECT_EQ(log.count(debug, browseSignature + QStringLiteral(": path: /AmazonMusic/browse")), 1);
    EXPECT_EQ(log.count(debug, QStringLiteral("browsing to url: ") + service.baseUrl()), 1);
    EXPECT_EQ(log.countContaining(trace, QStringLiteral(": Status: OK code: 200")), 1);
    EXPECT_EQ(log.countContaining(trace, QStringLiteral(": Number of rows: 2 all rows: 2")), 1);
}

TEST_F(AmazonMusicBrowserTest, AnswersTheRolesAskedForInTheirOrder)
{
    const TavuRowsRoles rows = browsePage(
        R"({"result": "n", "navigationNodeDescriptions": {"n": {"items": ["a"]}},
            "itemDescriptions": {"a": {"itemLabel": "A", "summary": "#s"}},
            "navigationNodeSummaries": {"s": {"description": "x"}}})",
        0, 0);

    EXPECT_EQ(rows.rows(), (QVariantList{ QVariantList{ QStringLiteral("A"), 1 } }));
    EXPECT_TRUE(rows.roles().isEmpty());
}

TEST_F(AmazonMusicBrowserTest, FetchesTheUrlOfThePathFromTheBaseUrlsHost)
{
    const auto reply = browse(pathTo("url", "https://elsewhere.test/folder?a=%2F&b#key"));
    service.expectRequest("GET", "/folder?a=%2F&b")
        .answer(200, R"({"navigationNodeDescriptions": {"key": {"items": ["gone"]}}})");

    // The folder was found by the URL's fragment.
    EXPECT_EQ(expectValue(reply).rowsCount(), 1);
}

TEST_F(AmazonMusicBrowserTest, TakesPathAndQueryOfTheSubUrl)
{
    const auto reply = browse(pathTo("suburl", "/search/?keywords=R%26B%20caf%C3%A9"));
    const auto request = service.expectRequest("GET", "/search/?keywords=R%26B%20caf%C3%A9");
    EXPECT_EQ(request.url(), at("/search/?keywords=R%26B%20caf%C3%A9").toEncoded());
    request.answer(200, pageOf(1, false));
    EXPECT_EQ(expectValue(reply).rowsCount(), 1);
}

TEST_F(AmazonMusicBrowserTest, PutsPathAndQueryOfTheSubUrlIntoTheUrl)
{
    const LogCapture log;
    const auto reply = browse(pathTo("url", "https://elsewhere.test/folder?a=b#key")
                                  .addParam(QStringLiteral("suburl"), QStringLiteral("/sub?c=d")));
    service.expectRequest("GET", "/sub?c=d")
        .answer(200, R"({"navigationNodeDescriptions": {"key": {}}})");
    EXPECT_EQ(expectValue(reply).rowsCount(), 0);
    EXPECT_TRUE(
        log.has(debug, QStringLiteral("browsing to url: https://elsewhere.test/sub?c=d#key")));
}

TEST_F(AmazonMusicBrowserTest, AddsARowThatLeadsToTheNextPage)
{
    const TavuRowsRoles rows = browsePage(pageOf(10, true), 0, 49);

    EXPECT_EQ(rows.rows().count(), 11);
    EXPECT_EQ(rows.rowsCount(), 11);
    EXPECT_EQ(titles(rows).last(), QStringLiteral("See more results"));
}

TEST_F(AmazonMusicBrowserTest, SendsTheRowsAskedForAndTheCountOfAll)
{
    const TavuRowsRoles first = browsePage(pageOf(10, true), 0, 4);
    EXPECT_EQ(titles(first).join(QLatin1Char(' ')), QStringLiteral("0 1 2 3 4"));
    EXPECT_EQ(first.rowsCount(), 11);

    const TavuRowsRoles middle = browsePage(pageOf(10, true), 8, 9);
    EXPECT_EQ(titles(middle).join(QLatin1Char(' ')), QStringLiteral("8 9"));

    const TavuRowsRoles last = browsePage(pageOf(10, true), 10, 10);
    EXPECT_EQ(titles(last), QStringList{ QStringLiteral("See more results") });
}

TEST_F(AmazonMusicBrowserTest, SendsNoRowsOutsideThePage)
{
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    const QList<QPair<int, int>> ranges{ { -1, 4 }, { 3, 9 }, { 5, 4 }, { 0, -1 }, { least, most },
        { most, most }, { 0, least } };
    for (const auto& [from, to] : ranges) {
        const TavuRowsRoles rows = browsePage(pageOf(3, false), from, to);
        EXPECT_TRUE(rows.rows().isEmpty()) << from << ' ' << to;
        EXPECT_EQ(rows.rowsCount(), 3);
    }
    EXPECT_EQ(browsePage(pageOf(3, false), 0, most).rows().count(), 3);
}

TEST_F(AmazonMusicBrowserTest, FetchesThePageForEachRequest)
{
    browsePage(pageOf(3, false), 0, 0);
    EXPECT_EQ(titles(browsePage(pageOf(3, false), 1, 1)), QStringList{ QStringLiteral("1") });
}

TEST_F(AmazonMusicBrowserTest, SendsTheRowsVersionBackAndANegativeOneAsZero)
{
    const QList<QPair<int, int>> versions{ { 7, 7 }, { 0, 0 }, { -1, 0 } };
    for (const auto& [asked, sent] : versions) {
        const auto reply = browse(TavuAmazonMusicBrowsePath(), 0, 9, asked);
        service.expectRequest("GET", "/").answer(200, pageOf(1, false));
        EXPECT_EQ(expectValue(reply).rowsVersion(), sent);
    }
}

TEST_F(AmazonMusicBrowserTest, OffersTheSearchAtTheRoot)
{
    const auto* search = CMListRowsNode::create(&nodes, TavuAmazonMusicSearchPath());
    browser.setSeachNode(search);

    const TavuRoles parent = browsePage(pageOf(1, false), 0, 9).roles();

    TavuRoles entry;
    entry.setTitle(QStringLiteral("Search Stations, Tracks, Artists or Albums"));
    entry.setPath(TavuAmazonMusicSearchPath());
    entry.setType(static_cast<TavuRolesType::Enum>(1));
    entry.setContainerType(static_cast<TavuRolesContainerType::Enum>(101));
    EXPECT_EQ(parent.search(), entry);
}

TEST_F(AmazonMusicBrowserTest, OffersNoSearchElsewhere)
{
    browser.setSeachNode(CMListRowsNode::create(&nodes, TavuAmazonMusicSearchPath()));
    const auto reply = browse(pathTo("suburl", "/folder/"));
    service.expectRequest("GET", "/folder/").answer(200, pageOf(1, false));

    EXPECT_TRUE(expectValue(reply).roles().isEmpty());
}

TEST_F(AmazonMusicBrowserTest, ShowsARefusalAsTheServicesMessage)
{
    const auto reply = browse(pathTo("url", "https://elsewhere.test/folder"));
    service.expectRequest("GET", "/folder").answer(409, errorReport);

    const TavuRowsRoles rows = expectValue(reply);
    EXPECT_EQ(rows.rows(),
        (QVariantList{ QVariantList{ QStringLiteral("First"), 6 },
            QVariantList{ QStringLiteral("Close"), 102 } }));
    EXPECT_EQ(rows.rowsCount(), 2);
    EXPECT_EQ(int(rows.roles().containerType()), 100);
}

TEST_F(AmazonMusicBrowserTest, SendsASliceOfAMessageToo)
{
    const auto reply = browse(pathTo("url", "https://elsewhere.test/folder"), 1, 1);
    service.expectRequest("GET", "/folder").answer(409, errorReport);

    EXPECT_EQ(titles(expectValue(reply)), QStringList{ QStringLiteral("Close") });
    EXPECT_EQ(expectValue(reply).rowsCount(), 2);
}

TEST_F(AmazonMusicBrowserTest, ShowsTheErrorReportThatThePathNames)
{
    const auto reply = browse(pathTo("url", "https://elsewhere.test/folder")
                                  .addParam(QStringLiteral("error"), QStringLiteral("#e2")));
    service.expectRequest("GET", "/folder").answer(200, errorReport);

    EXPECT_EQ(titles(expectValue(reply)), QStringList{ QStringLiteral("Second") });
}

TEST_F(AmazonMusicBrowserTest, ShowsTheResultForAnEmptyErrorOfThePath)
{
    const auto reply = browse(pathTo("error", ""));
    service.expectRequest("GET", "/").answer(200, errorReport);

    EXPECT_EQ(titles(expectValue(reply)).first(), QStringLiteral("First"));
}

TEST_F(AmazonMusicBrowserTest, FailsWithOtherCodes)
{
    for (const int status : { 204, 404, 500 }) {
        const LogCapture log;
        const auto reply = browse(TavuAmazonMusicBrowsePath());
        service.expectRequest("GET", "/").answer(status, pageOf(1, false));

        const CMError failure = expectError(reply);
        EXPECT_EQ(failure.name(), CMError::DefaultName());
        EXPECT_EQ(failure.title(), CMError::DefaultTitle());
        EXPECT_EQ(failure.message(), QStringLiteral("Unable to browse in to the folder."));
        EXPECT_EQ(log.texts(error).last(),
            QStringLiteral("Browse request failed, error: %1").arg(status));
    }
}

TEST_F(AmazonMusicBrowserTest, AsksForANewLoginWhenTheServiceRefusesTheAccount)
{
    const LogCapture log;
    host.renewTokenWith(QStringLiteral("T2"));
    const auto reply = browse(TavuAmazonMusicBrowsePath());
    service.expectRequest("GET", "/").answer(403);
    service.expectRequest("GET", "/").answer(403);

    expectError(reply, QStringLiteral("Account credentials are not correct. Please log in again."));
    EXPECT_EQ(log.count(error, QStringLiteral("Browse request failed, error: 403")), 1);
}

TEST_F(AmazonMusicBrowserTest, FailsWhenTheTransferFails)
{
    const LogCapture log;
    const auto reply = browse(TavuAmazonMusicBrowsePath());
    service.expectRequest("GET", "/").answer(200, QByteArray(1048577, ' '));

    expectError(reply, QStringLiteral("Unable to browse in to the folder."));
    EXPECT_EQ(log.count(error, QStringLiteral("Browse request failed, error: 0")), 1);
}

TEST_F(AmazonMusicBrowserTest, AnswersRequestsThatOverlapEachWithItsOwnPage)
{
    const auto first = browse(pathTo("suburl", "/1"));
    const auto second = browse(pathTo("suburl", "/2"));
    service.expectRequest("GET", "/2").answer(200, pageOf(2, false));
    EXPECT_EQ(expectValue(second).rowsCount(), 2);
    expectPending(first);
    service.expectRequest("GET", "/1").answer(200, pageOf(1, false));
    EXPECT_EQ(expectValue(first).rowsCount(), 1);
}

TEST_F(AmazonMusicBrowserTest, MayEndBeforeItsAnswersCome)
{
    CMReply<TavuRowsRoles> reply;
    {
        AmazonMusicBrowser shortLived(&connect(), &parser);
        const CMGetRowsRequest request(TavuAmazonMusicBrowsePath(), 0, 9, {});
        shortLived.browse(request);
        reply = request.reply();
    }
    service.expectRequest("GET", "/").answer(200, pageOf(1, false));
    expectPending(reply);
}

} // namespace
