#include "host/commands/in_force_text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <vector>

#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

std::string namesOf(const SurveySettings& set) {
  std::vector<std::string> names;
  if (set.start_hz || set.stop_hz) names.emplace_back("band");
  if (set.sweep) names.emplace_back("sweep");
  if (set.dwell_seconds) names.emplace_back("dwell");
  if (set.threshold_db) names.emplace_back("threshold");
  if (set.raster_hz) names.emplace_back("raster");
  return fmt::format("{}", fmt::join(names, ", "));
}

}  // namespace

std::string inForceText(const pelagrim::Settings& settings, const SurveySettings& from_file,
                        const std::string& gain) {
  std::string text = settings.sweep
                         ? fmt::format("sweeps {} to {}", formatFrequency(settings.start_hz),
                                       formatFrequency(settings.stop_hz))
                         : "stays on its slice";
  text += fmt::format(", dwell {} s, threshold {} dB, raster {} kHz",
                      formatNumber(settings.dwell_seconds), formatNumber(settings.threshold_db),
                      formatNumber(settings.raster_hz / 1e3));
  if (const std::string names = namesOf(from_file); !names.empty()) {
    text += fmt::format(" ({} from survey.cfg)", names);
  }
  return gain.empty() ? text : text + ", " + gain;
}

std::string gainText(const std::optional<GainSetting>& gain) {
  if (!gain) return "gain left to the driver";
  if (gain->automatic) return "gain auto";
  if (gain->overall_db) return fmt::format("gain {} dB", formatNumber(*gain->overall_db));
  std::vector<std::string> stages;
  for (const auto& [stage, gain_db] : gain->stages_db) {
    stages.push_back(fmt::format("{} {} dB", stage, formatNumber(gain_db)));
  }
  return fmt::format("gain {}", fmt::join(stages, ", "));
}

}  // namespace pelagrim_host
