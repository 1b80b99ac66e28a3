#include "cmrequest.h"

#include "printers.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <sstream>

namespace {

const CMPath path(QStringLiteral("/a/b"));

TEST(CMRequest, rows_request_keeps_what_it_asks_for)
{
    const CMGetRowsRequest request(path, 3, 9, { QStringLiteral("title") }, 5);
    EXPECT_EQ(request.type(), CMRequestType::GetRows);
    EXPECT_EQ(request.path(), path);
    EXPECT_EQ(request.from(), 3);
    EXPECT_EQ(request.to(), 9);
    EXPECT_EQ(request.roles(), QStringList{ QStringLiteral("title") });
    EXPECT_EQ(request.rowsVersion(), 5);
    EXPECT_FALSE(request.reply().isFinished());
}

TEST(CMRequest, logs_a_rows_request)
{
    std::ostringstream log;
    log << CMGetRowsRequest(path.addParam(QStringLiteral("q"), QStringLiteral("x y")), 0, 19,
        { QStringLiteral("title"), QStringLiteral("icon") });
    EXPECT_EQ(log.str(), "path: /a/b?q=x%20y, from: 0, to: 19, roles: title, icon");
}

TEST(CMRequest, copies_share_one_reply)
{
    const CMGetRowsRequest request(path, 0, 0, {});
    const CMGetRowsRequest copy = request;
    EXPECT_EQ(copy.reply(), request.reply());
    copy.reply().cancel();
    EXPECT_TRUE(request.reply().isFinished());
}

TEST(CMRequest, two_requests_have_two_replies)
{
    EXPECT_NE(CMSetDataRequest(path, 1).reply(), CMSetDataRequest(path, 1).reply());
}

TEST(CMRequest, set_data_request_may_complete_a_reply_given_to_it)
{
    const auto reply = CMReply<QVariant>::create();
    const CMSetDataRequest request(path, 7, reply);
    EXPECT_EQ(request.reply(), reply);
    EXPECT_EQ(request.value(), QVariant(7));
}

TEST(CMRequest, survives_being_passed_on_as_its_base)
{
    const CMSetDataRequest set(path, 1);
    const CMGetRowsRequest rows(path, 1, 2, {});
    const CMGetDataRequest get(path, { QStringLiteral("title") });
    const CMMatchRowRequest match(path, CMPath(QStringLiteral("/row")));
    const QList<CMRequest> bases{ set, rows, get, match };
    EXPECT_EQ(CMSetDataRequest(bases.at(0)).value(), QVariant(1));
    EXPECT_EQ(CMGetRowsRequest(bases.at(1)).to(), 2);
    EXPECT_EQ(CMGetDataRequest(bases.at(2)).roles(), QStringList{ QStringLiteral("title") });
    EXPECT_EQ(CMMatchRowRequest(bases.at(3)).row(), CMPath(QStringLiteral("/row")));
}

TEST(CMRequest, match_row_keeps_the_parameters_of_the_row)
{
    const CMPath row = path.addParam(QStringLiteral("url"), QStringLiteral("https://h/?a=b&c#d"));
    EXPECT_EQ(CMMatchRowRequest(path, row).row(), row);
}

TEST(CMRequest, is_null_without_data)
{
    EXPECT_TRUE(CMRequest().isNull());
    EXPECT_TRUE(CMGetRowsRequest().isNull());
    EXPECT_FALSE(CMRequest(CMSetDataRequest(path, 1)).isNull());
}

TEST(CMRequestDeathTest, every_accessor_asserts_that_the_data_exists)
{
    const char* const text = "m_d";
    EXPECT_DEATH(CMRequest().path(), text);
    EXPECT_DEATH(CMRequest().type(), text);
    EXPECT_DEATH(CMRequest().voidReply(), text);
    EXPECT_DEATH(CMGetRowsRequest().from(), text);
    EXPECT_DEATH(CMGetRowsRequest().to(), text);
    EXPECT_DEATH(CMGetRowsRequest().roles(), text);
    EXPECT_DEATH(CMGetRowsRequest().rowsVersion(), text);
    EXPECT_DEATH(CMGetRowsRequest().reply(), text);
    EXPECT_DEATH(CMSetDataRequest().value(), text);
    EXPECT_DEATH(CMSetDataRequest().reply(), text);
    EXPECT_DEATH(CMGetDataRequest().roles(), text);
    EXPECT_DEATH(CMMatchRowRequest().row(), text);
}

TEST(CMRequestDeathTest, reading_a_request_as_another_type_asserts)
{
    const CMRequest set = CMSetDataRequest(path, 1);
    EXPECT_DEATH(CMGetRowsRequest{ set }, "d\\(\\)");
    EXPECT_DEATH(CMGetDataRequest{ set }, "d\\(\\)");
    EXPECT_DEATH(CMMatchRowRequest{ set }, "d\\(\\)");
    EXPECT_DEATH(CMSetDataRequest{ CMGetRowsRequest(path, 0, 0, {}) }, "d\\(\\)");
}

class Receiver : public QObject
{
    Q_OBJECT

public:
    QStringList heard;

public Q_SLOTS:
    void rows(const CMGetRowsRequest& request) { heard << request.path().text(); }
    void set(const CMSetDataRequest& request) { heard << request.value().toString(); }
};

TEST(CMRequest, travels_in_queued_calls_by_name)
{
    qRegisterMetaType<CMGetRowsRequest>("CMGetRowsRequest");
    qRegisterMetaType<CMSetDataRequest>("CMSetDataRequest");
    Receiver receiver;
    ASSERT_TRUE(QMetaObject::invokeMethod(&receiver, "rows", Qt::QueuedConnection,
        Q_ARG(CMGetRowsRequest, CMGetRowsRequest(path, 0, 1, {}))));
    ASSERT_TRUE(QMetaObject::invokeMethod(&receiver, "set", Qt::QueuedConnection,
        Q_ARG(CMSetDataRequest, CMSetDataRequest(path, QStringLiteral("v")))));
    QCoreApplication::sendPostedEvents(&receiver);
    EXPECT_EQ(receiver.heard, (QStringList{ QStringLiteral("/a/b"), QStringLiteral("v") }));
}

} // namespace

#include "cmrequesttest.moc"
