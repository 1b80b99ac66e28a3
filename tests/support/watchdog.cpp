#include "watchdog.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QThread>

bool waitUntil(const std::function<bool()>& state, int watchdogMs)
{
    QElapsedTimer watchdog;
    watchdog.start();
    while (!state()) {
        if (watchdog.elapsed() > watchdogMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QThread::usleep(200);
    }
    return true;
}

void settle()
{
    for (int round = 0; round < 10; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}
