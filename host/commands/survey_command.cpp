#include "host/commands/survey_command.h"

#include <fmt/format.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "host/commands/open_source.h"
#include "host/commands/survey_setup.h"
#include "host/process/signals.h"
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
                      const std::vector<SettingEdit>& edits, SurveyView& view) {
  const bool created = createSurveyDirectory(survey_dir);
  view.note(fmt::format("survey directory {}{}", survey_dir.string(), created ? " (created)" : ""));
  if (edits.empty()) return;
  editSettings(survey_dir, edits);
  std::string keys;
  for (const SettingEdit& edit : edits) {
    keys += fmt::format("{}{} = {}", keys.empty() ? "" : ", ", edit.key, edit.value);
  }
  view.note(fmt::format("written to {}: {}", settingsPath(survey_dir).string(), keys));
}

/// Finds how long a dwell is from now on, whenever the plug-in has read survey.cfg.
std::function<std::optional<double>()> dwellLengthIn(const std::filesystem::path& survey_dir) {
  // As in the plug-in, what the file does not say stays as it was, at first the default.
  return [survey_dir, in_force = kDefaultDwellSeconds]() mutable {
    try {
      const std::string settings = readSettings(survey_dir).value_or("");
      in_force = findNumber(settings, "dwell_seconds").value_or(in_force);
    } catch (const std::runtime_error&) {  // the plug-in carries on without the file, too
    }
    return std::optional(in_force);
  };
}

std::unique_ptr<SurveyView> makeView(const Options& options,
                                     const std::filesystem::path& survey_dir) {
  if (options.json) return std::make_unique<JsonView>(stdout);
  const TerminalKind terminal = terminalKind(STDOUT_FILENO);
  if (options.quiet || !terminal.redraws) return std::make_unique<ConsoleView>(options.quiet);
  return std::make_unique<LiveView>(
      FrameStyle{terminal.colours, terminal.unicode},
      LiveViewHooks{.rescan = requestRescan,
                    .end = requestStop,
                    .dwell_length_seconds = dwellLengthIn(survey_dir)});
}

SessionSettings sessionSettings(const Options& options) {
  SessionSettings session;
  session.may_tune = options.may_tune;
  session.block_samples = options.block_samples;
  session.passes = options.passes;
  session.duration_seconds = options.duration_seconds;
  session.realtime = options.realtime;
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
  const auto survey_dir =
      chooseSurveyDirectory(options, std::getenv(kDirectoryVariable), surveyDirectoryName(options));
  const auto shown = makeView(options, survey_dir);
  SurveyView& view = *shown;
  const auto old_settings = readSettings(survey_dir);
  auto edits = settingsAsked(options);
  std::string settings = withSettings(old_settings.value_or(""), edits);

  const auto source =
      openSource(options, settings, [&view](const std::string& line) { view.warning(line); });
  if (!old_settings) {
    const auto further = settingsForSource(options, *source, edits);
    edits.insert(edits.end(), further.begin(), further.end());
    settings = withSettings(settings, further);
  }
  const StartTime start = startTime(options, *source);
  view.opened({source->name(), source->centreHz(), source->sampleRateHz()});
  if (source->facts()) view.note(sourceLine(*source, start));
  prepareDirectory(survey_dir, edits, view);
  if (const auto mismatch = bandMismatch(settings, *source)) view.warning(*mismatch);
  const auto dwell_mismatch = dwellMismatch(settings, *source);
  if (dwell_mismatch) view.warning(*dwell_mismatch);
  setenv(kDirectoryVariable, survey_dir.c_str(), 1);

  SessionSettings session_settings = sessionSettings(options);
  if (session_settings.passes && !options.passes) {
    view.note(fmt::format("ends after {} passes; --passes or --duration set another end",
                          *session_settings.passes));
  }
  const auto results_path = survey_dir / "survey.csv";
  ResultsWatch results(results_path);
  session_settings.after_dwell = [&results, &view] {
    if (const auto news = results.news()) view.warning(*news);
  };

  const auto clock =
      source->isLive() ? ClockPolicy::wallClock() : ClockPolicy::sampleClock(start.unix_ms);
  SurveySession session(plugin, *source, clock, view, session_settings);
  const SessionResult result = session.run(stopRequested, takeRescanRequest);

  if (const uint64_t lost = source->overflows(); lost > 0) {
    view.warning(fmt::format(
        "the receiver lost samples {} times, as they were not taken in time; lower --sample-rate",
        lost));
  }
  if (stopRequested()) view.note("stopped on request");
  if (result.samples == 0 && !stopRequested()) {
    throw SourceError(
        fmt::format("{} holds no samples, so there is nothing to survey", source->name()));
  }
  if (result.dwells_done == 0u) {
    view.note("no dwell was evaluated: " +
              dwell_mismatch.value_or("there were too few samples for a spectrum"));
  } else if (results.written()) {
    view.note(fmt::format("survey written to {}", results_path.string()));
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
