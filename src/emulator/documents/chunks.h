#pragma once

#include "documentbuilder.h"
#include "trackwriter.h"

#include <functional>
#include <optional>

namespace emulator::documents {

/// Writes the documents that are played: chunks and single track instances, for one answer. What
/// names nothing gives no document. Refers to what it is given.
class Chunks
{
public:
    using Document = std::optional<QByteArray>;

    Chunks(const catalogue::Catalogue& catalogue, const Rules& rules, const MediaUrls& media,
        const Moment& moment);

    /// The whole album or playlist, or as much of it from `from` on as the limit lets through.
    Document album(catalogue::Id id, int from) const;
    Document playlist(catalogue::Id id, int from) const;
    /// A chunk of exactly one track.
    Document track(catalogue::Id id) const;
    /// Some of a station's tracks from `position` on in the order of the session.
    Document station(catalogue::Id id, quint64 session, int position) const;

    Document instance(catalogue::Id id, const QString& context) const;

private:
    /// Adds the tracks as definitions and instances; gives the references of the instances.
    QStringList addTracks(DocumentBuilder& builder, const QString& context, int first, int count,
        const std::function<int(int)>& placeOf) const;
    Document container(
        const QString& folder, catalogue::Id id, const catalogue::Places& places, int from) const;

    const catalogue::Catalogue& m_catalogue;
    const Rules& m_rules;
    TrackWriter m_writer;
};

} // namespace emulator::documents
