#include "cmvalueitem.h"

#include "cmroot.h"
#include "printers.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QThread>

#include <thread>

namespace {

class Watcher : public QObject
{
    Q_OBJECT

public:
    QStringList heard;
    QThread* heardOn = nullptr;

public Q_SLOTS:
    void take(const TavuValue& value)
    {
        heard << value.string();
        heardOn = QThread::currentThread();
    }
};

class CMValueItemTest : public ::testing::Test
{
protected:
    CMValueItemTest() { CMRoot()->reset(); }
    ~CMValueItemTest() override { CMRoot()->reset(); }

    void publish(const char* text)
    {
        CMRoot()->setValue(m_path, TavuValue::fromString(QString::fromLatin1(text)));
    }

    void watch(Qt::ConnectionType type = Qt::AutoConnection)
    {
        m_item =
            std::make_unique<CMValueItem>(nullptr, m_path, &m_watcher, SLOT(take(TavuValue)), type);
    }

    const CMPath m_path{ QStringLiteral("/a/value") };
    Watcher m_watcher;
    std::unique_ptr<CMValueItem> m_item;
};

QStringList texts(std::initializer_list<const char*> all)
{
    QStringList list;
    for (const char* text : all)
        list << QString::fromLatin1(text);
    return list;
}

TEST_F(CMValueItemTest, tells_the_present_value_from_the_event_loop)
{
    publish("present");
    watch();
    EXPECT_TRUE(m_watcher.heard.isEmpty());
    settle();
    EXPECT_EQ(m_watcher.heard, texts({ "present" }));
}

TEST_F(CMValueItemTest, tells_nothing_when_there_is_no_value)
{
    watch();
    settle();
    EXPECT_TRUE(m_watcher.heard.isEmpty());
}

TEST_F(CMValueItemTest, tells_each_publication_after_that)
{
    publish("present");
    watch();
    settle();
    publish("second");
    publish("third");
    settle();
    EXPECT_EQ(m_watcher.heard, texts({ "present", "second", "third" }));
}

TEST_F(CMValueItemTest, tells_an_equal_value_again)
{
    publish("token");
    watch();
    settle();
    publish("token");
    publish("token");
    settle();
    EXPECT_EQ(m_watcher.heard, texts({ "token", "token", "token" }));
}

TEST_F(CMValueItemTest, never_tells_an_older_value_after_a_newer_one)
{
    publish("old");
    watch();
    publish("new"); // Before the event loop came to the present value.
    settle();
    EXPECT_EQ(m_watcher.heard, texts({ "new" }));
}

TEST_F(CMValueItemTest, tells_a_value_that_came_between_its_making_and_the_event_loop)
{
    watch(Qt::QueuedConnection);
    publish("first");
    settle();
    EXPECT_EQ(m_watcher.heard, texts({ "first" }));
}

TEST_F(CMValueItemTest, is_silent_once_it_is_destroyed)
{
    publish("present");
    watch();
    m_item.reset();
    publish("later");
    settle();
    EXPECT_TRUE(m_watcher.heard.isEmpty());
}

TEST_F(CMValueItemTest, keeps_to_its_own_path)
{
    watch();
    CMRoot()->setValue(CMPath(QStringLiteral("/a/other")), TavuValue::fromI32(1));
    CMRoot()->setValue(CMPath(QStringLiteral("/a")), TavuValue::fromI32(1));
    settle();
    EXPECT_TRUE(m_watcher.heard.isEmpty());
}

TEST_F(CMValueItemTest, hears_publications_of_another_thread_on_its_own)
{
    watch();
    settle();
    std::thread([this] { publish("from afar"); }).join();
    ASSERT_TRUE(waitUntil([&] { return !m_watcher.heard.isEmpty(); }));
    EXPECT_EQ(m_watcher.heardOn, QThread::currentThread());
}

TEST_F(CMValueItemTest, gives_a_published_record_as_the_hash_of_its_value)
{
    watch();
    settle();
    TavuHash record;
    record.__set(QStringLiteral("string_"), QStringLiteral("inside"));
    CMRoot()->setValue(m_path, record);
    settle();
    EXPECT_EQ(m_watcher.heard, texts({ "inside" }));
}

} // namespace

#include "cmvalueitemtest.moc"
