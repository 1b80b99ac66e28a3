#pragma once

#include "musicfile.h"

#include <optional>

namespace emulator::catalogue {

/// Keeps a scan between runs. A state of another root, of another version, or damaged in any way is
/// treated as none.
std::optional<ScanResult> loadScan(const QString& stateFile, const QString& root);

/// Writes the state so that a crash or a full disk leaves the old one. Returns what went wrong, for
/// people; empty on success.
QString saveScan(const QString& stateFile, const QString& root, const ScanResult& scan);

} // namespace emulator::catalogue
