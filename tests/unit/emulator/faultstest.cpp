#include "emulator/faults/bending.h"
#include "emulator/faults/dial.h"
#include "emulator/faults/gzip.h"
#include "emulator/faults/jsonedit.h"
#include "emulator/faults/replacement.h"
#include "tavuamazonmusic.h"
#include "tavujson.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QSet>

using namespace emulator::faults;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

Rule rule(const char* fields)
{
    const ParsedRule parsed = parseRule(text(fields));
    EXPECT_TRUE(parsed.rule.has_value()) << parsed.problem.toStdString();
    return parsed.rule.value_or(Rule());
}

std::string problemOf(const char* fields)
{
    return parseRule(text(fields)).problem.toStdString();
}

Target browse(const char* path, const char* query = "")
{
    return { text("GET"), text(path), text(query), text("music.localhost"), text("browse"), true };
}

// The names of the rules that hit one request after the other; "-" where none does.
std::string script(Dial& dial, const Target& target, int requests)
{
    std::string hits;
    for (int i = 0; i < requests; ++i) {
        const auto hit = dial.take(target);
        hits += hit ? hit->name.toStdString() : "-";
    }
    return hits;
}

http::Response replaced(const char* fields)
{
    return replacement(rule(fields).effect, text("https://music.localhost"), "/albums/?a=b");
}

const QByteArray pageDocument =
    R"({"result":"#page",)"
    R"("navigationNodeDescriptions":{"page":{"items":["#a","#b"]}},)"
    R"("itemDescriptions":{"a":{"itemLabel":"A"},"b":{"itemLabel":"B"}},)"
    R"("trackDefinitions":{"t":{"title":"T","duration":200,"autoSkipOnError":true}}})";

http::Response bent(const char* fields)
{
    return bend(rule(fields).effect, http::Response::json(200, pageDocument));
}

QVariant parsedBody(const http::Response& response)
{
    return TavuJson::parse(response.body);
}

} // namespace

TEST(Pattern, StarStandsForAnyRunOfCharacters)
{
    EXPECT_TRUE(matchesPattern(text("/albums/*"), text("/albums/")));
    EXPECT_TRUE(matchesPattern(text("/albums/*"), text("/albums/1/2")));
    EXPECT_TRUE(matchesPattern(text("*/1"), text("/albums/1")));
    EXPECT_TRUE(matchesPattern(text("/a*c*e"), text("/abcde")));
    EXPECT_FALSE(matchesPattern(text("/a*c*e"), text("/abde")));
    EXPECT_FALSE(matchesPattern(text("/albums/"), text("/albums/1")));
    EXPECT_TRUE(matchesPattern(text("*"), QString()));
}

