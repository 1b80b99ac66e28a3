#pragma once

namespace player {

/// A descriptor that becomes readable when the kernel's links or addresses change, and does not
/// block; -1 when it cannot be had. The caller closes it.
int openNetworkChanges();

/// Takes what has been told so far, so that the descriptor is quiet until the next change. What it
/// says is of no interest: that something has changed is enough.
void drainNetworkChanges(int descriptor);

} // namespace player
