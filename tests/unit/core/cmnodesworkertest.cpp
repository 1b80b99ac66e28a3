#include "cmnodesworker.h"

#include "cmactivatenode.h"
#include "cmlistrowsnode.h"
#include "printers.h"
#include "replies.h"
#include "tavuconnect.h"

#include <gtest/gtest.h>

#include <QThread>

#include <atomic>

namespace {

/// Notes on which thread it was asked, and who watches it.
class Witness : public CMUINode
{
public:
    using CMUINode::CMUINode;

    void setDataRequest(const CMSetDataRequest& request) override
    {
        askedOn = QThread::currentThread();
        request.reply().setValue(request.path().toEncoded());
    }
    void valuePathAdd(const CMPath&) override { note("value+"); }
    void valuePathRemove(const CMPath&) override { note("value-"); }
    void dataPathAdd(const CMPath&) override { note("data+"); }
    void dataPathRemove(const CMPath&) override { note("data-"); }
    void rowsPathAdd(const CMPath&) override { note("rows+"); }
    void rowsPathRemove(const CMPath&) override { note("rows-"); }

    void note(const char* what) { watching << QString::fromLatin1(what); }

    std::atomic<QThread*> askedOn{ nullptr };
    QStringList watching;
};

class Receiver : public QObject
{
    Q_OBJECT

public:
    int paths = 0; // That have changed.

public Q_SLOTS:
    void value(const TavuValue&) { }
    void path(const CMPath&) { ++paths; }
};

TEST(CMWorker, has_a_prefix_of_its_name)
{
    const CMNodesWorker worker({}, QStringLiteral("service"));
    EXPECT_EQ(worker.name(), QStringLiteral("service"));
    EXPECT_EQ(worker.prefix(), CMPath(QStringLiteral("/service/")));
    EXPECT_EQ(worker.addPrefix(QStringLiteral("a/b")), CMPath(QStringLiteral("/service/a/b")));
    EXPECT_EQ(worker.addPrefix(QStringLiteral("/a")), CMPath(QStringLiteral("/service/a")));
}

TEST(CMWorker, has_the_prefix_of_its_settings)
{
    const CMNodesWorker worker(
        { { QStringLiteral("prefix"), QStringLiteral("/other/") } }, QStringLiteral("service"));
    EXPECT_EQ(worker.addPrefix(QStringLiteral("a")), CMPath(QStringLiteral("/other/a")));
}

TEST(CMWorker, answers_a_ping_from_its_event_loop)
{
    CMNodesWorker worker({}, QStringLiteral("service"));
    const auto reply = CMVoidReply::create();
    worker.ping(reply);
    EXPECT_FALSE(reply.isFinished());
    EXPECT_TRUE(expectFinished(reply));
}

TEST(CMWorker, says_what_it_is)
{
    const CMNodesWorker worker({}, QStringLiteral("service"));
    EXPECT_EQ(worker.trace(), QStringLiteral("service at /service/"));
}

TEST(CMNodesWorker, answers_from_its_nodes)
{
    CMNodesWorker worker({}, QStringLiteral("s"));
    auto* list = CMListRowsNode::create(worker.nodes(), worker.addPrefix(QStringLiteral("list")));
    TavuRoles row;
    row.setTitle(QStringLiteral("one"));
    list->rowsAppend(row);

    const CMGetRowsRequest rows(list->path(), 0, 9, { TavuRoles::Title() });
    const CMGetDataRequest data(list->path(), { TavuRoles::Type() });
    const CMMatchRowRequest match(list->path(), CMPath(QStringLiteral("/none")));
    const CMSetDataRequest set(list->path(), 1);
    for (const CMRequest& request : QList<CMRequest>{ rows, data, match, set })
        worker.request(request);
    EXPECT_EQ(expectValue(rows.reply()).rowsCount(), 1);
    EXPECT_EQ(expectValue(data.reply()).toList(), (QVariantList{ int(TavuRolesType::Folder) }));
    EXPECT_EQ(expectValue(match.reply()), QVariant(-1));
    expectError(set.reply(), QStringLiteral("/s/list does not answer such a request."));
}

TEST(CMNodesWorker, names_the_path_at_which_there_is_nothing)
{
    CMNodesWorker worker({}, QStringLiteral("s"));
    const CMPath nowhere(QStringLiteral("/s/nowhere"));
    const CMGetRowsRequest rows(nowhere, 0, 9, {});
    const CMGetDataRequest data(nowhere, {});
    const CMMatchRowRequest match(nowhere, nowhere);
    const CMSetDataRequest set(nowhere, 1);
    for (const CMRequest& request : QList<CMRequest>{ rows, data, match, set }) {
        worker.request(request);
        expectError(request.voidReply(), QStringLiteral("There is nothing at /s/nowhere."));
    }
}

TEST(CMNodesWorker, a_node_receives_the_full_path)
{
    CMNodesWorker worker({}, QStringLiteral("s"));
    auto* witness = new Witness(CMPath(QStringLiteral("/s/w")));
    witness->setNodes(worker.nodes());
    const CMPath asked = witness->path().addParam(QStringLiteral("q"), QStringLiteral("&"));
    const CMSetDataRequest request(asked, 1);
    worker.setDataRequest(request);
    EXPECT_EQ(expectValue(request.reply()).toString(), asked.toEncoded());
}

TEST(CMNodesWorker, tells_nodes_who_watches_them)
{
    tavuRegisterMetaTypes();
    CMNodesWorker worker({}, QStringLiteral("s"));
    auto* witness = new Witness(CMPath(QStringLiteral("/s/w")));
    witness->setNodes(worker.nodes());
    Receiver receiver;
    const CMPath path = witness->path();
    worker.connectValueChange(path, &receiver, SLOT(value(TavuValue)), Qt::AutoConnection);
    worker.connectDataChange(path, &receiver, SLOT(path(CMPath)), Qt::AutoConnection);
    worker.connectRowsChange(path, &receiver, SLOT(path(CMPath)), Qt::AutoConnection);
    worker.disconnectRowsChange(path, &receiver, SLOT(path(CMPath)));
    worker.disconnectDataChange(path, &receiver, SLOT(path(CMPath)));
    worker.disconnectValueChange(path, &receiver, SLOT(value(TavuValue)));
    EXPECT_EQ(witness->watching.join(QLatin1Char(' ')),
        QStringLiteral("value+ data+ rows+ rows- data- value-"));
}

TEST(CMNodesWorker, a_path_without_node_can_be_watched)
{
    CMNodesWorker worker({}, QStringLiteral("s"));
    Receiver receiver;
    const CMPath path(QStringLiteral("/s/later"));
    worker.connectRowsChange(path, &receiver, SLOT(path(CMPath)), Qt::AutoConnection);
    worker.subscribe()->notifyRows(path);
    EXPECT_EQ(receiver.paths, 1);
    worker.disconnectRowsChange(path, &receiver, SLOT(path(CMPath)));
    worker.subscribe()->notifyRows(path);
    EXPECT_EQ(receiver.paths, 1);
}

/// A worker on a thread of its own.
class CMNodesWorkerThread : public ::testing::Test
{
protected:
    CMNodesWorkerThread()
    {
        m_thread.start();
        m_worker->moveToThread(&m_thread);
        m_witness->setNodes(m_worker->nodes());
    }

