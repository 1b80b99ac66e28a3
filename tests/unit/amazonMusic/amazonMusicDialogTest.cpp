#include "amazonMusicDialog.h"

#include "cmlistrowsnode.h"
#include "cmnodesworker.h"
#include "logcapture.h"
#include "replies.h"
#include "tavupaths.h"

#include <QDateTime>
#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <memory>

namespace {

constexpr int shortTime = 20;

TavuRoles message(const QString& title)
{
    TavuRoles row;
    row.setType(TavuRolesType::Message);
    row.setTitle(title);
    return row;
}

class AmazonMusicDialogTest : public testing::Test
{
protected:
    CMReply<TavuRowsRoles> ask(const CMPath& path)
    {
        const CMGetRowsRequest request(path, 0, 9, { TavuRoles::Title() });
        m_worker.getRowsRequest(request);
        return request.reply();
    }

    bool answers(const CMPath& path) { return m_worker.nodes()->find(path) != nullptr; }

    CMNodesWorker m_worker{ QVariantHash(), QStringLiteral("AmazonMusic") };
};

TEST_F(AmazonMusicDialogTest, ShowsItsRowsAtOnce)
{
    AmazonMusicDialog dialog(m_worker.nodes(), 5000);
    dialog.addRow(message(QStringLiteral("Noted")));
    dialog.addRow(message(QStringLiteral("Twice")));

    const TavuRowsRoles rows = expectValue(ask(dialog.path()));

    EXPECT_EQ(rows.rowsCount(), 2);
    EXPECT_EQ(rows.rows(),
        (QVariantList{
            QVariantList{ QStringLiteral("Noted") }, QVariantList{ QStringLiteral("Twice") } }));
    EXPECT_EQ(rows.type(), QVariantList{ 0 });
}

TEST_F(AmazonMusicDialogTest, EndsItsPathWithTheTimeInMilliseconds)
{
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    const AmazonMusicDialog dialog(m_worker.nodes(), 5000);
    const qint64 after = QDateTime::currentMSecsSinceEpoch();

    const QString prefix = TavuAmazonMusicPrefixPath().text() + QStringLiteral("dialog/");
    ASSERT_TRUE(dialog.path().text().startsWith(prefix));
    const QString digits = dialog.path().text().mid(prefix.size());
    EXPECT_EQ(QString::number(digits.toLongLong()), digits);
    EXPECT_GE(digits.toLongLong(), before);
    EXPECT_LE(digits.toLongLong(), after);
}

TEST_F(AmazonMusicDialogTest, RunsOneTimerOfTheGivenTimeOnce)
{
    const AmazonMusicDialog dialog(m_worker.nodes(), 5000);
    const auto* timer = dialog.findChild<QTimer*>();

    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(timer->interval(), 5000);
    EXPECT_TRUE(timer->isSingleShot());
    EXPECT_TRUE(timer->isActive());
}

TEST_F(AmazonMusicDialogTest, RemovesItsNodeAndItselfAfterItsTime)
{
    QPointer<AmazonMusicDialog> dialog = new AmazonMusicDialog(m_worker.nodes(), shortTime);
    QElapsedTimer time;
    time.start();
    const CMPath path = dialog->path();
    const QPointer<CMNode> node = m_worker.nodes()->find(path);
    ASSERT_TRUE(answers(path));

    EXPECT_TRUE(waitUntil([&] { return !answers(path); }));
    EXPECT_GE(time.elapsed(), shortTime - 1);
    expectError(ask(path));
    EXPECT_TRUE(waitUntil([&] { return dialog.isNull() && node.isNull(); }));
}

TEST_F(AmazonMusicDialogTest, RemovesItsNodeOnceOnly)
{
    auto dialog = std::make_unique<AmazonMusicDialog>(m_worker.nodes(), 5000);
    const CMPath path = dialog->path();
    QMetaObject::invokeMethod(dialog.get(), "on_timeout");
    ASSERT_FALSE(answers(path));
    EXPECT_TRUE(dialog->path().isEmpty());

    // Another screen that has come to the same path meanwhile.
    CMListRowsNode::create(m_worker.nodes(), path);
    dialog.reset();

    EXPECT_TRUE(answers(path));
}

TEST_F(AmazonMusicDialogTest, TakesItsNodeAlongWhenItIsDestroyedEarly)
{
    auto dialog = std::make_unique<AmazonMusicDialog>(m_worker.nodes(), 5000);
    const CMPath path = dialog->path();
    const QPointer<CMNode> node = m_worker.nodes()->find(path);
    dialog.reset();

    EXPECT_FALSE(answers(path));
    EXPECT_TRUE(waitUntil([&] { return node.isNull(); }));
}

TEST_F(AmazonMusicDialogTest, EndsWithTheNodeTree)
{
    auto worker = std::make_unique<CMNodesWorker>(QVariantHash(), QStringLiteral("AmazonMusic"));
    QPointer<AmazonMusicDialog> dialog = new AmazonMusicDialog(worker->nodes(), 5000);
    worker.reset();
    dialog->addRow(message(QStringLiteral("Too late")));

    EXPECT_TRUE(dialog->path().isEmpty());
    EXPECT_TRUE(waitUntil([&] { return dialog.isNull(); }));
}

TEST_F(AmazonMusicDialogTest, OfTheSameMillisecondIsTakenOutByItself)
{
    // Paths may coincide; each dialog still removes its own node.
    auto first = std::make_unique<AmazonMusicDialog>(m_worker.nodes(), 5000);
    auto* other = CMListRowsNode::create(m_worker.nodes(), first->path());
    const CMPath path = first->path();
    first.reset();

    EXPECT_EQ(m_worker.nodes()->find(path), other);
}

} // namespace
