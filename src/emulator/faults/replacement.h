#pragma once

#include "effect.h"
#include "httpmessage.h"

#include <QString>

namespace emulator::faults {

/// The answer of an effect of the stage Replace. `serviceBase` is the scheme and authority by which
/// the peer reached the service, `target` the request's path and query as they were sent.
http::Response replacement(
    const Effect& effect, const QString& serviceBase, const QByteArray& target);

} // namespace emulator::faults
