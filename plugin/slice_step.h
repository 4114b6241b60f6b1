#pragma once

#include "plugin/state.h"

namespace pelagrim {

/// Asks the host to move the receiver to the next slice, if the survey sweeps over more than one
/// and the host can tune. Tells the user once when it refuses and once when it accepts again. The
/// centre does not change here; the host reports that. Needs the lock. Throws nothing.
void stepSlice(State& state) noexcept;

}  // namespace pelagrim
