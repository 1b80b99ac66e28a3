#pragma once

#include <QVariant>

namespace player {

/// The last messages for people: what failed, what was skipped, what the service said.
class MessageLog
{
public:
    /// Adds a message and returns it, with its id and time. `rows` are those of the service's own
    /// screen, if it sent one.
    QVariantHash add(const QString& kind, const QString& title, const QString& text,
        const QString& source, const QVariantList& rows = {});
    /// Oldest first, 20 at the most.
    const QVariantList& messages() const { return m_messages; }

private:
    QVariantList m_messages;
    qint64 m_lastId = 0;
};

} // namespace player
