#include "tavuenums.h"

#include <initializer_list>
#include <utility>

namespace {

QString nameOf(int value, std::initializer_list<std::pair<int, const char*>> names)
{
    for (const auto& [number, name] : names) {
        if (number == value)
            return QString::fromLatin1(name);
    }
    return QString::number(value);
}

} // namespace

QString TavuRolesType::toString(Enum value)
{
    return nameOf(value,
        { { None, "none" }, { Folder, "folder" }, { Playable, "playable" }, { Message, "message" },
            { Action, "action" }, { Link, "link" } });
}

QString TavuRolesAudioType::toString(Enum value)
{
    return nameOf(value, { { None, "none" }, { Tracks, "tracks" }, { Station, "station" } });
}

QString TavuRolesContainerType::toString(Enum value)
{
    return nameOf(
        value, { { None, "none" }, { Album, "album" }, { List, "list" }, { Search, "search" } });
}

QString TavuPlayLogicState::toString(Enum value)
{
    return nameOf(value,
        { { Idle, "idle" }, { Buffering, "buffering" }, { Playing, "playing" },
            { Paused, "paused" } });
}

QString TavuPlayerPlayMode::toString(Enum value)
{
    return nameOf(value,
        { { Normal, "normal" }, { Shuffle, "shuffle" }, { RepeatOne, "repeat one" },
            { ShuffleRepeatOne, "shuffle, repeat one" }, { RepeatAll, "repeat all" },
            { ShuffleRepeatAll, "shuffle, repeat all" } });
}
