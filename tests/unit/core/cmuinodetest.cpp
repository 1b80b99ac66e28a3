#include "cmuinode.h"

#include "cmcontainernode.h"
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
    int changes = 0;

public Q_SLOTS:
    void data(const CMPath&) { ++changes; }
};

class CMUINodeTest : public ::testing::Test
{
protected:
    CMUINodeTest()
    {
        m_node->setNodes(&m_nodes);
        m_subscribe.connectChange(CMSubscribe::ChangeType::Data, m_node->path(), &m_receiver,
            SLOT(data(CMPath)), Qt::DirectConnection);
    }

    QVariantList ask(const QStringList& roles)
    {
        const CMGetDataRequest request(m_node->path(), roles);
        m_node->request(request);
        return expectValue(request.reply()).toList();
    }

    CMSubscribe m_subscribe;
    CMNodes m_nodes{ &m_subscribe };
    CMContainerNode* m_node = new CMContainerNode(CMPath(QStringLiteral("/a")));
    Receiver m_receiver;
};

TEST_F(CMUINodeTest, shows_what_was_set)
{
    TavuMediaData media;
    media.setResources(TavuList<TavuResource>(QVariantList{ QVariantHash() }));
    m_node->setTitle(TrString("Title"));
    m_node->setMediaData(media);
    m_node->setDisabled(true);
    m_node->setContainerType(TavuRolesContainerType::Album);
    m_node->setPlayable(true);
    const TavuRoles roles = m_node->roles();
    EXPECT_EQ(roles.title(), QStringLiteral("Title"));
    EXPECT_EQ(roles.mediaData(), media);
    EXPECT_TRUE(roles.disabled());
    EXPECT_EQ(roles.containerType(), TavuRolesContainerType::Album);
    EXPECT_TRUE(roles.containerPlayable());
    EXPECT_EQ(roles.path(), m_node->path());
}

TEST_F(CMUINodeTest, a_container_is_a_folder)
{
    EXPECT_EQ(m_node->roles().type(), TavuRolesType::Folder);
}

TEST_F(CMUINodeTest, has_no_roles_that_were_never_set)
{
    EXPECT_FALSE(m_node->roles().__contains(TavuRoles::Title()));
    EXPECT_FALSE(m_node->roles().__contains(TavuRoles::MediaData()));
}

TEST_F(CMUINodeTest, answers_roles_in_the_order_asked_for)
{
    m_node->setTitle(TrString("Title"));
    const QVariantList values = ask({ TavuRoles::Type(), TavuRoles::Title(), TavuRoles::Icon() });
    ASSERT_EQ(values.size(), 3);
    EXPECT_EQ(values.at(0), QVariant(int(TavuRolesType::Folder)));
    EXPECT_EQ(values.at(1), QVariant(QStringLiteral("Title")));
    EXPECT_FALSE(values.at(2).isValid());
    EXPECT_TRUE(ask({}).isEmpty());
}

TEST_F(CMUINodeTest, tells_those_who_watch_it_of_each_change)
{
    m_node->setTitle(TrString("Title"));
    m_node->setMediaData(TavuMediaData());
    m_node->setDisabled(false);
    m_node->setContainerType(TavuRolesContainerType::List);
    m_node->setPlayable(false);
    EXPECT_EQ(m_receiver.changes, 5);
}

TEST_F(CMUINodeTest, a_role_sees_the_parameters_of_the_path_that_was_asked)
{
    class Echo : public CMUINode
    {
    public:
        using CMUINode::CMUINode;
        QVariant getRoleData(
            const QString& role, const QMap<QString, QString>& params) const override
        {
            return params.value(role);
        }
    } node(CMPath(QStringLiteral("/echo")));
    const CMPath asked = node.path().addParam(QStringLiteral("x"), QStringLiteral("1 & 2"));
    const CMGetDataRequest request(asked, { QStringLiteral("x"), QStringLiteral("y") });
    node.request(request);
    const QVariantList values = expectValue(request.reply()).toList();
    EXPECT_EQ(values.at(0), QVariant(QStringLiteral("1 & 2")));
    EXPECT_EQ(values.at(1), QVariant(QString()));
}

} // namespace

#include "cmuinodetest.moc"
