#pragma once

#include "effect.h"
#include "httpmessage.h"

namespace emulator::faults {

/// The answer as an effect of the stage Bend leaves it. Effects on JSON leave other bodies alone.
http::Response bend(const Effect& effect, http::Response answer);

} // namespace emulator::faults
