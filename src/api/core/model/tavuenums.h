#pragma once

#include "tavuexport.h"

#include <QString>

// The host's enumerations. Their numbers are part of the interface between host and plug-ins. A
// number that has no name here is kept as it is; toString() prints it in decimal.

/// What kind of row or node something is.
struct TAVU_EXPORT TavuRolesType
{
    enum Enum : int { None = 0, Folder = 1, Playable = 3, Message = 6, Action = 102, Link = 106 };
    static QString toString(Enum value);
};

/// How a row plays: as a bounded list of tracks, or as a stream of tracks without end.
struct TAVU_EXPORT TavuRolesAudioType
{
    enum Enum : int { None = 0, Tracks = 1, Station = 2 };
    static QString toString(Enum value);
};

/// What kind of container a folder is.
struct TAVU_EXPORT TavuRolesContainerType
{
    enum Enum : int { None = 0, Album = 2, List = 100, Search = 101 };
    static QString toString(Enum value);
};

/// How a container wants its rows shown.
struct TavuRowsRolesType
{
    enum Enum : int { List = 0 };
};

/// What an event of an action reply asks of the screen that sent the action.
struct TavuEventRowsType
{
    enum Enum : int { None = 0, Close = 1 };
};

/// How a client authenticates at an OAuth 2 token endpoint (RFC 6749, section 2.3.1).
struct TavuOAuth2AuthMethod
{
    enum Enum : int { Basic = 0, RequestBody = 1 };
};

/// Why a play logic is told to stop.
struct TavuPlayLogicStopReason
{
    enum Enum : int { Service = 0, User = 1, Replaced = 2 };
};

/// What a play logic is doing.
struct TAVU_EXPORT TavuPlayLogicState
{
    enum Enum : int { Idle = 0, Buffering = 1, Playing = 2, Paused = 3 };
    static QString toString(Enum value);
};

/// The player's play mode. Bit 0 is shuffle, 2 and 3 repeat one track, bit 2 repeats all.
struct TAVU_EXPORT TavuPlayerPlayMode
{
    enum Enum : int {
        Normal = 0,
        Shuffle = 1,
        RepeatOne = 2,
        ShuffleRepeatOne = 3,
        RepeatAll = 4,
        ShuffleRepeatAll = 5
    };
    static QString toString(Enum value);
};
