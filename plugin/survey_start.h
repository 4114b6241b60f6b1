#pragma once

#include "plugin/state.h"

namespace pelagrim {

/// Starts the survey afresh on a receiver: reads settings, labels and results, empties what was
/// gathered, plans the slices and starts the first dwell wherever the receiver is tuned. What the
/// user was told about tuning and the waiting messages stay. Needs the lock.
///
/// Nothing is thrown. Settings that cannot be read, for want of memory too, keep their values, and
/// of labels there are then none. When anything else fails for want of memory, above all the
/// reading of the results, nothing is gathered until the next start, so that no dwell can overwrite
/// the results file with less than it held.
void startSurvey(State& state, const Slice& slice) noexcept;

}  // namespace pelagrim
