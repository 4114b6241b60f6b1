#include "host/commands/saved_survey_arguments.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "host/commands/argument_checks.h"
#include "host/process/command_errors.h"
#include "host/process/text_output.h"
#include "host/process/whole_file.h"
#include "host/survey_dir/survey_place.h"
#include "host/text/display_text.h"

namespace pelagrim_host {
namespace {

/// Whether a name such as /dev/stdout leads to where standard output goes.
bool isStandardOutput(const std::string& path) {
  struct stat named = {};
  struct stat standard = {};
  return stat(path.c_str(), &named) == 0 && fstat(STDOUT_FILENO, &standard) == 0 &&
         named.st_dev == standard.st_dev && named.st_ino == standard.st_ino;
}

}  // namespace

void addSurveyArgument(CLI::App& app, std::string& survey) {
  app.add_option("SURVEY", survey,
                 "A survey directory or its survey.csv; without it $ORVANE_SURVEY_DIR,\n"
                 "else ~/.orvane/pelagrim, where the receiver's plug-in keeps its own")
      ->check(notEmpty)
      ->type_name("");
}

bool parseArguments(CLI::App& app, int argc, const char* const* argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    TextOutput(stdout).write(app.help());
    return false;
  } catch (const CLI::ParseError& error) {
    throw UsageError(fmt::format("{}; see {} --help", error.what(), app.get_name()));
  }
  return true;
}

void sayRemarks(const std::vector<std::string>& remarks) {
  TextOutput complaints(stderr);
  for (const std::string& remark : remarks) {
    complaints.write(fmt::format("pelagrim-survey: {}\n", displayText(remark)));
  }
}

SurveyFiles readSurveyAsked(const std::string& survey) {
  return readSurveyFiles(surveyPlace(survey));
}

void refuseSurveyFiles(const std::string& output, const SurveyFiles& survey) {
  for (const std::filesystem::path& path : pathsOf(survey)) {
    std::error_code error;
    const bool is_same = std::filesystem::equivalent(output, path, error) ||
                         std::filesystem::weakly_canonical(output, error) ==
                             std::filesystem::weakly_canonical(path, error);
    if (is_same) throw UsageError(fmt::format("--output {}: that is the survey itself", output));
  }
}

void writeOutput(const std::string& output, const std::string& text, const std::string& summary) {
  TextOutput said(isStandardOutput(output) ? stderr : stdout);
  const bool was_kept = replaceFileKeepingOld(output, text);
  const std::string kept = was_kept ? fmt::format("; the old file is now {}~", output) : "";
  said.write(displayText(fmt::format("{}: {}{}", output, summary, kept)) + "\n");
}

}  // namespace pelagrim_host
