#pragma once

#include "../catalogue/library.h"
#include "../documents/mediaurls.h"
#include "../documents/rules.h"
#include "call.h"
#include "gateway.h"

#include <QCache>

namespace emulator {

/// The music service itself: what it answers to each kind of request. Lives in the server's thread.
class MusicService
{
public:
    MusicService(catalogue::Library& library, const documents::Rules& rules,
        const QByteArray& secret, quint64 seed);

    void addRoutes(Gateway& gateway);
    /// Adds what the catalogue knows of the request's track to the ledger's details.
    void annotate(const http::Request& request, QVariantHash& details) const;
    documents::Rules& rules() { return m_rules; }

private:
    faults::Answer root(Call& call);
    faults::Answer section(Call& call);
    faults::Answer folder(Call& call);
    faults::Answer search(Call& call);
    faults::Answer playable(Call& call);
    faults::Answer chunk(Call& call);
    faults::Answer instance(Call& call);
    faults::Answer audio(Call& call);
    faults::Answer albumArtwork(Call& call);
    faults::Answer drawnArtwork(Call& call);
    faults::Answer report(Call& call);
    faults::Answer rating(Call& call);
    faults::Answer accepted(Call& call);

    faults::Answer browsePage(Call& call, const std::optional<QByteArray>& page) const;
    faults::Answer stationChunk(Call& call, catalogue::Id id);
    faults::Answer messageAnswer(Call& call);
    faults::Answer drawn(const QString& name);
    documents::Moment prepared(const Call& call) const;
    QByteArray tagOf(const Call& call) const;
    QString notice() const;

    catalogue::Library& m_library;
    documents::Rules m_rules;
    documents::MediaUrls m_media;
    quint64 m_seed;
    quint64 m_sessions = 0; ///< stations started so far
    QCache<QString, QByteArray> m_drawn; ///< pictures by name
};

} // namespace emulator
