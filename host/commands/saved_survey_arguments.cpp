#include "host/commands/saved_survey_arguments.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "host/commands/argument_checks.h"
#include "host/process/text_output.h"
#include "host/process/usage_error.h"
#include "host/process/whole_file.h"
#include "host/survey_dir/survey_place.h"

namespace pelagrim_host {

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
    complaints.write(fmt::format("pelagrim-survey: {}\n", remark));
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
  const bool was_kept = replaceFileKeepingOld(output, text);
  const std::string kept = was_kept ? fmt::format("; the old file is now {}~", output) : "";
  TextOutput(stdout).write(fmt::format("{}: {}{}\n", output, summary, kept));
}

}  // namespace pelagrim_host
