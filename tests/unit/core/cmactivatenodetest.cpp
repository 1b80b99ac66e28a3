#include "cmactivatenode.h"

#include "cmnodes.h"
#include "printers.h"
#include "replies.h"
#include "tavuconnect.h"

#include <gtest/gtest.h>

namespace {

class Receiver : public QObject
{
    Q_OBJECT

public:
    QList<CMSetDataRequest> activations;

public Q_SLOTS:
    void activate(const CMSetDataRequest& request) { activations.append(request); }
};

class CMActivateNodeTest : public ::testing::Test
{
protected:
    CMActivateNodeTest() { tavuRegisterMetaTypes(); }

    CMActivateNode* make(Qt::ConnectionType type)
    {
        return CMActivateNode::create(
            &m_nodes, m_path, &m_receiver, SLOT(activate(CMSetDataRequest)), type);
    }

    CMSetDataRequest activate(CMActivateNode* node, const QVariant& value)
    {
        const CMSetDataRequest request(node->path(), value);
        node->request(request);
        return request;
    }

    const CMPath m_path{ QStringLiteral("/action/post") };
    CMSubscribe m_subscribe;
    CMNodes m_nodes{ &m_subscribe };
    Receiver m_receiver;
};

TEST_F(CMActivateNodeTest, is_made_in_its_collection_as_an_action)
{
    CMActivateNode* node = make(Qt::DirectConnection);
    EXPECT_EQ(m_nodes.find(m_path), node);
    EXPECT_EQ(node->roles().type(), TavuRolesType::Action);
}

TEST_F(CMActivateNodeTest, an_activation_calls_the_receiver_which_answers)
{
    const CMSetDataRequest request = activate(make(Qt::DirectConnection), 7);
    ASSERT_EQ(m_receiver.activations.size(), 1);
    EXPECT_EQ(m_receiver.activations.at(0).value(), QVariant(7));
    expectPending(request.reply());
    m_receiver.activations.at(0).reply().setValue(8);
    EXPECT_EQ(expectValue(request.reply()), QVariant(8));
}

TEST_F(CMActivateNodeTest, a_queued_receiver_is_called_from_the_event_loop)
{
    const CMSetDataRequest request = activate(make(Qt::QueuedConnection), 7);
    EXPECT_TRUE(m_receiver.activations.isEmpty());
    ASSERT_TRUE(waitUntil([&] { return m_receiver.activations.size() == 1; }));
    EXPECT_EQ(m_receiver.activations.at(0).reply(), request.reply());
}

TEST_F(CMActivateNodeTest, the_receiver_sees_the_activate_roles_own_value)
{
    CMActivateNode* node = make(Qt::DirectConnection);
    node->setActivateRole(TavuRoles::PrePlay());
    const QVariantHash inner{ { TavuRoles::Title(), QStringLiteral("t") } };
    const CMSetDataRequest request =
        activate(node, QVariantHash{ { TavuRoles::PrePlay(), inner } });
    ASSERT_EQ(m_receiver.activations.size(), 1);
    EXPECT_EQ(m_receiver.activations.at(0).value(), QVariant(inner));
    EXPECT_EQ(m_receiver.activations.at(0).reply(), request.reply());
    EXPECT_EQ(m_receiver.activations.at(0).path(), request.path());
}

TEST_F(CMActivateNodeTest, a_value_without_the_activate_role_passes_as_it_is)
{
    CMActivateNode* node = make(Qt::DirectConnection);
    node->setActivateRole(TavuRoles::LikeIt());
    const QVariantHash other{ { TavuRoles::Title(), QStringLiteral("t") } };
    for (const QVariant& value : { QVariant(true), QVariant(other), QVariant() })
        activate(node, value);
    ASSERT_EQ(m_receiver.activations.size(), 3);
    EXPECT_EQ(m_receiver.activations.at(0).value(), QVariant(true));
    EXPECT_EQ(m_receiver.activations.at(1).value(), QVariant(other));
    EXPECT_FALSE(m_receiver.activations.at(2).value().isValid());
}

TEST_F(CMActivateNodeTest, the_receiver_sees_the_parameters_of_the_path)
{
    CMActivateNode* node = make(Qt::DirectConnection);
    const CMPath asked = m_path.addParam(QStringLiteral("url"), QStringLiteral("https://h/?a&b#c"));
    node->request(CMSetDataRequest(asked, 1));
    EXPECT_EQ(m_receiver.activations.at(0).path(), asked);
}

TEST_F(CMActivateNodeTest, without_receiver_the_reply_value_answers)
{
    CMActivateNode* node =
        CMActivateNode::create(&m_nodes, m_path, nullptr, nullptr, Qt::AutoConnection);
    TavuActionReply answer;
    answer.setXclass(QStringLiteral("TavuActionReply"));
    node->setReplyValue(answer);
    const QVariant value = expectValue(activate(node, 1).reply());
    EXPECT_EQ(TavuActionReply(value.toHash()), answer);
}

TEST_F(CMActivateNodeTest, a_receiver_that_is_gone_leaves_an_error_and_no_silence)
{
    auto receiver = std::make_unique<Receiver>();
    CMActivateNode* node = CMActivateNode::create(
        &m_nodes, m_path, receiver.get(), SLOT(activate(CMSetDataRequest)), Qt::DirectConnection);
    receiver.reset();
    expectError(
        activate(node, 1).reply(), QStringLiteral("/action/post does not answer such a request."));
}

TEST_F(CMActivateNodeTest, a_slot_that_the_receiver_lacks_stops_the_process)
{
    EXPECT_DEATH(CMActivateNode::create(&m_nodes, m_path, &m_receiver,
                     SLOT(missing(CMSetDataRequest)), Qt::DirectConnection),
        "missing\\(CMSetDataRequest\\)");
}

} // namespace

#include "cmactivatenodetest.moc"
