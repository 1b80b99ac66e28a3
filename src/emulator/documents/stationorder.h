#pragma once

#include <QtGlobal>

namespace emulator::documents {

/// Which of a station's `poolSize` tracks plays at `position` (from 0, without end) in the session
/// of this seed: round after round each track once, every round in another order, and never the
/// same track twice in a row unless there is only one. Costs the same at every position.
int stationPlace(quint64 session, int poolSize, int position);

} // namespace emulator::documents
