#pragma once

#include <string>
#include <vector>

#include "host/survey_dir/saved_survey.h"

namespace CLI {
class App;
}

namespace pelagrim_host {

// The command line and the messages of the subcommands that read a saved survey.

/// Adds the argument SURVEY, which may be left out; see surveyPlace.
void addSurveyArgument(CLI::App& app, std::string& survey);

/// Parses; false when only the help text was asked for, which is printed. Throws UsageError.
bool parseArguments(CLI::App& app, int argc, const char* const* argv);

/// Says each remark on standard error.
void sayRemarks(const std::vector<std::string>& remarks);

/// Throws UsageError when `output` is a file of the survey: what was read, or the results, settings
/// or band plan of its directory, whether they are there or not.
void refuseSurveyFiles(const std::string& output, const SurveyFiles& survey);

}  // namespace pelagrim_host