    ~CMNodesWorkerThread() override
    {
        m_worker->deleteLater();
        m_thread.quit();
        m_thread.wait();
    }

    QThread m_thread;
    CMNodesWorker* m_worker = new CMNodesWorker({}, QStringLiteral("s"));
    Witness* m_witness = new Witness(CMPath(QStringLiteral("/s/w")));
};

TEST_F(CMNodesWorkerThread, requests_from_elsewhere_are_answered_on_the_workers_thread)
{
    const CMSetDataRequest request(m_witness->path(), 1);
    m_worker->setDataRequest(request);
    expectValue(request.reply());
    EXPECT_EQ(m_witness->askedOn, &m_thread);
}

TEST_F(CMNodesWorkerThread, requests_of_one_thread_are_answered_in_their_order)
{
    QList<int> order;
    QList<CMSetDataRequest> requests;
    for (int number = 0; number < 50; ++number) {
        requests.append(CMSetDataRequest(m_witness->path(), number));
        requests.last().reply().addWatcher(
            [&order, number](const CMVoidReply&) { order.append(number); });
    }
    for (const CMSetDataRequest& request : qAsConst(requests))
        m_worker->setDataRequest(request);
    ASSERT_TRUE(waitUntil([&] { return order.size() == 50; }));
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST_F(CMNodesWorkerThread, errors_come_back_to_the_asking_thread)
{
    const CMSetDataRequest request(CMPath(QStringLiteral("/s/nowhere")), 1);
    m_worker->setDataRequest(request);
    expectError(request.reply(), QStringLiteral("There is nothing at /s/nowhere."));
}

TEST_F(CMNodesWorkerThread, answers_a_ping_from_its_thread)
{
    const auto reply = CMVoidReply::create();
    std::atomic<QThread*> answeredOn{ nullptr };
    reply.addWatcher(
        [&](const CMVoidReply&) { answeredOn = QThread::currentThread(); }, Qt::DirectConnection);
    m_worker->ping(reply);
    expectFinished(reply);
    EXPECT_TRUE(waitUntil([&] { return answeredOn == &m_thread; }));
}

TEST(CMNodesWorker, objects_parented_to_it_die_before_its_nodes)
{
    class Child : public QObject
    {
    public:
        Child(CMNodesWorker* worker, QStringList& order)
            : QObject(worker)
            , m_nodes(worker->nodes())
            , m_order(order)
        {
        }
        ~Child() override { m_order << QString::number(m_nodes->size()); }
        Q_DISABLE_COPY_MOVE(Child)

    private:
        CMNodes* m_nodes;
        QStringList& m_order;
    };
    QStringList order;
    {
        CMNodesWorker worker({}, QStringLiteral("s"));
        (new CMNode(CMPath(QStringLiteral("/s/n"))))->setNodes(worker.nodes());
        new Child(&worker, order);
    }
    EXPECT_EQ(order, QStringList{ QStringLiteral("1") });
}

} // namespace

#include "cmnodesworkertest.moc"
