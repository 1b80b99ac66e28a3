#pragma once

#include "fetchedbytes.h"
#include "streamfailure.h"

#include <QByteArray>

namespace player {

/// What a stream leaves to another one of the same item. A value.
struct StreamRemains
{
    FetchedBytes bytes;
    qint64 size = -1;
    QByteArray entityTag;
    QByteArray url;
    bool seekable = false;
    bool servesRanges = false;
    StreamFailure refusal; ///< Set when the server refused `url`.
};

} // namespace player
