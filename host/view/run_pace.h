#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/session/survey_view.h"

namespace pelagrim_host {

/// How a run of a source of known length gets on.
struct RunPace {
  uint64_t wanted_samples = 0;      ///< of the source, or of the run if that is to end earlier
  double samples_per_second = 0.0;  ///< on average so far
  double seconds_left = 0.0;        ///< at that speed
};

/// `wall_seconds`: since the run began. Nothing if the source's length is not known, or if no
/// samples have come yet.
std::optional<RunPace> paceOf(const SurveyProgress& progress, double wall_seconds);

/// "3.0 of 60.0 s (5 %), 482 MS/s, 12 s left". `rate_hz`: the source's.
std::string paceText(const RunPace& pace, uint64_t samples, double rate_hz);

}  // namespace pelagrim_host
