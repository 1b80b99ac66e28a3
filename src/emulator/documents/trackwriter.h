#pragma once

#include "../catalogue/catalogue.h"
#include "mediaurls.h"
#include "rules.h"
#include "tavuamazonmusic.h"

namespace emulator::documents {

/// Where a track stands, as documents say it: a chunk and a place in it.
TavuAmazonMusicTrackPointer trackPointer(const QString& chunk, int index);

/// Writes the records of single tracks for one answer. Refers to what it is given.
class TrackWriter
{
public:
    TrackWriter(const catalogue::Catalogue& catalogue, const Rules& rules, const MediaUrls& media,
        const Moment& moment);

    /// As it stands in lists: without sound.
    TavuAmazonMusicTrackDefinition definition(const catalogue::Track& track) const;
    /// As it stands in chunks: with the address of the sound.
    TavuAmazonMusicTrackDefinition playableDefinition(const catalogue::Track& track) const;
    TavuAmazonMusicTrackInstance instance(
        const catalogue::Track& track, const QString& context, const QString& definition) const;

    TavuAmazonMusicImage albumImage(const catalogue::Album& album) const;
    TavuAmazonMusicImage drawnImage(const QString& name) const;

    bool needsKeyHeaders(const catalogue::Track& track) const;
    bool canBeRated(const catalogue::Track& track) const;

private:
    TavuAmazonMusicImage image(const QString& path) const;
    TavuAmazonMusicAudio audio(const catalogue::Track& track) const;
    TavuAmazonMusicAudioHeaders keyHeaders(const catalogue::Track& track) const;

    const catalogue::Catalogue& m_catalogue;
    const Rules& m_rules;
    const MediaUrls& m_media;
    const Moment& m_moment;
};

} // namespace emulator::documents
