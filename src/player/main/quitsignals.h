#pragma once

#include <QObject>

class QSocketNotifier;

namespace player {

/// Turns SIGINT and SIGTERM into a signal of the main thread's event loop. One per process.
class QuitSignals : public QObject
{
    Q_OBJECT

public:
    explicit QuitSignals(QObject* parent = nullptr);
    ~QuitSignals() override;

Q_SIGNALS:
    void quitRequested();

private:
    int m_ends[2] = { -1, -1 };
    QSocketNotifier* m_notifier = nullptr;
};

} // namespace player
