#include "cmchain.h"

#include "printers.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

namespace {

CMError refusal()
{
    CMError error;
    error.setName(QStringLiteral("refused"));
    error.setTitle(QStringLiteral("Sorry"));
    error.setMessage(QStringLiteral("not today"));
    error.setActionReply({ { QStringLiteral("result"), 1 } });
    return error;
}

class CMChain : public ::testing::Test
{
protected:
    void dropContext() { m_context.reset(); }

    const CMReply<int> m_inner = CMReply<int>::create();
    const CMReply<QString> m_outer = CMReply<QString>::create();
    std::optional<CMContext> m_context{ std::in_place };
};

TEST_F(CMChain, hands_the_value_on_to_the_continuation)
{
    cmchain::whenSucceeded(m_inner, m_outer, *m_context,
        [this](int value) { m_outer.setValue(QString::number(value)); });
    EXPECT_FALSE(m_outer.isFinished());
    m_inner.setValue(42);
    EXPECT_EQ(m_outer.value(), QStringLiteral("42"));
}

TEST_F(CMChain, continues_at_once_behind_a_finished_reply)
{
    m_inner.setValue(42);
    cmchain::whenSucceeded(m_inner, m_outer, *m_context,
        [this](int value) { m_outer.setValue(QString::number(value)); });
    EXPECT_EQ(m_outer.value(), QStringLiteral("42"));
}

TEST_F(CMChain, copies_the_first_error_outward_unchanged)
{
    int calls = 0;
    cmchain::whenSucceeded(m_inner, m_outer, *m_context, [&](int) { ++calls; });
    m_inner.setError(refusal());
    EXPECT_EQ(m_outer.error(), refusal());
    EXPECT_EQ(calls, 0);
}

TEST_F(CMChain, copies_a_cancel_outward)
{
    cmchain::whenSucceeded(m_inner, m_outer, *m_context, [](int) {});
    m_inner.cancel();
    EXPECT_EQ(m_outer.error(), CMVoidReply::ErrorCancel());
}

TEST_F(CMChain, copies_an_error_outward_also_when_the_context_has_died)
{
    cmchain::whenSucceeded(m_inner, m_outer, *m_context, [](int) {});
    dropContext();
    m_inner.setError(refusal());
    EXPECT_EQ(m_outer.error(), refusal());
}

TEST_F(CMChain, cancels_the_outer_reply_when_the_context_has_died)
{
    int calls = 0;
    cmchain::whenSucceeded(m_inner, m_outer, *m_context, [&](int) { ++calls; });
    dropContext();
    m_inner.setValue(1);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(m_outer.error(), CMVoidReply::ErrorCancel());
}

TEST_F(CMChain, a_dead_context_disarms_a_continuation_that_is_already_queued)
{
    int calls = 0;
    cmchain::whenFinished(m_inner, *m_context, [&](const CMReply<int>&) { ++calls; });
    std::thread([this] { m_inner.setValue(1); }).join();
    dropContext();
    settle();
    EXPECT_EQ(calls, 0);
}

TEST_F(CMChain, when_finished_hears_of_successes_and_failures)
{
    QStringList heard;
    const auto hear = [&](const CMReply<int>& reply) {
        heard << (reply.error().isSet() ? reply.error().name() : QString::number(reply.value()));
    };
    const auto failing = CMReply<int>::create();
    cmchain::whenFinished(m_inner, *m_context, hear);
    cmchain::whenFinished(failing, *m_context, hear);
    m_inner.setValue(3);
    failing.setError(refusal());
    EXPECT_EQ(heard, (QStringList{ QStringLiteral("3"), QStringLiteral("refused") }));
}

TEST_F(CMChain, when_finished_is_silent_once_its_context_has_died)
{
    int calls = 0;
    cmchain::whenFinished(m_inner, *m_context, [&](const CMReply<int>&) { ++calls; });
    dropContext();
    m_inner.setError(refusal());
    EXPECT_EQ(calls, 0);
}

TEST_F(CMChain, forward_completes_the_outer_reply_as_the_inner_one)
{
    const auto succeeding = CMReply<int>::create();
    const auto failing = CMReply<int>::create();
    cmchain::forward(m_inner, succeeding);
    const auto broken = CMReply<int>::create();
    cmchain::forward(broken, failing);
    m_inner.setValue(4);
    broken.setError(refusal());
    EXPECT_EQ(succeeding.value(), 4);
    EXPECT_EQ(failing.error(), refusal());
}

TEST_F(CMChain, a_chain_ends_with_the_first_error_of_its_steps)
{
    const auto second = CMReply<int>::create();
    const auto last = CMReply<QString>::create();
    cmchain::whenSucceeded(m_inner, last, *m_context, [&](int) {
        cmchain::whenSucceeded(
            second, last, *m_context, [&](int) { last.setValue(QStringLiteral("end")); });
    });
    m_inner.setValue(1);
    EXPECT_FALSE(last.isFinished());
    second.setError(refusal());
    EXPECT_EQ(last.error(), refusal());
}

TEST_F(CMChain, an_outer_reply_that_was_cancelled_meanwhile_stays_cancelled)
{
    cmchain::forward(m_inner, CMReply<int>(m_inner));
    const auto outer = CMReply<int>::create();
    cmchain::forward(m_inner, outer);
    outer.cancel();
    m_inner.setValue(1);
    EXPECT_EQ(outer.error(), CMVoidReply::ErrorCancel());
}

TEST_F(CMChain, continues_on_the_thread_that_made_the_chain)
{
    std::thread::id heardOn;
    cmchain::whenFinished(
        m_inner, *m_context, [&](const CMReply<int>&) { heardOn = std::this_thread::get_id(); });
    std::thread([this] { m_inner.setValue(1); }).join();
    ASSERT_TRUE(waitUntil([&] { return heardOn != std::thread::id(); }));
    EXPECT_EQ(heardOn, std::this_thread::get_id());
}

} // namespace
