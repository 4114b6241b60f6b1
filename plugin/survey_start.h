#pragma once

#include "plugin/state.h"

namespace pelagrim {

/// Starts the survey afresh on a receiver: reads settings, labels and results, drops what was
/// gathered, plans the slices and starts the first dwell wherever the receiver is tuned. Keeps what
/// the user was told about tuning, and the waiting messages. Needs the lock.
///
/// Throws nothing. If memory runs out while the settings or the labels are read, the settings keep
/// their values or there are no labels. If it runs out anywhere else, especially while the results
/// are read, nothing is gathered until the next start, so that no dwell can overwrite the results
/// file with less than it held.
void startSurvey(State& state, const Slice& slice) noexcept;

}  // namespace pelagrim
