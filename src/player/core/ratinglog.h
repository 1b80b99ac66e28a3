#pragma once

#include "tavuroles.h"

#include <QCache>

namespace player {

enum class Rating { Down, Up };

/// What the listener has said of tracks. The service does not tell it back, so the player remembers
/// it, for the latest 500 tracks and as long as it runs.
class RatingLog
{
public:
    RatingLog()
        : m_ratings(tracksAtMost)
    {
    }

    void rate(const TavuRoles& track, Rating rating)
    {
        m_ratings.insert(keyOf(track), new Rating(rating));
    }

    /// "up", "down", or empty for a track that was not rated.
    QString ratingOf(const TavuRoles& track) const
    {
        const Rating* rating = m_ratings.object(keyOf(track));
        if (!rating)
            return QString();
        return *rating == Rating::Up ? QStringLiteral("up") : QStringLiteral("down");
    }

private:
    static constexpr int tracksAtMost = 500;

    /// The same track has the same path whenever it plays; one without is told by what it shows.
    static QString keyOf(const TavuRoles& track)
    {
        const QString path = track.path().toEncoded();
        const TavuMetaData meta = track.mediaData().metaData();
        return path.isEmpty() ? track.title() + QChar(0) + meta.artist() + QChar(0) + meta.album()
                              : path;
    }

    QCache<QString, Rating> m_ratings;
};

} // namespace player
