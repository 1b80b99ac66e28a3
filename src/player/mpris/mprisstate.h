#pragma once

#include <QString>
#include <QVariantHash>
#include <QVariantMap>

/// The player's state in the words of MPRIS 2.2. Pure: values in, values out.
namespace player::mpris {

/// Values of "state" in PlayerFacade::player().
enum class PlayState { Idle = 0, Buffering = 1, Playing = 2, Paused = 3 };
PlayState playStateOf(const QVariantHash& player);

/// What tells one item from another; empty when nothing is loaded.
QString itemOf(const QVariantHash& player);

/// All properties of org.mpris.MediaPlayer2.Player but Position, as they go over the bus. `track`
/// counts the items that were played, and makes the track id.
QVariantMap playerProperties(const QVariantHash& player, int track);

/// The object path of the counted item.
QString trackId(int track);

/// The play mode (0 to 5) with another loop status or shuffle; the mode itself for a status that
/// MPRIS does not know.
int withLoopStatus(int mode, const QString& status);
int withShuffle(int mode, bool shuffle);

} // namespace player::mpris
