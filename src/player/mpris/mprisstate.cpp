#include "mprisstate.h"

#include "tavuenums.h"

#include <QDBusObjectPath>
#include <QStringList>

namespace player::mpris {

namespace {

QVariant value(const QVariantHash& hash, const char* key)
{
    return hash.value(QString::fromLatin1(key));
}

QString text(const QVariantHash& hash, const char* key)
{
    return value(hash, key).toString();
}

bool isShuffle(int mode)
{
    return (mode & 1) != 0;
}

QString loopStatus(int mode)
{
    switch (mode) {
    case TavuPlayerPlayMode::RepeatOne:
    case TavuPlayerPlayMode::ShuffleRepeatOne:
        return QStringLiteral("Track");
    case TavuPlayerPlayMode::RepeatAll:
    case TavuPlayerPlayMode::ShuffleRepeatAll:
        return QStringLiteral("Playlist");
    default:
        return QStringLiteral("None");
    }
}

QString playbackStatus(PlayState state)
{
    switch (state) {
    case PlayState::Buffering:
    case PlayState::Playing:
        return QStringLiteral("Playing");
    case PlayState::Paused:
        return QStringLiteral("Paused");
    case PlayState::Idle:
        break;
    }
    return QStringLiteral("Stopped");
}

bool isWebAddress(const QString& uri)
{
    return uri.startsWith(QLatin1String("https://")) || uri.startsWith(QLatin1String("http://"));
}

QVariantMap metadata(const QVariantHash& player, int track)
{
    const auto noTrack = QStringLiteral("/org/mpris/MediaPlayer2/TrackList/NoTrack");
    const bool loaded = playStateOf(player) != PlayState::Idle;
    QVariantMap fields{ { QStringLiteral("mpris:trackid"),
        QVariant::fromValue(QDBusObjectPath(loaded ? trackId(track) : noTrack)) } };
    if (!loaded)
        return fields;
    fields.insert(QStringLiteral("xesam:title"), text(player, "title"));
    const QString artist = text(player, "artist");
    if (!artist.isEmpty())
        fields.insert(QStringLiteral("xesam:artist"), QStringList{ artist });
    const QString album = text(player, "album");
    if (!album.isEmpty())
        fields.insert(QStringLiteral("xesam:album"), album);
    const QString artwork = text(player, "artwork");
    if (isWebAddress(artwork))
        fields.insert(QStringLiteral("mpris:artUrl"), artwork);
    const QString rating = text(player, "rating");
    if (!rating.isEmpty())
        fields.insert(
            QStringLiteral("xesam:userRating"), rating == QLatin1String("up") ? 1.0 : 0.0);
    const qint64 duration = value(player, "duration").toLongLong();
    if (duration > 0)
        fields.insert(QStringLiteral("mpris:length"), duration * 1000);
    return fields;
}

double volume(const QVariantHash& player)
{
    return value(player, "mute").toBool() ? 0.0 : value(player, "volume").toInt() / 100.0;
}

} // namespace

PlayState playStateOf(const QVariantHash& player)
{
    const int state = value(player, "state").toInt();
    return state >= 0 && state <= 3 ? PlayState(state) : PlayState::Idle;
}

QString itemOf(const QVariantHash& player)
{
    if (playStateOf(player) == PlayState::Idle)
        return QString();
    // Durations are left out: one may become known while the item plays.
    return QStringList{ QStringLiteral("item"), text(player, "title"), text(player, "artist"),
        text(player, "album"), text(player, "artwork") }
        .join(QChar(0));
}

QString trackId(int track)
{
    return QStringLiteral("/org/tavu/track/%1").arg(track);
}

QVariantMap playerProperties(const QVariantHash& player, int track)
{
    const QVariantHash controls = value(player, "controls").toHash();
    const bool loaded = playStateOf(player) != PlayState::Idle;
    const int mode = value(player, "mode").toInt();
    return {
        { QStringLiteral("PlaybackStatus"), playbackStatus(playStateOf(player)) },
        { QStringLiteral("LoopStatus"), loopStatus(mode) },
        { QStringLiteral("Rate"), 1.0 },
        { QStringLiteral("Shuffle"), isShuffle(mode) },
        { QStringLiteral("Metadata"), metadata(player, track) },
        { QStringLiteral("Volume"), volume(player) },
        { QStringLiteral("MinimumRate"), 1.0 },
        { QStringLiteral("MaximumRate"), 1.0 },
        { QStringLiteral("CanGoNext"), loaded && value(controls, "next").toBool() },
        { QStringLiteral("CanGoPrevious"), loaded && value(controls, "previous").toBool() },
        { QStringLiteral("CanPlay"), loaded },
        { QStringLiteral("CanPause"), loaded && value(controls, "pause").toBool() },
        { QStringLiteral("CanSeek"), loaded && value(controls, "seek").toBool() },
        { QStringLiteral("CanControl"), true },
    };
}

int withLoopStatus(int mode, const QString& status)
{
    const int shuffle = isShuffle(mode) ? 1 : 0;
    if (status == QLatin1String("None"))
        return TavuPlayerPlayMode::Normal + shuffle;
    if (status == QLatin1String("Track"))
        return TavuPlayerPlayMode::RepeatOne + shuffle;
    if (status == QLatin1String("Playlist"))
        return TavuPlayerPlayMode::RepeatAll + shuffle;
    return mode;
}

int withShuffle(int mode, bool shuffle)
{
    return (mode & ~1) | (shuffle ? 1 : 0);
}

} // namespace player::mpris
