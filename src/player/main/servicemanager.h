#pragma once

#include <QByteArray>

namespace player {

/// Tells the service manager (systemd's sd_notify protocol) a state such as "READY=1"; nothing when
/// the process was not started by one that listens.
void tellServiceManager(const QByteArray& state);

} // namespace player
