#pragma once

#include <string>

namespace pelagrim {

/// The names of the survey's files in their directory.
inline constexpr const char* kSettingsName = "survey.cfg";
inline constexpr const char* kLabelsName = "survey-labels.txt";
inline constexpr const char* kResultsName = "survey.csv";

/// `name` in directory `dir`: joined by a slash unless `dir` is empty or already ends in a slash or
/// a backslash. Nothing is normalised.
std::string pathJoin(const std::string& dir, const std::string& name);

/// The directory of the survey's files: ORVANE_SURVEY_DIR as it is, else .orvane/pelagrim in HOME,
/// else the working directory. An empty variable counts as not set.
std::string surveyDir();

/// The same, and creates it if it is missing and lies in HOME. A failure is not reported: the files
/// are then not found and not written.
std::string resolveSurveyDir();

}  // namespace pelagrim
