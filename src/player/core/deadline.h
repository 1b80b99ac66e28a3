#pragma once

#include "cmreply.h"

#include <QTimer>

namespace player {

/// No answer to a person takes longer: the plug-in gives up on the service after 30 s.
constexpr int answerDeadlineMs = 35000;

/// Fails `reply` when it is not finished in time. A plug-in may leave a request unanswered; the one
/// who asked hears of it all the same.
template <class T>
CMReply<T> withDeadline(const CMReply<T>& reply, int deadlineMs = answerDeadlineMs)
{
    auto* timer = new QTimer;
    timer->setSingleShot(true);
    QObject::connect(timer, &QTimer::timeout, timer, [reply, timer] {
        reply.setError(CMError(TrString(TrCharData(trExtractContext("player"),
            "The service has not answered in time. Please try again."))));
        timer->deleteLater();
    });
    timer->start(deadlineMs);
    reply.addWatcher([timer](const CMVoidReply&) { timer->deleteLater(); });
    return reply;
}

} // namespace player
