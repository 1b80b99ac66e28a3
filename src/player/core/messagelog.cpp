#include "messagelog.h"

#include <QDateTime>

namespace player {

namespace {

constexpr int messagesKept = 20;

} // namespace

QVariantHash MessageLog::add(const QString& kind, const QString& title, const QString& text,
    const QString& source, const QVariantList& rows)
{
    QVariantHash message{
        { QStringLiteral("id"), ++m_lastId },
        { QStringLiteral("at"), QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs) },
        { QStringLiteral("kind"), kind },
        { QStringLiteral("title"), title },
        { QStringLiteral("text"), text },
        { QStringLiteral("source"), source },
    };
    if (!rows.isEmpty())
        message.insert(QStringLiteral("rows"), rows);
    m_messages.append(message);
    if (m_messages.size() > messagesKept)
        m_messages.removeFirst();
    return message;
}

} // namespace player
