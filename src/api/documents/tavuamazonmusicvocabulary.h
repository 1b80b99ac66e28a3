#pragma once

#include "tavuexport.h"

#include <QString>

// The words of the service's event collector, as this system writes and reads them: one table for
// the plug-in, the emulator and the tests. The naming is our own; docs/service-protocol.md has it.

/// Events of a playback event report.
struct TAVU_EXPORT TavuAmazonMusicEvent
{
    static QString Start() { return QStringLiteral("START"); }
    static QString Stop() { return QStringLiteral("STOP"); }
};

/// Why playback started or stopped.
struct TAVU_EXPORT TavuAmazonMusicEventReason
{
    enum Enum : int {
        TrackSelected = 0,
        ContainerSelected = 1,
        AutoNext = 2,
        Unpause = 3,
        TrackEnd = 4,
        Pause = 5,
        Stop = 6,
        Reserved7 = 7,
        Reserved8 = 8,
        Reserved9 = 9,
        Reserved10 = 10,
        Reserved11 = 11,
        Next = 12,
        Previous = 13,
        Seek = 14
    };

    static QString toString(Enum reason);
    static QString BufferUnderflow() { return QStringLiteral("BUFFER_UNDERFLOW"); }
};

/// A thumb.
struct TAVU_EXPORT TavuAmazonMusicThumbRating
{
    enum Enum : int { None = 0, Down = 1, Neutral = 2, Up = 3 };

    static QString toString(Enum rating);
};
