#pragma once

#include "clientview.h"
#include "pendinganswer.h"
#include "playerfacade.h"
#include "rowmemory.h"

#include <QObject>

namespace control {

/// What the groups of routes share. Outlives them.
struct ApiContext
{
    PlayerFacade& player;
    RowMemory& rows;
    ArtworkStore& artwork;
    const ClientView& view;
    /// Owns the answers that are awaited.
    QObject& owner;
    int deadlineMs;

    /// Answers when the reply has finished: `success` makes the answer, `failureStatus` is that of
    /// a failure.
    void answer(const http::Responder& responder, const CMReply<QVariant>& reply, int failureStatus,
        PendingAnswer::Success success) const
    {
        PendingAnswer::start(&owner, view, reply, responder,
            PendingAnswer::Terms{ deadlineMs, failureStatus }, std::move(success));
    }
};

} // namespace control
