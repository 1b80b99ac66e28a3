#include "cmnode.h"

#include "cmnodes.h"
#include "printers.h"
#include "replies.h"

#include <gtest/gtest.h>

#include <QPointer>

namespace {

class CMNodeTest : public ::testing::Test
{
protected:
    CMNode* add(const char* path)
    {
        auto* node = new CMNode(CMPath(QString::fromLatin1(path)));
        node->setNodes(&m_nodes);
        return node;
    }

    CMNode* at(const char* path) const { return m_nodes.find(CMPath(QString::fromLatin1(path))); }

    CMSubscribe m_subscribe;
    CMNodes m_nodes{ &m_subscribe };
};

TEST_F(CMNodeTest, is_found_by_its_path)
{
    CMNode* node = add("/a/b");
    EXPECT_EQ(at("/a/b"), node);
    EXPECT_EQ(at("/a"), nullptr);
    EXPECT_EQ(at("/a/b/c"), nullptr);
    EXPECT_EQ(node->path(), CMPath(QStringLiteral("/a/b")));
    EXPECT_EQ(node->nodes(), &m_nodes);
}

TEST_F(CMNodeTest, is_found_whatever_the_parameters_of_the_path)
{
    CMNode* node = add("/a");
    EXPECT_EQ(
        m_nodes.find(node->path().addParam(QStringLiteral("url"), QStringLiteral("x"))), node);
}

TEST_F(CMNodeTest, has_no_parameters_in_its_own_path)
{
    CMNode node(CMPath(QStringLiteral("/a")).addParam(QStringLiteral("x"), QStringLiteral("1")));
    EXPECT_EQ(node.path(), CMPath(QStringLiteral("/a")));
}

TEST_F(CMNodeTest, two_may_share_a_path_and_the_later_one_answers)
{
    CMNode* first = add("/a");
    CMNode* second = add("/a");
    EXPECT_EQ(at("/a"), second);
    EXPECT_EQ(m_nodes.size(), 2);
    delete second;
    EXPECT_EQ(at("/a"), first);
}

TEST_F(CMNodeTest, removal_is_by_identity)
{
    CMNode* first = add("/a");
    CMNode* second = add("/a");
    delete first;
    EXPECT_EQ(at("/a"), second);
    m_nodes.remove(second);
    m_nodes.remove(second);
    EXPECT_EQ(at("/a"), nullptr);
    second->setNodes(nullptr);
    delete second;
}

TEST_F(CMNodeTest, moves_from_one_collection_to_another)
{
    CMSubscribe subscribe;
    CMNodes others(&subscribe);
    CMNode* node = add("/a");
    node->setNodes(&others);
    EXPECT_EQ(at("/a"), nullptr);
    EXPECT_EQ(others.find(node->path()), node);
    EXPECT_EQ(others.size(), 1);
}

TEST_F(CMNodeTest, delete_later_takes_it_out_at_once_and_destroys_it_in_the_event_loop)
{
    const QPointer<CMNode> node(add("/a"));
    node->deleteLater();
    EXPECT_EQ(at("/a"), nullptr);
    ASSERT_TRUE(node);
    EXPECT_TRUE(waitUntil([&] { return !node; }));
}

TEST_F(CMNodeTest, delete_later_leaves_its_successor_in_place)
{
    CMNode* dialog = add("/dialog");
    CMNode* next = add("/dialog");
    dialog->deleteLater();
    settle();
    EXPECT_EQ(at("/dialog"), next);
}

TEST_F(CMNodeTest, dies_with_its_collection)
{
    CMSubscribe subscribe;
    auto nodes = std::make_unique<CMNodes>(&subscribe);
    QList<QPointer<CMNode>> all;
    for (const char* path : { "/a", "/a", "/b" }) {
        all.append(new CMNode(CMPath(QString::fromLatin1(path))));
        all.last()->setNodes(nodes.get());
    }
    nodes.reset();
    for (const auto& node : all)
        EXPECT_TRUE(node.isNull());
}

TEST_F(CMNodeTest, refuses_every_request_that_its_class_does_not_serve)
{
    CMNode* node = add("/a");
    const QString message = QStringLiteral("/a does not answer such a request.");
    const CMGetRowsRequest rows(node->path(), 0, 9, {});
    const CMSetDataRequest set(node->path(), 1);
    const CMGetDataRequest get(node->path(), {});
    const CMMatchRowRequest match(node->path(), node->path());
    for (const CMRequest& request : QList<CMRequest>{ rows, set, get, match }) {
        node->request(request);
        expectError(request.voidReply(), message);
    }
}

TEST_F(CMNodeTest, sends_each_request_to_the_operation_for_its_type)
{
    class Serving : public CMNode
    {
    public:
        using CMNode::CMNode;
        QStringList served;
        void getDataRequest(const CMGetDataRequest&) override { served << QStringLiteral("get"); }
        void getRowsRequest(const CMGetRowsRequest&) override { served << QStringLiteral("rows"); }
        void matchRowRequest(const CMMatchRowRequest&) override
        {
            served << QStringLiteral("match");
        }
        void setDataRequest(const CMSetDataRequest&) override { served << QStringLiteral("set"); }
    } node(CMPath(QStringLiteral("/a")));
    node.request(CMGetRowsRequest(node.path(), 0, 9, {}));
    node.request(CMSetDataRequest(node.path(), 1));
    node.request(CMGetDataRequest(node.path(), {}));
    node.request(CMMatchRowRequest(node.path(), node.path()));
    EXPECT_EQ(node.served,
        (QStringList{ QStringLiteral("rows"), QStringLiteral("set"), QStringLiteral("get"),
            QStringLiteral("match") }));
}

TEST_F(CMNodeTest, outside_of_a_collection_changes_go_nowhere)
{
    class Changing : public CMNode
    {
    public:
        using CMNode::CMNode;
        void change()
        {
            notifyData();
            notifyRows();
        }
    } node(CMPath(QStringLiteral("/a")));
    node.change();
    EXPECT_EQ(node.nodes(), nullptr);
}

} // namespace
