#include "host/commands/survey_command.h"

#include <fmt/format.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "host/commands/open_source.h"
#include "host/commands/survey_setup.h"
#include "host/process/signals.h"
#include "host/session/host_services.h"
#include "host/session/plugin_library.h"
#include "host/session/survey_clock.h"
#include "host/session/survey_session.h"
#include "host/sources/soapy_receiver.h"
#include "host/survey_dir/results_watch.h"
#include "host/survey_dir/survey_settings_file.h"
#include "host/text/quantity_text.h"
#include "host/view/console_view.h"
#include "host/view/json_view.h"
#include "host/view/live_view.h"
#include "host/view/source_text.h"
#include "host/view/terminal_kind.h"

namespace pelagrim_host {
namespace {

constexpr const char* kDirectoryVariable = "ORVANE_SURVEY_DIR";

// A simulated band has no end of its own. Two passes show what one misses of those who come and go.
constexpr uint32_t kSimulatedPasses = 2;

void listStations(const Options& options, const std::string& settings) {
  const SimulatedBand band(simulatedBandConfig(options, settings));
  std::string text = fmt::format("{:>14}  {:>10}  {:>9}  {:<10}  {:<22}  {}\n", "Frequency",
                                 "Width", "Level", "Kind", "On air", "Station");
  for (const SimulatedStation& station : band.stations()) {
    text += fmt::format("{:>10.4f} MHz  {:>6.1f} kHz  {:>6.0f} dB  {:<10}  {:<22}  {}\n",
                        station.centre_hz / 1e6, station.width_hz / 1e3, station.level_db,
                        kindText(station.kind), scheduleText(station), station.name);
  }
  TextOutput(stdout).write(text);
}

/// Makes the directory and its settings ready for the plug-in, and says what was done.
void prepareDirectory(const std::filesystem::path& survey_dir,
                      const std::vector<SettingEdit>& edits, SurveyView& report) {
  const bool created = createSurveyDirectory(survey_dir);
  report.note(
      fmt::format("survey directory {}{}", survey_dir.string(), created ? " (created)" : ""));
  if (edits.empty()) return;
  editSettings(survey_dir, edits);
  std::string keys;
  for (const SettingEdit& edit : edits) {
    keys += fmt::format("{}{} = {}", keys.empty() ? "" : ", ", edit.key, edit.value);
  }
  report.note(fmt::format("written to {}: {}", settingsPath(survey_dir).string(), keys));
}

std::unique_ptr<SurveyView> makeReport(const Options& options) {
  if (options.json) return std::make_unique<JsonView>(stdout);
  const TerminalKind terminal = terminalKind(STDOUT_FILENO);
  if (options.quiet || !terminal.redraws) return std::make_unique<ConsoleView>(options.quiet);
  return std::make_unique<LiveView>(FrameStyle{terminal.colours, terminal.unicode});
}

SessionSettings sessionSettings(const Options& options, const std::filesystem::path& survey_dir) {
  SessionSettings session;
  session.block_samples = options.block_samples;
  session.passes = options.passes;
  session.duration_seconds = options.duration_seconds;
  session.realtime = options.realtime;
  // As in the plug-in, what the file does not say stays as it was, at first the default.
  session.dwell_length_seconds = [survey_dir, in_force = kDefaultDwellSeconds]() mutable {
    try {
      const std::string settings = readSettings(survey_dir).value_or("");
      in_force = findNumber(settings, "dwell_seconds").value_or(in_force);
    } catch (const std::runtime_error&) {  // the plug-in carries on without the file, too
    }
    return std::optional(in_force);
  };
  if (options.isSimulated() && !options.passes && !options.duration_seconds) {
    session.passes = kSimulatedPasses;
  }
  return session;
}

void showSourceInfo(const Options& options) {
  const auto survey_dir =
      chooseSurveyDirectory(options, std::getenv(kDirectoryVariable), surveyDirectoryName(options));
  const std::string settings =
      withSettings(readSettings(survey_dir).value_or(""), settingsAsked(options));
  TextOutput errors(stderr);
  const auto source = openSource(options, settings, [&errors](const std::string& line) {
    errors.write(fmt::format("pelagrim-survey: {}\n", line));
  });
  TextOutput(stdout).write(sourceTable(*source, startTime(options, *source)));
}

void survey(const Options& options, const PluginLibrary& plugin) {
  const auto shown = makeReport(options);
  SurveyView& report = *shown;
  const auto survey_dir =
      chooseSurveyDirectory(options, std::getenv(kDirectoryVariable), surveyDirectoryName(options));
  const auto old_settings = readSettings(survey_dir);
  auto edits = settingsAsked(options);
  std::string settings = withSettings(old_settings.value_or(""), edits);

  const auto source =
      openSource(options, settings, [&report](const std::string& line) { report.warning(line); });
  if (!old_settings) {
    const auto further = settingsForSource(options, *source, edits);
    edits.insert(edits.end(), further.begin(), further.end());
    settings = withSettings(settings, further);
  }
  const StartTime start = startTime(options, *source);
  report.opened({source->name(), source->centreHz(), source->sampleRateHz()});
  if (!source->facts().empty()) report.note(sourceLine(*source, start));
  prepareDirectory(survey_dir, edits, report);
  if (const auto mismatch = bandMismatch(settings, *source)) report.warning(*mismatch);
  const auto dwell_mismatch = dwellMismatch(settings, *source);
  if (dwell_mismatch) report.warning(*dwell_mismatch);
  setenv(kDirectoryVariable, survey_dir.c_str(), 1);

  SurveyClock clock = source->isLive()
                          ? SurveyClock::onTheWall()
                          : SurveyClock::ofSamples(start.unix_ms, source->sampleRateHz());
  SessionSettings session_settings = sessionSettings(options, survey_dir);
  if (session_settings.passes && !options.passes) {
    report.note(fmt::format("ends after {} passes; --passes or --duration set another end",
                            *session_settings.passes));
  }
  const auto results_path = survey_dir / "survey.csv";
  ResultsWatch results(results_path);
  session_settings.after_dwell = [&results, &report] {
    if (const auto news = results.news()) report.warning(*news);
  };

  HostServices services(*source, clock, options.may_tune);
  SurveySession session(plugin, *source, services, clock, report, session_settings);
  const SessionResult result = session.run(stopRequested, takeRescanRequest);

  if (const uint64_t lost = source->overflows(); lost > 0) {
    report.warning(fmt::format(
        "the receiver lost samples {} times, as they were not taken in time; lower --sample-rate",
        lost));
  }
  if (stopRequested()) report.note("stopped on request");
  if (result.samples == 0 && !stopRequested()) {
    throw SourceError(
        fmt::format("{} holds no samples, so there is nothing to survey", source->name()));
  }
  if (result.dwells_done == 0u) {
    report.note("no dwell was evaluated: " +
                dwell_mismatch.value_or("there were too few samples for a spectrum"));
  } else if (results.written()) {
    report.note(fmt::format("survey written to {}", results_path.string()));
  } else {
    throw std::runtime_error(results.advice());
  }
  if (const auto damage = source->damage()) throw SourceError(*damage);
}

}  // namespace

void runCommand(const Options& options) {
  if (options.list_devices) {
    TextOutput(stdout).write(listReceivers());
    return;
  }
  if (options.list_stations) {
    const auto survey_dir = chooseSurveyDirectory(options, std::getenv(kDirectoryVariable),
                                                  surveyDirectoryName(options));
    const auto old_settings = readSettings(survey_dir);
    listStations(options, withSettings(old_settings.value_or(""), settingsAsked(options)));
    return;
  }
  if (options.show_source_info) {
    showSourceInfo(options);
    return;
  }
  const PluginLibrary plugin(options.plugin.empty() ? findDefaultPlugin()
                                                    : std::filesystem::absolute(options.plugin));
  if (options.show_plugin_info) {
    TextOutput(stdout).write(plugin.describe());
    return;
  }
  survey(options, plugin);
}

}  // namespace pelagrim_host
