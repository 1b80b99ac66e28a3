#pragma once

#include "streamfailure.h"
#include "tavuroles.h"

#include <QByteArray>
#include <QList>

namespace player {

/// What to fetch for one item.
struct StreamRequest
{
    QByteArray url; ///< As it is sent; empty when it may not be asked.
    /// "Name: value", as a request carries them; for the origin of `url` alone.
    QList<QByteArray> keyHeaders;
    QString host;
    qint64 durationMs = 0; ///< 0 when it is not known.

    /// From the first resource of an item's media data. What is wrong with it goes to `failure`.
    static StreamRequest fromRoles(const TavuRoles& roles, StreamFailure& failure);
};

/// An attribute of items: true when their address replaced one that had expired.
QString renewedAttribute();

/// What to call the item when speaking to people.
QString itemTitle(const TavuRoles& roles);

} // namespace player
