#include "playLogicFixture.h"

#include <QFile>

#include <algorithm>
#include <cstdint>
#include <unistd.h>

// A track that repeats for days.

/// Address sanitizer: what is freed is not kept aside, so that growth is growth.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options()
{
    return "quarantine_size_mb=1:allocator_release_to_os_interval_ms=100";
}

namespace {

class AmazonMusicPlayLogicRepeatTest : public PlayLogicFixture
{
protected:
    static qint64 residentBytes()
    {
        QFile file(QStringLiteral("/proc/self/statm"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll().split(' ').at(1).toLongLong() * sysconf(_SC_PAGESIZE);
    }

    /// The track ends and begins again, as the streamer tells it.
    void repeat(int rounds)
    {
        for (int round = 0; round < rounds; ++round) {
            streamer().wantNextMedia();
            ASSERT_EQ(streamer().expect(Kind::SetNextMedia).roles.title(), playing());
            streamer().startNext();
            settle();
            streamer().forgetCommands();
        }
    }
};

TEST_F(AmazonMusicPlayLogicRepeatTest, StaysAsItIsOver100000Rounds)
{
    constexpr int rounds = 100000;
    constexpr int warmUp = 5000;
    Track silent{ QStringLiteral("0") };
    silent.reports = false; // They are a matter of the reporter.
    offer({ silent, Track{ QStringLiteral("1") } });
    setPlayMode(TavuPlayerPlayMode::RepeatOne);
    expectValue(playAlbum());
    streamer().expect(Kind::Play);
    streamer().startPresent();

    // How deep the stack is whenever a track is handed over.
    std::uintptr_t highest = 0;
    std::uintptr_t lowest = UINTPTR_MAX;
    QObject::connect(m_logic, &StreamerPlayLogic::playbackDataChanged, m_logic, [&] {
        // Addresses are compared, not followed.
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
        const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
        highest = std::max(highest, here);
        lowest = std::min(lowest, here);
    });
    repeat(warmUp);
    const qint64 before = residentBytes();
    repeat(rounds - warmUp);
    EXPECT_EQ(playing(), QStringLiteral("Title 0"));
    EXPECT_EQ(m_logic->state(), TavuPlayLogicState::Playing);
    EXPECT_TRUE(m_failures.isEmpty());
    EXPECT_LE(highest - lowest, 64U * 1024);
    EXPECT_LE(residentBytes() - before, 8 * 1024 * 1024);
}

} // namespace
