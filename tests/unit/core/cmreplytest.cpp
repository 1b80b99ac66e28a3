#include "cmreply.h"

#include "printers.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QSet>
#include <QThread>

#include <limits>
#include <thread>

namespace {

CMError named(const char* name)
{
    CMError error;
    error.setName(QString::fromLatin1(name));
    error.setMessage(QStringLiteral("it went wrong"));
    return error;
}

const auto forever = std::numeric_limits<unsigned long>::max();

TEST(CMReply, is_unfinished_and_without_error_when_made)
{
    const auto reply = CMReply<int>::create();
    EXPECT_FALSE(!reply);
    EXPECT_FALSE(reply.isFinished());
    EXPECT_FALSE(reply.error().isSet());
    EXPECT_EQ(reply.value(), 0);
}

TEST(CMReply, without_data_is_false)
{
    EXPECT_TRUE(!CMVoidReply());
    EXPECT_TRUE(!CMReply<int>());
    EXPECT_FALSE(!CMVoidReply::create());
}

TEST(CMReply, keeps_the_value_it_finished_with)
{
    const auto reply = CMReply<int>::create();
    reply.setValue(7);
    EXPECT_TRUE(reply.isFinished());
    EXPECT_FALSE(reply.error().isSet());
    EXPECT_EQ(reply.value(), 7);
}

TEST(CMReply, first_completion_wins_over_a_later_value)
{
    const auto reply = CMReply<int>::create();
    int calls = 0;
    reply.addWatcher([&](const CMVoidReply&) { ++calls; });
    reply.setValue(1);
    reply.setValue(2);
    reply.setError(named("late"));
    reply.cancel();
    reply.finish();
    EXPECT_EQ(reply.value(), 1);
    EXPECT_FALSE(reply.error().isSet());
    EXPECT_EQ(calls, 1);
}

TEST(CMReply, first_completion_wins_over_a_value_after_an_error)
{
    const auto reply = CMReply<int>::create();
    int calls = 0;
    reply.addWatcher([&](const CMVoidReply&) { ++calls; });
    reply.setError(named("first"));
    reply.setValue(2);
    reply.setError(named("second"));
    EXPECT_EQ(reply.error().name(), QStringLiteral("first"));
    EXPECT_EQ(reply.value(), 0);
    EXPECT_EQ(calls, 1);
}

TEST(CMReply, void_reply_finishes_with_success)
{
    const auto reply = CMVoidReply::create();
    reply.finish();
    EXPECT_TRUE(reply.isFinished());
    EXPECT_FALSE(reply.error().isSet());
}

TEST(CMReply, cancel_finishes_with_the_cancel_error)
{
    const auto reply = CMReply<int>::create();
    reply.cancel();
    EXPECT_TRUE(reply.isFinished());
    EXPECT_EQ(reply.error(), CMVoidReply::ErrorCancel());
    EXPECT_TRUE(reply.error().isSet());
}

TEST(CMReply, a_cancelled_reply_stays_cancelled_when_the_work_ends_later)
{
    const auto reply = CMReply<int>::create();
    int successes = 0;
    reply.onSuccess([&](int) { ++successes; });
    reply.cancel();
    reply.setValue(3);
    EXPECT_EQ(reply.error(), CMVoidReply::ErrorCancel());
    EXPECT_EQ(successes, 0);
}

TEST(CMReply, an_error_without_a_name_gets_the_default_name)
{
    CMError error;
    error.setMessage(QStringLiteral("out of milk"));
    const auto reply = CMReply<int>::create();
    int successes = 0;
    reply.onSuccess([&](int) { ++successes; });
    reply.setError(error);
    EXPECT_EQ(reply.error().name(), CMError::DefaultName());
    EXPECT_EQ(reply.error().message(), QStringLiteral("out of milk"));
    EXPECT_EQ(successes, 0);
}

TEST(CMReply, an_empty_error_is_still_an_error)
{
    const auto reply = CMReply<int>::create();
    reply.setError(CMError());
    EXPECT_TRUE(reply.error().isSet());
}

TEST(CMReply, keeps_the_action_reply_of_its_error)
{
    CMError error = named("refused");
    error.setActionReply({ { QStringLiteral("xclass"), QStringLiteral("TavuActionReply") } });
    const auto reply = CMReply<int>::create();
    reply.setError(error);
    EXPECT_EQ(reply.error(), error);
}

TEST(CMReply, on_success_gets_the_value)
{
    const auto reply = CMReply<int>::create();
    int value = 0;
    reply.onSuccess([&](int answer) { value = answer; });
    reply.setValue(5);
    EXPECT_EQ(value, 5);
}

TEST(CMReply, on_success_is_not_called_for_an_error)
{
    const auto reply = CMReply<int>::create();
    int calls = 0;
    reply.onSuccess([&](int) { ++calls; });
    reply.setError(named("no"));
    EXPECT_EQ(calls, 0);
}

TEST(CMReply, on_success_of_a_finished_reply_runs_at_once_on_the_same_thread)
{
    const auto reply = CMReply<int>::create();
    reply.setValue(5);
    int value = 0;
    reply.onSuccess([&](int answer) { value = answer; });
    EXPECT_EQ(value, 5);
}

TEST(CMReplyDeathTest, on_success_of_another_type_stops_the_process)
{
    const auto number = CMReply<int>::create();
    // A handle that lies about its type, as a cast of a void reply could make it.
    struct Forged : CMReply<QString>
    {
        explicit Forged(const CMVoidReply& reply) { m_data = reply.data(); }
    };
    const Forged forged(number);
    forged.onSuccess([](const QString&) {});
    EXPECT_DEATH(number.setValue(1), "CMReply.*Wrong type passed to CMReply::onSuccess\\(\\)!");
}

TEST(CMReplyDeathTest, a_reply_of_another_type_is_refused_when_it_is_cast)
{
    const CMVoidReply number = CMReply<int>::create();
    EXPECT_DEATH(CMReply<QString>{ number }, "Wrong type passed to CMReply!");
}

TEST(CMReply, watchers_run_in_the_order_in_which_they_were_added)
{
    const auto reply = CMReply<int>::create();
    QList<int> order;
    for (int number = 0; number < 20; ++number)
        reply.addWatcher([&order, number](const CMVoidReply&) { order.append(number); },
            number % 2 ? Qt::DirectConnection : Qt::AutoConnection);
    reply.setValue(1);
    QList<int> expected;
    for (int number = 0; number < 20; ++number)
        expected.append(number);
    EXPECT_EQ(order, expected);
}

TEST(CMReply, queued_watchers_run_in_order_from_the_event_loop)
{
    const auto reply = CMReply<int>::create();
    QList<int> order;
    for (int number = 0; number < 3; ++number)
        reply.addWatcher(
            [&order, number](const CMVoidReply&) { order.append(number); }, Qt::QueuedConnection);
    reply.setValue(1);
    EXPECT_TRUE(order.isEmpty());
    ASSERT_TRUE(waitUntil([&] { return order.size() == 3; }));
    EXPECT_EQ(order, (QList<int>{ 0, 1, 2 }));
}

TEST(CMReply, a_watcher_sees_the_finished_reply_it_watched)
{
    const auto reply = CMReply<int>::create();
    bool same = false;
    int value = 0;
    reply.addWatcher([&](const CMVoidReply& finished) {
        same = finished == reply && finished.isFinished();
        value = CMReply<int>(finished).value();
    });
    reply.setValue(9);
    EXPECT_TRUE(same);
    EXPECT_EQ(value, 9);
}

TEST(CMReply, a_queued_watcher_of_a_finished_reply_runs_once_from_the_event_loop)
{
    const auto reply = CMVoidReply::create();
    reply.finish();
    int calls = 0;
    reply.addWatcher([&](const CMVoidReply&) { ++calls; }, Qt::QueuedConnection);
    EXPECT_EQ(calls, 0);
    ASSERT_TRUE(waitUntil([&] { return calls > 0; }));
    settle();
    EXPECT_EQ(calls, 1);
}

TEST(CMReply, watchers_run_without_the_lock_so_that_they_may_use_the_reply)
{
    const auto reply = CMReply<int>::create();
    QStringList heard;
    reply.addWatcher([&](const CMVoidReply&) {
        // Each of these takes the reply's lock.
        reply.setValue(2);
        reply.cancel();
        EXPECT_TRUE(reply.waitForFinished(0));
        heard << QStringLiteral("first");
        reply.addWatcher([&](const CMVoidReply&) { heard << QStringLiteral("added inside"); });
    });
    reply.addWatcher([&](const CMVoidReply&) { heard << QStringLiteral("second"); });
    reply.setValue(1);
    EXPECT_EQ(reply.value(), 1);
    EXPECT_EQ(heard,
        (QStringList{
            QStringLiteral("first"), QStringLiteral("added inside"), QStringLiteral("second") }));
}

TEST(CMReply, a_watcher_may_drop_the_last_handle)
{
    auto reply = CMReply<int>::create();
    const CMReply<int> finishing = reply;
    std::weak_ptr<CMReplyAbstractData> data = reply.data();
    int calls = 0;
    reply.addWatcher([&](const CMVoidReply&) {
        reply = CMReply<int>();
        ++calls;
    });
    CMReply<int>(finishing).setValue(1);
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(data.expired());
}

TEST(CMReply, frees_watchers_and_data_when_the_last_handle_goes)
{
    const auto captured = std::make_shared<int>(1);
    auto finished = CMReply<int>::create();
    auto unfinished = CMReply<int>::create();
    for (const auto& reply : { finished, unfinished })
        reply.addWatcher([captured](const CMVoidReply&) {});
    EXPECT_EQ(captured.use_count(), 3);
    finished.setValue(1);
    EXPECT_EQ(captured.use_count(), 2); // Its watcher went with the completion.
    unfinished = CMReply<int>();
    EXPECT_EQ(captured.use_count(), 1);
}

TEST(CMReply, equality_and_hash_are_those_of_the_shared_answer)
{
    const auto reply = CMReply<int>::create();
    const CMReply<int> copy = reply;
    const CMVoidReply sliced = reply;
    const auto other = CMReply<int>::create();
    EXPECT_EQ(reply, copy);
    EXPECT_EQ(reply, sliced);
    EXPECT_NE(reply, other);
    EXPECT_EQ(qHash(sliced), qHash(copy));
    EXPECT_EQ(CMVoidReply(), CMVoidReply());
    EXPECT_NE(CMVoidReply(), sliced);
}

TEST(CMReply, can_be_kept_in_a_set_of_pending_replies)
{
    QSet<CMVoidReply> pending;
    const auto first = CMReply<int>::create();
    const auto second = CMReply<QString>::create();
    for (const CMVoidReply& reply : { CMVoidReply(first), CMVoidReply(second) }) {
        pending.insert(reply);
        reply.addWatcher([&](const CMVoidReply& finished) { pending.remove(finished); });
    }
    first.setValue(1);
    EXPECT_EQ(pending, QSet<CMVoidReply>{ second });
    const QSet<CMVoidReply> snapshot = pending;
    for (const CMVoidReply& reply : snapshot)
        reply.cancel();
    EXPECT_TRUE(pending.isEmpty());
}

TEST(CMReply, waiting_for_a_finished_reply_returns_at_once)
{
    const auto reply = CMVoidReply::create();
    reply.finish();
    EXPECT_TRUE(reply.waitForFinished(0));
    EXPECT_TRUE(reply.waitForFinished(forever));
}

TEST(CMReply, waiting_gives_up_after_its_time)
{
    EXPECT_FALSE(CMVoidReply::create().waitForFinished(0));
    EXPECT_FALSE(CMVoidReply::create().waitForFinished(5));
}

TEST(CMReply, a_time_beyond_every_clock_is_waited_for_too)
{
    const auto reply = CMVoidReply::create();
    const auto woke = CMVoidReply::create();
    std::thread waiting([reply, woke] {
        EXPECT_TRUE(reply.waitForFinished(forever - 1));
        woke.finish();
    });
    EXPECT_FALSE(woke.waitForFinished(20));
    reply.finish();
    waiting.join();
}

/// A thread with an event loop that ends with the test.
class Loop : public QThread
{
public:
    Loop() { start(); }
    ~Loop() override { end(); }
    Q_DISABLE_COPY_MOVE(Loop)

