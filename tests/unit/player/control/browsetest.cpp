#include "controlfixture.h"

#include <QRegularExpression>

class Browse : public ControlFixture
{
};

TEST_F(Browse, GivesThePlayersRowsToTheClient)
{
    player.answerWith(hash(R"({
        "path": "/music/browse", "from": 3, "count": 40, "version": 2,
        "parent": {"title": "Albums", "containerType": 100, "type": 1, "path": "/music/browse",
                   "search": {"title": "Search", "type": 1, "path": "/music/search"}},
        "rows": [{"title": "A", "type": 1, "path": "/music/a"}, {"title": "B", "type": 3}]})"));
    const RawPeer::Answer answer =
        get("/api/v1/rows?path=%2Fmusic%2Fbrowse%3Furl%3Da%2526b&from=3&to=4");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.field("Content-Type"), "application/json");
    EXPECT_EQ(answer.field("Cache-Control"), "no-store");
    EXPECT_EQ(
        player.told(), QStringList{ QStringLiteral("rows[\"/music/browse?url=a%26b\",3,4]") });
    const QVariantHash page = object(answer);
    EXPECT_EQ(at(page, "path").toString(), QStringLiteral("/music/browse"));
    EXPECT_EQ(at(page, "from").toInt(), 3);
    EXPECT_EQ(at(page, "count").toInt(), 40);
    EXPECT_EQ(at(page, "version").toInt(), 2);
    EXPECT_EQ(at(page, "parent.title").toString(), QStringLiteral("Albums"));
    EXPECT_EQ(at(page, "parent.search.path").toString(), QStringLiteral("/music/search"));
    EXPECT_FALSE(at(page, "parent.search.ref").toString().isEmpty());
    EXPECT_EQ(at(page, "rows").toList().size(), 2);
    EXPECT_EQ(at(page, "rows.1.title").toString(), QStringLiteral("B"));
}

TEST_F(Browse, SpellsOutWhatARowCanDo)
{
    struct
    {
        const char* row;
        bool playable, openable, likeable;
    } const table[] = {
        { R"({"type": 1})", false, true, false },
        { R"({"type": 1, "containerPlayable": true})", true, true, false },
        { R"({"type": 3})", true, false, false },
        { R"({"type": 6})", false, false, false },
        { R"({"type": 102})", false, false, false },
        { R"({"type": 3, "mediaData": {"metaData": {"likeItPath": "/like"}}})", true, false, true },
        { R"({})", false, false, false },
    };
    for (const auto& expected : table) {
        const QVariantHash row = shown(hash(expected.row));
        EXPECT_EQ(row.value(QStringLiteral("playable")).toBool(), expected.playable)
            << expected.row;
        EXPECT_EQ(row.value(QStringLiteral("openable")).toBool(), expected.openable)
            << expected.row;
        EXPECT_EQ(row.value(QStringLiteral("likeable")).toBool(), expected.likeable)
            << expected.row;
    }
}

TEST_F(Browse, LeavesUnsetRolesOut)
{
    const QVariantHash bare = shown(hash(R"({"title": "A"})"));
    for (const char* key : { "audioType", "containerType", "containerPlayable", "longDescription",
             "doNotTrack", "mediaData", "search", "link" })
        EXPECT_FALSE(bare.contains(QLatin1String(key))) << key;
    const QVariantHash row = shown(
        hash(R"({"audioType": 0, "doNotTrack": false, "longDescription": "", "mediaData": {}})"));
    for (const char* key : { "audioType", "doNotTrack", "longDescription", "mediaData" })
        EXPECT_TRUE(row.contains(QLatin1String(key))) << key;
}

