#pragma once

#include "documentbuilder.h"
#include "errorreports.h"
#include "trackwriter.h"

#include <optional>

namespace emulator::documents {

/// The section "Messages": everything that the service can tell the user, each kind once, so that
/// every screen of a player can be seen without turning the fault dial. Refers to what it is given.
class Messages
{
public:
    Messages(const catalogue::Catalogue& catalogue, const Rules& rules, const MediaUrls& media,
        const Moment& moment);

    QByteArray page() const;
    /// What stands below the section: a document, and the status to answer with.
    struct Answer
    {
        int status = 200;
        QByteArray document;
    };
    std::optional<Answer> folder(const QString& name) const;
    std::optional<Answer> chunk(const QString& name) const;

    /// The report with which the start of a track of this context is refused; nothing when it is
    /// accepted.
    std::optional<ErrorReport> startRefusal(const QString& context) const;
    /// Whether a rating in this context asks the player to skip.
    static bool skipsWhenRated(const QString& context);

private:
    ErrorReport report(const QString& name) const;
    QString addUnplayable(
        DocumentBuilder& builder, const QString& name, const QString& label) const;
    QString addPlaying(DocumentBuilder& builder, const QString& name, const QString& label,
        const catalogue::Track& track) const;
    QString addContainer(
        DocumentBuilder& builder, const QString& name, const QString& label, bool folder) const;
    const catalogue::Track* exampleTrack() const;
    QString postUrl(const QString& path) const { return m_moment.serviceBase + path; }

    const catalogue::Catalogue& m_catalogue;
    const Moment& m_moment;
    TrackWriter m_writer;
};

} // namespace emulator::documents
