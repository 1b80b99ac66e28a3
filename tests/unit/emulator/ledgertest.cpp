#include "emulator/http/ledger.h"
#include "emulator/http/describe.h"

#include <gtest/gtest.h>

#include <thread>

using namespace emulator;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

LedgerEntry entry(const char* kind)
{
    LedgerEntry made;
    made.kind = text(kind);
    made.method = text("GET");
    made.path = text("/x");
    made.atMs = 1700000000123;
    return made;
}

http::Request request(const QByteArray& body)
{
    http::Request made;
    made.method = "POST";
    made.body = body;
    return made;
}

} // namespace

TEST(Ledger, NumbersEntriesAndFindsThemByKindAndSerial)
{
    Ledger ledger;
    EXPECT_EQ(ledger.add(entry("browse")), 1);
    EXPECT_EQ(ledger.add(entry("report")), 2);
    EXPECT_EQ(ledger.add(entry("report")), 3);
    EXPECT_EQ(ledger.entries().size(), 3u);
    EXPECT_EQ(ledger.entries({ { text("report") }, 0, 0 }).size(), 2u);
    EXPECT_EQ(ledger.entries({ { text("report") }, 2, 0 }).front().serial, 3);
    EXPECT_EQ(ledger.entries({ {}, 0, 1 }).front().serial, 3);
    EXPECT_TRUE(ledger.entries({ { text("rating") }, 0, 0 }).empty());
}

TEST(Ledger, NotesAnswers)
{
    Ledger ledger;
    const qint64 serial = ledger.add(entry("browse"));
    EXPECT_EQ(ledger.entries().front().status, 0);
    ledger.answered(serial, 503);
    ledger.answered(99, 200);
    EXPECT_EQ(ledger.entries().front().status, 503);
}

TEST(Ledger, CountsOnWhenItIsCleared)
{
    Ledger ledger;
    ledger.add(entry("browse"));
    ledger.clear();
    EXPECT_TRUE(ledger.entries().empty());
    EXPECT_EQ(ledger.lastSerial(), 1);
    EXPECT_EQ(ledger.add(entry("browse")), 2);
}

TEST(Ledger, KeepsTheNewestWhenItGrowsTooLong)
{
    Ledger ledger;
    for (int i = 0; i < 50100; ++i)
        ledger.add(entry("browse"));
    EXPECT_EQ(ledger.entries().size(), 50000u);
    EXPECT_EQ(ledger.entries().front().serial, 101);
    ledger.answered(101, 200);
    EXPECT_EQ(ledger.entries().front().status, 200);
}

TEST(Ledger, TakesEntriesFromSeveralThreads)
{
    Ledger ledger;
    std::thread other([&ledger] {
        for (int i = 0; i < 1000; ++i)
            ledger.add(entry("a"));
    });
    for (int i = 0; i < 1000; ++i)
        ledger.add(entry("b"));
    other.join();
    EXPECT_EQ(ledger.lastSerial(), 2000);
}

TEST(Ledger, DescribesAnEntryWithoutEmptyFields)
{
    LedgerEntry made = entry("report");
    made.fault = text("slow");
    made.details.insert(text("track"), text("A"));
    const QVariantHash fields = describe(made);
    EXPECT_EQ(fields.value(text("at")).toString(), text("2023-11-14T22:13:20.123Z"));
    EXPECT_EQ(fields.value(text("fault")).toString(), text("slow"));
    EXPECT_EQ(fields.value(text("track")).toString(), text("A"));
    EXPECT_FALSE(fields.contains(text("query")));
    EXPECT_FALSE(fields.contains(text("effect")));
}

TEST(Ledger, RedactsSecretsInQueries)
{
    EXPECT_EQ(redactQuery(text("expires=5&signature=abc&in=x")),
        text("expires=5&signature=redacted&in=x"));
    EXPECT_EQ(redactQuery(text("user_code=ABCD-EFGH")), text("user_code=redacted"));
    EXPECT_EQ(redactQuery(QString()), QString());
}

TEST(Describe, TellsReportsAndRatings)
{
    const QVariantHash report =
        describeRequest(request(R"({"event":"STOP","trackPosition":5})"), text("report"));
    EXPECT_EQ(report.value(text("report")).toHash().value(text("trackPosition")).toInt(), 5);
    const QVariantHash rating = describeRequest(request(R"({"thumbRating":"UP"})"), text("rating"));
    EXPECT_EQ(
        rating.value(text("rating")).toHash().value(text("thumbRating")).toString(), text("UP"));
    EXPECT_EQ(describeRequest(request("\xff"), text("report")).value(text("report")).toString(),
        text("1 bytes"));
}

TEST(Describe, TellsTheDeviceHeaders)
{
    http::Request made = request({});
    made.headers.append("x-amzn-audio-drmtype", "WIDEVINE");
    made.headers.append("x-amzn-audio-device-capability", "HD");
    made.headers.append("authorization", "Bearer secret");
    const QVariantHash details = describeRequest(made, text("browse"));
    EXPECT_EQ(details.value(text("drmType")).toString(), text("WIDEVINE"));
    EXPECT_EQ(details.value(text("deviceCapability")).toString(), text("HD"));
    EXPECT_TRUE(details.value(text("bearerSent")).toBool());
    EXPECT_EQ(details.size(), 3);
}

TEST(Describe, TellsTheGrantOfALoginButNoneOfItsSecrets)
{
    const QVariantHash details = describeRequest(
        request("grant_type=device_code&device_code=s1&code_verifier=s2&client_id=me&"
                "client_secret=s3&scope=a"),
        text("token"));
    EXPECT_EQ(details.value(text("grantType")).toString(), text("device_code"));
    EXPECT_EQ(details.value(text("client")).toString(), text("me"));
    EXPECT_TRUE(details.value(text("pkce")).toBool());
    for (const QVariant& value : details)
        EXPECT_FALSE(value.toString().startsWith(QLatin1Char('s')));
}