    void end()
    {
        quit();
        wait();
    }

    void run() override
    {
        m_worker = std::make_unique<QObject>();
        m_ready.finish();
        exec();
        m_worker.reset();
    }

    /// Runs `function` on this thread and waits for it.
    void call(const std::function<void()>& function)
    {
        m_ready.waitForFinished(forever);
        QMetaObject::invokeMethod(m_worker.get(), function, Qt::BlockingQueuedConnection);
    }

private:
    std::unique_ptr<QObject> m_worker;
    CMVoidReply m_ready = CMVoidReply::create();
};

TEST(CMReply, an_automatic_watcher_hears_on_the_thread_that_added_it)
{
    Loop loop;
    const auto reply = CMReply<int>::create();
    QThread* heardOn = nullptr;
    reply.addWatcher([&](const CMVoidReply&) { heardOn = QThread::currentThread(); });
    loop.call([&] { reply.setValue(1); });
    EXPECT_EQ(heardOn, nullptr);
    ASSERT_TRUE(waitUntil([&] { return heardOn != nullptr; }));
    EXPECT_EQ(heardOn, QThread::currentThread());
}

TEST(CMReply, a_direct_watcher_hears_on_the_finishing_thread)
{
    Loop loop;
    const auto reply = CMReply<int>::create();
    QThread* heardOn = nullptr;
    reply.addWatcher(
        [&](const CMVoidReply&) { heardOn = QThread::currentThread(); }, Qt::DirectConnection);
    loop.call([&] { reply.setValue(1); });
    EXPECT_EQ(heardOn, &loop);
}

TEST(CMReply, an_automatic_watcher_of_another_thread_hears_there)
{
    Loop loop;
    const auto reply = CMReply<int>::create();
    std::atomic<QThread*> heardOn{ nullptr };
    loop.call(
        [&] { reply.addWatcher([&](const CMVoidReply&) { heardOn = QThread::currentThread(); }); });
    reply.setValue(1);
    ASSERT_TRUE(waitUntil([&] { return heardOn != nullptr; }));
    EXPECT_EQ(heardOn, &loop);
}

TEST(CMReply, a_queued_watcher_of_an_ended_thread_is_dropped)
{
    Loop loop;
    const auto reply = CMReply<int>::create();
    const auto captured = std::make_shared<int>(1);
    int calls = 0;
    loop.call([&] {
        reply.addWatcher([captured, &calls](const CMVoidReply&) { ++calls; }, Qt::QueuedConnection);
    });
    loop.end();
    reply.setValue(1);
    // The thread takes what was posted to it with it when it has gone for good.
    ASSERT_TRUE(waitUntil([&] { return captured.use_count() == 1; }));
    EXPECT_EQ(calls, 0);
}

TEST(CMReply, travels_in_a_variant)
{
    const auto reply = CMReply<QVariant>::create();
    const QVariant carried = QVariant::fromValue(reply);
    EXPECT_EQ(carried.value<CMReply<QVariant>>(), reply);
}

} // namespace
