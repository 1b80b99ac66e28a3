#include "heap.h"

#include <malloc.h>

namespace player {

// Decoded blocks, pieces of a stream and answers of the service come and go, between small things
// that stay. In the heap they would leave gaps that the next ones do not fit into; pages of their
// own go back to the system. Without a word from us the first large one that is freed would raise
// the threshold for good.
static const int ownPagesFrom = 16 * 1024;

void setUpHeap()
{
    // Each track brings threads of its own. With heaps of their own they would leave gaps behind,
    // and none of them allocates so much that it had to wait for another.
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, ownPagesFrom);
}

} // namespace player
