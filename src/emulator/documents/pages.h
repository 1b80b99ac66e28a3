#pragma once

#include "documentbuilder.h"
#include "trackwriter.h"

#include <functional>
#include <optional>

namespace emulator::documents {

/// Writes the browse pages for one answer. A page costs by the items on it, not by the library.
/// What names nothing gives no document. Refers to what it is given.
class Pages
{
public:
    using Document = std::optional<QByteArray>;

    Pages(const catalogue::Catalogue& catalogue, const Rules& rules, const MediaUrls& media,
        const Moment& moment);

    /// The sections. A notice stands first unless it is empty.
    QByteArray root(const QString& notice) const;
    QByteArray artists(int offset) const;
    QByteArray albums(int offset) const;
    QByteArray playlists(int offset) const;
    QByteArray stations(int offset) const;
    QByteArray tracks(int offset) const;
    Document artist(catalogue::Id id, int offset) const;
    Document album(catalogue::Id id, int offset) const;
    Document playlist(catalogue::Id id, int offset) const;

    /// `cursor` is empty, or taken from the next page's URL of an earlier answer.
    QByteArray search(const QString& keywords, const QString& cursor) const;

    /// The document of the playable alone; `folder` as in its URL.
    Document playable(const QString& folder, catalogue::Id id) const;

private:
    /// Adds item `i` of a list to a document and gives its reference.
    using AddItem = std::function<QString(DocumentBuilder&, int)>;

    QByteArray page(int count, int offset, const AddItem& add) const;
    QString addFolder(DocumentBuilder& builder, const QString& key, const QString& label,
        const QString& url) const;
    QString addArtist(DocumentBuilder& builder, const catalogue::Artist& artist) const;
    QString addAlbum(DocumentBuilder& builder, const catalogue::Album& album) const;
    QString addPlaylist(DocumentBuilder& builder, const catalogue::Playlist& playlist) const;
    QString addStation(DocumentBuilder& builder, const catalogue::Station& station) const;
    QString addTrack(DocumentBuilder& builder, const catalogue::Track& track, const QString& key,
        const TavuAmazonMusicTrackPointer& pointer) const;
    QString addTrack(DocumentBuilder& builder, const catalogue::Track& track) const;
    QString addHit(DocumentBuilder& builder, catalogue::Kind kind, int place) const;
    Document container(
        const QString& folder, catalogue::Id id, const catalogue::Places& places, int offset) const;
    TavuAmazonMusicPlayable containerPlayable(const QString& folder, catalogue::Id id) const;
    TavuAmazonMusicPlayable stationPlayable(const catalogue::Station& station) const;

    const catalogue::Catalogue& m_catalogue;
    const Rules& m_rules;
    TrackWriter m_writer;
};

/// An item that only says something.
QString addNote(DocumentBuilder& builder, const QString& key, const QString& label);

} // namespace emulator::documents
