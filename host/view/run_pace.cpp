#include "host/view/run_pace.h"

#include <fmt/format.h>

#include <algorithm>

namespace pelagrim_host {
namespace {

/// "12 s", "3 min", "2.5 h".
std::string roundedTime(double seconds) {
  if (seconds < 100.0) return fmt::format("{:.0f} s", seconds);
  if (seconds < 6000.0) return fmt::format("{:.0f} min", seconds / 60.0);
  return fmt::format("{:.1f} h", seconds / 3600.0);
}

}  // namespace

std::optional<RunPace> paceOf(const SurveyProgress& progress, double wall_seconds) {
  if (!progress.wanted_samples || progress.samples == 0 || wall_seconds <= 0.0) return std::nullopt;
  RunPace pace;
  pace.wanted_samples = *progress.wanted_samples;
  if (progress.wanted_seconds) {
    const double limit = *progress.wanted_seconds * progress.rate_hz;
    // In this order, because the limit may be more than an integer holds.
    if (limit < static_cast<double>(pace.wanted_samples)) {
      pace.wanted_samples = static_cast<uint64_t>(limit);
    }
  }
  const uint64_t samples_left =
      pace.wanted_samples - std::min(pace.wanted_samples, progress.samples);
  pace.samples_per_second = static_cast<double>(progress.samples) / wall_seconds;
  pace.seconds_left = static_cast<double>(samples_left) / pace.samples_per_second;
  return pace;
}

std::string paceText(const RunPace& pace, uint64_t samples, double rate_hz) {
  const auto done = static_cast<double>(samples);
  const auto wanted = static_cast<double>(std::max<uint64_t>(pace.wanted_samples, 1));
  return fmt::format("{:.1f} of {:.1f} s ({:.0f} %), {:.3g} MS/s, {} left", done / rate_hz,
                     wanted / rate_hz, std::min(100.0, 100.0 * done / wanted),
                     pace.samples_per_second / 1e6, roundedTime(pace.seconds_left));
}

}  // namespace pelagrim_host
