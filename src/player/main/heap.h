#pragma once

#include <QObject>
#include <QTimer>

namespace player {

/// Settles how the process takes memory from the system, so that what it holds follows what it uses
/// over weeks. To be called once, before there are further threads.
void setUpHeap();

/// Gives the system back what lies free in the heap, a moment after the event loop of its thread
/// did something. Where nothing happens it does not wake the process.
class HeapTrimmer : public QObject
{
    Q_OBJECT

public:
    /// The thread has an event dispatcher. At most one trim in `afterMs` milliseconds.
    explicit HeapTrimmer(int afterMs = 2000, QObject* parent = nullptr);

Q_SIGNALS:
    void trimmed();

private:
    void onAboutToBlock();
    void trim();

    QTimer m_timer;
    bool m_ownTurn = false; // The loop did nothing but trim.
};

} // namespace player
