#include "heap.h"

#include <gtest/gtest.h>

#include <malloc.h>
#include <vector>

using Pieces = std::vector<std::vector<char>>;

static std::size_t piecesWithPagesOfTheirOwn()
{
    return mallinfo2().hblks;
}

TEST(Heap, LargePiecesGetPagesOfTheirOwnAlthoughLargerOnesHaveComeAndGone)
{
    player::setUpHeap();
    Pieces(2, std::vector<char>(std::size_t{ 2 } << 20)).clear();
    const std::size_t before = piecesWithPagesOfTheirOwn();
    const Pieces decoded(64, std::vector<char>(std::size_t{ 4096 } * 4));
    // The first ones find room at the heap's end.
    EXPECT_GT(piecesWithPagesOfTheirOwn(), before + 48);
}
