#pragma once

#include <QString>
#include <QtGlobal>

namespace emulator::documents {

/// How the service writes its documents; the same for every answer of a run.
struct Rules
{
    int pageSize = 50; ///< items of a browse page
    int containerLimit = 500; ///< tracks of the chunk of an album or a playlist
    int stationChunk = 10; ///< tracks of a station's chunk
    int stationLength = 0; ///< tracks after which a station ends; 0: never
    int keyHeadersEvery = 4; ///< each n-th track of an album needs key headers; 0: none
    int unratedEvery = 5; ///< each n-th track of an album cannot be rated; 0: all can
    qint64 expiresAfterMs = 3600LL * 1000; ///< how long a stream address holds
};

/// What an answer needs to know of its request and its moment.
struct Moment
{
    qint64 nowMs = 0; ///< since the epoch
    qint64 expiresAfterMs = 0;
    int expiredStatus = 403; ///< what a stream address answers after that
    bool keyHeadersForAll = false;
    QString serviceBase; ///< scheme and authority by which the client reached the service
    QString mediaBase; ///< scheme and authority of pictures and sound
};

} // namespace emulator::documents
