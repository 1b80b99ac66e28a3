#include "cachecontrol.h"
#include "clientFixture.h"
#include "httpcache.h"

using httpclient::CacheControl;
using httpclient::freshMs;
using httpclient::HttpCache;
using httpclient::members;

namespace {

HttpClientHeaders fields(std::initializer_list<HttpClientHeaders::Field> list)
{
    HttpClientHeaders headers;
    for (const HttpClientHeaders::Field& field : list)
        headers.append(field.first, field.second);
    return headers;
}

class Cache : public ::testing::Test
{
protected:
    Cache() { cache.setCapacity(1000); }

    void store(const QByteArray& url, const HttpClientHeaders& headers,
        const QByteArray& data = "data", const HttpClientHeaders& request = {})
    {
        cache.store(url, request, headers, data);
    }
    bool isFresh(const QByteArray& url, const HttpClientHeaders& request = {})
    {
        const auto answer = cache.find(url, request);
        return answer && answer->fresh;
    }
    bool isKept(const QByteArray& url, const HttpClientHeaders& request = {})
    {
        return bool(cache.find(url, request));
    }

    qint64 now = 1000000;
    HttpCache cache{ [this] { return now; } };
    const HttpClientHeaders minute = fields({ { "cache-control", "max-age=60" } });
};

class HttpClientCache : public ClientFixture
{
protected:
    HttpClientCache()
    {
        useCache = true;
        serve("Cache-Control: max-age=60\r\n");
    }

    RawServer server{ [this](const RawServer::Call& call) { answer(call); } };
    RawServer::Script answer;

    /// Answers with the number of the request and these fields.
    void serve(const QByteArray& headers)
    {
        answer = [headers](const RawServer::Call& call) {
            call.answer("answer " + QByteArray::number(call.number), headers);
        };
    }
    /// Answers that each need a check, which succeeds.
    void serveChecked()
    {
        answer = [](const RawServer::Call& call) {
            if (call.field("if-none-match") == "\"v1\"")
                call.answer(304, "", "ETag: \"v1\"\r\nX-News: 1\r\n");
            else
                call.answer("version 1", "ETag: \"v1\"\r\n");
        };
    }
};

} // namespace

TEST(CacheControl, ReadsDirectives)
{
    const CacheControl control =
        CacheControl::of(fields({ { "Cache-Control", "private, No-Cache=\"set-cookie, x\"" },
            { "cache-control", "max-age=\"60\", no-store" } }));
    EXPECT_TRUE(control.noCache);
    EXPECT_TRUE(control.noStore);
    EXPECT_EQ(control.maxAge, 60);
    EXPECT_FALSE(CacheControl::of({}).maxAge.has_value());
}

TEST(CacheControl, UnreadableAgeCountsAsNone)
{
    for (const QByteArray value : { "max-age", "max-age=", "max-age=-5", "max-age=1e9",
             "max-age=soon", "max-age=99999999999999999999" })
        EXPECT_EQ(CacheControl::of(fields({ { "cache-control", value } })).maxAge, 0)
            << value.toStdString();
    EXPECT_EQ(CacheControl::of(fields({ { "cache-control", "max-age=60, max-age=5" } })).maxAge, 5);
}

TEST(CacheControl, FreshnessIsLifetimeLessAge)
{
    EXPECT_EQ(freshMs(fields({ { "cache-control", "max-age=60" }, { "age", "50" } })), 10000);
    EXPECT_EQ(freshMs(fields({ { "cache-control", "max-age=60" }, { "age", "70" } })), 0);
    EXPECT_EQ(freshMs(fields({ { "cache-control", "max-age=60, no-cache" } })), 0);
    EXPECT_EQ(freshMs(fields({ { "etag", "\"x\"" } })), 0);
}

TEST(CacheControl, ExpiresCountsFromTheAnswersOwnDate)
{
    const HttpClientHeaders dated = fields({ { "date", "Tue, 01 Feb 2000 10:00:00 GMT" },
        { "expires", "Tue, 01 Feb 2000 10:01:00 GMT" } });
    EXPECT_EQ(freshMs(dated), 60000);
    EXPECT_EQ(freshMs(fields({ { "expires", "0" }, { "date", "x" } })), 0);
    HttpClientHeaders both = dated;
    both.insert("cache-control", "max-age=5");
    EXPECT_EQ(freshMs(both), 5000);
}

TEST(CacheControl, MembersAreDividedByCommasOutsideQuotes)
{
    EXPECT_EQ(members(" a , \"b, c\" ,, d "), (QList<QByteArray>{ "a", "\"b, c\"", "d" }));
}

