#pragma once

#include <QByteArray>

namespace emulator::faults {

/// A gzip file that unpacks to so many mebibytes of blanks.
QByteArray gzipOfBlanks(qint64 megabytes);

} // namespace emulator::faults
