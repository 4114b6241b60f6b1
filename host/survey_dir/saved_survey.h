#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/survey_dir/band_labels.h"
#include "host/survey_dir/survey_memory.h"
#include "host/survey_dir/survey_rows.h"
#include "survey/settings.h"

namespace pelagrim_host {

/// A survey directory, or a survey.csv with the files beside it.
struct SurveyFiles {
  std::filesystem::path results_path;
  SurveyRows rows;
  std::vector<pelagrim::BandLabel> band_plan;  ///< empty if there is no such file
  bool is_copy = false;  ///< of the last complete list, because the results file is cut short
  std::optional<pelagrim::Settings> settings;  ///< nothing if there is no such file
  std::optional<SurveyMemory> memory;          ///< of the results file's directory, likewise

  /// Times were taken from the time stamp of a recording's file.
  bool timesAreGuesses() const { return memory && memory->start_is_guess; }
};

/// Reads the survey at `place`, a survey directory or a results file. Throws std::runtime_error,
/// naming the file, if there is none, if it cannot be read, or if it has lines but neither a header
/// nor a channel and so is something else.
SurveyFiles readSurveyFiles(const std::filesystem::path& place);

/// The results file that was read, and the results, settings and labels files of its directory,
/// whether they exist or not.
std::vector<std::filesystem::path> pathsOf(const SurveyFiles& survey);

/// One line for each thing that the reader of a report or an export should know: lines skipped,
/// centres of an older file, no channel at all.
std::vector<std::string> surveyRemarks(const SurveyFiles& survey);

}  // namespace pelagrim_host
