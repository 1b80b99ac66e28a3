#pragma once

#include "cmpath.h"
#include "cmreply.h"
#include "tavuenums.h"
#include "tavuexport.h"
#include "tavuplaylogic.h"

/// The transport of whatever plays. Every command may be called on any thread and answers through
/// its reply: with an empty value, with a TavuActionReply, or with an error. A command given on the
/// play logic's own thread runs before it returns; from elsewhere commands run in the order given.
class TAVU_EXPORT PlayLogicInterface
{
public:
    virtual ~PlayLogicInterface();

    /// The play logic at `path`; null when there is none. Callable on any thread; the play logic
    /// lives as long as the worker that made it.
    static PlayLogicInterface* instance(const CMPath& path);

    virtual CMReply<QVariant> play(const TavuPlayLogicPlayArgs& args) = 0;
    virtual CMReply<QVariant> next() = 0;
    virtual CMReply<QVariant> previous() = 0;
    /// Pauses, or goes on when paused.
    virtual CMReply<QVariant> pause() = 0;
    virtual CMReply<QVariant> stop(TavuPlayLogicStopReason::Enum reason) = 0;
    /// Milliseconds; a position outside the item is moved to its nearer end.
    virtual CMReply<QVariant> seekTime(qint64 position) = 0;
    virtual CMReply<QVariant> like() = 0;
    virtual CMReply<QVariant> dislike() = 0;
};
