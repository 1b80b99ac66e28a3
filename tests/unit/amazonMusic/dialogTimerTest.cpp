#include "dialogTimer.h"

#include "cmlistrowsnode.h"
#include "cmnodes.h"
#include "watchdog.h"

#include <gtest/gtest.h>

namespace {

class DialogTimerTest : public testing::Test
{
protected:
    const CMPath m_path{ QStringLiteral("/dialog") };
    CMSubscribe m_subscribe;
    CMNodes m_nodes{ &m_subscribe };
};

TEST_F(DialogTimerTest, StartsAtOnceAndOnce)
{
    const DialogTimer dialogTimer(CMListRowsNode::create(&m_nodes, m_path), 5000);
    const auto* timer = dialogTimer.findChild<QTimer*>();

    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(timer->interval(), 5000);
    EXPECT_TRUE(timer->isSingleShot());
    EXPECT_TRUE(timer->isActive());
}

TEST_F(DialogTimerTest, RemovesTheNodeAndItselfAtTheEnd)
{
    const QPointer<CMNode> node = CMListRowsNode::create(&m_nodes, m_path);
    const QPointer<DialogTimer> timer = new DialogTimer(node, 10);
    ASSERT_NE(m_nodes.find(m_path), nullptr);

    EXPECT_TRUE(waitUntil([&] { return m_nodes.find(m_path) == nullptr; }));
    EXPECT_TRUE(waitUntil([&] { return node.isNull() && timer.isNull(); }));
}

TEST_F(DialogTimerTest, LeavesTheNodeWhenItIsDestroyedEarly)
{
    auto* node = CMListRowsNode::create(&m_nodes, m_path);
    delete new DialogTimer(node, 0);
    settle();

    EXPECT_EQ(m_nodes.find(m_path), node);
}

TEST_F(DialogTimerTest, EndsQuietlyWhenTheNodeHasGone)
{
    auto* node = CMListRowsNode::create(&m_nodes, m_path);
    const QPointer<DialogTimer> timer = new DialogTimer(node, 10);
    delete node;

    EXPECT_TRUE(waitUntil([&] { return timer.isNull(); }));
}

} // namespace
