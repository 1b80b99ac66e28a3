#pragma once

#include "catalogue.h"
#include "musicfile.h"

namespace emulator::catalogue {

/// Sorts and indexes what a scan found. Files with a problem are left out. Takes time in proportion
/// to the library; call it on the scan's thread.
CataloguePointer buildCatalogue(const ScanResult& scan, int revision);

} // namespace emulator::catalogue
