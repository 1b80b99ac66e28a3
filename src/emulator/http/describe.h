#pragma once

#include "httpmessage.h"

#include <QVariantHash>

namespace emulator {

/// What the ledger tells of a request beyond its address, by kind: the fields of a report or a
/// rating, the range of a sound, the device's headers, the grant of a login. Never a secret.
QVariantHash describeRequest(const http::Request& request, const QString& kind);

} // namespace emulator
