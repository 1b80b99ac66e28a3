#include "cmlistrowsnode.h"

#include "cmnodes.h"
#include "printers.h"
#include "replies.h"

#include <gtest/gtest.h>

#include <QSet>

#include <limits>

namespace {

class Receiver : public QObject
{
    Q_OBJECT

public:
    int changes = 0;

public Q_SLOTS:
    void rows(const CMPath&) { ++changes; }
};

TavuRoles row(const QString& title)
{
    TavuRoles roles;
    roles.setTitle(title);
    roles.setPath(CMPath(QStringLiteral("/rows/") + title));
    return roles;
}

class CMListRowsNodeTest : public ::testing::Test
{
protected:
    void append(int count)
    {
        for (int number = 0; number < count; ++number)
            m_list->rowsAppend(row(QString::number(number)));
    }

    TavuRowsRoles ask(int from, int to)
    {
        const CMGetRowsRequest request(m_list->path(), from, to, { TavuRoles::Title() });
        m_list->request(request);
        return expectValue(request.reply());
    }

    /// The titles of the rows from `from` to `to`.
    QStringList titles(int from, int to)
    {
        QStringList all;
        const QVariantList rows = ask(from, to).rows();
        for (const QVariant& values : rows)
            all << values.toList().value(0).toString();
        return all;
    }

    int match(const CMPath& path)
    {
        const CMMatchRowRequest request(m_list->path(), path);
        m_list->request(request);
        return expectValue(request.reply()).toInt();
    }

