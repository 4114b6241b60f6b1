#pragma once

#include "host/view/frame.h"
#include "host/view/live_state.h"

namespace pelagrim_host {

/// Adds what stands above the table: the source, its rate and centre; the dwell and the pass in
/// progress; the samples; the panel's summary and warnings.
void addHead(Frame& frame, const LiveState& state);

}  // namespace pelagrim_host
