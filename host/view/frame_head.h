#pragma once

#include "host/view/frame.h"
#include "host/view/live_state.h"

namespace pelagrim_host {

/// Adds everything above the table: the source, its rate and centre; the current dwell and pass;
/// the samples; the panel's summary and warnings.
void addHead(Frame& frame, const LiveState& state);

}  // namespace pelagrim_host
