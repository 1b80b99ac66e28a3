#pragma once

#include "tavuenums.h"
#include "tavuhash.h"
#include "tavuroles.h"

#include <QMetaType>

/// What a user can do with what plays now.
class TavuPlayLogicControls : public TavuHash
{
    TAVU_RECORD(TavuPlayLogicControls)
    TAVU_FIELD(bool, pause, Pause)
    TAVU_FIELD(bool, next, Next)
    TAVU_FIELD(bool, previous, Previous)
    TAVU_FIELD(bool, seekTime, SeekTime)
    TAVU_FIELD(bool, like, Like)
    TAVU_FIELD(bool, dislike, Dislike)
};

/// The play modes that make a difference to what plays now.
class TavuPlayLogicPlayModesSupported : public TavuHash
{
    TAVU_RECORD(TavuPlayLogicPlayModesSupported)
    TAVU_FIELD(bool, repeatOne, RepeatOne)
    TAVU_FIELD(bool, shuffle, Shuffle)
    TAVU_FIELD(bool, shuffleRepeatOne, ShuffleRepeatOne)
    TAVU_FIELD(bool, shuffleRepeatAll, ShuffleRepeatAll)
    TAVU_FIELD(bool, repeatAll, RepeatAll)
};

/// What a play logic plays, and how. The position is not in it: it changes all the time.
class TavuPlayLogicData : public TavuHash
{
    TAVU_RECORD(TavuPlayLogicData)
    TAVU_FIELD(TavuPlayLogicState::Enum, state, State)
    TAVU_FIELD(TavuPlayLogicControls, controls, Controls)
    TAVU_FIELD(TavuPlayLogicPlayModesSupported, playModesSupported, PlayModesSupported)
    /// The row that the play started from.
    TAVU_FIELD(TavuRoles, mediaRoles, MediaRoles)
    /// The item that plays, as the play command carried it or as it was renewed since.
    TAVU_FIELD(TavuRoles, trackRoles, TrackRoles)
};

/// A play command: media roles say how to fetch, track roles what to play.
class TavuPlayLogicPlayArgs : public TavuHash
{
    TAVU_RECORD(TavuPlayLogicPlayArgs)
    TAVU_FIELD(TavuRoles, mediaRoles, MediaRoles)
    /// May be empty: the media roles then say both.
    TAVU_FIELD(TavuRoles, trackRoles, TrackRoles)
};

class TavuPlayLogicSeekArgs : public TavuHash
{
    TAVU_RECORD(TavuPlayLogicSeekArgs)
    /// Milliseconds from the start of the item.
    TAVU_FIELD(qint64, seekTime, SeekTime)
};

/// A transport command as it travels to the play logic's node.
class TavuPlayLogicCommand : public TavuHash
{
    TAVU_RECORD(TavuPlayLogicCommand)
    /// "play", "next", "previous", "pause", "stop", "seekTime", "like" or "dislike".
    TAVU_FIELD(QString, command, Command)
    TAVU_FIELD(QVariantHash, args, Args)
};

Q_DECLARE_METATYPE(TavuPlayLogicData)