TEST(Rule, IsReadFromPairsAndFromJsonAlike)
{
    const Rule pairs = rule("path=/albums/* times=2 skip=1 delay=30 effect=status status=503 "
                            "body=\"two words\"");
    const Rule json = rule(R"({"path":"/albums/*","times":2,"skip":1,"delay":30,)"
                           R"("effect":"status","status":503,"body":"two words"})");
    EXPECT_EQ(describe(pairs), describe(json));
    EXPECT_EQ(pairs.times, 2);
    EXPECT_EQ(pairs.skip, 1);
    EXPECT_EQ(pairs.effect.delayMs, 30);
    EXPECT_EQ(pairs.effect.number("status", 0), 503);
    EXPECT_EQ(pairs.effect.text("body"), text("two words"));
    EXPECT_EQ(pairs.name, text("status"));
}

TEST(Rule, CanBeReadAgainFromItsDescription)
{
    const Rule first = rule("name=x kind=browse listener=tls effect=conflict count=3 resume=true");
    QVariantHash described = describe(first);
    described.remove(text("id"));
    described.remove(text("hits"));
    const ParsedRule again = parseRule(described);
    ASSERT_TRUE(again.rule.has_value()) << again.problem.toStdString();
    EXPECT_EQ(describe(*again.rule), describe(first));
}

TEST(Rule, ThatIsWrongIsToldWhatIsWrong)
{
    EXPECT_NE(problemOf("effect=wat").find("there is no effect \"wat\""), std::string::npos);
    EXPECT_NE(
        problemOf("effect=status stat=1").find("has no parameter \"stat\""), std::string::npos);
    EXPECT_NE(problemOf("effect=status status=many").find("cannot be read"), std::string::npos);
    EXPECT_NE(
        problemOf("effect=conflict resume=perhaps").find("cannot be read"), std::string::npos);
    EXPECT_NE(problemOf("times=-1").find("\"times\""), std::string::npos);
    EXPECT_NE(problemOf("skip=x").find("\"skip\""), std::string::npos);
    EXPECT_NE(problemOf("delay=x").find("\"delay\""), std::string::npos);
    EXPECT_NE(problemOf("listener=udp").find("\"listener\""), std::string::npos);
    EXPECT_NE(problemOf("nonsense").find("name=value"), std::string::npos);
    EXPECT_NE(problemOf("").find("empty"), std::string::npos);
    EXPECT_NE(problemOf("{\"a\":").find("not valid JSON"), std::string::npos);
}

TEST(Rule, LeavesRequestsForAHeadAloneUnlessItNamesThem)
{
    Target head = browse("/");
    head.method = text("HEAD");
    EXPECT_FALSE(rule("effect=hang").matches(head));
    EXPECT_TRUE(rule("effect=hang method=HEAD").matches(head));
}

TEST(Rule, MatchesOnlyWhatItNames)
{
    EXPECT_TRUE(rule("effect=hang").matches(browse("/")));
    EXPECT_TRUE(rule("effect=hang method=GET host=music.* kind=browse listener=tls path=/a*")
                    .matches(browse("/albums/")));
    EXPECT_FALSE(rule("effect=hang method=POST").matches(browse("/")));
    EXPECT_FALSE(rule("effect=hang host=eu.*").matches(browse("/")));
    EXPECT_FALSE(rule("effect=hang kind=chunk").matches(browse("/")));
    EXPECT_FALSE(rule("effect=hang listener=http").matches(browse("/")));
    EXPECT_FALSE(rule("effect=hang path=/albums/").matches(browse("/albums/1/")));
}

TEST(Rule, LooksAtTheQueryOnlyWhenItsPatternHasOne)
{
    EXPECT_TRUE(rule("effect=hang path=/albums/").matches(browse("/albums/", "offset=50")));
    EXPECT_TRUE(
        rule("effect=hang path=/albums/?offset=*").matches(browse("/albums/", "offset=50")));
    EXPECT_FALSE(rule("effect=hang path=/albums/?offset=*").matches(browse("/albums/")));
}

TEST(Dial, HitsAsOftenAsItIsTold)
{
    Dial dial;
    dial.add(rule("name=x effect=status times=2 skip=1"));
    EXPECT_EQ(script(dial, browse("/"), 5), "-xx--");
    EXPECT_EQ(dial.rules()[0].hits, 2);
}

TEST(Dial, GoesOnForEverWithoutANumber)
{
    Dial dial;
    dial.add(rule("name=x effect=status times=forever"));
    EXPECT_EQ(script(dial, browse("/"), 5), "xxxxx");
}

TEST(Dial, PlaysRulesBehindEachOtherAsAScript)
{
    Dial dial;
    dial.add(rule("name=a effect=status times=1"));
    dial.add(rule("name=b effect=hang times=2"));
    dial.add(rule("name=c effect=none path=/other"));
    EXPECT_EQ(script(dial, browse("/"), 5), "abb--");
    EXPECT_EQ(script(dial, browse("/other"), 2), "cc");
}

TEST(Dial, ForgetsRulesOneByOneOrAll)
{
    Dial dial;
    const int first = dial.add(rule("name=a effect=status"));
    dial.add(rule("name=b effect=status"));
    EXPECT_TRUE(dial.remove(first));
    EXPECT_FALSE(dial.remove(first));
    EXPECT_EQ(script(dial, browse("/"), 1), "b");
    dial.clear();
    EXPECT_EQ(script(dial, browse("/"), 1), "-");
    EXPECT_GT(dial.add(rule("effect=hang")), first);
}

TEST(Effects, HaveNamesOfTheirOwnAndParametersThatCanBeSet)
{
    QSet<QString> names;
    for (const EffectKind& kind : effectKinds()) {
        names.insert(text(kind.name));
        for (const Parameter& parameter : kind.parameters) {
            QVariantHash fields{ { text("effect"), text(kind.name) } };
            const bool asText = parameter.type == Parameter::Type::Text;
            const bool asSwitch = parameter.type == Parameter::Type::Switch;
            fields.insert(text(parameter.name),
                asText         ? QVariant(text("x"))
                    : asSwitch ? QVariant(true)
                               : QVariant(1));
            const ParsedRule parsed = parseRule(fields);
            ASSERT_TRUE(parsed.rule.has_value())
                << kind.name << ' ' << parameter.name << ": " << parsed.problem.toStdString();
            EXPECT_TRUE(parsed.rule->effect.has(parameter.name)) << kind.name;
        }
    }
    EXPECT_EQ(names.size(), int(effectKinds().size()));
}

// A recipe is a whole JSON object between backticks.
TEST(Recipes, OfTheDocumentationAreRules)
{
    QFile file(text(DOCUMENTATION "/faults.md"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    int recipes = 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> parts = line.split('`');
        for (int i = 1; i < parts.size(); i += 2) {
            if (!line.startsWith('|') || !parts.at(i).startsWith('{'))
                continue;
            ++recipes;
            EXPECT_EQ(problemOf(parts.at(i).constData()), "") << parts.at(i).toStdString();
        }
    }
    EXPECT_GT(recipes, 80);
}

TEST(Replacement, StatusCarriesWhatItIsGiven)
{
    const http::Response response =
        replaced("effect=status status=429 retryAfter=3 body=<p> type=text/html");
    EXPECT_EQ(response.status, 429);
    EXPECT_EQ(response.headers.value("Retry-After"), "3");
    EXPECT_EQ(response.headers.value("Content-Type"), "text/html");
    EXPECT_EQ(response.body, "<p>");
    EXPECT_EQ(replaced("effect=status").status, 503);
    EXPECT_EQ(replaced("effect=unauthorized").status, 401);
    EXPECT_EQ(replaced("effect=unauthorized status=403").status, 403);
}

TEST(Replacement, RedirectsToItselfToAHostOrAnywhere)
{
    EXPECT_EQ(replaced("effect=redirect").headers.value("Location"),
        "https://music.localhost/albums/?a=b");
    EXPECT_EQ(replaced("effect=redirect toHost=eu.music.localhost").headers.value("Location"),
        "https://eu.music.localhost/albums/?a=b");
    EXPECT_EQ(replaced("effect=redirect toHost=localhost:99").headers.value("Location"),
        "https://localhost:99/albums/?a=b");
    EXPECT_EQ(replaced("effect=redirect status=308 location=//x").headers.value("Location"), "//x");
    EXPECT_EQ(replaced("effect=redirect status=308").status, 308);
    EXPECT_FALSE(replaced("effect=redirect noLocation=true").headers.contains("Location"));
    EXPECT_EQ(
        replaced("effect=redirect locationBytes=65536").headers.value("Location").size(), 65536);
}

TEST(Replacement, ConflictCarriesAnErrorReportWithTheOptionsAskedFor)
{
    const auto reportOf = [](const char* fields) {
        const http::Response response = replaced(fields);
        EXPECT_EQ(response.status, 409);
        const TavuAmazonMusic document(parsedBody(response).toHash());
        return TavuAmazonMusicGeneralErrorReport(
            document.generalErrorReports().__value(document.result().mid(1)).toHash());
    };
    EXPECT_EQ(reportOf("effect=conflict").options().size(), 2);
    EXPECT_TRUE(reportOf("effect=conflict").options().record(0).resume());
    EXPECT_EQ(reportOf("effect=conflict options=[]").options().size(), 0);
    EXPECT_EQ(reportOf("effect=conflict count=10000").options().size(), 10000);
    const auto own =
        reportOf("effect=conflict terse=T brief=B explanation=E label=L action=www uri=rel");
    EXPECT_EQ(own.terse(), text("T"));
    EXPECT_EQ(own.brief(), text("B"));
    EXPECT_EQ(own.explanation(), text("E"));
    EXPECT_EQ(own.options().record(0).label(), text("L"));
    EXPECT_EQ(own.options().record(0).action(), text("www"));
    EXPECT_EQ(own.options().record(0).uri(), text("rel"));
    EXPECT_EQ(
        reportOf("effect=conflict label=L uri=x uriBytes=1000000").options().record(0).uri().size(),
        1000000);
    EXPECT_FALSE(replaced("effect=conflict report=false").body.contains("generalErrorReports"));
}

TEST(Replacement, GivesBodiesOAuthErrorsAndRatings)
{
    EXPECT_EQ(replaced("effect=body").body, "");
    EXPECT_EQ(replaced("effect=body text=abc type=audio/flac").body, "abc");
    EXPECT_EQ(replaced("effect=body base64=//8A").body, QByteArray("\xff\xff\x00", 3));
    EXPECT_EQ(replaced("effect=body noise=1000").body.size(), 1000);
    EXPECT_EQ(replaced("effect=body noise=1000").body, replaced("effect=body noise=1000").body);
    const http::Response refusal = replaced("effect=oauth-error error=expired_token");
    EXPECT_EQ(refusal.status, 400);
    EXPECT_EQ(refusal.body, R"({"error":"expired_token"})");
    const TavuAmazonMusicRatings rating(
        parsedBody(replaced("effect=rating message=Hm shouldSkip=false")).toHash());
    const auto response = TavuAmazonMusicTrackRatingResponse(
        rating.trackRatingResponses().__value(rating.result().mid(1)).toHash());
    EXPECT_EQ(response.message(), text("Hm"));
    EXPECT_FALSE(response.shouldSkip());
}

TEST(Replacement, BombIsSmallAndUnpacksToItsSize)
{
    const http::Response response = replaced("effect=gzip-bomb megabytes=20");
    EXPECT_EQ(response.headers.value("Content-Encoding"), "gzip");
    EXPECT_LT(response.body.size(), 30 * 1024);
    EXPECT_TRUE(response.body.startsWith("\x1f\x8b"));
    // The last four bytes of a gzip file are the unpacked size.
    const QByteArray size = response.body.right(4);
    EXPECT_EQ(size, QByteArray("\x00\x00\x40\x01", 4));
}

TEST(Replacement, NestsAsDeepAsItIsTold)
{
    EXPECT_EQ(replaced("effect=nesting depth=3").body, "[[[]]]");
    EXPECT_EQ(replaced("effect=nesting").body.size(), 200000);
}

TEST(Bending, BreaksJson)
{
    EXPECT_EQ(bent("effect=bad-json").body, pageDocument.left(pageDocument.size() / 2));
    EXPECT_EQ(bent("effect=bad-json after=5").body, pageDocument.left(5));
    for (const char* form : { "cut", "comma", "text", "empty" }) {
        const QByteArray rule = QByteArray("effect=bad-json form=") + form;
        EXPECT_FALSE(parsedBody(bent(rule.constData())).isValid()) << form;
    }
}

TEST(Bending, PutsTextsThatAreNotUtf8WhereUsersSeeThem)
{
    EXPECT_TRUE(bent("effect=bad-utf8")
                    .body.contains("\"itemLabel\":\"\xff\xfe"
                                   "A\""));
    EXPECT_TRUE(bent("effect=bad-utf8 form=overlong").body.contains("\xc0\xaf"));
    EXPECT_TRUE(bent("effect=bad-utf8 form=surrogate").body.contains("\xed\xa0\x80"));
    EXPECT_TRUE(bent("effect=bad-utf8 form=escaped-surrogate").body.contains("\\ud800A"));
    EXPECT_TRUE(bent("effect=bad-utf8 form=nul").body.contains("\\u0000A"));
}

TEST(Bending, SetsAndRemovesValues)
{
    const QVariantHash page =
        parsedBody(bent(R"({"effect":"edit","set":{"/navigationNodeDescriptions/*/nextPage":"?",)"
                        R"("/new/a":1,"/trackDefinitions/t/duration":-5},)"
                        R"("remove":["/itemDescriptions/a","title"]})"))
            .toHash();
    const auto at = [&page](std::initializer_list<const char*> path) {
        QVariant value = page;
        for (const char* key : path)
            value = value.toHash().value(text(key));
        return value;
    };
    EXPECT_EQ(at({ "navigationNodeDescriptions", "page", "nextPage" }).toString(), text("?"));
    EXPECT_EQ(at({ "new", "a" }).toInt(), 1);
    EXPECT_EQ(at({ "trackDefinitions", "t", "duration" }).toInt(), -5);
    EXPECT_FALSE(at({ "trackDefinitions", "t", "title" }).isValid());
    EXPECT_FALSE(at({ "itemDescriptions", "a" }).isValid());
    EXPECT_TRUE(at({ "itemDescriptions", "b" }).isValid());
}

