#pragma once

#include "tavuamazonmusic.h"
#include "tavuroles.h"
#include "tavuurl.h"

#include <QDateTime>
#include <QMetaType>
#include <QString>

/// One playable track as the service described it, with its places in the play queue. A value.
class AmazonMusicTrack
{
public:
    /// A track that is not set: no queue holds it.
    AmazonMusicTrack() = default;
    AmazonMusicTrack(
        int naturalId, int shuffleId, const TavuAmazonMusicTrackInstance& trackInstance);

    /// The place in the queue's natural order; -1 when the track never had one.
    int naturalId() const;
    /// The place in the queue's shuffled order; -1 when the track never had one.
    int shuffleId() const;
    TavuAmazonMusicTrackInstance trackInstance() const;

    /// Empties the track instance; the ids and the token stay.
    void clear();
    /// Whether there is a track instance.
    bool isSet() const;

    /// What a Widevine module shows when it asks for keys; empty until it is set.
    QString token() const;
    void setToken(const QString& token);

    /// Where the playback events of this track are reported; empty when the service wants none.
    TavuUrl eventCollectorUrl() const;
    /// Where a thumb for this track is sent; empty when it takes none.
    TavuUrl ratingUrl() const;

    /// Whether the stream asks for key headers.
    bool encrypted() const;
    /// Whether the stream's URL has stopped working by now.
    bool expired() const;
    /// The same, at `now`. At the very instant of its expiry a URL is still good.
    bool expiredAt(const QDateTime& now) const;

    /// The track as the streamer plays it.
    TavuRoles tavuRoles() const;

private:
    TavuAmazonMusicTrackDefinition definition() const;
    TavuAmazonMusicAudio audio() const;
    QDateTime expiry() const;
    QVariantHash cryptoData() const;
    TavuMetaData metaData() const;
    TavuResource resource() const;

    int m_naturalId = -1;
    int m_shuffleId = -1;
    TavuAmazonMusicTrackInstance m_trackInstance;
    QString m_token;
};

Q_DECLARE_METATYPE(AmazonMusicTrack)