TEST_F(Browse, OffersOnlyLinksToTheWeb)
{
    const auto link = [&](const QString& uri, int type) {
        const QVariantHash resource{ { QStringLiteral("uri"), uri } };
        return shown(
            { { QStringLiteral("type"), type },
                { QStringLiteral("mediaData"),
                    QVariantHash{ { QStringLiteral("resources"), QVariantList{ resource } } } } })
            .value(QStringLiteral("link"));
    };
    EXPECT_EQ(link(QStringLiteral("https://example.org/a"), 106).toString(),
        QStringLiteral("https://example.org/a"));
    for (const char* uri : { "javascript:alert(1)", "data:text/html,x", "file:///etc/passwd", "" })
        EXPECT_FALSE(link(QLatin1String(uri), 106).isValid()) << uri;
    EXPECT_FALSE(link(QStringLiteral("https://example.org/a"), 3).isValid());
}

TEST_F(Browse, KeepsKeysOfStreamsToItself)
{
    const QVariantHash row = shown(hash(R"({"type": 3, "mediaData": {"metaData": {"artist": "X"},
        "resources": [{"uri": "u", "duration": 5, "cryptoData": {"key": "k3y"}}]}})"));
    EXPECT_EQ(at(row, "mediaData.metaData.artist").toString(), QStringLiteral("X"));
    EXPECT_EQ(at(row, "mediaData.resources.0.duration").toInt(), 5);
    EXPECT_FALSE(at(row, "mediaData.resources.0").toHash().contains(QStringLiteral("cryptoData")));
}

TEST_F(Browse, SurvivesRowsOfTheWrongShape)
{
    player.answerWith(hash(R"({"parent": 5, "rows": ["x", null, 7, {"title": ["a"], "type": "one",
        "mediaData": "m", "icon": {}}, {"mediaData": {"resources": [1, null, {"uri": 3}]}}]})"));
    const RawPeer::Answer answer = get("/api/v1/rows");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(at(object(answer), "rows").toList().size(), 5);
    player.answerWith(QStringLiteral("no page at all"));
    EXPECT_EQ(get("/api/v1/rows").status, 200);
}

TEST_F(Browse, PassesTextsOnAsText)
{
    const QString title =
        QStringLiteral("<script>alert(\"x\")</script>'\\ \u202e\u2066 \U0001f3b5");
    EXPECT_EQ(
        shown({ { QStringLiteral("title"), title } }).value(QStringLiteral("title")).toString(),
        title);
    const QString endless(1024 * 1024, QLatin1Char('a'));
    EXPECT_EQ(
        shown({ { QStringLiteral("title"), endless } }).value(QStringLiteral("title")).toString(),
        endless);
    player.answerWith(QVariant());
    EXPECT_EQ(get("/api/v1/rows").field("X-Content-Type-Options"), "nosniff");
}

TEST_F(Browse, AsksForFiftyRowsOfTheRootByDefault)
{
    player.answerWith(QVariantHash());
    get("/api/v1/rows");
    get("/api/v1/rows?from=100");
    const QStringList told{ QStringLiteral("rows[\"\",0,49]"),
        QStringLiteral("rows[\"\",100,149]") };
    EXPECT_EQ(player.told(), told);
}

TEST_F(Browse, BoundsTheWindow)
{
    player.answerWith(QVariantHash());
    get("/api/v1/rows?from=0&to=2147483647");
    get("/api/v1/rows?from=2147483647&to=2147483647");
    get("/api/v1/rows?from=2147483600");
    get("/api/v1/rows?from=7&to=7");
    const QStringList told{ QStringLiteral("rows[\"\",0,499]"),
        QStringLiteral("rows[\"\",2147483647,2147483647]"),
        QStringLiteral("rows[\"\",2147483600,2147483647]"), QStringLiteral("rows[\"\",7,7]") };
    EXPECT_EQ(player.told(), told);
}

TEST_F(Browse, RefusesWindowsThatAreNone)
{
    for (const char* query : { "from=-1", "to=-1", "from=5&to=4", "from=NaN", "to=1e3",
             "from=", "from=2147483648", "to=99999999999999999999", "from=0x1", "from=1.5" })
        EXPECT_EQ(get(QByteArray("/api/v1/rows?") + query).status, 400) << query;
    EXPECT_TRUE(player.calls.isEmpty());
}

