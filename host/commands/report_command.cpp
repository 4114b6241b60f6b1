#include "host/commands/report_command.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include "host/commands/saved_survey_arguments.h"
#include "host/process/text_output.h"
#include "host/process/usage_error.h"
#include "host/process/whole_file.h"
#include "host/report/band_svg.h"
#include "host/report/report_data.h"
#include "host/report/report_page.h"

namespace pelagrim_host {
namespace {

constexpr double kUsualRasterHz = 5000.0;  // the plug-in's, where survey.cfg does not say

struct ReportOptions {
  std::string survey;
  std::string output = "band.html";
  std::string old_results;
};

/// Reads the command line; nothing when it asked for the help text alone, which is printed.
std::optional<ReportOptions> parseReportOptions(int argc, const char* const* argv) {
  ReportOptions options;
  CLI::App app("Draws a survey: a page with a picture of the band and a table of its channels.",
               "pelagrim-survey report");
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

std::vector<std::pair<std::string, std::string>> readableSettings(const SurveyFiles& survey) {
  const SurveySettings& settings = survey.settings;
  std::vector<std::pair<std::string, std::string>> readable;
  if (settings.threshold_db) {
    readable.emplace_back("Threshold",
                          fmt::format("{:.4g} dB over the noise floor", *settings.threshold_db));
  }
  if (settings.dwell_seconds) {
    readable.emplace_back("Dwell", fmt::format("{:.6g} s", *settings.dwell_seconds));
  }
  if (settings.raster_hz) {
    readable.emplace_back("Raster", fmt::format("{:.6g} kHz", *settings.raster_hz / 1e3));
  }
  if (settings.start_hz && settings.stop_hz) {
    readable.emplace_back("Band set", fmt::format("{:.4f} to {:.4f} MHz", *settings.start_hz / 1e6,
                                                  *settings.stop_hz / 1e6));
  }
  if (settings.sweep) readable.emplace_back("Sweep", *settings.sweep ? "yes" : "no");
  readable.emplace_back("File", survey.results_path.string());
  return readable;
}

std::string countOfChannels(size_t count) {
  return fmt::format("{} channel{}", count, count == 1 ? "" : "s");
}

/// What the reader of a comparison should know: what it could not tell, and why it may mislead.
std::vector<std::string> comparisonRemarks(const Comparison& comparison, const SurveyFiles& survey,
                                           const SurveyFiles& old) {
  std::vector<std::string> remarks;
  const std::string path = old.results_path.string();
  if (comparison.is_continued) {
    remarks.push_back(fmt::format(
        "{} is an earlier state of this survey: more or less often is by the looks since, and a "
        "channel that is no longer seen is not gone but seen less often",
        path));
  }
  if (comparison.unlooked_for_now > 0) {
    remarks.push_back(fmt::format("{}: left out {} outside the band of the newer survey", path,
                                  countOfChannels(comparison.unlooked_for_now)));
  }
  if (comparison.unlooked_for_before > 0) {
    remarks.push_back(fmt::format("{}: {} outside its band cannot be called new", path,
                                  countOfChannels(comparison.unlooked_for_before)));
  }
  const auto differ = [](const std::optional<double>& one, const std::optional<double>& other) {
    return one && other && *one != *other;
  };
  const SurveySettings& now = survey.settings;
  const SurveySettings& before = old.settings;
  if (differ(now.dwell_seconds, before.dwell_seconds) ||
      differ(now.threshold_db, before.threshold_db)) {
    remarks.push_back(fmt::format(
        "{} had dwells of {:.6g} s and a threshold of {:.4g} dB, this survey {:.6g} s and {:.4g} "
        "dB: that alone changes what is found, and how often",
        path, *before.dwell_seconds, *before.threshold_db, *now.dwell_seconds, *now.threshold_db));
  }
  return remarks;
}

ReportData gather(const ReportOptions& options, const SurveyFiles& survey) {
  ReportData report;
  report.band_plan = survey.band_plan;
  report.settings = readableSettings(survey);
  report.remarks = surveyRemarks(survey);
  report.is_compared = !options.old_results.empty();
  if (report.is_compared) {
    const SurveyFiles old = readSurveyFiles(options.old_results);
    const double raster_hz = survey.settings.raster_hz.value_or(kUsualRasterHz);
    Comparison comparison = compareSurveys(survey.rows.channels, old.rows.channels, raster_hz);
    forgetUnlookedFor(comparison, survey.settings, old.settings);
    report.settings.emplace_back("Compared with", old.results_path.string());
    for (std::string& remark : surveyRemarks(old)) report.remarks.push_back(std::move(remark));
    for (std::string& remark : comparisonRemarks(comparison, survey, old)) {
      report.remarks.push_back(std::move(remark));
    }
    report.channels = std::move(comparison.channels);
  } else {
    report.channels = withoutComparison(survey.rows.channels);
  }
  report.layout = layOutBand(report.channels, report.band_plan, survey.settings);
  return report;
}

}  // namespace

void runReport(int argc, const char* const* argv) {
  const auto options = parseReportOptions(argc, argv);
  if (!options) return;
  const std::filesystem::path output = options->output;
  const bool is_page = output.extension() == ".html" || output.extension() == ".htm";
  if (!is_page && output.extension() != ".svg") {
    throw UsageError(
        fmt::format("--output {}: give a name that ends in .html or .svg", output.string()));
  }
  const SurveyFiles survey = readSurveyFiles(surveyPlace(options->survey));
  refuseSurveyFiles(options->output, survey);
  const ReportData report = gather(*options, survey);
  sayRemarks(report.remarks);
  const std::string text = is_page ? reportPage(report) : bandSvg(report);
  writeWhole(output, text);
  const size_t channels = survey.rows.channels.size();  // without those that have gone
  TextOutput(stdout).write(fmt::format("{}: {} channel{}, {} kB\n", output.string(), channels,
                                       channels == 1 ? "" : "s", (text.size() + 999) / 1000));
}

}  // namespace pelagrim_host
