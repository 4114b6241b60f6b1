#include <fmt/format.h>
#include <unistd.h>

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/commands/claimed_directory.h"
#include "host/commands/commands.h"
#include "host/commands/kept_history.h"
#include "host/commands/load_plugin.h"
#include "host/commands/open_source.h"
#include "host/commands/survey_setup.h"
#include "host/commands/truth_file.h"
#include "host/process/signals.h"
#include "host/session/survey_clock.h"
#include "host/session/survey_session.h"
#include "host/survey_dir/results_watch.h"
#include "host/survey_dir/survey_memory.h"
#include "host/survey_dir/survey_place.h"
#include "host/view/background_view.h"
#include "host/view/console_view.h"
#include "host/view/json_view.h"
#include "host/view/live_view.h"
#include "host/view/source_text.h"
#include "host/view/terminal_kind.h"
#include "survey/dwell_timer.h"

namespace pelagrim_host {
namespace {

// A simulated band never ends. Two passes also show stations that were off the air in the first.
constexpr uint32_t kSimulatedPasses = 2;

/// A survey that is ready to run: the directory exists with its settings, the source is open.
struct PreparedSurvey {
  SurveySetup setup;
  std::unique_ptr<SurveyView> view;
  /// Set when the survey needs no more samples, so that the source does not wait for any.
  std::shared_ptr<std::atomic<bool>> reading_is_over;
  std::unique_ptr<IqSource> source;
  StartTime start;
  std::unique_ptr<ClaimedDirectory> directory;
  std::optional<std::string> dwell_mismatch;
};

std::unique_ptr<SurveyView> makeView(const Options& options) {
  if (options.json) return std::make_unique<JsonView>(stdout);
  const TerminalKind terminal = terminalKind(STDOUT_FILENO);
  if (options.quiet || !terminal.redraws) return std::make_unique<ConsoleView>(options.quiet);
  return std::make_unique<LiveView>(FrameStyle{terminal.colours, terminal.unicode},
                                    LiveViewHooks{.rescan = requestRescan, .end = requestStop});
}

/// The view on a thread of its own, unless everything has to be done on one.
std::unique_ptr<SurveyView> viewInTheBackground(const Options& options,
                                                std::unique_ptr<SurveyView> view) {
  if (options.threads == 1) return view;
  const bool is_live = !options.device.empty();
  return std::make_unique<BackgroundView>(
      std::move(view),
      is_live ? BackgroundView::Overflowing::kDrop : BackgroundView::Overflowing::kWait);
}

/// What the directory will remember about this run.
SurveyMemory memoryOf(const Options& options, const IqSource& source, const StartTime& start) {
  SurveyMemory memory{.kind = SourceKind::kRecording,
                      .source = source.name(),
                      .identity = std::nullopt,
                      .settings = {},
                      .start_is_guess = start.is_guess,
                      .program = "pelagrim-survey " PELAGRIM_VERSION};
  if (const auto samples = source.lengthSamples()) {
    memory.length_seconds = static_cast<double>(*samples) / source.sampleRateHz();
  }
  if (!options.device.empty()) {
    memory.kind = SourceKind::kReceiver;
  } else if (options.isSimulated()) {
    memory.kind = SourceKind::kSimulation;
    memory.source += fmt::format(", seed {}", options.seed);  // another one is another band
  } else if (const auto file = recordingFile(options)) {
    memory.identity = identityOf(*file);
  } else {
    memory.kind = SourceKind::kStandardInput;
  }
  return memory;
}

PreparedSurvey prepare(const Options& options) {
  SurveySetup setup = setUpSurvey(options);
  requirePlaceForTruth(options, setup);
  auto view = viewInTheBackground(options, makeView(options));
  auto reading_is_over = std::make_shared<std::atomic<bool>>(false);
  auto source = openSource(
      options, setup.inForce(), [&view](const std::string& line) { view->warning(line); },
      [reading_is_over] { return stopRequested() || *reading_is_over; });
  fitToSource(setup, options, *source);
  const StartTime start = startTime(options, *source);
  view->opened({source->name(), source->centreHz(), source->sampleRateHz()});
  if (source->facts()) view->note(sourceLine(*source, start));
  auto directory = std::make_unique<ClaimedDirectory>(
      options, setup, memoryOf(options, *source, start), source->sampleRateHz(), *view);
  if (const auto mismatch = bandMismatch(setup.inForce(), *source)) view->warning(*mismatch);
  const auto dwell_mismatch = dwellMismatch(setup.inForce(), *source);
  if (dwell_mismatch) view->warning(*dwell_mismatch);
  return {std::move(setup),  std::move(view), std::move(reading_is_over),
          std::move(source), start,           std::move(directory),
          dwell_mismatch};
}

/// The record of this run, where it is asked for.
std::unique_ptr<KeptHistory> keepHistory(const Options& options, const PreparedSurvey& survey) {
  if (!options.keep_history) return nullptr;
  const IqSource& source = *survey.source;
  const SurveyMemory memory = memoryOf(options, source, survey.start);
  HistoryRun run;
  run.kind = memory.kind == SourceKind::kReceiver     ? HistorySource::kReceiver
             : memory.kind == SourceKind::kSimulation ? HistorySource::kSimulation
                                                      : HistorySource::kRecording;
  run.source = memory.source;
  if (memory.identity) run.identity = memory.identity->sha256;
  if (options.isSimulated()) run.identity = memory.source;
  run.program = memory.program;
  run.receiver = options.device;
  run.start_unix_ms = survey.start.unix_ms;
  run.settings = survey.setup.set.text();
  const bool can_be_repeated = !source.isLive() && !run.identity.empty();
  run.name =
      can_be_repeated
          ? runName(run.identity, run.settings,
                    fmt::format("{} {} {} {} {} {} {}", options.offset_seconds, options.plays,
                                options.duration_seconds.value_or(0.0), options.passes.value_or(0),
                                source.sampleRateHz(), source.centreHz(), options.irregular))
          : randomRunName();
  return std::make_unique<KeptHistory>(
      survey.setup.directory, std::move(run),
      [&directory = *survey.directory] { return directory.settingsInForce(); },
      source.sampleRateHz(), !source.isLive());
}

SessionSettings sessionSettings(const Options& options, PreparedSurvey& survey,
                                ResultsWatch& results, KeptHistory* history) {
  SessionSettings session;
  session.may_tune = options.may_tune;
  session.block_samples = options.block_samples;
  session.passes = options.passes;
  session.duration_seconds = options.duration_seconds;
  session.realtime = options.realtime;
  session.has_reader_thread = options.threads > 1;
  session.buffer_bytes = options.buffer_mib << 20U;
  session.end_reading = [over = survey.reading_is_over] { *over = true; };
  session.dwell_length_ms = [&directory = *survey.directory] {
    return pelagrim::dwellLengthMs(directory.settingsInForce().dwell_seconds);
  };
  session.before_start = [&directory = *survey.directory] { directory.surveyStarts(); };
  if (history != nullptr) session.observer = &history->observer();
  session.after_dwell = [&results, &survey, history] {
    survey.directory->dwellWritten();
    if (const auto news = results.news()) survey.view->warning(*news);
    if (history == nullptr) return;
    for (const std::string& line : history->takeNews()) survey.view->warning(line);
  };
  if (options.isSimulated() && !options.passes && !options.duration_seconds) {
    session.passes = kSimulatedPasses;
    survey.view->note(fmt::format("ends after {} passes; --passes or --duration set another end",
                                  kSimulatedPasses));
  }
  return session;
}

SessionResult run(const Options& options, const PluginLibrary& plugin, PreparedSurvey& survey,
                  ResultsWatch& results) {
  const auto clock = survey.source->isLive() ? ClockPolicy::systemClock()
                                             : ClockPolicy::sampleClock(survey.start.unix_ms);
  const auto history = keepHistory(options, survey);
  SurveySession session(plugin, *survey.source, clock, *survey.view,
                        sessionSettings(options, survey, results, history.get()));
  std::exception_ptr failure;
  SessionResult result;
  try {
    result = session.run(stopRequested, takeRescanRequest);
  } catch (...) {
    failure = std::current_exception();  // the survey has been saved anyway
  }
  if (history) {
    history->end();
    for (const std::string& line : history->takeNews()) survey.view->warning(line);
  }
  survey.directory->end();
  if (failure) std::rethrow_exception(failure);
  return result;
}

/// Says how the run went, and throws if it failed.
void sumUp(const PreparedSurvey& survey, const SessionResult& result, const ResultsWatch& results) {
  SurveyView& view = *survey.view;
  const IqSource& source = *survey.source;
  if (result.overflows > 0) {
    view.warning(
        fmt::format("the receiver lost samples {} times, because they were not read in time; lower "
                    "--sample-rate",
                    result.overflows));
  }
  if (result.dropped_samples > 0) {
    view.warning(fmt::format(
        "the survey could not keep up and dropped {} samples ({:.1f} s); lower --sample-rate or "
        "give it more --buffer",
        result.dropped_samples,
        static_cast<double>(result.dropped_samples) / source.sampleRateHz()));
  }
  if (stopRequested()) view.note("stopped on request");
  if (result.samples == 0 && !stopRequested()) {
    throw SourceError(
        fmt::format("{} holds no samples, so there is nothing to survey", source.name()));
  }
  if (result.dwells_done == 0u) {
    view.note("no dwell was evaluated: " +
              survey.dwell_mismatch.value_or("there were too few samples for a spectrum"));
  } else if (results.written()) {
    view.note(fmt::format("survey written to {}", resultsPath(survey.setup.directory).string()));
  } else {
    throw std::runtime_error(results.advice());
  }
  if (result.damage) throw SourceError(*result.damage);
}

}  // namespace

void runSurvey(const Options& options) {
  const PluginLibrary plugin = loadPlugin(options);
  PreparedSurvey survey = prepare(options);
  ResultsWatch results(resultsPath(survey.setup.directory));
  const SessionResult result = run(options, plugin, survey, results);
  writeTruth(options, survey.setup, survey.start, result.samples, *survey.view);
  sumUp(survey, result, results);
}

}  // namespace pelagrim_host