TEST_F(Browse, TellsFailuresInTheServicesWords)
{
    CMError error;
    error.setName(QStringLiteral("error"));
    error.setTitle(QStringLiteral("Error"));
    error.setMessage(QStringLiteral("Unable to browse in to the folder."));
    player.failWith(error);
    const RawPeer::Answer answer = get("/api/v1/rows");
    EXPECT_EQ(answer.status, 502);
    EXPECT_EQ(answer.field("Content-Type"), "application/problem+json");
    EXPECT_EQ(at(object(answer), "title").toString(), QStringLiteral("Error"));
    EXPECT_EQ(at(object(answer), "detail").toString(),
        QStringLiteral("Unable to browse in to the folder."));
    EXPECT_EQ(at(object(answer), "type").toString(), QStringLiteral("about:blank"));
    EXPECT_EQ(at(object(answer), "status").toInt(), 502);
}

TEST_F(Browse, NamesEachFailureForTheLog)
{
    CMError error;
    error.setName(QStringLiteral("error"));
    player.failWith(error);
    const QString first = at(object(get("/api/v1/rows")), "instance").toString();
    const QString second = at(object(get("/api/v1/rows")), "instance").toString();
    const QRegularExpression urn(QStringLiteral("^urn:uuid:[0-9a-f-]{36}$"));
    EXPECT_TRUE(urn.match(first).hasMatch()) << qPrintable(first);
    EXPECT_NE(first, second);
}

TEST_F(Browse, AnswersWhenThePlayerDoes)
{
    const auto peer = begin("GET", "/api/v1/rows");
    const auto other = begin("GET", "/api/v1/rows?from=50");
    player.calls[1].reply.setValue(hash(R"({"count": 2})"));
    EXPECT_EQ(at(object(other->answer()), "count").toInt(), 2);
    player.calls[0].reply.setValue(hash(R"({"count": 1})"));
    EXPECT_EQ(at(object(peer->answer()), "count").toInt(), 1);
}

TEST_F(Browse, EndsAWaitAtTheDeadline)
{
    options.deadlineMs = 100;
    const auto peer = begin("GET", "/api/v1/rows");
    const RawPeer::Answer answer = peer->answer();
    EXPECT_EQ(answer.status, 504);
    EXPECT_EQ(at(object(answer), "detail").toString(),
        QStringLiteral("The service has not answered in time. Please try again."));
    EXPECT_EQ(player.calls[0].reply.error().name(), CMVoidReply::ErrorCancel().name());
    player.calls[0].reply.setValue(QVariant());
    settle();
    EXPECT_TRUE(peer->connected());
}

TEST_F(Browse, SurvivesAClientThatGoes)
{
    begin("GET", "/api/v1/rows").reset();
    settle();
    player.calls[0].reply.setValue(QVariant());
    player.calls.clear();
    settle();
    player.answerWith(QVariant());
    EXPECT_EQ(get("/api/v1/rows").status, 200);
}

TEST_F(Browse, SaysWhenARequestWasCancelled)
{
    const auto peer = begin("GET", "/api/v1/rows");
    player.calls[0].reply.cancel();
    EXPECT_EQ(peer->answer().status, 409);
}