TEST_F(Cache, AnswerIsFreshForItsLifetime)
{
    store("u", minute);
    now += 59999;
    EXPECT_TRUE(isFresh("u"));
    now += 1;
    EXPECT_FALSE(isFresh("u"));
    EXPECT_TRUE(isKept("u"));
}

TEST_F(Cache, WhatMayNotBeStoredIsNot)
{
    store("a", fields({ { "cache-control", "max-age=60, no-store" } }));
    store("b", fields({ { "cache-control", "max-age=60" }, { "vary", "*" } }));
    store("c", fields({}));
    store("d", minute, "data", fields({ { "cache-control", "no-store" } }));
    for (const QByteArray url : { "a", "b", "c", "d" })
        EXPECT_FALSE(isKept(url)) << url.toStdString();
    EXPECT_EQ(cache.size(), 0);
}

TEST_F(Cache, AnotherUsersAnswerIsNeverGiven)
{
    const HttpClientHeaders mine = fields({ { "authorization", "Bearer mine" } });
    store("u", minute, "my list", mine);
    EXPECT_TRUE(isFresh("u", mine));
    EXPECT_FALSE(isKept("u", fields({ { "authorization", "Bearer yours" } })));
    EXPECT_FALSE(isKept("u"));
}

TEST_F(Cache, VaryingAnswersAreKeptApart)
{
    const HttpClientHeaders english = fields({ { "accept-language", "en" } });
    const HttpClientHeaders german = fields({ { "accept-language", "de" } });
    const HttpClientHeaders varying =
        fields({ { "cache-control", "max-age=60" }, { "vary", "Accept-Language" } });
    store("u", varying, "hello", english);
    EXPECT_FALSE(isKept("u", german));
    EXPECT_FALSE(isKept("u"));
    store("u", varying, "hallo", german);
    EXPECT_EQ(cache.find("u", english)->data, "hello");
    EXPECT_EQ(cache.find("u", german)->data, "hallo");
}

TEST_F(Cache, NewAnswerTakesTheOldOnesPlace)
{
    store("u", minute, "old");
    store("u", minute, "new");
    EXPECT_EQ(cache.find("u", {})->data, "new");
    store("u", fields({ { "cache-control", "no-store" } }), "secret");
    EXPECT_FALSE(isKept("u"));
    EXPECT_EQ(cache.size(), 0);
}

TEST_F(Cache, AnswersUsedLongestAgoMakeWay)
{
    store("a", minute, QByteArray(350, 'a'));
    store("b", minute, QByteArray(350, 'b'));
    EXPECT_TRUE(isFresh("a"));
    store("c", minute, QByteArray(350, 'c'));
    EXPECT_TRUE(isFresh("a"));
    EXPECT_FALSE(isKept("b"));
    EXPECT_TRUE(isFresh("c"));
    EXPECT_LE(cache.size(), 1000);
    store("d", minute, QByteArray(2000, 'd'));
    EXPECT_FALSE(isKept("d"));
    EXPECT_TRUE(isFresh("c"));
    cache.setCapacity(0);
    EXPECT_EQ(cache.size(), 0);
}

TEST_F(Cache, ClearingChangesTheGeneration)
{
    store("u", minute);
    const int before = cache.generation();
    cache.clear();
    EXPECT_FALSE(isKept("u"));
    EXPECT_NE(cache.generation(), before);
}

TEST_F(Cache, CheckedAnswerTakesTheNewFields)
{
    const HttpClientHeaders merged = httpclient::refreshed(
        fields({ { "ETag", "\"1\"" }, { "Content-Length", "4" }, { "X-A", "old" } }),
        fields({ { "x-a", "new" }, { "Content-Length", "0" }, { "Set-Cookie", "1" },
            { "Set-Cookie", "2" } }));
    EXPECT_EQ(merged.value("etag"), "\"1\"");
    EXPECT_EQ(merged.value("content-length"), "4");
    EXPECT_EQ(merged.value("x-a"), "new");
    EXPECT_EQ(merged.fields().size(), 5);
}

TEST_F(HttpClientCache, FreshAnswerIsGivenWithoutAsking)
{
    EXPECT_EQ(get(server.url("/")).data, "answer 1");
    const Result second = get(server.url("/#other"));
    EXPECT_EQ(second.data, "answer 1");
    EXPECT_EQ(second.code, 200);
    EXPECT_EQ(second.url.fragment(), QStringLiteral("other"));
    EXPECT_EQ(second.headers.value("cache-control"), "max-age=60");
    EXPECT_EQ(get(server.url("/?other")).data, "answer 2");
}

