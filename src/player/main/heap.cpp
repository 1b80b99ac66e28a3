#include "heap.h"

#include <QAbstractEventDispatcher>

#include <malloc.h>

namespace player {

namespace {

// Pieces of a stream, buffers of a transfer and answers of the service come and go, between small
// things that stay. In the heap they would leave gaps that the next ones do not fit into; pages of
// their own go back to the system. Without a word from us the first large one that is freed would
// raise the threshold for good. Decoded blocks are smaller: so many come at a track's start that
// fresh pages for each would delay it by two milliseconds.
constexpr int ownPagesFrom = 32 * 1024;

} // namespace

void setUpHeap()
{
    // Each track brings threads of its own. With heaps of their own they would leave gaps behind,
    // and none of them allocates so much that it had to wait for another.
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, ownPagesFrom);
}

HeapTrimmer::HeapTrimmer(int afterMs, QObject* parent)
    : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(afterMs);
    connect(&m_timer, &QTimer::timeout, this, &HeapTrimmer::trim);
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
        &HeapTrimmer::onAboutToBlock);
}

void HeapTrimmer::onAboutToBlock()
{
    if (!m_ownTurn && !m_timer.isActive())
        m_timer.start();
    m_ownTurn = false;
}

void HeapTrimmer::trim()
{
    malloc_trim(0);
    m_ownTurn = true;
    Q_EMIT trimmed();
}

} // namespace player
