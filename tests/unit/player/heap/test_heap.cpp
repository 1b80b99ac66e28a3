#include "heap.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <malloc.h>
#include <memory>
#include <sys/mman.h>
#include <vector>

namespace {

using Pieces = std::vector<std::vector<char>>;
constexpr std::size_t pageSize = 4096;

std::size_t piecesWithPagesOfTheirOwn()
{
    return mallinfo2().hblks;
}

bool isResident(std::uintptr_t page)
{
    unsigned char resident = 0;
    return mincore(reinterpret_cast<void*>(page), pageSize, &resident) == 0 && (resident & 1);
}

/// Pages from somewhere within pieces of the heap that are free now, with others behind them.
std::vector<std::uintptr_t> freedPages(Pieces& kept)
{
    std::vector<std::uintptr_t> pages;
    Pieces freed(64, std::vector<char>(pageSize * 2));
    kept.assign(8, std::vector<char>(pageSize * 2));
    for (const std::vector<char>& piece : freed)
        pages.push_back(
            (reinterpret_cast<std::uintptr_t>(piece.data()) + pageSize) & ~(pageSize - 1));
    return pages;
}

} // namespace

TEST(Heap, LargePiecesGetPagesOfTheirOwnAlthoughLargerOnesHaveComeAndGone)
{
    player::setUpHeap();
    Pieces(2, std::vector<char>(std::size_t{ 2 } << 20)).clear();
    const std::size_t before = piecesWithPagesOfTheirOwn();
    const Pieces pieces(64, std::vector<char>(pageSize * 8));
    // The first ones find room at the heap's end.
    EXPECT_GT(piecesWithPagesOfTheirOwn(), before + 48);
}

TEST(HeapTrimmer, GivesTheSystemBackWhatLiesFree)
{
    Pieces kept;
    const std::vector<std::uintptr_t> pages = freedPages(kept);
    ASSERT_GT(std::count_if(pages.begin(), pages.end(), &isResident), 48);
    const player::HeapTrimmer trimmer(1);
    QEventLoop loop;
    QObject::connect(&trimmer, &player::HeapTrimmer::trimmed, &loop, &QEventLoop::quit);
    loop.exec();
    // What the trimming itself needs may lie in one of them.
    EXPECT_LT(std::count_if(pages.begin(), pages.end(), &isResident), 8);
}

TEST(HeapTrimmer, SleepsWhereNothingHappens)
{
    const player::HeapTrimmer trimmer(1);
    int trims = 0;
    QObject::connect(&trimmer, &player::HeapTrimmer::trimmed, [&trims] { ++trims; });
    QEventLoop loop;
    QTimer::singleShot(300, &loop, &QEventLoop::quit);
    loop.exec();
    EXPECT_GE(trims, 1);
    EXPECT_LE(trims, 3);
}

TEST(HeapTrimmer, TrimsAgainAfterTheNextWork)
{
    const player::HeapTrimmer trimmer(1);
    QEventLoop loop;
    QObject::connect(&trimmer, &player::HeapTrimmer::trimmed, &loop, &QEventLoop::quit);
    for (int round = 0; round < 3; ++round)
        loop.exec();
}

TEST(HeapTrimmer, IsNotKeptFromItByWorkWithoutEnd)
{
    const player::HeapTrimmer trimmer(300);
    QTimer work;
    work.start(1);
    QEventLoop loop;
    QObject::connect(&trimmer, &player::HeapTrimmer::trimmed, &loop, &QEventLoop::quit);
    loop.exec();
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
