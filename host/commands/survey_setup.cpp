#include "host/commands/survey_setup.h"

#include <fmt/format.h>

#include <cmath>

#include "host/survey_dir/survey_place.h"
#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

// A simulated band costs computing time, not listening time, so its dwells are short.
constexpr double kSimulatedDwellSeconds = 5.0;

// Of the sample rate. From nine tenths on the plug-in plans a second slice, which a source that
// cannot be tuned never comes to. Without a sweep, channels beyond the limits are kept, too.
constexpr double kShareOfOneSlice = 0.89;

/// The plug-in's clock, which ends dwells, is no finer.
double wholeMilliseconds(double seconds) {
  return std::floor(seconds * 1000.0) / 1000.0;
}

/// The directory that is named after a source: "evening.survey" for evening.cu8. A live receiver
/// has none, so that this program and the receiver program share one survey.
std::optional<std::filesystem::path> directoryOfSource(const Options& options) {
  if (!options.device.empty()) return std::nullopt;
  if (options.source.empty()) return "simulated-band.survey";
  if (options.source == "-") return "standard-input.survey";
  return std::filesystem::path(options.source).stem().string() + ".survey";
}

SurveySettings changesAsked(const Options& options) {
  SurveySettings changes;
  if (options.band) {
    changes.start_hz = options.band->low_hz;
    changes.stop_hz = options.band->high_hz;
  }
  changes.threshold_db = options.threshold_db;
  changes.dwell_seconds = options.dwell_seconds;
  changes.raster_hz = options.raster_hz;
  changes.sweep = options.sweep;
  return changes;
}

}  // namespace

SurveySetup setUpSurvey(const Options& options) {
  SurveySetup setup;
  setup.directory = surveyPlace(options.survey_dir, directoryOfSource(options));
  setup.changes = changesAsked(options);
  const auto in_file = readSettings(setup.directory);
  setup.has_settings_file = in_file.has_value();
  setup.set = in_file.value_or(SurveySettings{}).changedBy(setup.changes);
  return setup;
}

void fitToSource(SurveySetup& setup, const Options& options, const IqSource& source) {
  if (setup.has_settings_file) return;
  SurveySettings fitting;
  if (options.isSimulated()) fitting.dwell_seconds = kSimulatedDwellSeconds;
  const auto stay_seconds = source.shortestStaySeconds();
  if (stay_seconds && *stay_seconds < pelagrim::Settings{}.dwell_seconds) {
    fitting.dwell_seconds = wholeMilliseconds(*stay_seconds);
  }
  // A band given by the user limits what is kept of a recording, which requires a sweep.
  if (!source.canTune() && !options.band) {
    fitting.start_hz = source.centreHz() - 0.5 * kShareOfOneSlice * source.sampleRateHz();
    fitting.stop_hz = source.centreHz() + 0.5 * kShareOfOneSlice * source.sampleRateHz();
    fitting.sweep = false;
  }
  setup.changes = fitting.changedBy(setup.changes);
  setup.set = setup.changes;
}

std::optional<std::string> bandMismatch(const pelagrim::Settings& settings,
                                        const IqSource& source) {
  if (source.canTune() || !settings.sweep) return std::nullopt;
  const double low_hz = source.centreHz() - 0.5 * source.sampleRateHz();
  const double high_hz = source.centreHz() + 0.5 * source.sampleRateHz();
  if (settings.start_hz <= high_hz && low_hz <= settings.stop_hz) return std::nullopt;
  return fmt::format(
      "survey.cfg asks for {} to {}, but {} covers {} to {}, so nothing will be kept; survey what "
      "is there with --fixed, or give --band",
      formatFrequency(settings.start_hz), formatFrequency(settings.stop_hz), source.name(),
      formatFrequency(low_hz), formatFrequency(high_hz));
}

std::optional<std::string> dwellMismatch(const pelagrim::Settings& settings,
                                         const IqSource& source) {
  const auto stay_seconds = source.shortestStaySeconds();
  if (!stay_seconds) return std::nullopt;
  const double fitting_seconds = wholeMilliseconds(*stay_seconds);
  if (wholeMilliseconds(settings.dwell_seconds) <= fitting_seconds) return std::nullopt;
  return fmt::format(
      "{} changes its centre after only {} s in places, which drops a dwell of {} s; give "
      "--dwell {}",
      source.name(), formatNumber(*stay_seconds), formatNumber(settings.dwell_seconds),
      formatNumber(fitting_seconds));
}

}  // namespace pelagrim_host
