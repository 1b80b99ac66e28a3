#include "tavuamazonmusicvocabulary.h"

QString TavuAmazonMusicEventReason::toString(Enum reason)
{
    switch (reason) {
    case TrackSelected:
        return QStringLiteral("TRACK_SELECTED");
    case ContainerSelected:
        return QStringLiteral("CONTAINER_SELECTED");
    case AutoNext:
        return QStringLiteral("AUTO_NEXT");
    case Unpause:
        return QStringLiteral("UNPAUSE");
    case TrackEnd:
        return QStringLiteral("TRACK_END");
    case Pause:
        return QStringLiteral("PAUSE");
    case Stop:
        return QStringLiteral("STOP");
    case Next:
        return QStringLiteral("NEXT");
    case Previous:
        return QStringLiteral("PREVIOUS");
    case Seek:
        return QStringLiteral("SEEK");
    case Reserved7:
    case Reserved8:
    case Reserved9:
    case Reserved10:
    case Reserved11:
        break;
    }
    return QStringLiteral("RESERVED_%1").arg(static_cast<int>(reason));
}

QString TavuAmazonMusicThumbRating::toString(Enum rating)
{
    switch (rating) {
    case None:
        return QStringLiteral("NONE");
    case Down:
        return QStringLiteral("DOWN");
    case Neutral:
        return QStringLiteral("NEUTRAL");
    case Up:
        return QStringLiteral("UP");
    }
    return QString::number(rating);
}
