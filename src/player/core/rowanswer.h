#pragma once

#include "tavurowsroles.h"

#include <QStringList>
#include <QVariant>

namespace player {

/// The roles that the player asks of every row.
const QStringList& rowRoles();

/// What a plug-in answered to a rows request, as {"parent", "rows", "from", "count", "version"}. A
/// row that is not one value a requested role is left out: a plug-in's fault must not reach a
/// client.
QVariantHash rowAnswer(const TavuRowsRoles& answer, int from);

/// How a row is played: the row itself says what to play; how to fetch it is told by the same row,
/// as a stream of tracks when its first resource names a playable document. A row that carries its
/// track's own document is passed as it stands.
TavuRoles mediaRolesFor(const TavuRoles& row);

} // namespace player
