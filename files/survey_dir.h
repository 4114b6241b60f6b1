#pragma once

#include <string>

namespace pelagrim {

/// `name` in directory `dir`: joined by a slash unless `dir` is empty or already ends in a slash or
/// a backslash. Nothing is normalised.
std::string pathJoin(const std::string& dir, const std::string& name);

/// The directory of the survey's files: ORVANE_SURVEY_DIR as it is, else .orvane/pelagrim in HOME,
/// which is created where it is missing, else the working directory. Failures to create it are
/// passed over: the files are then not found and not written.
std::string resolveSurveyDir();

}  // namespace pelagrim
