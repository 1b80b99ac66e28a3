#pragma once

#include "score.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace emulator::samples {

/// Stereo sound: 16-bit samples, left and right in turn.
struct Sound
{
    int rate = 48000;
    std::vector<int16_t> samples;

    size_t frames() const { return samples.size() / 2; }
};

/// Sounds the score. The sound is exactly as long as the score, in frames rounded to the nearest;
/// what still rings at the end is faded out over the last `fadeSeconds`. The same score gives the
/// same samples.
Sound synthesize(const Score& score, int rate, double fadeSeconds);

/// The frames from `begin` to before `end`.
Sound cut(const Sound& sound, size_t begin, size_t end);

/// Where a beat begins in the sound, in frames.
size_t frameOfBeat(const Score& score, int rate, double beat);

} // namespace emulator::samples