    CMSubscribe m_subscribe;
    CMNodes m_nodes{ &m_subscribe };
    CMListRowsNode* m_list = CMListRowsNode::create(&m_nodes, CMPath(QStringLiteral("/list")));
};

QStringList numbers(int from, int to)
{
    QStringList all;
    for (int number = from; number <= to; ++number)
        all << QString::number(number);
    return all;
}

TEST_F(CMListRowsNodeTest, is_made_in_its_collection)
{
    EXPECT_EQ(m_nodes.find(CMPath(QStringLiteral("/list"))), m_list);
}

TEST_F(CMListRowsNodeTest, answers_the_slice_that_was_asked_for)
{
    append(10);
    EXPECT_EQ(titles(0, 9), numbers(0, 9));
    EXPECT_EQ(titles(3, 5), numbers(3, 5));
    EXPECT_EQ(titles(4, 4), numbers(4, 4));
}

TEST_F(CMListRowsNodeTest, answers_the_rows_that_there_are)
{
    append(10);
    EXPECT_EQ(titles(8, 20), numbers(8, 9));
    EXPECT_EQ(titles(-5, 1), numbers(0, 1));
    EXPECT_EQ(titles(0, std::numeric_limits<int>::max()), numbers(0, 9));
    EXPECT_EQ(
        titles(std::numeric_limits<int>::min(), std::numeric_limits<int>::max()), numbers(0, 9));
}

TEST_F(CMListRowsNodeTest, answers_no_rows_outside_of_the_list)
{
    append(10);
    EXPECT_TRUE(titles(10, 20).isEmpty());
    EXPECT_TRUE(titles(5, 4).isEmpty());
    EXPECT_TRUE(titles(-9, -1).isEmpty());
    m_list->rowsClear();
    EXPECT_TRUE(titles(0, 9).isEmpty());
}

TEST_F(CMListRowsNodeTest, always_answers_the_count_of_all)
{
    append(10);
    EXPECT_EQ(ask(3, 4).rowsCount(), 10);
    EXPECT_EQ(ask(90, 99).rowsCount(), 10);
    EXPECT_EQ(m_list->rowsSize(), 10);
    m_list->rowsClear();
    EXPECT_EQ(ask(0, 9).rowsCount(), 0);
    EXPECT_EQ(m_list->rowsSize(), 0);
}

TEST_F(CMListRowsNodeTest, answers_the_asked_roles_in_their_order)
{
    append(1);
    const CMGetRowsRequest request(
        m_list->path(), 0, 0, { TavuRoles::Path(), TavuRoles::Icon(), TavuRoles::Title() });
    m_list->request(request);
    const QVariantList values = expectValue(request.reply()).rows().at(0).toList();
    EXPECT_EQ(values, (QVariantList{ QStringLiteral("/rows/0"), QVariant(), QStringLiteral("0") }));
}

TEST_F(CMListRowsNodeTest, answers_itself_as_the_container)
{
    m_list->setTitle(TrString("List"));
    const TavuRoles container = ask(0, 0).roles();
    EXPECT_EQ(container.title(), QStringLiteral("List"));
    EXPECT_EQ(container.path(), m_list->path());
    EXPECT_EQ(container.type(), TavuRolesType::Folder);
}

TEST_F(CMListRowsNodeTest, carries_what_was_set_beside_the_rows)
{
    TavuRowsRoles beside;
    beside.setType({ int(TavuRowsRolesType::List) });
    beside.__set(QStringLiteral("other"), 1);
    m_list->setRowsRoles(beside);
    append(1);
    const TavuRowsRoles answer = ask(0, 0);
    EXPECT_EQ(answer.type(), beside.type());
    EXPECT_EQ(answer.__value(QStringLiteral("other")), QVariant(1));
    EXPECT_EQ(answer.rowsCount(), 1);
}

TEST_F(CMListRowsNodeTest, container_roles_that_were_set_stand_beside_its_own)
{
    TavuRoles container;
    container.setTitle(QStringLiteral("Results"));
    container.setLongDescription(QStringLiteral("what was found"));
    TavuRowsRoles beside;
    beside.setRoles(container);
    m_list->setRowsRoles(beside);
    const TavuRoles answer = ask(0, 0).roles();
    EXPECT_EQ(answer.title(), QStringLiteral("Results"));
    EXPECT_EQ(answer.longDescription(), QStringLiteral("what was found"));
    EXPECT_EQ(answer.path(), m_list->path());
}

TEST_F(CMListRowsNodeTest, the_version_changes_with_the_rows)
{
    QSet<int> versions{ ask(0, 0).rowsVersion() };
    append(1);
    versions.insert(ask(0, 0).rowsVersion());
    m_list->rowsClear();
    versions.insert(ask(0, 0).rowsVersion());
    EXPECT_EQ(versions.size(), 3);
    const int settled = ask(0, 0).rowsVersion();
    EXPECT_EQ(ask(0, 0).rowsVersion(), settled);
}

TEST_F(CMListRowsNodeTest, tells_those_who_watch_its_rows)
{
    Receiver receiver;
    m_subscribe.connectChange(CMSubscribe::ChangeType::Rows, m_list->path(), &receiver,
        SLOT(rows(CMPath)), Qt::DirectConnection);
    append(2);
    m_list->rowsClear();
    m_list->setRowsRoles(TavuRowsRoles());
    EXPECT_EQ(receiver.changes, 4);
}

TEST_F(CMListRowsNodeTest, a_row_that_points_to_a_node_shows_it_as_it_is_now)
{
    auto* node = new CMContainerNode(CMPath(QStringLiteral("/search")));
    node->setNodes(&m_nodes);
    m_list->rowsAppend(node->path());
    node->setTitle(TrString("Search"));
    EXPECT_EQ(titles(0, 0), QStringList{ QStringLiteral("Search") });
    node->setTitle(TrString("Find"));
    EXPECT_EQ(titles(0, 0), QStringList{ QStringLiteral("Find") });
}

TEST_F(CMListRowsNodeTest, a_row_that_points_nowhere_has_its_path_alone)
{
    m_list->rowsAppend(CMPath(QStringLiteral("/gone")));
    const CMGetRowsRequest request(m_list->path(), 0, 0, { TavuRoles::Path(), TavuRoles::Title() });
    m_list->request(request);
    EXPECT_EQ(expectValue(request.reply()).rows().at(0).toList(),
        (QVariantList{ QStringLiteral("/gone"), QVariant() }));
}

TEST_F(CMListRowsNodeTest, keeps_the_last_12000_rows)
{
    append(12000);
    EXPECT_EQ(m_list->rowsSize(), 12000);
    EXPECT_EQ(match(CMPath(QStringLiteral("/rows/0"))), 0);
    m_list->rowsAppend(row(QStringLiteral("one more")));
    EXPECT_EQ(m_list->rowsSize(), 12000);
    EXPECT_EQ(match(CMPath(QStringLiteral("/rows/0"))), -1);
    EXPECT_EQ(match(CMPath(QStringLiteral("/rows/1"))), 0);
}

TEST_F(CMListRowsNodeTest, matches_a_row_by_its_path)
{
    append(3);
    EXPECT_EQ(match(CMPath(QStringLiteral("/rows/2"))), 2);
    EXPECT_EQ(match(CMPath(QStringLiteral("/rows/9"))), -1);
    EXPECT_EQ(match(CMPath()), -1);
}

TEST_F(CMListRowsNodeTest, tells_rows_apart_by_their_parameters)
{
    TavuRoles one;
    const CMPath base(QStringLiteral("/browse"));
    one.setPath(base.addParam(QStringLiteral("url"), QStringLiteral("https://h/?a&b")));
    m_list->rowsAppend(row(QStringLiteral("x")));
    m_list->rowsAppend(one);
    EXPECT_EQ(match(one.path()), 1);
    EXPECT_EQ(match(base), -1);
}

} // namespace

#include "cmlistrowsnodetest.moc"
