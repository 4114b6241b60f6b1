#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>

#include "host/commands/argument_checks.h"
#include "host/commands/commands.h"
#include "host/commands/saved_survey_arguments.h"
#include "host/process/command_errors.h"
#include "host/report/band_svg.h"
#include "host/report/report_data.h"
#include "host/report/report_page.h"
#include "host/report/report_words.h"

namespace pelagrim_host {
namespace {

struct ReportOptions {
  std::string survey;
  std::string output = "band.html";
  std::string old_results;
};

/// Reads the command line; nothing if it only asked for the help text, which is printed.
std::optional<ReportOptions> parseReportOptions(const WordCommand& self, int argc,
                                                const char* const* argv) {
  ReportOptions options;
  CLI::App app(self.what, fmt::format("pelagrim-survey {}", self.name));
  addSurveyArgument(app, options.survey);
  app.add_option("-o,--output", options.output,
                 "What to write: NAME.html for the page, NAME.svg for the picture alone")
      ->type_name("FILE")
      ->capture_default_str();
  app.add_option("--compare", options.old_results,
                 "An earlier survey of the band; marks what is new, gone and changed")
      ->check(notEmpty)
      ->type_name("OLD");
  if (!parseArguments(app, argc, argv)) return std::nullopt;
  return options;
}

}  // namespace

void runReport(const WordCommand& self, int argc, const char* const* argv) {
  const auto options = parseReportOptions(self, argc, argv);
  if (!options) return;
  const std::filesystem::path output = options->output;
  const bool is_page = output.extension() == ".html" || output.extension() == ".htm";
  if (!is_page && output.extension() != ".svg") {
    throw UsageError(
        fmt::format("--output {}: give a name that ends in .html or .svg", output.string()));
  }
  const SurveyFiles survey = readSurveyAsked(options->survey);
  refuseSurveyFiles(options->output, survey);
  std::optional<SurveyFiles> old;
  if (!options->old_results.empty()) old = readSurveyFiles(options->old_results);
  const ReportData report = makeReport(survey, old ? &*old : nullptr);
  sayRemarks(report.remarks);
  const std::string text = is_page ? reportPage(report) : bandSvg(report);
  writeOutput(options->output, text,
              fmt::format("{}, {} kB", channelsText(report), (text.size() + 999) / 1000));
}

}  // namespace pelagrim_host
