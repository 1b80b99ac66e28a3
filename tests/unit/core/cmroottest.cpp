#include "cmroot.h"

#include "cmlistrowsnode.h"
#include "cmnodesworker.h"
#include "printers.h"
#include "replies.h"
#include "tavuconnect.h"

#include <gtest/gtest.h>

#include <QThread>

#include <atomic>
#include <limits>
#include <thread>

namespace {

const auto forever = std::numeric_limits<unsigned long>::max();

CMPath path(const char* text)
{
    return CMPath(QString::fromLatin1(text));
}

class Receiver : public QObject
{
    Q_OBJECT

public:
    QStringList heard;

public Q_SLOTS:
    void value(const TavuValue& value) { heard << value.string(); }
    void changed(const CMPath& changed) { heard << changed.text(); }
};

class CMRootTest : public ::testing::Test
{
protected:
    QVariant invoked(const CMPath& where, const QVariant& argument)
    {
        const auto reply = CMReply<QVariant>::create();
        m_root.invoke(where, argument, reply);
        return expectValue(reply);
    }

    CMRootWorker m_root;
};

TEST(CMRoot, is_one_for_the_process)
{
    EXPECT_EQ(CMRoot(), CMRoot());
    CMRootWorker* elsewhere = nullptr;
    std::thread([&] { elsewhere = CMRoot(); }).join();
    EXPECT_EQ(elsewhere, CMRoot());
}

TEST(CMRoot, forgets_everything_on_reset)
{
    CMRoot()->setValue(path("/v"), TavuValue::fromI32(1));
    CMRoot()->reset();
    EXPECT_FALSE(CMRoot()->getValue(path("/v")).isValid());
    EXPECT_EQ(CMRoot()->trace(), QStringLiteral("root: 0 values, 0 services, 0 workers"));
}

TEST_F(CMRootTest, keeps_values_by_path_as_hashes)
{
    EXPECT_FALSE(m_root.getValue(path("/v")).isValid());
    m_root.setValue(path("/v"), TavuValue::fromString(QStringLiteral("x")));
    const QVariant value = m_root.getValue(path("/v"));
    EXPECT_EQ(value.type(), QVariant::Hash);
    EXPECT_EQ(TavuValue(value.toHash()).string(), QStringLiteral("x"));
    EXPECT_FALSE(m_root.getValue(path("/v/w")).isValid());
}

TEST_F(CMRootTest, tells_watchers_of_each_publication_until_they_disconnect)
{
    Receiver receiver;
    m_root.connectValueChange(path("/v"), &receiver, SLOT(value(TavuValue)), Qt::DirectConnection);
    m_root.setValue(path("/v"), TavuValue::fromString(QStringLiteral("x")));
    m_root.setValue(path("/v"), TavuValue::fromString(QStringLiteral("x")));
    EXPECT_EQ(receiver.heard, (QStringList{ QStringLiteral("x"), QStringLiteral("x") }));
    m_root.disconnectValueChange(path("/v"), &receiver, SLOT(value(TavuValue)));
    m_root.setValue(path("/v"), TavuValue::fromString(QStringLiteral("y")));
    EXPECT_EQ(receiver.heard.size(), 2);
}

TEST_F(CMRootTest, calls_the_service_of_a_path)
{
    QObject context;
    m_root.addService(
        path("/double"), &context, [](const QVariant& argument, const CMReply<QVariant>& reply) {
            reply.setValue(argument.toInt() * 2);
        });
    EXPECT_EQ(invoked(path("/double"), 21), QVariant(42));
}

TEST_F(CMRootTest, a_record_reaches_a_service_as_its_hash)
{
    QObject context;
    m_root.addService(path("/echo"), &context,
        [](const QVariant& argument, const CMReply<QVariant>& reply) { reply.setValue(argument); });
    const auto reply = CMReply<QVariant>::create();
    const TavuHash record(QVariantHash{ { QStringLiteral("k"), 1 } });
    m_root.invoke(path("/echo"), record, reply);
    EXPECT_EQ(expectValue(reply), record.__variant());
}

TEST_F(CMRootTest, a_later_service_takes_the_place_of_an_earlier_one)
{
    QObject context;
    const auto answering = [](int number) {
        return
            [number](const QVariant&, const CMReply<QVariant>& reply) { reply.setValue(number); };
    };
    m_root.addService(path("/s"), &context, answering(1));
    m_root.addService(path("/s"), &context, answering(2));
    EXPECT_EQ(invoked(path("/s"), {}), QVariant(2));
}

TEST_F(CMRootTest, names_the_path_that_nothing_serves)
{
    const auto reply = CMReply<QVariant>::create();
    m_root.invoke(path("/oauth2/addService"), QVariant(), reply);
    expectError(reply, QStringLiteral("Nothing serves /oauth2/addService."));
}

TEST_F(CMRootTest, a_service_whose_context_has_died_is_refused_on_every_thread)
{
    auto context = std::make_unique<QObject>();
    m_root.addService(
        path("/s"), context.get(), [](const QVariant&, const CMReply<QVariant>&) { FAIL(); });
    context.reset();
    const auto here = CMReply<QVariant>::create();
    m_root.invoke(path("/s"), QVariant(), here);
    expectError(here, QStringLiteral("The service has ended."));
    const auto there = CMReply<QVariant>::create();
    std::thread([&] { m_root.invoke(path("/s"), QVariant(), there); }).join();
    expectError(there, QStringLiteral("The service has ended."));
}

TEST_F(CMRootTest, a_service_may_invoke_another_of_its_thread)
{
    QObject context;
    m_root.addService(path("/inner"), &context,
        [](const QVariant&, const CMReply<QVariant>& reply) { reply.setValue(5); });
    m_root.addService(
        path("/outer"), &context, [this](const QVariant& argument, const CMReply<QVariant>& reply) {
            m_root.invoke(path("/inner"), argument, reply);
        });
    EXPECT_EQ(invoked(path("/outer"), {}), QVariant(5));
}

TEST_F(CMRootTest, a_blocked_thread_is_answered_by_the_services_thread)
{
    QObject context;
    QThread* servedOn = nullptr;
    m_root.addService(
        path("/register"), &context, [&](const QVariant&, const CMReply<QVariant>& reply) {
            servedOn = QThread::currentThread();
            reply.setValue(true);
        });
    std::atomic<bool> answered{ false };
    std::thread worker([&] {
        const auto reply = CMReply<QVariant>::create();
        m_root.invoke(path("/register"), QVariant(), reply);
        reply.waitForFinished(forever);
        answered = reply.value().toBool();
    });
    EXPECT_TRUE(waitUntil([&] { return answered.load(); }));
    worker.join();
    EXPECT_EQ(servedOn, QThread::currentThread());
}

TEST_F(CMRootTest, sends_a_request_to_the_worker_with_the_longest_prefix)
{
    CMNodesWorker outer({}, QStringLiteral("a"));
    CMNodesWorker inner({}, QStringLiteral("a/b"));
    auto* outerNode = CMListRowsNode::create(outer.nodes(), path("/a/list"));
    auto* innerNode = CMListRowsNode::create(inner.nodes(), path("/a/b/list"));
    outerNode->setTitle(TrString("outer"));
    innerNode->setTitle(TrString("inner"));
    m_root.addWorker(&outer, outer.prefix());
    m_root.addWorker(&inner, inner.prefix());
    for (const auto* node : { outerNode, innerNode }) {
        const CMGetRowsRequest request(node->path(), 0, 0, {});
        m_root.request(request);
        EXPECT_EQ(expectValue(request.reply()).roles(), node->roles());
    }
}

TEST_F(CMRootTest, sends_every_kind_of_request_on)
{
    CMNodesWorker worker({}, QStringLiteral("a"));
    m_root.addWorker(&worker, worker.prefix());
    const CMPath nowhere = path("/a/nowhere");
    for (const CMRequest& request :
        QList<CMRequest>{ CMGetRowsRequest(nowhere, 0, 0, {}), CMSetDataRequest(nowhere, 1),
            CMGetDataRequest(nowhere, {}), CMMatchRowRequest(nowhere, nowhere) }) {
        m_root.request(request);
        expectError(request.voidReply(), QStringLiteral("There is nothing at /a/nowhere."));
    }
}

TEST_F(CMRootTest, names_the_path_for_which_no_service_answers)
{
    CMNodesWorker worker({}, QStringLiteral("a"));
    m_root.addWorker(&worker, worker.prefix());
    for (const char* where : { "/other", "/ab/c" }) {
        const CMGetRowsRequest request(path(where), 0, 0, {});
        m_root.request(request);
        expectError(request.reply(),
            QStringLiteral("No service answers for %1.").arg(QString::fromLatin1(where)));
    }
}

TEST_F(CMRootTest, of_two_workers_with_one_prefix_the_first_answers_until_it_is_removed)
{
    CMNodesWorker first({}, QStringLiteral("a"));
    CMNodesWorker second({}, QStringLiteral("a"));
    CMListRowsNode::create(first.nodes(), path("/a/list"))->setTitle(TrString("first"));
    CMListRowsNode::create(second.nodes(), path("/a/list"))->setTitle(TrString("second"));
    for (CMNodesWorker* worker : { &first, &second })
        m_root.addWorker(worker, worker->prefix());
    m_root.addWorker(&first, path("/b/"));
    const auto answering = [this] {
        const CMGetRowsRequest request(path("/a/list"), 0, 0, {});
        m_root.request(request);
        return expectValue(request.reply()).roles().title();
    };
    EXPECT_EQ(answering(), QStringLiteral("first"));
    m_root.removeWorker(&first);
    EXPECT_EQ(answering(), QStringLiteral("second"));
    const CMGetRowsRequest elsewhere(path("/b/list"), 0, 0, {});
    m_root.request(elsewhere);
    expectError(elsewhere.reply(), QStringLiteral("No service answers for /b/list."));
}

TEST_F(CMRootTest, a_removed_worker_is_asked_no_more)
{
    CMNodesWorker worker({}, QStringLiteral("a"));
    CMListRowsNode::create(worker.nodes(), path("/a/list"));
    m_root.addWorker(&worker, worker.prefix());
    m_root.removeWorker(&worker);
    const CMGetRowsRequest request(path("/a/list"), 0, 0, {});
    m_root.request(request);
    expectError(request.reply(), QStringLiteral("No service answers for /a/list."));
}

TEST_F(CMRootTest, changes_of_rows_are_heard_from_the_worker_that_has_them)
{
    CMNodesWorker worker({}, QStringLiteral("a"));
    auto* list = CMListRowsNode::create(worker.nodes(), path("/a/list"));
    m_root.addWorker(&worker, worker.prefix());
    Receiver receiver;
    m_root.connectRowsChange(list->path(), &receiver, SLOT(changed(CMPath)), Qt::AutoConnection);
    list->rowsAppend(TavuRoles());
    EXPECT_EQ(receiver.heard, QStringList{ QStringLiteral("/a/list") });
    m_root.disconnectRowsChange(list->path(), &receiver, SLOT(changed(CMPath)));
    list->rowsAppend(TavuRoles());
    EXPECT_EQ(receiver.heard.size(), 1);
}

TEST_F(CMRootTest, values_under_a_workers_prefix_are_the_roots_own)
{
    CMNodesWorker worker({}, QStringLiteral("a"));
    m_root.addWorker(&worker, worker.prefix());
    Receiver receiver;
    m_root.connectValueChange(path("/a/v"), &receiver, SLOT(value(TavuValue)), Qt::AutoConnection);
    m_root.setValue(path("/a/v"), TavuValue::fromString(QStringLiteral("x")));
    EXPECT_EQ(receiver.heard, QStringList{ QStringLiteral("x") });
}

TEST_F(CMRootTest, answers_a_ping_and_says_what_it_holds)
{
    const auto reply = CMVoidReply::create();
    m_root.ping(reply);
    EXPECT_TRUE(reply.isFinished());
    m_root.setValue(path("/v"), TavuValue::fromI32(1));
    EXPECT_EQ(m_root.trace(), QStringLiteral("root: 1 values, 0 services, 0 workers"));
}

TEST_F(CMRootTest, threads_may_publish_read_and_invoke_at_once)
{
    QObject context;
    m_root.addService(path("/s"), &context,
        [](const QVariant&, const CMReply<QVariant>& reply) { reply.setValue(1); });
    std::atomic<int> done{ 0 };
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number)
        threads.emplace_back([&, number] {
            for (int round = 0; round < 200; ++round) {
                m_root.setValue(path("/v"), TavuValue::fromI32(number));
                m_root.getValue(path("/v"));
                m_root.invoke(path("/s"), QVariant(), CMReply<QVariant>::create());
            }
            ++done;
        });
    EXPECT_TRUE(waitUntil([&] { return done == 4; }));
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(m_root.getValue(path("/v")).isValid());
}

TEST_F(CMRootTest, an_invocation_without_reply_data_stops_the_process)
{
    EXPECT_DEATH(m_root.invoke(path("/s"), QVariant(), CMReply<QVariant>()), "needs data");
}

} // namespace

#include "cmroottest.moc"
