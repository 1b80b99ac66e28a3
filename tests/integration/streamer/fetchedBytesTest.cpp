#include "fetchedbytes.h"

#include <QByteArray>

#include <gtest/gtest.h>

namespace {

using player::ByteChunk;
using player::FetchedBytes;

constexpr qint64 block = FetchedBytes::blockSize;

/// A byte that tells its place.
char at(qint64 offset)
{
    return static_cast<char>(offset % 251);
}

QByteArray stretch(qint64 offset, qint64 size)
{
    QByteArray bytes;
    for (qint64 i = offset; i < offset + size; ++i)
        bytes.append(at(i));
    return bytes;
}

void put(FetchedBytes& bytes, qint64 offset, qint64 size)
{
    bytes.put(offset, stretch(offset, size).constData(), size);
}

QByteArray got(FetchedBytes& bytes, qint64 offset, qint64 size)
{
    QByteArray result;
    while (result.size() < size) {
        const ByteChunk chunk =
            bytes.get(offset + result.size(), static_cast<std::size_t>(size - result.size()));
        if (chunk.size == 0)
            break;
        result.append(reinterpret_cast<const char*>(chunk.bytes.get() + chunk.begin),
            static_cast<int>(chunk.size));
    }
    return result;
}

TEST(FetchedBytes, givesBackWhatWasPutAcrossItsBlocks)
{
    FetchedBytes bytes;
    put(bytes, 100, 3 * block);
    EXPECT_EQ(bytes.endOfRun(100), 100 + 3 * block);
    EXPECT_EQ(bytes.endOfRun(block + 7), 100 + 3 * block);
    EXPECT_EQ(got(bytes, 150, 2 * block), stretch(150, 2 * block));
}

TEST(FetchedBytes, hasNothingWhereNothingWasPut)
{
    FetchedBytes bytes;
    put(bytes, 1000, 10);
    for (const qint64 offset : { qint64{ 0 }, qint64{ 999 }, qint64{ 1010 }, 5 * block }) {
        EXPECT_EQ(bytes.endOfRun(offset), offset);
        EXPECT_EQ(bytes.get(offset, 1).size, 0U);
    }
}

TEST(FetchedBytes, joinsStretchesThatTouchOrOverlap)
{
    FetchedBytes bytes;
    put(bytes, 1000, 100);
    put(bytes, 1100, 100);
    put(bytes, 900, 100);
    put(bytes, 850, 500);
    EXPECT_EQ(bytes.endOfRun(850), 1350);
    EXPECT_EQ(got(bytes, 850, 500), stretch(850, 500));
}

TEST(FetchedBytes, leavesWhatIsBeingReadAsItWas)
{
    FetchedBytes bytes;
    put(bytes, 1000, 100);
    const ByteChunk held = bytes.get(1000, 100);
    bytes.put(1000, QByteArray(200, 'x').constData(), 200);
    put(bytes, 5000, 100); // Takes the first stretch's place.
    bytes.clear();
    EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(held.bytes.get() + held.begin), 100),
        stretch(1000, 100));
}

TEST(FetchedBytes, keepsTheLaterOfTwoStretchesInABlock)
{
    FetchedBytes bytes;
    put(bytes, 1000, 100);
    put(bytes, 5000, 100);
    EXPECT_EQ(bytes.endOfRun(1000), 1000);
    EXPECT_EQ(got(bytes, 5000, 100), stretch(5000, 100));
}

TEST(FetchedBytes, givesBackWhatWasUsedLongestAgoButNeverTheBeginning)
{
    FetchedBytes bytes;
    for (const qint64 number : { 0, 10, 20, 30, 40, 41 })
        put(bytes, number * block, 10);
    bytes.get(10 * block, 1);
    bytes.keepOnly(40 * block, 41 * block + 10, 2 * block);
    for (const qint64 number : { 0, 10, 30, 40, 41 })
        EXPECT_EQ(bytes.endOfRun(number * block), number * block + 10) << number;
    EXPECT_EQ(bytes.endOfRun(20 * block), 20 * block);
    EXPECT_EQ(bytes.footprint(), 5 * block);
    bytes.keepOnly(0, 0, 0);
    EXPECT_EQ(bytes.footprint(), block);
    EXPECT_EQ(bytes.endOfRun(0), 10);
}

} // namespace
