#include "host/survey_dir/saved_survey.h"

#include <fmt/format.h>

#include <stdexcept>
#include <system_error>

#include "host/process/whole_file.h"
#include "host/survey_dir/safe_copy.h"
#include "host/survey_dir/survey_place.h"
#include "host/survey_dir/survey_settings.h"
#include "host/text/counted_text.h"

namespace pelagrim_host {

SurveyFiles readSurveyFiles(const std::filesystem::path& place) {
  std::error_code error;
  SurveyFiles survey;
  const bool is_directory = std::filesystem::is_directory(place, error);
  survey.results_path = is_directory ? resultsPath(place) : place;
  if (!std::filesystem::exists(survey.results_path, error)) {
    throw std::runtime_error(
        fmt::format("there is no survey at {}; name a survey directory or its survey.csv",
                    survey.results_path.string()));
  }
  if (is_directory || survey.results_path.filename() == "survey.csv") {
    auto results = readResults(survey.results_path.parent_path());
    survey.rows = parseSurveyRows(results.text);
    survey.is_copy = results.is_copy;
  } else {
    survey.rows = parseSurveyRows(readWholeFile(survey.results_path));
  }
  if (survey.rows.skipped_lines > 0 && survey.rows.channels.empty() && !survey.rows.has_header) {
    throw std::runtime_error(fmt::format(
        "{} is not a survey: it has neither a header nor a channel", survey.results_path.string()));
  }
  const auto directory = survey.results_path.parent_path();
  if (const auto text = readIfThere(labelsPath(directory))) {
    survey.band_plan = parseLabels(*text);
  }
  if (const auto settings = readSettings(directory)) survey.settings = settings->inForce();
  survey.memory = readMemory(directory);
  return survey;
}

std::vector<std::filesystem::path> pathsOf(const SurveyFiles& survey) {
  const auto directory = survey.results_path.parent_path();
  return {survey.results_path, resultsPath(directory), labelsPath(directory),
          settingsPath(directory)};
}

std::vector<std::string> surveyRemarks(const SurveyFiles& survey) {
  std::vector<std::string> remarks;
  const auto& [channels, is_older_format, has_header, skipped_lines, first_skipped_line] =
      survey.rows;
  const std::string path = survey.results_path.string();
  if (survey.is_copy) {
    remarks.push_back(
        fmt::format("{} is cut short; what is shown is the last complete list, which was kept "
                    "beside it",
                    path));
  }
  if (survey.timesAreGuesses()) {
    remarks.push_back(fmt::format(
        "{}: times are guesses by the age of the recording's file; survey it with --start-time",
        path));
  }
  const auto length_seconds = survey.memory ? survey.memory->length_seconds : std::nullopt;
  if (length_seconds && survey.settings && survey.settings->dwell_seconds > *length_seconds) {
    remarks.push_back(fmt::format(
        "{}: a dwell of {:.6g} s is longer than the recording, so a look is its {:.6g} s", path,
        survey.settings->dwell_seconds, *length_seconds));
  }
  if (skipped_lines > 0) {
    remarks.push_back(fmt::format("{}: skipped {} that could not be read, first line {}", path,
                                  countedText(skipped_lines, "line"), first_skipped_line));
  }
  if (channels.empty()) {
    remarks.push_back(fmt::format("{} holds no channels", path));
  } else if (is_older_format) {
    remarks.push_back(fmt::format(
        "{} is of an older format: its centres are shown as they are, half a bin too high", path));
  }
  return remarks;
}

}  // namespace pelagrim_host
