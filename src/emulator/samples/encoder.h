#pragma once

#include "synthesizer.h"

#include "../catalogue/tagreader.h"

#include <QString>

namespace emulator::samples {

enum class Format { Flac, Opus, Mp3, M4a };

/// The usual suffix of a file of the format, without a dot.
QString suffixOf(Format format);

/// Encodes the sound into a new file. Blocks until it is written. Returns what went wrong, for
/// people; empty on success.
QString encode(const Sound& sound, Format format, const QString& file);

/// Writes tags, and a cover picture unless its bytes are empty, into a file made by encode().
/// Returns what went wrong; empty on success.
QString writeTags(const QString& file, Format format, const catalogue::Tags& tags,
    const catalogue::Picture& cover);

} // namespace emulator::samples
