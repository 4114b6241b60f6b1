#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "plugin/message_log.h"
#include "survey/band_label.h"
#include "survey/settings.h"
#include "survey/slice.h"
#include "survey/slice_plan.h"
#include "survey/spectrum.h"
#include "survey/survey.h"
#include "survey/tune_refusal.h"

namespace pelagrim {

/// Everything that the plug-in remembers. There is only one State, and every handle is its address.
///
/// The invariants hold whenever an entry point returns, even after a failure: the buffers of
/// `spectrum` are all empty or all of 1024 entries, `plan.slice_index` is 0 or valid, `log` holds
/// at most 32 lines.
struct State {
  std::mutex mutex;  ///< guards all below; held by an entry point for its whole run
  Settings settings;
  std::string dir;  ///< of the survey's files; empty before the first create
  Survey survey;
  std::vector<BandLabel> labels;
  Slice slice;  ///< sample_rate_hz as given to create; centre_hz as last reported by the host
  Spectrum spectrum;
  int64_t dwell_start_ms = 0;  ///< host clock; 0: the dwell has no start and never times out
  SlicePlan plan;
  Tuning tuning;
  uint32_t dwells = 0;  ///< evaluated since create
  MessageLog log;
};

/// The one State, alive from load to unload.
extern State g_state;

}  // namespace pelagrim
