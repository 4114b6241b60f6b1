#include "host/commands/truth_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>

#include "host/commands/open_source.h"
#include "host/process/command_errors.h"
#include "host/process/whole_file.h"
#include "host/simulation/station_lines.h"
#include "host/text/counted_text.h"

namespace pelagrim_host {
namespace fs = std::filesystem;

namespace {

/// The whole path, links followed as far as there is something.
fs::path wholePath(const fs::path& path) {
  std::error_code error;
  return fs::weakly_canonical(fs::absolute(path, error), error);
}

}  // namespace

void requirePlaceForTruth(const Options& options, const SurveySetup& setup) {
  if (options.truth.empty()) return;
  if (options.truth == "-") {
    throw UsageError("--truth: name a file; standard output shows the survey");
  }
  std::error_code error;
  const fs::path file = wholePath(options.truth);
  // The survey's own directory may not be there yet, but will be.
  const bool is_in_survey = file.parent_path() == wholePath(setup.directory);
  if (is_in_survey && file.filename().string().starts_with("survey")) {
    throw UsageError(fmt::format(
        "--truth {}: that name belongs to the survey itself; choose another", options.truth));
  }
  if (fs::is_directory(file, error) ||
      !(is_in_survey || fs::is_directory(file.parent_path(), error))) {
    throw UsageError(fmt::format(
        "--truth: cannot write {}; name a file in a directory that is there", options.truth));
  }
}

void writeTruth(const Options& options, const SurveySetup& setup, const StartTime& start,
                uint64_t samples, SurveyView& view) {
  if (options.truth.empty()) return;
  const SimulatedBand band(simulatedBandConfig(options, setup.inForce()));
  const auto span_ms =
      static_cast<int64_t>(1000.0 * static_cast<double>(samples) / band.sampleRateHz());
  const std::string lines = truthLines(band.stations(), start.unix_ms, span_ms);
  const bool was_kept = replaceFileKeepingOld(options.truth, lines);
  view.note(fmt::format("{}: {}{}", options.truth,
                        countedText(std::count(lines.begin(), lines.end(), '\n'), "transmission"),
                        was_kept ? fmt::format("; the old file is now {}~", options.truth) : ""));
}

}  // namespace pelagrim_host
