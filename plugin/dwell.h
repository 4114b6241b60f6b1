#pragma once

#include "plugin/state.h"

namespace pelagrim {

/// Evaluates what the dwell has gathered: counts looks, merges detections, logs the dwell's line
/// and saves the survey; then clears the sum. Does nothing if no frame was gathered. Needs the
/// lock. Throws nothing: a dwell is dropped if memory runs out while it is evaluated.
void finishDwell(State& state) noexcept;

/// Ends the dwell when its time is up: evaluates it, steps to the next slice and starts the next
/// dwell at the same reading of the host's clock. Needs the lock. May throw what the host's clock
/// throws.
void endDwellWhenDue(State& state);

}  // namespace pelagrim
