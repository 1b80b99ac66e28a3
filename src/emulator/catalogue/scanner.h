#pragma once

#include "musicfile.h"

#include <atomic>
#include <functional>
#include <optional>
#include <utility>

class QFileInfo;

namespace emulator::catalogue {

/// How far a scan has come.
struct ScanStatus
{
    enum class Phase {
        Looking, ///< listing the files
        Reading, ///< reading the tags of those that are new or changed
        Done
    };

    Phase phase = Phase::Looking;
    int found = 0; ///< music files in the folder
    int toRead = 0; ///< of these new or changed
    int read = 0;
    std::vector<std::pair<QString, QString>> problems; ///< path and reason, in the order of paths
};

/// Goes through a folder of music once. Blocks; runs on a thread of its own.
class Scanner
{
public:
    /// Called on the scanning thread whenever more of the library is known.
    using Report = std::function<void(const ScanResult&, const ScanStatus&)>;

    /// `stop` ends the scan early when it becomes true; it must outlive the scanner.
    Scanner(const QString& root, const std::atomic_bool& stop, Report report);

    /// Reads only files that differ in size or time from `known`. Reports in growing intervals and
    /// once at the end. Returns what is there; nothing when it was stopped.
    std::optional<ScanResult> run(const ScanResult& known);

private:
    void look();
    void visit(const QFileInfo& info, const QString& path);
    void takeKnown(const ScanResult& known);
    void readNew();
    void noteProblem(const MusicFile& file);
    void reportWhenDue();
    void report();

    QString m_root;
    const std::atomic_bool& m_stop;
    Report m_report;
    ScanResult m_result;
    ScanStatus m_status;
    std::vector<MusicFile> m_listed; ///< as found on the disk, without tags
    std::vector<MusicFile> m_new; ///< of these new or changed
    qint64 m_nextReportMs = 0;
};

} // namespace emulator::catalogue