TEST(Bending, ReachesElementsOfLists)
{
    const QVariantHash page = parsedBody(
        bent(R"({"effect":"edit","set":{"/navigationNodeDescriptions/page/items/1":"#x"}})"))
                                  .toHash();
    const QVariantList items = page.value(text("navigationNodeDescriptions"))
                                   .toHash()
                                   .value(text("page"))
                                   .toHash()
                                   .value(text("items"))
                                   .toList();
    EXPECT_EQ(items, (QVariantList{ text("#a"), text("#x") }));
}

TEST(Bending, ChangesTheTypesOfFieldsButKeepsTheRecords)
{
    const QVariantHash page = parsedBody(bent("effect=wrong-types")).toHash();
    const QVariantHash node =
        page.value(text("navigationNodeDescriptions")).toHash().value(text("page")).toHash();
    EXPECT_EQ(node.value(text("items")).type(), QVariant::String);
    const QVariantHash track =
        page.value(text("trackDefinitions")).toHash().value(text("t")).toHash();
    EXPECT_NE(track.value(text("title")).type(), QVariant::String);
    EXPECT_EQ(track.value(text("duration")).type(), QVariant::String);
    EXPECT_EQ(track.value(text("autoSkipOnError")).type(), QVariant::Hash);
    EXPECT_EQ(page.value(text("result")).toString(), text("#page"));
}

TEST(Bending, RepeatsKeysAndStaysValidJson)
{
    const http::Response response = bent("effect=duplicate-keys count=1000");
    EXPECT_EQ(response.body.count("\"result\":"), 1001);
    EXPECT_EQ(parsedBody(response).toHash().value(text("result")).toString(), text("#page"));
}

TEST(Bending, WritesOddNumbersInPlaceOfNumbers)
{
    EXPECT_TRUE(bent("effect=numbers").body.contains("\"duration\":1e999"));
    EXPECT_TRUE(bent("effect=numbers text=-0").body.contains("\"duration\":-0"));
    EXPECT_TRUE(
        bent(R"({"effect":"numbers","text":"\"12\""})").body.contains("\"duration\":\"12\""));
    EXPECT_TRUE(bent("effect=numbers").body.contains("\"autoSkipOnError\":true"));
}

