#include "amazonMusicSearchNode.h"

#include "cmnodes.h"
#include "logcapture.h"
#include "replies.h"
#include "tavupaths.h"
#include "tavuurl.h"
#include "tavuvalue.h"

#include <gtest/gtest.h>

#include <QUrl>

namespace {

const CMPath queryPath = TavuAmazonMusicSearchPath() + QStringLiteral("/query");

QString subUrl(const CMReply<QVariant>& reply)
{
    return CMPath::fromEncoded(expectValue(reply).toString()).param(QStringLiteral("suburl"));
}

QString keywords(const QString& subUrl)
{
    const auto items = TavuUrl(subUrl).queryItems();
    EXPECT_EQ(items.size(), 1);
    EXPECT_EQ(items.value(0).first, QStringLiteral("keywords"));
    return QUrl::fromPercentEncoding(items.value(0).second.toUtf8());
}

class AmazonMusicSearchNodeTest : public testing::Test
{
protected:
    CMReply<QVariant> ask(const QString& text)
    {
        const CMSetDataRequest request(queryPath, TavuValue::fromString(text).__variant());
        EXPECT_TRUE(m_node->queryRequest(request));
        return request.reply();
    }

    CMSubscribe m_subscribe;
    CMNodes m_nodes{ &m_subscribe };
    CMAmazonMusicSearchQueryNode* m_node =
        CMAmazonMusicSearchQueryNode::create(nullptr, &m_nodes, queryPath);
};

TEST_F(AmazonMusicSearchNodeTest, IsInTheTreeAtItsPath)
{
    EXPECT_EQ(m_nodes.find(queryPath), m_node);
    EXPECT_EQ(m_node->path(), queryPath);
}

TEST_F(AmazonMusicSearchNodeTest, AnswersAQueryWithTheBrowsePathOfItsResults)
{
    const QVariant answer = expectValue(ask(QStringLiteral("jazz")));

    EXPECT_EQ(answer.type(), QVariant::String);
    const CMPath path = CMPath::fromEncoded(answer.toString());
    EXPECT_EQ(path.withoutParams(), TavuAmazonMusicBrowsePath());
    EXPECT_EQ(path.param(QStringLiteral("suburl")), QStringLiteral("/search/?keywords=jazz"));
}

TEST_F(AmazonMusicSearchNodeTest, TakesTheTextOfThePathBeforeTheValue)
{
    const CMSetDataRequest request(
        queryPath.addParam(QStringLiteral("query"), QStringLiteral("from the path")),
        TavuValue::fromString(QStringLiteral("from the value")).__variant());
    m_node->queryRequest(request);

    EXPECT_EQ(keywords(subUrl(request.reply())), QStringLiteral("from the path"));
}

TEST_F(AmazonMusicSearchNodeTest, TakesAnEmptyTextOfThePathToo)
{
    const CMSetDataRequest request(queryPath.addParam(QStringLiteral("query"), QString()),
        TavuValue::fromString(QStringLiteral("from the value")).__variant());
    m_node->queryRequest(request);

    EXPECT_EQ(subUrl(request.reply()), QStringLiteral("/search/?keywords="));
}

TEST_F(AmazonMusicSearchNodeTest, KeepsEveryText)
{
    for (const char* utf8 : { "rock & roll", "Mot\xC3\xB6rhead", "100% #1?", "a+b=c", R"("q" \ ;/)",
             "\xE6\x97\xA5\xE6\x9C\xAC", "%41%zz", " " }) {
        const QString text = QString::fromUtf8(utf8);
        const QString url = subUrl(ask(text));
        EXPECT_EQ(keywords(url), text);
        EXPECT_FALSE(url.contains(QLatin1Char(' ')));
        for (const QChar character : url)
            EXPECT_LT(character.unicode(), 0x80);
    }
}

TEST_F(AmazonMusicSearchNodeTest, EncodesTheTextInsideTheUrl)
{
    EXPECT_EQ(subUrl(ask(QString::fromUtf8("R&B \xC3\xA9t\xC3\xA9"))),
        QStringLiteral("/search/?keywords=R%26B%20%C3%A9t%C3%A9"));
}

TEST_F(AmazonMusicSearchNodeTest, DoesNotRefuseAnEmptyText)
{
    EXPECT_EQ(subUrl(ask(QString())), QStringLiteral("/search/?keywords="));
}

TEST_F(AmazonMusicSearchNodeTest, LeavesAFinishedReplyAlone)
{
    const CMSetDataRequest request(
        queryPath, TavuValue::fromString(QStringLiteral("jazz")).__variant());
    int calls = 0;
    request.reply().addWatcher([&](const CMVoidReply&) { ++calls; });
    request.reply().cancel();
    ASSERT_EQ(calls, 1);

    EXPECT_TRUE(m_node->queryRequest(request));

    expectCancelled(request.reply());
    EXPECT_EQ(calls, 1);
}

TEST_F(AmazonMusicSearchNodeTest, SearchesFurtherInTheSameWay)
{
    const CMSetDataRequest request(
        queryPath, TavuValue::fromString(QStringLiteral("jazz")).__variant());
    ASSERT_TRUE(QMetaObject::invokeMethod(m_node, "searchMore", Q_ARG(CMSetDataRequest, request)));

    EXPECT_EQ(expectValue(request.reply()), expectValue(ask(QStringLiteral("jazz"))));
}

TEST_F(AmazonMusicSearchNodeTest, AnswersTheSetDataRequestOfItsPath)
{
    const CMSetDataRequest request(
        queryPath, TavuValue::fromString(QStringLiteral("jazz")).__variant());
    m_node->request(request);

    EXPECT_EQ(subUrl(request.reply()), QStringLiteral("/search/?keywords=jazz"));
}

TEST_F(AmazonMusicSearchNodeTest, LogsTheText)
{
    const LogCapture log;
    ask(QStringLiteral("jazz"));

    EXPECT_TRUE(log.has(log4cplus::DEBUG_LOG_LEVEL, QStringLiteral("queryRequest: value = jazz")));
    EXPECT_TRUE(log.has(log4cplus::TRACE_LOG_LEVEL,
        QStringLiteral("Enter virtual bool CMAmazonMusicSearchQueryNode::queryRequest("
                       "const CMSetDataRequest&)")));
}

} // namespace
