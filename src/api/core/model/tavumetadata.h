#pragma once

#include "cmpath.h"
#include "tavuhash.h"

/// What an item is, and where the host finds the nodes that serve it.
class TavuMetaData : public TavuHash
{
    TAVU_RECORD(TavuMetaData)
    TAVU_FIELD(QString, serviceID, ServiceID)
    TAVU_FIELD(QString, artist, Artist)
    TAVU_FIELD(QString, album, Album)
    TAVU_FIELD(QString, track, Track)
    /// Milliseconds from the start of the item at which playback begins.
    TAVU_FIELD(qint64, startTime, StartTime)
    TAVU_FIELD(bool, allowSeekTime, AllowSeekTime)
    /// The node that takes a thumb for the item.
    TAVU_FIELD(CMPath, likeItPath, LikeItPath)
    TAVU_FIELD(CMPath, playLogicPath, PlayLogicPath)
    /// The node that renews the item's media data before it is played.
    TAVU_FIELD(CMPath, prePlayPath, PrePlayPath)
    TAVU_FIELD(QString, prePlayData, PrePlayData)
    /// Milliseconds; where the renewed item is to go on.
    TAVU_FIELD(qint64, prePlayTimeOffset, PrePlayTimeOffset)
};