TEST(Bending, MakesAPageOfVeryManyItemsThatStaysUnderAMegabyte)
{
    const http::Response response = bent("effect=many-items");
    EXPECT_LT(response.body.size(), 1024 * 1024);
    const TavuAmazonMusic page(parsedBody(response).toHash());
    const TavuAmazonMusicNavigationNodeDescription node(
        page.navigationNodeDescriptions().__value(text("page")).toHash());
    EXPECT_EQ(node.items().size(), 100000);
    EXPECT_TRUE(page.itemDescriptions().__contains(node.items().last().mid(1)));
}

TEST(Bending, PadsToTheExactSizeAndStaysValidJson)
{
    const http::Response response = bent("effect=pad");
    EXPECT_EQ(response.body.size(), 1048576);
    EXPECT_EQ(parsedBody(response), TavuJson::parse(pageDocument));
    EXPECT_EQ(
        bent("effect=pad bytes=5").body.size(), pageDocument.size() > 5 ? pageDocument.size() : 5);
}

TEST(Bending, AddsHeaderFields)
{
    EXPECT_EQ(bent("effect=header field=x-a value=b").headers.value("x-a"), "b");
    EXPECT_EQ(bent("effect=header valueBytes=300000").headers.value("x-extra").size(), 300000);
}

TEST(Bending, LeavesOtherBodiesAlone)
{
    http::Response image;
    image.body = "\x89PNG";
    EXPECT_EQ(bend(rule("effect=bad-json").effect, image).body, image.body);
    EXPECT_EQ(bend(rule("effect=wrong-types").effect, image).body, image.body);
}
