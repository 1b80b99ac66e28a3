#pragma once

#include "cmreply.h"
#include "playerfacade.h"

#include <QTimer>

namespace player {

inline CMError noAnswer()
{
    CMError error(TrString(TrCharData(
        trExtractContext("player"), "The service has not answered in time. Please try again.")));
    error.setName(PlayerFacade::noAnswerName());
    return error;
}

/// Fails `reply` with noAnswer() when it is not finished in time. A plug-in may leave a request
/// unanswered; the one who asked hears of it all the same.
template <class T>
CMReply<T> withDeadline(const CMReply<T>& reply, int deadlineMs = PlayerFacade::answerDeadlineMs)
{
    auto* timer = new QTimer;
    timer->setSingleShot(true);
    QObject::connect(timer, &QTimer::timeout, timer, [reply, timer] {
        reply.setError(noAnswer());
        timer->deleteLater();
    });
    timer->start(deadlineMs);
    reply.addWatcher([timer](const CMVoidReply&) { timer->deleteLater(); });
    return reply;
}

} // namespace player
