#include <fmt/format.h>
#include <fmt/ranges.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "host/commands/argument_checks.h"
#include "host/commands/commands.h"
#include "host/commands/saved_survey_arguments.h"
#include "host/export/export_formats.h"
#include "host/process/text_output.h"
#include "host/text/counted_text.h"
#include "host/text/letter_case.h"
#include "host/text/quantity_text.h"
#include "survey/signal_kind.h"

namespace pelagrim_host {
namespace {

struct ExportOptions {
  std::string survey;
  std::string format;
  std::string output = "-";
  ExportSelection selection;
};

std::vector<std::string> kindNames() {
  const auto kinds = pelagrim::signalKinds();
  return {kinds.begin(), kinds.end()};
}

/// "NFM?" for "nfm", whatever the case; unchanged if there is no such kind.
std::string kindNamed(const std::string& text) {
  const std::string wanted = lowerCase(text);
  for (const std::string& kind : kindNames()) {
    const std::string name = lowerCase(kind);
    if (wanted == name || wanted + "?" == name) return kind;
  }
  return text;
}

std::string formatsText() {
  std::string text = "Formats for --to:\n";
  for (const ExportFormat& format : exportFormats()) {
    text += fmt::format("  {:8}{}\n", format.name, format.what);
  }
  return text + fmt::format("Kinds for --kind, with or without the question mark:\n  {}",
                            fmt::join(pelagrim::signalKinds(), ", "));
}

/// Reads the command line; nothing if it only asked for the help text, which is printed.
std::optional<ExportOptions> parseExportOptions(const WordCommand& self, int argc,
                                                const char* const* argv) {
  ExportOptions options;
  CLI::App app(self.what, fmt::format("pelagrim-survey {}", self.name));
  addSurveyArgument(app, options.survey);
  std::vector<std::string> names;
  for (const ExportFormat& format : exportFormats()) names.emplace_back(format.name);
  app.add_option("--to", options.format, "What to write, see below")
      ->type_name("FORMAT")
      ->required()
      ->check(CLI::IsMember(names));
  app.add_option("-o,--output", options.output, "Where to write it; - for standard output")
      ->check(notEmpty)
      ->type_name("FILE")
      ->capture_default_str();
  app.add_option("--min-activity", options.selection.min_activity,
                 "Only channels of at least this activity, 0 to 1: detections by looks\n"
                 "since the channel was first heard, 1 where there are more detections")
      ->type_name("ACTIVITY")
      ->check(CLI::Validator(
          [](const std::string& text) {
            const auto share = parsePlainNumber(text);
            const bool fits = share && *share >= 0.0 && *share <= 1.0;
            return fits ? std::string() : fmt::format("'{}' is not an activity from 0 to 1", text);
          },
          ""));
  app.add_option("--min-hits", options.selection.min_hits,
                 "Only channels with N detections or more")
      ->type_name("N");
  app.add_option("--kind", options.selection.kinds,
                 "Only channels of these kinds, with commas between them")
      ->type_name("KIND")
      ->allow_extra_args(false)  // the next argument is the survey
      ->delimiter(',')
      ->transform(kindNamed)
      ->check(CLI::IsMember(kindNames()));
  app.footer(formatsText());
  if (!parseArguments(app, argc, argv)) return std::nullopt;
  return options;
}

}  // namespace

void runExport(const WordCommand& self, int argc, const char* const* argv) {
  const auto options = parseExportOptions(self, argc, argv);
  if (!options) return;
  const SurveyFiles survey = readSurveyAsked(options->survey);
  sayRemarks(surveyRemarks(survey));
  const auto channels = selectChannels(survey, options->selection);
  const auto format = std::find_if(
      exportFormats().begin(), exportFormats().end(),
      [&](const ExportFormat& candidate) { return candidate.name == options->format; });
  const std::string text = format->write(channels);
  if (options->output == "-") {
    TextOutput(stdout).write(text);
    return;
  }
  refuseSurveyFiles(options->output, survey);
  writeOutput(options->output, text,
              fmt::format("{} of {}", channels.size(),
                          countedText(survey.rows.channels.size(), "channel")));
}

}  // namespace pelagrim_host
