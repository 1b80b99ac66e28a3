#include "audiocontrol.h"
#include "fulldisk.h"
#include "printers.h"
#include "statekeeper.h"
#include "watchdog.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <atomic>
#include <mutex>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

std::mutex disk; // Held by who makes it slow.
std::atomic<int> waitsForDisk{ 0 };
const std::thread::id mainThread = std::this_thread::get_id();
std::atomic<bool> mainThreadWaited{ false };

} // namespace

/// Takes the place of the C library's for the whole program.
extern "C" int fsync(int descriptor)
{
    if (std::this_thread::get_id() == mainThread)
        mainThreadWaited = true;
    ++waitsForDisk;
    const std::lock_guard<std::mutex> slow(disk);
    return int(syscall(SYS_fsync, descriptor));
}

namespace {

class Sound : public AudioControl
{
public:
    int volume() const override { return m_volume; }
    void setVolume(int volume) override
    {
        m_volume = volume;
        Q_EMIT volumeChanged();
    }
    bool muted() const override { return false; }
    void setMuted(bool) override { }
    void setFade(double) override { }
    QVariantList outputs() const override { return {}; }
    bool selectOutput(const QString&) override { return false; }
    QString selectedOutput() const override { return {}; }
    QVariantHash soundPath() const override { return {}; }

private:
    int m_volume = 100;
};

class Keeping : public ::testing::Test
{
protected:
    Keeping() { mainThreadWaited = false; }

    std::unique_ptr<player::StateKeeper> begin()
    {
        auto keeper = std::make_unique<player::StateKeeper>(
            &player, file, QStringLiteral("https://music.example/"));
        keeper->restore();
        keeper->begin();
        return keeper;
    }
    /// On the disk; -1 for none.
    int keptVolume() const
    {
        QString complaint;
        const auto state = player::StateFile(file).load(&complaint);
        return state ? state->volume() : -1;
    }

    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("state.json"));
    Sound sound;
    player::Player player{ &sound };
};

TEST_F(Keeping, a_slow_disk_holds_up_nobody_and_gets_the_last_of_many_changes)
{
    const auto keeper = begin();
    std::unique_lock<std::mutex> slow(disk);
    waitsForDisk = 0;
    player.setVolume(10);
    ASSERT_TRUE(waitUntil([] { return waitsForDisk == 1; }));
    for (const int volume : { 20, 30, 40 })
        player.setVolume(volume);
    settle();
    EXPECT_EQ(waitsForDisk, 1);
    slow.unlock();
    EXPECT_TRUE(waitUntil([this] { return keptVolume() == 40; }));
    EXPECT_FALSE(mainThreadWaited);
}

TEST_F(Keeping, the_end_writes_what_has_not_been_written)
{
    auto keeper = begin();
    player.setVolume(70);
    keeper.reset();
    EXPECT_EQ(keptVolume(), 70);
}

TEST_F(Keeping, a_full_disk_is_told_and_what_it_missed_is_written_when_there_is_room)
{
    const auto keeper = begin();
    {
        const FullDisk full(1);
        player.setVolume(50);
        ASSERT_TRUE(waitUntil([this] { return player.messages().size() == 1; }));
        player.setVolume(51);
    }
    EXPECT_TRUE(waitUntil([this] { return keptVolume() == 51; }));
    EXPECT_EQ(player.messages().size(), 1);
    const QVariantHash message = player.messages().last().toHash();
    EXPECT_EQ(message.value(QStringLiteral("title")), QStringLiteral("The state cannot be saved"));
}

} // namespace
