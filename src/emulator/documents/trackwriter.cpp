#include "trackwriter.h"

#include "links.h"

#include <QDateTime>

namespace emulator::documents {

using catalogue::Track;

namespace {

// Whether the place is one of each n-th, counted so that the first of a short album is not.
bool isEach(int n, int place)
{
    return n > 0 && place % n == n - 1;
}

QString serviceTime(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC)
        .toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss.zzz'Z'"));
}

template <typename Record>
Record named(const QString& name)
{
    Record record;
    record.setName(name);
    return record;
}

} // namespace

TavuAmazonMusicTrackPointer trackPointer(const QString& chunk, int index)
{
    TavuAmazonMusicTrackPointer pointer;
    pointer.setChunk(chunk);
    pointer.setIndexWithinChunk(index);
    return pointer;
}

TrackWriter::TrackWriter(const catalogue::Catalogue& catalogue, const Rules& rules,
    const MediaUrls& media, const Moment& moment)
    : m_catalogue(catalogue)
    , m_rules(rules)
    , m_media(media)
    , m_moment(moment)
{
}

bool TrackWriter::needsKeyHeaders(const Track& track) const
{
    return m_moment.keyHeadersForAll || isEach(m_rules.keyHeadersEvery, track.placeInAlbum);
}

bool TrackWriter::canBeRated(const Track& track) const
{
    return !isEach(m_rules.unratedEvery, track.placeInAlbum);
}

TavuAmazonMusicImage TrackWriter::image(const QString& path) const
{
    TavuAmazonMusicImage image;
    image.setUri(m_moment.mediaBase + path);
    return image;
}

TavuAmazonMusicImage TrackWriter::albumImage(const catalogue::Album& album) const
{
    return image(links::artwork(album.id));
}

TavuAmazonMusicImage TrackWriter::drawnImage(const QString& name) const
{
    return image(links::drawnArtwork(name));
}

TavuAmazonMusicTrackDefinition TrackWriter::definition(const Track& track) const
{
    const catalogue::Album& album = m_catalogue.albumOf(track);
    TavuAmazonMusicTrackDefinition definition;
    definition.setTitle(track.title);
    definition.setArtist(named<TavuAmazonMusicArtist>(track.artist));
    definition.setAlbum(named<TavuAmazonMusicAlbum>(album.title));
    definition.setDuration(track.durationMs);
    definition.setImage(albumImage(album));
    definition.setAutoSkipOnError(true);
    if (canBeRated(track)) {
        TavuAmazonMusicTrackRating rating;
        rating.setRatingURI(links::rating(track.id));
        definition.setTrackRating(rating);
    }
    return definition;
}

TavuAmazonMusicTrackDefinition TrackWriter::playableDefinition(const Track& track) const
{
    TavuAmazonMusicTrackDefinition playable = definition(track);
    playable.setAudio(audio(track));
    return playable;
}

TavuAmazonMusicAudio TrackWriter::audio(const Track& track) const
{
    const qint64 expires = m_moment.nowMs + m_moment.expiresAfterMs;
    const bool keyed = needsKeyHeaders(track);
    TavuAmazonMusicAudio audio;
    audio.setUri(m_moment.mediaBase + m_media.audio(track, expires, m_moment.expiredStatus, keyed));
    audio.setExpires(serviceTime(expires));
    if (keyed)
        audio.setHeaders(keyHeaders(track));
    return audio;
}

TavuAmazonMusicAudioHeaders TrackWriter::keyHeaders(const Track& track) const
{
    const auto header = [](const QString& name, const QString& value) {
        TavuAmazonMusicAudioHeader record;
        record.setName(name);
        record.setValue(value);
        return record;
    };
    TavuList<TavuAmazonMusicAudioHeader> list;
    list.append(header(MediaUrls::keyIdName(), m_media.keyId(track.id)));
    list.append(header(MediaUrls::keyName(), m_media.key(track.id)));
    TavuAmazonMusicAudioHeaders headers;
    headers.setKeyHeaders(list);
    return headers;
}

TavuAmazonMusicTrackInstance TrackWriter::instance(
    const Track& track, const QString& context, const QString& definition) const
{
    TavuAmazonMusicTrackInstance instance;
    instance.setTrackDefinition(definition);
    instance.setPlaybackEventCollector(links::events(track.id, context));
    instance.setSelfData(links::instance(track.id, context));
    return instance;
}

} // namespace emulator::documents
