#pragma once

#include "tavuevent.h"
#include "tavuhash.h"
#include "tavuroles.h"

/// What the player is to show after an action.
class TavuActionReply : public TavuHash
{
    TAVU_RECORD(TavuActionReply)
    /// The record's class, by which the player tells it from other answers: "TavuActionReply".
    TAVU_FIELD(QString, xclass, Xclass)
    TAVU_FIELD(TavuList<TavuEvent>, events, Events)
    /// The screen to go to; only its path counts.
    TAVU_FIELD(TavuRoles, result, Result)
};
