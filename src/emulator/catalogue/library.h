#pragma once

#include "catalogue.h"
#include "scanner.h"

#include <QObject>

#include <atomic>
#include <memory>
#include <thread>

namespace emulator::catalogue {

/// The music folder as the service sees it: the newest catalogue, kept up by scans on a thread of
/// its own. Everything here is for the thread that made the library.
class Library : public QObject
{
    Q_OBJECT

public:
    /// `stateFile` keeps the scan between runs; empty keeps nothing.
    Library(const QString& root, const QString& stateFile, QObject* parent = nullptr);
    /// Stops a scan under way and waits for its thread.
    ~Library() override;

    /// Serves what the last run knew, then scans. While a scan runs a further call does nothing.
    void scan();

    /// Never null; empty before anything is known.
    CataloguePointer catalogue() const { return m_catalogue; }
    ScanStatus status() const { return m_status; }
    QString root() const { return m_root; }
    QString absolutePath(const QString& path) const;

Q_SIGNALS:
    void catalogueChanged();
    /// A scan has come to its end; the catalogue is complete.
    void scanned();
    /// The scan could not be kept for the next start; for people.
    void stateNotSaved(const QString& problem);

private:
    void scanOnThread();
    void take(const CataloguePointer& catalogue, const ScanStatus& status);

    QString m_root;
    QString m_stateFile;
    CataloguePointer m_catalogue;
    ScanStatus m_status;
    std::thread m_thread;
    std::atomic_bool m_stop{ false };
    bool m_scanning = false;
    std::atomic_int m_revision{ 0 };
};

} // namespace emulator::catalogue
