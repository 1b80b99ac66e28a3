#pragma once

#include "tavuamazonmusic.h"
#include "tavuurl.h"

#include <QMetaType>
#include <QVector>

/// Tracks that the service listed together, and the way to those that follow. A value.
struct AmazonMusicRetrieverChunk
{
    /// In the service's order.
    QVector<TavuAmazonMusicTrackInstance> tracks;
    /// The place within `tracks` that the pointer to this chunk named.
    int index = 0;
    /// Names the chunk that follows and the place within it.
    TavuAmazonMusicTrackPointer nextTrackPointer;
    /// Where the chunk was fetched from; empty for a single track.
    TavuUrl chunkUrl;
    /// Where a single track was fetched from; empty for a chunk.
    TavuUrl trackUrl;
};

Q_DECLARE_METATYPE(AmazonMusicRetrieverChunk)