TEST_F(Browse, ActivatesTheWholeRow)
{
    const QVariantHash row = hash(R"({"title": "Buy", "type": 102, "path": "/post?url=x",
        "secret": "kept", "mediaData": {"resources": [{"cryptoData": {"key": "k"}}]}})");
    const QByteArray ref = shown(row).value(QStringLiteral("ref")).toString().toLatin1();
    player.answerWith(QVariant());
    EXPECT_EQ(post("/api/v1/rows/activate", "{\"ref\": \"" + ref + "\"}").body, "{}");
    ASSERT_EQ(player.calls.size(), 1);
    EXPECT_EQ(player.calls[0].name, QStringLiteral("activateRow"));
    EXPECT_EQ(player.calls[0].arguments[0].toHash(), row);
    EXPECT_FALSE(player.calls[0].arguments[1].isValid());
    post("/api/v1/rows/activate", "{\"ref\": \"" + ref + "\", \"value\": {\"a\": [1]}}");
    EXPECT_EQ(at(player.calls[1].arguments[1], "a.0").toInt(), 1);
}

TEST_F(Browse, ActivatesAPath)
{
    player.answerWith(QVariant());
    post("/api/v1/rows/activate", R"({"path": "/like?u=1", "role": "likeIt", "value": true})");
    post("/api/v1/rows/activate", R"({"path": "/query", "value": "text"})");
    const QStringList told{ QStringLiteral("activatePath[\"/like?u=1\",\"likeIt\",true]"),
        QStringLiteral("activatePath[\"/query\",\"\",\"text\"]") };
    EXPECT_EQ(player.told(), told);
}

TEST_F(Browse, RefusesActivationsOfNothing)
{
    for (const char* body : { "{}", R"({"ref": 5})", R"({"path": ""})",
             R"({"path": "/a", "role": 1})", R"({"value": 1})" })
        EXPECT_EQ(post("/api/v1/rows/activate", body).status, 400) << body;
    const RawPeer::Answer unknown = post("/api/v1/rows/activate", R"({"ref": "gone"})");
    EXPECT_EQ(unknown.status, 404);
    EXPECT_EQ(
        at(object(unknown), "title").toString(), QStringLiteral("This row is no longer known."));
    EXPECT_TRUE(player.calls.isEmpty());
}

TEST_F(Browse, TellsWhereAnActivationLeads)
{
    const auto answerTo = [&](const char* value) {
        player.answerWith(TavuJson::parse(value));
        return object(post("/api/v1/rows/activate", R"({"path": "/a"})"));
    };
    const QVariantHash dialog =
        answerTo(R"({"xclass": "TavuActionReply", "result": {"path": "/dialog/7"}})");
    EXPECT_EQ(at(dialog, "result.path").toString(), QStringLiteral("/dialog/7"));
    EXPECT_FALSE(dialog.contains(QStringLiteral("close")));
    const QVariantHash close =
        answerTo(R"({"xclass": "TavuActionReply", "events": [{"rowsType": 1}]})");
    EXPECT_EQ(close, hash(R"({"close": true})"));
    EXPECT_EQ(
        answerTo(R"({"xclass": "TavuActionReply", "events": [{"rowsType": 0}]})"), QVariantHash());
    EXPECT_EQ(answerTo(R"("/found?q=1")"), hash(R"({"value": "/found?q=1"})"));
    EXPECT_EQ(answerTo("null"), QVariantHash());
    EXPECT_EQ(answerTo("{}"), QVariantHash());
}

TEST_F(Browse, SearchesForTheText)
{
    player.answerWith(QStringLiteral("/search?q=x"));
    EXPECT_EQ(object(post("/api/v1/search", R"({"text": " b\u00e4r "})")),
        hash(R"({"path": "/search?q=x"})"));
    post("/api/v1/search", R"({"text": "a", "path": "/p"})");
    const QStringList told{ QStringLiteral("search[\" b\u00e4r \",\"\"]"),
        QStringLiteral("search[\"a\",\"/p\"]") };
    EXPECT_EQ(player.told(), told);
}

TEST_F(Browse, RefusesSearchesForNothing)
{
    for (const char* body : { "{}", R"({"text": ""})", R"({"text": "  "})", R"({"text": 5})",
             R"({"text": "a", "path": 1})" })
        EXPECT_EQ(post("/api/v1/search", body).status, 400) << body;
    EXPECT_TRUE(player.calls.isEmpty());
}
