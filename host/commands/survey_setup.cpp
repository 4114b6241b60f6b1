#include "host/commands/survey_setup.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <system_error>

#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

constexpr double kDefaultStartHz = 144e6;  // the plug-in's, for keys that survey.cfg lacks
constexpr double kDefaultStopHz = 146e6;

// A simulated band takes computing time rather than listening time, so the dwells are short ones.
constexpr double kSimulatedDwellSeconds = 5.0;

/// The plug-in's clock, by which dwells end, has no more.
double wholeMilliseconds(double seconds) {
  return std::floor(seconds * 1000.0) / 1000.0;
}

}  // namespace

std::filesystem::path chooseSurveyDirectory(const Options& options, const char* from_environment,
                                            const std::string& fallback) {
  if (!options.survey_dir.empty()) return options.survey_dir;
  if (from_environment != nullptr && *from_environment != '\0') return from_environment;
  return fallback;
}

bool createSurveyDirectory(const std::filesystem::path& survey_dir) {
  std::error_code error;
  const bool created = std::filesystem::create_directories(survey_dir, error);
  if (error || !std::filesystem::is_directory(survey_dir)) {
    throw std::runtime_error(
        fmt::format("cannot create the survey directory {}: {}; name another "
                    "with --dir",
                    survey_dir.string(), error ? error.message() : "it is a file"));
  }
  if (access(survey_dir.c_str(), W_OK | X_OK) != 0) {
    throw std::runtime_error(
        fmt::format("cannot write to the survey directory {}; name another "
                    "with --dir",
                    survey_dir.string()));
  }
  return created;
}

std::vector<SettingEdit> settingsAsked(const Options& options) {
  std::vector<SettingEdit> edits;
  const auto set = [&edits](const char* key, std::optional<double> value) {
    if (value) edits.push_back({key, formatNumber(*value)});
  };
  if (options.band) {
    set("start", options.band->low_hz);
    set("stop", options.band->high_hz);
  }
  set("threshold_db", options.threshold_db);
  set("dwell_seconds", options.dwell_seconds);
  set("raster_hz", options.raster_hz);
  if (options.sweep) edits.push_back({"sweep", *options.sweep ? "yes" : "no"});
  return edits;
}

std::vector<SettingEdit> settingsForSource(const Options& options, const IqSource& source,
                                           const std::vector<SettingEdit>& asked) {
  std::vector<SettingEdit> edits;
  const auto set = [&](const char* key, const std::string& value) {
    const auto is_key = [key](const SettingEdit& edit) { return edit.key == key; };
    if (std::none_of(asked.begin(), asked.end(), is_key)) edits.push_back({key, value});
  };
  if (options.isSimulated()) set("dwell_seconds", formatNumber(kSimulatedDwellSeconds));
  const auto stay_seconds = source.shortestStaySeconds();
  if (stay_seconds && *stay_seconds < kDefaultDwellSeconds) {
    set("dwell_seconds", formatNumber(wholeMilliseconds(*stay_seconds)));
  }
  // A band that the user gives limits what is kept of a recording, which takes a sweep.
  if (!source.canTune() && !options.band) {
    set("start", formatNumber(source.centreHz() - 0.5 * source.sampleRateHz()));
    set("stop", formatNumber(source.centreHz() + 0.5 * source.sampleRateHz()));
    set("sweep", "no");
  }
  return edits;
}

std::optional<std::string> bandMismatch(const std::string& settings, const IqSource& source) {
  if (source.canTune() || !asksToSweep(settings)) return std::nullopt;
  const double start_hz = findNumber(settings, "start").value_or(kDefaultStartHz);
  const double stop_hz = findNumber(settings, "stop").value_or(kDefaultStopHz);
  const double low_hz = source.centreHz() - 0.5 * source.sampleRateHz();
  const double high_hz = source.centreHz() + 0.5 * source.sampleRateHz();
  if (start_hz <= high_hz && low_hz <= stop_hz) return std::nullopt;
  return fmt::format(
      "survey.cfg asks for {} to {}, but {} covers {} to {}, so nothing will be kept; survey what "
      "is there with --fixed, or give --band",
      formatFrequency(start_hz), formatFrequency(stop_hz), source.name(), formatFrequency(low_hz),
      formatFrequency(high_hz));
}

std::optional<std::string> dwellMismatch(const std::string& settings, const IqSource& source) {
  const auto stay_seconds = source.shortestStaySeconds();
  const double dwell_seconds = findNumber(settings, "dwell_seconds").value_or(kDefaultDwellSeconds);
  if (!stay_seconds) return std::nullopt;
  const double fitting_seconds = wholeMilliseconds(*stay_seconds);
  if (wholeMilliseconds(dwell_seconds) <= fitting_seconds) return std::nullopt;
  return fmt::format(
      "{} goes on at another centre after {} s in places, and a dwell of {} s that this cuts off "
      "is "
      "dropped; give --dwell {}",
      source.name(), formatNumber(*stay_seconds), formatNumber(dwell_seconds),
      formatNumber(fitting_seconds));
}

}  // namespace pelagrim_host
