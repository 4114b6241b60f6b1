// A live survey whose panel is read 20 times a second, as a receiver program does that shows it.
//   live_polls DEVICE RATE_HZ SECONDS DIR
#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <string>

#include "host/commands/claimed_directory.h"
#include "host/commands/survey_options.h"
#include "host/commands/survey_setup.h"
#include "host/session/plugin_library.h"
#include "host/session/survey_session.h"
#include "host/sources/soapy_receiver.h"

namespace pelagrim_host {
namespace {

constexpr auto kPollInterval = std::chrono::milliseconds(50);
constexpr size_t kRows = 64;

/// Shows nothing but warnings, and counts the polls.
class PollingView final : public SurveyView {
 public:
  void opened(const SourceFacts&) override {}
  void note(const std::string&) override {}
  void warning(const std::string& line) override { fmt::print(stderr, "live_polls: {}\n", line); }
  void message(const std::string&) override {}
  void dwellDone(const SurveyProgress&) override {}
  void tuned(const TuneRequest&, double) override {}
  std::optional<size_t> wantsSnapshot() override {
    const auto now = std::chrono::steady_clock::now();
    if (now < next_poll_) return std::nullopt;
    next_poll_ = now + kPollInterval;
    return kRows;
  }
  void snapshot(const SurveySnapshot&) override { ++polls_; }
  void finished(const Panel&) override {}
  int polls() const { return polls_; }

 private:
  std::chrono::steady_clock::time_point next_poll_;
  int polls_ = 0;
};

void run(char** arguments) {
  Options options;
  options.device = arguments[0];
  options.sample_rate_hz = std::atof(arguments[1]);
  options.survey_dir = arguments[3];
  options.band = FrequencyRange{100e6, 300e6};
  options.dwell_seconds = 2.0;

  const PluginLibrary plugin(PELAGRIM_PLUGIN_PATH);
  const SurveySetup setup = setUpSurvey(options);
  ReceiverConfig receiver;
  receiver.device = options.device;
  receiver.sample_rate_hz = *options.sample_rate_hz;
  receiver.centre_hz = options.band->low_hz + 0.5 * receiver.sample_rate_hz;
  const auto source = openReceiver(receiver);
  PollingView view;
  SurveyMemory memory;
  memory.kind = SourceKind::kReceiver;
  memory.source = source->name();
  ClaimedDirectory directory(options, setup, memory, source->sampleRateHz(), view);

  SessionSettings settings;
  settings.may_tune = true;
  settings.duration_seconds = std::atof(arguments[2]);
  settings.before_start = [&directory] { directory.surveyStarts(); };
  settings.after_dwell = [&directory] { directory.dwellWritten(); };
  SurveySession session(plugin, *source, ClockPolicy::systemClock(), view, settings);
  const SessionResult result = session.run([] { return false; });
  directory.end();
  fmt::print(stderr, "live_polls: {} polls, dropped {} samples\n", view.polls(),
             result.dropped_samples);
}

}  // namespace
}  // namespace pelagrim_host

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: %s DEVICE RATE_HZ SECONDS DIR\n", argv[0]);
    return 2;
  }
  try {
    pelagrim_host::run(argv + 1);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "live_polls: %s\n", failure.what());
    return 1;
  }
}