TEST_F(HttpClientCache, CachedAnswerDoesNotComeInsideTheCall)
{
    get(server.url("/"));
    Pending pending;
    client().get(server.url("/"), options(), pending.callback());
    EXPECT_EQ(pending.calls(), 0);
    pending.wait();
    EXPECT_EQ(server.calls().size(), 1);
}

TEST_F(HttpClientCache, ClientWithoutCacheAsksEachTime)
{
    useCache = false;
    get(server.url("/"));
    EXPECT_EQ(get(server.url("/")).data, "answer 2");
}

TEST_F(HttpClientCache, SizeZeroKeepsNothing)
{
    client().setCacheSize(0);
    get(server.url("/"));
    EXPECT_EQ(get(server.url("/")).data, "answer 2");
}

TEST_F(HttpClientCache, StaleAnswerIsCheckedAndGivenAgain)
{
    serveChecked();
    EXPECT_EQ(get(server.url("/")).data, "version 1");
    const Result second = get(server.url("/"));
    EXPECT_EQ(second.code, 200);
    EXPECT_EQ(second.data, "version 1");
    EXPECT_EQ(second.headers.value("x-news"), "1");
    EXPECT_EQ(server.calls().last().field("if-none-match"), "\"v1\"");
    EXPECT_EQ(server.calls().size(), 2);
}

TEST_F(HttpClientCache, ChangedAnswerReplacesTheStaleOne)
{
    serveChecked();
    get(server.url("/"));
    serve("ETag: \"v2\"\r\n");
    EXPECT_EQ(get(server.url("/")).data, "answer 2");
    get(server.url("/"));
    EXPECT_EQ(server.calls().last().field("if-none-match"), "\"v2\"");
}

TEST_F(HttpClientCache, AnotherTokenAsksAnew)
{
    get(server.url("/"), withHeader("authorization", "Bearer a"));
    EXPECT_EQ(get(server.url("/"), withHeader("authorization", "Bearer b")).data, "answer 2");
    EXPECT_EQ(get(server.url("/"), withHeader("authorization", "Bearer a")).data, "answer 1");
}

TEST_F(HttpClientCache, OnlyCompleteSuccessesAreKept)
{
    answer = [](const RawServer::Call& call) {
        call.answer(404, "answer", "Cache-Control: max-age=60\r\n");
    };
    get(server.url("/"));
    get(server.url("/"));
    EXPECT_EQ(server.calls().size(), 2);
}

TEST_F(HttpClientCache, PostGoesThroughAndForgetsTheUrl)
{
    get(server.url("/a"));
    get(server.url("/b"));
    EXPECT_EQ(post(server.url("/a"), "{}").data, "answer 3");
    EXPECT_EQ(get(server.url("/a")).data, "answer 4");
    EXPECT_EQ(get(server.url("/b")).data, "answer 2");
}

TEST_F(HttpClientCache, RequestMayAskForACheckOrForNoStoring)
{
    serveChecked();
    get(server.url("/"), withHeader("cache-control", "no-store"));
    get(server.url("/"));
    EXPECT_TRUE(server.calls().last().field("if-none-match").isNull());
    serve("Cache-Control: max-age=60\r\nETag: \"v1\"\r\n");
    get(server.url("/fresh"));
    get(server.url("/fresh"), withHeader("cache-control", "no-cache"));
    EXPECT_EQ(server.calls().last().field("if-none-match"), "\"v1\"");
}

TEST_F(HttpClientCache, OwnConditionOfTheRequestGoesPastTheCache)
{
    serveChecked();
    get(server.url("/"));
    const Result result = get(server.url("/"), withHeader("if-none-match", "\"v1\""));
    EXPECT_EQ(result.code, 304);
}

TEST_F(HttpClientCache, KeptAnswerOverTheReadLimitIsAskedForAnew)
{
    get(server.url("/"));
    expectFailure(get(server.url("/"), options(30000, 4)), HttpClientStatus::ReadLimitExceeded);
}

TEST_F(HttpClientCache, ClearingForgetsAlsoWhatIsUnderWay)
{
    QList<RawServer::Call> held;
    answer = [&](const RawServer::Call& call) { held.append(call); };
    Pending pending;
    client().get(server.url("/"), options(), pending.callback());
    EXPECT_TRUE(waitUntil([&] { return held.size() == 1; }));
    client().clearCache();
    held.first().answer("of the old login", "Cache-Control: max-age=60\r\n");
    EXPECT_EQ(pending.wait().data, "of the old login");
    serve("");
    EXPECT_EQ(get(server.url("/")).data, "answer 2");
}
