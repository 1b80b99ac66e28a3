#include "pluginhost.h"

#include "cmroot.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QTemporaryFile>
#include <QThread>

using player::PluginHost;

namespace {

/// Loads a plug-in and keeps what came of it.
struct Load
{
    explicit Load(const QString& file, int patienceMs = 10000)
    {
        host.setPatience(patienceMs);
        QObject::connect(&host, &PluginHost::ready, &host, [this] { ready = true; });
        QObject::connect(&host, &PluginHost::failed, &host, [this](const QString& text) {
            message = text;
            ++failures;
        });
        host.load(file, {});
    }

    bool finished() const { return ready || !message.isEmpty(); }

    PluginHost host;
    bool ready = false;
    QString message;
    int failures = 0;
};

TEST(PluginHost, runs_a_plugin_on_a_thread_of_its_own_and_mounts_it)
{
    Load load(QStringLiteral(PLUGIN_GOOD));
    ASSERT_TRUE(waitUntil([&] { return load.finished(); }));
    EXPECT_TRUE(load.ready) << load.message.toStdString();
    EXPECT_NE(load.host.worker()->thread(), QThread::currentThread());
    const CMGetDataRequest request(CMPath(QStringLiteral("/Good/nowhere")), {});
    CMRoot()->getDataRequest(request);
    ASSERT_TRUE(waitUntil([&] { return request.reply().isFinished(); }));
    EXPECT_EQ(
        request.reply().error().message(), QStringLiteral("There is nothing at /Good/nowhere."));
}

TEST(PluginHost, says_that_a_plugin_does_not_exist)
{
    Load load(QStringLiteral("/nowhere/plugin.so"));
    ASSERT_TRUE(waitUntil([&] { return load.finished(); }));
    EXPECT_TRUE(load.message.contains(QStringLiteral("/nowhere/plugin.so does not exist")));
    EXPECT_TRUE(load.message.contains(QStringLiteral("player.plugin")));
    EXPECT_EQ(load.host.worker(), nullptr);
}

TEST(PluginHost, says_that_a_file_is_no_library)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write("no library");
    file.flush();
    Load load(file.fileName());
    ASSERT_TRUE(waitUntil([&] { return load.finished(); }));
    EXPECT_TRUE(load.message.contains(QStringLiteral("cannot be loaded")));
}

TEST(PluginHost, says_that_a_library_is_no_plugin)
{
    Load load(QStringLiteral(PLUGIN_BARE));
    ASSERT_TRUE(waitUntil([&] { return load.finished(); }));
    EXPECT_TRUE(load.message.contains(QStringLiteral("has no function worker_create")));
}

TEST(PluginHost, loses_patience_with_a_plugin_that_hangs_in_its_constructor)
{
    CMReply<QVariant> gate;
    QObject context;
    CMRoot()->addService(CMPath(QStringLiteral("/test/gate")), &context,
        [&](const QVariant&, const CMReply<QVariant>& reply) { gate = reply; });
    Load load(QStringLiteral(PLUGIN_HANGING), 50);
    ASSERT_TRUE(waitUntil([&] { return load.finished(); }));
    EXPECT_TRUE(load.message.contains(QStringLiteral("has not finished starting within")));
    ASSERT_TRUE(waitUntil([&] { return !!gate.data(); }));
    EXPECT_EQ(load.host.worker(), nullptr);
    gate.setValue(QVariant());
    // It is not wanted any more.
    const CMPath ended(QStringLiteral("/test/ended"));
    ASSERT_TRUE(waitUntil([&] { return CMRoot()->getValue(ended).isValid(); }));
    EXPECT_EQ(load.host.worker(), nullptr);
    EXPECT_FALSE(load.ready);
    EXPECT_EQ(load.failures, 1);
}

} // namespace
