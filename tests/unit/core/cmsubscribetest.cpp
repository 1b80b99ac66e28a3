#include "cmsubscribe.h"

#include "printers.h"
#include "tavuconnect.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace {

using Type = CMSubscribe::ChangeType;

class Receiver : public QObject
{
    Q_OBJECT

public:
    QStringList heard;
    const std::shared_ptr<int> calls = std::make_shared<int>(0); // Outlives the receiver.

public Q_SLOTS:
    void value(const TavuValue& value) { note("value ", value.string()); }
    void data(const CMPath& path) { note("data ", path.toEncoded()); }
    void rows(const CMPath& path) { note("rows ", path.toEncoded()); }

private:
    void note(const char* what, const QString& text)
    {
        ++*calls;
        heard << QString::fromLatin1(what) + text;
    }
};

class CMSubscribeTest : public ::testing::Test
{
protected:
    CMSubscribeTest() { tavuRegisterMetaTypes(); }

    void connectAll(Qt::ConnectionType connection)
    {
        m_subscribe.connectChange(
            Type::Value, m_path, &m_receiver, SLOT(value(TavuValue)), connection);
        m_subscribe.connectChange(Type::Data, m_path, &m_receiver, SLOT(data(CMPath)), connection);
        m_subscribe.connectChange(Type::Rows, m_path, &m_receiver, SLOT(rows(CMPath)), connection);
    }

    void notifyAll(const CMPath& path)
    {
        m_subscribe.notifyValue(path, TavuValue::fromString(QStringLiteral("x")));
        m_subscribe.notifyData(path);
        m_subscribe.notifyRows(path);
    }

    const CMPath m_path{ QStringLiteral("/a") };
    const QStringList m_all{ QStringLiteral("value x"), QStringLiteral("data /a"),
        QStringLiteral("rows /a") };
    CMSubscribe m_subscribe;
    Receiver m_receiver;
};

TEST_F(CMSubscribeTest, tells_each_kind_of_change_to_those_who_asked_for_it)
{
    connectAll(Qt::DirectConnection);
    notifyAll(m_path);
    EXPECT_EQ(m_receiver.heard, m_all);
}

TEST_F(CMSubscribeTest, tells_nobody_of_other_paths)
{
    connectAll(Qt::DirectConnection);
    notifyAll(CMPath(QStringLiteral("/a/b")));
    notifyAll(CMPath(QStringLiteral("/")));
    EXPECT_TRUE(m_receiver.heard.isEmpty());
}

TEST_F(CMSubscribeTest, parameters_of_paths_do_not_count)
{
    const CMPath withParam = m_path.addParam(QStringLiteral("url"), QStringLiteral("u"));
    m_subscribe.connectChange(
        Type::Data, withParam, &m_receiver, SLOT(data(CMPath)), Qt::DirectConnection);
    m_subscribe.notifyData(m_path);
    EXPECT_EQ(m_receiver.heard, QStringList{ QStringLiteral("data /a") });
}

TEST_F(CMSubscribeTest, is_silent_after_a_disconnect)
{
    connectAll(Qt::DirectConnection);
    m_subscribe.disconnectChange(Type::Data, m_path, &m_receiver, SLOT(data(CMPath)));
    notifyAll(m_path);
    EXPECT_EQ(m_receiver.heard, (QStringList{ m_all.at(0), m_all.at(2) }));
}

TEST_F(CMSubscribeTest, a_disconnect_of_what_was_never_connected_is_harmless)
{
    m_subscribe.disconnectChange(Type::Rows, m_path, &m_receiver, SLOT(rows(CMPath)));
    notifyAll(m_path);
    EXPECT_TRUE(m_receiver.heard.isEmpty());
}

TEST_F(CMSubscribeTest, a_queued_receiver_hears_from_its_event_loop)
{
    connectAll(Qt::QueuedConnection);
    notifyAll(m_path);
    EXPECT_TRUE(m_receiver.heard.isEmpty());
    settle();
    EXPECT_EQ(m_receiver.heard, m_all);
}

TEST_F(CMSubscribeTest, an_automatic_receiver_hears_changes_of_another_thread_on_its_own)
{
    connectAll(Qt::AutoConnection);
    std::thread([this] { notifyAll(m_path); }).join();
    EXPECT_TRUE(m_receiver.heard.isEmpty());
    ASSERT_TRUE(waitUntil([&] { return m_receiver.heard.size() == 3; }));
    EXPECT_EQ(m_receiver.heard, m_all);
}

TEST_F(CMSubscribeTest, a_destroyed_receiver_hears_nothing_more)
{
    auto receiver = std::make_unique<Receiver>();
    const std::shared_ptr<int> calls = receiver->calls;
    m_subscribe.connectChange(
        Type::Rows, m_path, receiver.get(), SLOT(rows(CMPath)), Qt::QueuedConnection);
    m_subscribe.notifyRows(m_path);
    receiver.reset();
    m_subscribe.notifyRows(m_path);
    settle();
    EXPECT_EQ(*calls, 0);
}

TEST_F(CMSubscribeTest, threads_may_connect_while_others_notify)
{
    std::thread notifier([this] {
        for (int round = 0; round < 2000; ++round)
            m_subscribe.notifyData(m_path);
    });
    for (int round = 0; round < 200; ++round) {
        Receiver receiver;
        m_subscribe.connectChange(
            Type::Data, m_path, &receiver, SLOT(data(CMPath)), Qt::QueuedConnection);
    }
    notifier.join();
    connectAll(Qt::DirectConnection);
    notifyAll(m_path);
    EXPECT_EQ(m_receiver.heard, m_all);
}

} // namespace

#include "cmsubscribetest.moc"
