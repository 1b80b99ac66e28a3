#include "ledger.h"

#include <QDateTime>

#include <algorithm>

namespace emulator {

namespace {

const QString redacted = QStringLiteral("redacted");

bool isSecret(const QString& name)
{
    static const QStringList secrets{ QStringLiteral("signature"), QStringLiteral("user_code"),
        QStringLiteral("device_code"), QStringLiteral("code_verifier"), QStringLiteral("token"),
        QStringLiteral("access_token") };
    return secrets.contains(name);
}

void put(QVariantHash& fields, const char* name, const QString& value)
{
    if (!value.isEmpty())
        fields.insert(QLatin1String(name), value);
}

} // namespace

qint64 Ledger::add(const LedgerEntry& entry)
{
    const std::lock_guard lock(m_mutex);
    m_entries.push_back(entry);
    m_entries.back().serial = ++m_lastSerial;
    if (m_entries.size() > maxEntries)
        m_entries.pop_front();
    return m_lastSerial;
}

void Ledger::answered(qint64 serial, int status)
{
    const std::lock_guard lock(m_mutex);
    const auto entry = std::lower_bound(m_entries.begin(), m_entries.end(), serial,
        [](const LedgerEntry& each, qint64 wanted) { return each.serial < wanted; });
    if (entry != m_entries.end() && entry->serial == serial)
        entry->status = status;
}

std::vector<LedgerEntry> Ledger::entries(const Filter& filter) const
{
    const std::lock_guard lock(m_mutex);
    std::vector<LedgerEntry> found;
    for (const LedgerEntry& entry : m_entries) {
        if (entry.serial > filter.since
            && (filter.kinds.isEmpty() || filter.kinds.contains(entry.kind)))
            found.push_back(entry);
    }
    const auto limit = static_cast<size_t>(std::max(0, filter.limit));
    if (limit > 0 && found.size() > limit)
        found.erase(found.begin(), found.end() - static_cast<std::ptrdiff_t>(limit));
    return found;
}

qint64 Ledger::lastSerial() const
{
    const std::lock_guard lock(m_mutex);
    return m_lastSerial;
}

void Ledger::clear()
{
    const std::lock_guard lock(m_mutex);
    m_entries.clear();
}

QVariantHash describe(const LedgerEntry& entry)
{
    QVariantHash fields = entry.details;
    fields.insert(QStringLiteral("serial"), entry.serial);
    fields.insert(QStringLiteral("at"),
        QDateTime::fromMSecsSinceEpoch(entry.atMs, Qt::UTC).toString(Qt::ISODateWithMs));
    fields.insert(QStringLiteral("kind"), entry.kind);
    fields.insert(QStringLiteral("method"), entry.method);
    fields.insert(QStringLiteral("path"), entry.path);
    fields.insert(QStringLiteral("secure"), entry.secure);
    fields.insert(QStringLiteral("status"), entry.status);
    put(fields, "query", entry.query);
    put(fields, "host", entry.host);
    put(fields, "fault", entry.fault);
    put(fields, "effect", entry.effect);
    return fields;
}

QString redactQuery(const QString& query)
{
    QStringList items = query.split(QLatin1Char('&'));
    for (QString& item : items) {
        const QString name = item.section(QLatin1Char('='), 0, 0);
        if (isSecret(name))
            item = name + QLatin1Char('=') + redacted;
    }
    return items.join(QLatin1Char('&'));
}

} // namespace emulator
