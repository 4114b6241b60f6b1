#pragma once

#include <string>
#include <vector>

#include "host/survey_dir/saved_survey.h"

namespace CLI {
class App;
}

namespace pelagrim_host {

// The common part of the commands that read a saved survey.

/// Adds the argument SURVEY, which may be left out; see readSurveyAsked.
void addSurveyArgument(CLI::App& app, std::string& survey);

/// Parses; false if only the help text was asked for, which is printed. Throws UsageError.
bool parseArguments(CLI::App& app, int argc, const char* const* argv);

/// Reads the survey that the argument names, or else the plug-in's own. Throws std::runtime_error.
SurveyFiles readSurveyAsked(const std::string& survey);

/// Prints each remark on standard error.
void sayRemarks(const std::vector<std::string>& remarks);

/// Throws UsageError if `output` is a file of the survey: the one that was read, or the results,
/// settings or band plan of its directory, whether they exist or not.
void refuseSurveyFiles(const std::string& output, const SurveyFiles& survey);

/// Writes `output`, keeps an older one as NAME~, and says so after the `summary` of what was
/// written: on standard output, or on standard error if the output itself goes to standard output.
/// Throws std::runtime_error.
void writeOutput(const std::string& output, const std::string& text, const std::string& summary);

}  // namespace pelagrim_host
