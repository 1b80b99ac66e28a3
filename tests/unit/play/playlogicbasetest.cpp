#include "playlogicbase.h"

#include "cmnodes.h"
#include "printers.h"
#include "replies.h"
#include "tavuconnect.h"

#include <gtest/gtest.h>

#include <QThread>

#include <thread>

namespace {

/// Notes which operation was called, and answers with its name.
class Logic : public PlayLogicBase
{
public:
    using PlayLogicBase::PlayLogicBase;

    QStringList called;
    QThread* calledOn = nullptr;
    TavuPlayLogicPlayArgs playArgs;
    QVariantHash seekArgs;
    QVariant stopValue;

protected:
    void playInternal(const CMSetDataRequest& request, const TavuPlayLogicPlayArgs& args) override
    {
        playArgs = args;
        answer(request, "play");
    }
    void likeInternal(const CMSetDataRequest& request) override { answer(request, "like"); }
    void dislikeInternal(const CMSetDataRequest& request) override { answer(request, "dislike"); }
    void nextInternal(const CMSetDataRequest& request) override { answer(request, "next"); }
    void previousInternal(const CMSetDataRequest& request) override { answer(request, "previous"); }
    void pauseInternal(const CMSetDataRequest& request) override { answer(request, "pause"); }
    void stopInternal(const CMSetDataRequest& request) override
    {
        stopValue = request.value();
        answer(request, "stop");
    }
    void seekTimeInternal(const CMSetDataRequest& request, const QVariantHash& args) override
    {
        seekArgs = args;
        answer(request, "seekTime");
    }

private:
    void answer(const CMSetDataRequest& request, const char* name)
    {
        called << QString::fromLatin1(name);
        calledOn = QThread::currentThread();
        request.reply().setValue(called.last());
    }
};

class PlayLogicBaseTest : public ::testing::Test
{
protected:
    QVariant command(const QVariantHash& record)
    {
        const CMSetDataRequest request(m_path, record);
        m_logic->request(request);
        return expectValue(request.reply());
    }

    const CMPath m_path{ QStringLiteral("/s/playLogic") };
    CMSubscribe m_subscribe;
    CMNodes m_nodes{ &m_subscribe };
    Logic* m_logic = new Logic(&m_nodes, m_path);
    PlayLogicInterface* m_interface = PlayLogicInterface::instance(m_path);
};

TEST_F(PlayLogicBaseTest, is_the_node_and_the_instance_of_its_path)
{
    EXPECT_EQ(m_nodes.find(m_path), m_logic);
    EXPECT_EQ(m_interface, m_logic);
    EXPECT_EQ(PlayLogicInterface::instance(CMPath(QStringLiteral("/other"))), nullptr);
    EXPECT_EQ(
        PlayLogicInterface::instance(m_path.addParam(QStringLiteral("x"), QString())), m_logic);
}

TEST_F(PlayLogicBaseTest, there_is_no_instance_after_its_end)
{
    delete m_logic;
    EXPECT_EQ(PlayLogicInterface::instance(m_path), nullptr);
    EXPECT_EQ(m_nodes.find(m_path), nullptr);
}

TEST_F(PlayLogicBaseTest, a_successor_stays_the_instance_when_the_first_one_ends)
{
    auto* next = new Logic(&m_nodes, m_path);
    EXPECT_EQ(PlayLogicInterface::instance(m_path), next);
    delete m_logic;
    EXPECT_EQ(PlayLogicInterface::instance(m_path), next);
}

TEST_F(PlayLogicBaseTest, each_command_ends_in_its_operation_before_it_returns)
{
    const QList<CMReply<QVariant>> replies{ m_interface->play(TavuPlayLogicPlayArgs()),
        m_interface->next(), m_interface->previous(), m_interface->pause(),
        m_interface->stop(TavuPlayLogicStopReason::User), m_interface->seekTime(1),
        m_interface->like(), m_interface->dislike() };
    const QStringList expected{ QStringLiteral("play"), QStringLiteral("next"),
        QStringLiteral("previous"), QStringLiteral("pause"), QStringLiteral("stop"),
        QStringLiteral("seekTime"), QStringLiteral("like"), QStringLiteral("dislike") };
    EXPECT_EQ(m_logic->called, expected);
    for (int number = 0; number < replies.size(); ++number)
        EXPECT_EQ(replies.at(number).value().toString(), expected.at(number));
}

TEST_F(PlayLogicBaseTest, commands_carry_their_arguments)
{
    TavuRoles roles;
    roles.setTitle(QStringLiteral("t"));
    TavuPlayLogicPlayArgs args;
    args.setMediaRoles(roles);
    m_interface->play(args);
    m_interface->seekTime(1LL << 40);
    m_interface->stop(TavuPlayLogicStopReason::Replaced);
    EXPECT_EQ(m_logic->playArgs, args);
    EXPECT_EQ(TavuPlayLogicSeekArgs(m_logic->seekArgs).seekTime(), 1LL << 40);
    const TavuHash stopArgs(TavuPlayLogicCommand(m_logic->stopValue.toHash()).args());
    EXPECT_EQ(stopArgs.__value(QStringLiteral("reason")),
        QVariant(int(TavuPlayLogicStopReason::Replaced)));
}

TEST_F(PlayLogicBaseTest, commands_from_another_thread_run_in_order_on_the_nodes_thread)
{
    CMReply<QVariant> last;
    std::thread([&] {
        m_interface->next();
        m_interface->previous();
        last = m_interface->pause();
    }).join();
    EXPECT_TRUE(m_logic->called.isEmpty());
    EXPECT_EQ(expectValue(last).toString(), QStringLiteral("pause"));
    EXPECT_EQ(m_logic->called,
        (QStringList{
            QStringLiteral("next"), QStringLiteral("previous"), QStringLiteral("pause") }));
    EXPECT_EQ(m_logic->calledOn, QThread::currentThread());
}

TEST_F(PlayLogicBaseTest, takes_commands_as_set_data_requests)
{
    TavuPlayLogicCommand record;
    record.setCommand(QStringLiteral("next"));
    EXPECT_EQ(command(record.__hash()).toString(), QStringLiteral("next"));
}

TEST_F(PlayLogicBaseTest, refuses_what_is_no_command)
{
    TavuPlayLogicCommand unknown;
    unknown.setCommand(QStringLiteral("rewind"));
    for (const QVariant& value :
        { unknown.__variant(), QVariant(), QVariant(QStringLiteral("next")), QVariant(5) }) {
        const CMSetDataRequest request(m_path, value);
        m_logic->request(request);
        expectError(
            request.reply(), QStringLiteral("/s/playLogic does not answer such a request."));
    }
    EXPECT_TRUE(m_logic->called.isEmpty());
}

TEST_F(PlayLogicBaseTest, play_arguments_of_the_wrong_type_are_empty)
{
    command({ { TavuPlayLogicCommand::Command(), QStringLiteral("play") },
        { TavuPlayLogicCommand::Args(), QStringLiteral("nonsense") } });
    EXPECT_TRUE(m_logic->playArgs.isEmpty());
}

} // namespace
