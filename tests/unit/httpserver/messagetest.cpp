#include "httpmessage.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QJsonObject>

using http::Headers;
using http::Response;

TEST(Headers, SetReplacesEverySpelling)
{
    Headers headers{ { "A", "1" }, { "b", "2" }, { "a", "3" } };
    headers.set("a", "4");
    EXPECT_EQ(headers.values("A"), QList<QByteArray>{ "4" });
    EXPECT_EQ(headers.fields().size(), 2);
    headers.remove("B");
    EXPECT_FALSE(headers.contains("b"));
    EXPECT_TRUE(headers.value("b").isEmpty());
}

TEST(Response, KnowsItsKinds)
{
    EXPECT_EQ(Response::text(200, "x").headers.value("Content-Type"), "text/plain; charset=utf-8");
    EXPECT_EQ(Response::html(200, "x").headers.value("Content-Type"), "text/html; charset=utf-8");
    const Response json = Response::json(201, QJsonObject{ { QStringLiteral("a"), 1 } });
    EXPECT_EQ(json.status, 201);
    EXPECT_EQ(json.body, "{\"a\":1}");
    EXPECT_EQ(json.headers.value("Content-Type"), "application/json");
    EXPECT_EQ(Response::redirect(302, "/b").headers.value("Location"), "/b");
}

TEST(Response, SerializesWithItsLength)
{
    const QByteArray bytes = http::serialize(Response::text(404, "gone"));
    EXPECT_TRUE(bytes.startsWith("HTTP/1.1 404 Not Found\r\nDate: "));
    EXPECT_TRUE(bytes.endsWith("Content-Length: 4\r\n\r\ngone"));
}

TEST(HttpDate, IsEnglishAndInGmt)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(784111777, Qt::UTC);
    EXPECT_EQ(http::httpDate(time), "Sun, 06 Nov 1994 08:49:37 GMT");
    EXPECT_EQ(http::httpDate(time.toOffsetFromUtc(3600)), "Sun, 06 Nov 1994 08:49:37 GMT");
}
