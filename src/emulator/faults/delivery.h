#pragma once

#include "effect.h"
#include "httpresponder.h"

#include <optional>

namespace emulator::faults {

/// What the service answers: a response at hand, or a file whose ranges are served.
struct Answer
{
    http::Response response;
    QString file; ///< empty: the response
    http::ContentInfo info; ///< of the file

    bool isFile() const { return !file.isEmpty(); }
};

/// Sends the answer as the effect wants it: bent, disturbed on its way, or not at all. Without an
/// effect it is sent as it is.
void deliver(const http::Responder& responder, Answer answer, const std::optional<Effect>& effect);

} // namespace emulator::faults
