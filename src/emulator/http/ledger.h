#pragma once

#include <QString>
#include <QStringList>
#include <QVariantHash>
#include <QVariantList>

#include <deque>
#include <mutex>
#include <vector>

namespace emulator {

/// One request as the service received it. Secrets are left out or redacted before it comes here.
struct LedgerEntry
{
    qint64 serial = 0; ///< from 1, without gaps
    qint64 atMs = 0; ///< since the epoch
    QString kind; ///< browse, search, playable, chunk, instance, audio, artwork, report, ...
    QString method;
    QString path; ///< encoded
    QString query; ///< encoded, secrets redacted
    QString host;
    bool secure = false;
    int status = 0; ///< what was answered; 0: nothing yet, or never
    QString fault; ///< name of the rule that hit; empty: none
    QString effect; ///< kind of its effect
    QVariantHash details; ///< by kind: the report, the rating, the track, the range, ...
};

/// Every request, report, rating and login that the emulator received, in order. Keeps the newest
/// ones when it grows too long. Safe on every thread.
class Ledger
{
public:
    /// Takes the entry and gives its serial.
    qint64 add(const LedgerEntry& entry);
    /// Notes the answer of an entry; nothing when it is not kept any more.
    void answered(qint64 serial, int status);

    struct Filter
    {
        QStringList kinds; ///< empty: every kind
        qint64 since = 0; ///< entries after this serial
        int limit = 0; ///< the newest so many; 0: all
    };
    std::vector<LedgerEntry> entries(const Filter& filter) const;
    std::vector<LedgerEntry> entries() const { return entries(Filter()); }
    qint64 lastSerial() const;
    /// Forgets the entries; serials go on.
    void clear();

private:
    static constexpr size_t maxEntries = 50000;

    mutable std::mutex m_mutex;
    std::deque<LedgerEntry> m_entries;
    qint64 m_lastSerial = 0;
};

/// The entry as the ledger's JSON has it.
QVariantHash describe(const LedgerEntry& entry);

/// An encoded query with the values of secret items replaced.
QString redactQuery(const QString& query);

} // namespace emulator
