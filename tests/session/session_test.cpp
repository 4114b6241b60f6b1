// The host's run loop, with a fake plug-in that records its calls and with the real one.
#include <dlfcn.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "host/session/plugin_library.h"
#include "host/session/sample_feed.h"
#include "host/session/survey_session.h"
#include "host/view/panel_text.h"
#include "tests/support/temporary_dir.h"

namespace pelagrim_host {
namespace {

bool g_has_reader_thread = false;

/// 100 samples per second, each holding the centre that it comes from. Answers to tune as told to,
/// throwing on kTuneRefused.
class ScriptedSource : public IqSource {
 public:
  std::string name() const override { return "script"; }
  double sampleRateHz() const override { return rate_hz; }
  bool canTune() const override { return true; }
  bool isLive() const override { return is_live; }
  uint64_t overflows() const override { return read_ / 10; }
  void settle() override { ++settled; }
  double centreHz() const override { return read_ >= jumps_at ? 777.0 : centre_hz_; }
  std::optional<int64_t> nextUnixMs() const override {
    return read_ == resumes_at ? std::optional(resumes_ms) : std::nullopt;
  }
  size_t read(std::span<std::complex<float>> block) override {
    if (before_read) before_read(++blocks_);
    const size_t count = std::min(block.size(), length - read_);
    for (auto& sample : block.first(count)) sample = {static_cast<float>(centreHz()), 0.0F};
    read_ += count;
    if (read_ == fails_at) throw SourceError("unplugged");
    return count;
  }
  WendleTuneResult tune(double hz) override {
    const auto answer = answers.empty() ? kTuneAccepted : answers[tunes++ % answers.size()];
    if (answer == kTuneRefused) throw SourceError("stuck");
    if (answer == kTuneAccepted) centre_hz_ = hz;
    return answer;
  }

  bool is_live = false;
  double rate_hz = 100.0;
  size_t length = 1000;
  size_t jumps_at = SIZE_MAX;
  size_t fails_at = SIZE_MAX;
  size_t resumes_at = SIZE_MAX;
  int64_t resumes_ms = 0;
  std::function<void(size_t)> before_read;  ///< told which, from 1 on
  std::vector<WendleTuneResult> answers;
  size_t tunes = 0;
  size_t settled = 0;

 private:
  size_t read_ = 0;
  size_t blocks_ = 0;
  double centre_hz_ = 50.0;
};

struct Recorder : SurveyView {
  void note(const std::string&) override {}
  void warning(const std::string& line) override { warnings += line + "\n"; }
  void message(const std::string& line) override { messages += line + "\n"; }
  void tuned(const TuneRequest& request, double) override { refusals += request.why_refused; }
  void opened(const SourceFacts&) override {}
  void dwellDone(const SurveyProgress& done) override {
    dwells += fmt::format("{} at {:g} after {}; ", done.dwells->dwells_done, done.centre_hz,
                          done.samples);
    dwell_times_ms.push_back(done.unix_ms);
  }
  std::optional<size_t> wantsSnapshot() override { return snapshot_rows; }
  void snapshot(const SurveySnapshot& run) override {
    panels.push_back(run.panel);
    elapsed_seconds.push_back(run.progress.dwell_elapsed_seconds);
    last = run.progress;
  }
  void finished(const Panel& panel) override { panels.push_back(panel); }
  std::string messages;
  std::string refusals;
  std::string warnings;
  std::string dwells;
  std::vector<int64_t> dwell_times_ms;
  std::optional<size_t> snapshot_rows;
  std::vector<Panel> panels;  ///< of snapshots, then at the end
  std::vector<double> elapsed_seconds;
  SurveyProgress last;
  SessionResult result;
};

/// Samples are read on a thread of its own, or not.
class HostSession : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override { g_has_reader_thread = GetParam(); }
  void TearDown() override { g_has_reader_thread = false; }
};
INSTANTIATE_TEST_SUITE_P(, HostSession, testing::Bool(), [](const auto& has_reader_thread) {
  return has_reader_thread.param ? "WithAReaderThread" : "OnOneThread";
});

/// Runs `source` through a plug-in; returns what the fake one recorded after attach.
std::string runThrough(
    const char* plugin_path, ScriptedSource& source, Recorder& view, SessionSettings settings,
    bool may_tune = true, const std::function<bool()>& rescan = [] { return false; },
    ClockPolicy clock = ClockPolicy::sampleClock(1000)) {
  const PluginLibrary plugin(plugin_path);
  {
    settings.may_tune = may_tune;
    settings.has_reader_thread = g_has_reader_thread;
    SurveySession session(plugin, source, clock, view, settings);
    try {
      view.result = session.run([] { return false; }, rescan);
    } catch (const SourceError& failure) {
      view.messages += failure.what();
    }
  }
  void* const library = dlopen(plugin_path, RTLD_NOW);
  using Calls = const char* (*)();
  const auto calls = reinterpret_cast<Calls>(dlsym(library, "fake_plugin_calls"));
  std::string text = calls == nullptr ? "" : calls();
  dlclose(library);
  return text;
}

TEST_P(HostSession, ReportsAnAcceptedTuneAfterTheCallAndBeforeTheNextBlock) {
  ScriptedSource source;
  source.length = 45;
  source.answers = {kTuneAccepted, kTuneOutOfRange, kTuneRefused};
  Recorder view;
  EXPECT_EQ(runThrough(FAKE_PLUGIN_PATH, source, view, {.block_samples = 10}),
            "attach\ncreate 50\nprocess 10 from 50 at 1100\nprocess 10 from 50 at 1200\ntune 0\n"
            "retune 200\nprocess 10 from 200 at 1300\nprocess 10 from 200 at 1400\ntune -2\n"
            "process 5 from 200 at 1450\ndestroy\ndetach\n");
  EXPECT_EQ(source.settled, 2u);  // at the start and when it moved
}

TEST_P(HostSession, EndsInOrderHoweverTheSourceAndTheUserBehave) {
  ScriptedSource moving;  // a recording that continues elsewhere and later, cut short
  moving.jumps_at = moving.resumes_at = 10;
  moving.resumes_ms = 60000;
  Recorder view;
  EXPECT_EQ(runThrough(FAKE_PLUGIN_PATH, moving, view,
                       {.block_samples = 10, .duration_seconds = 0.15}, false),
            "attach\ncreate 50\nprocess 10 from 50 at 1100\nretune 777\n"
            "process 5 from 777 at 60050\ntune -1\ndestroy\ndetach\n");
  ScriptedSource failing;
  failing.fails_at = 30;
  failing.resumes_at = 10;  // in the past: the clock never goes back
  failing.answers = {kTuneRefused};
  EXPECT_EQ(runThrough(FAKE_PLUGIN_PATH, failing, view, {.block_samples = 10}),
            "attach\ncreate 50\nprocess 10 from 50 at 1100\nprocess 10 from 50 at 1200\ntune -4\n"
            "destroy\ndetach\n");
  EXPECT_TRUE(view.messages.ends_with("unplugged"));
  EXPECT_EQ(view.refusals, "stuck");
  ScriptedSource passes;
  EXPECT_THROW(runThrough(FAKE_PLUGIN_PATH, passes, view, {.passes = 1}), PluginError);
}

TEST_P(HostSession, SavesAndStartsAfreshOnARescan) {
  ScriptedSource source;
  source.length = 30;
  Recorder view;
  int asked = 0;
  EXPECT_EQ(runThrough(FAKE_PLUGIN_PATH, source, view, {.block_samples = 10}, false,
                       [&] { return ++asked == 2; }),
            "attach\ncreate 50\nprocess 10 from 50 at 1100\ndestroy\ncreate 50\n"
            "process 10 from 50 at 1200\ntune -1\nprocess 10 from 50 at 1300\ndestroy\ndetach\n");
}

TEST_P(HostSession, DestroysOnceWhatCannotBeStartedAgain) {
  ScriptedSource source;
  Recorder view;
  int starts = 0, asked = 0;
  SessionSettings settings = {.block_samples = 10};
  settings.before_start = [&] {
    if (++starts == 2) throw SourceError("disk full");
  };
  EXPECT_EQ(
      runThrough(FAKE_PLUGIN_PATH, source, view, settings, false, [&] { return ++asked == 2; }),
      "attach\ncreate 50\nprocess 10 from 50 at 1100\ndestroy\ndetach\n");
  EXPECT_EQ(view.messages, "message 2\nmessage 1\ndisk full");
}

TEST_P(HostSession, GoesOnWhereOneOfTwoRequestsInACallIsAccepted) {
  using Answers = std::vector<WendleTuneResult>;
  setenv("FAKE_PLUGIN_ASKS_TWICE", "1", 1);
  const std::pair<Answers, std::string> cases[] = {
      {{kTuneAccepted, kTuneAccepted}, "tune 0\ntune 0\nretune 201\nprocess 10 from 201 at "},
      {{kTuneAccepted, kTuneOutOfRange}, "retune 200\nprocess 10 from 200 at "},
  };
  for (const auto& [answers, expected] : cases) {
    ScriptedSource source;
    source.length = 60;
    source.answers = answers;
    Recorder view;
    const auto calls = runThrough(FAKE_PLUGIN_PATH, source, view, {.block_samples = 10});
    EXPECT_NE(calls.find(expected), std::string::npos) << calls;
  }
  unsetenv("FAKE_PLUGIN_ASKS_TWICE");
}

TEST_P(HostSession, CountsDwellsWhereTheyWereLookedAtUntilThePassesAreDone) {
  const auto dwellsOf = [](const char* panel, SessionSettings settings, Recorder& view,
                           int rescan_at = 0) {
    setenv("FAKE_PLUGIN_PANEL", panel, 1);
    ScriptedSource source;
    source.length = 90;
    settings.block_samples = 10;
    runThrough(FAKE_PLUGIN_PATH, source, view, settings, true, [&] { return --rescan_at == 0; });
    unsetenv("FAKE_PLUGIN_PANEL");
    return view.dwells;
  };
  Recorder sweep;  // of 3 slices
  int dwells_after = 0;
  EXPECT_EQ(dwellsOf("sweeping", {.passes = 1, .after_dwell = [&] { ++dwells_after; }}, sweep),
            "1 at 50 after 20; 2 at 200 after 40; 3 at 400 after 60; ");
  EXPECT_EQ(sweep.result.dwells_done, 3u);
  EXPECT_EQ(dwells_after, 3);
  Recorder fixed;
  EXPECT_EQ(dwellsOf("fixed", {.passes = 2}, fixed), "1 at 50 after 20; 2 at 200 after 40; ");
  Recorder rescanned;  // in the middle of a dwell, which counts; the count of passes starts again
  rescanned.snapshot_rows = 5;
  EXPECT_EQ(dwellsOf("fixed", {.passes = 2}, rescanned, 4),
            "1 at 50 after 20; 2 at 200 after 30; 1 at 200 after 40; 2 at 400 after 60; ");
  EXPECT_EQ(rescanned.result.dwells_done, 4u);
  EXPECT_EQ(rescanned.result.samples, 60u);
  EXPECT_EQ(rescanned.last.overflows, 6u);
  EXPECT_EQ(rescanned.last.wanted_passes, 2u);
  EXPECT_EQ(rescanned.messages, "message 2\nmessage 1\nmessage 2\nmessage 1\n");
  EXPECT_EQ(rescanned.elapsed_seconds, (std::vector<double>{0.1, 0, 0.1, 0, 0.1, 0}));
  ASSERT_EQ(rescanned.panels.size(), 7u);
  EXPECT_EQ(rescanned.panels[0].rows.size(), 5u);
  const auto& rows = rescanned.panels[6].rows;
  ASSERT_EQ(rows.size(), 1001u);
  EXPECT_EQ(rows[1000].cells[0], "1000␊");
  EXPECT_EQ(rows[1000].cells.size(), 5u);
}

/// A receiver whose blocks of ten samples each take a second by a clock of the test's own.
struct ScriptedReceiver : ScriptedSource {
  static inline std::atomic<int64_t> steady_ms;
  ScriptedReceiver() {
    is_live = true;
    steady_ms = 0;
    before_read = [](size_t) { steady_ms += 1000; };
  }
  static ClockPolicy clock() {
    return ClockPolicy::systemClock(
        {[]() -> int64_t { return 5'000'000 + steady_ms; }, []() -> int64_t { return steady_ms; }});
  }
};

TEST_P(HostSession, StampsTheSamplesOfAReceiverWithTheTimeAtWhichTheyCame) {
  struct SlowView : Recorder {
    std::optional<size_t> wantsSnapshot() override {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));  // the reader is far ahead
      return std::nullopt;
    }
  };
  ScriptedReceiver source;
  source.length = 40;
  SlowView view;
  const std::string calls = runThrough(
      FAKE_PLUGIN_PATH, source, view, {.block_samples = 10}, false, [] { return false; },
      ScriptedReceiver::clock());
  EXPECT_EQ(
      calls,
      "attach\ncreate 50\nretune 50\nprocess 10 from 50 at 5001000\nprocess 10 from 50 at 5002000\n"
      "tune -1\nprocess 10 from 50 at 5003000\nprocess 10 from 50 at 5004000\ntune -1\n"
      "destroy\ndetach\n");
  EXPECT_EQ(view.result.dropped_samples, 0u);
}

TEST_P(HostSession, NeverCallsSamplesFromBeforeATuneThoseOfTheNewCentre) {
  ScriptedReceiver source;
  source.length = 400;
  Recorder view;
  const std::string calls = runThrough(
      FAKE_PLUGIN_PATH, source, view, {.block_samples = 10}, true, [] { return false; },
      ScriptedReceiver::clock());
  std::istringstream lines(calls);
  std::string line, centre = "50";
  int tunes = 0;
  while (std::getline(lines, line)) {
    if (line.starts_with("retune ")) centre = line.substr(7), ++tunes;
    if (line.starts_with("process ")) {
      EXPECT_NE(line.find(" from " + centre + " at "), std::string::npos) << calls;
    }
  }
  EXPECT_GE(tunes, 1);
  // What was dropped at a tune was read in vain, not lost.
  EXPECT_EQ(view.result.dropped_samples, 0u);
}

TEST(SampleFeed, DropsTheOldestChunksOfAReceiverWhenItsBufferIsFull) {
  ScriptedReceiver source;
  source.length = 200;
  std::atomic<bool> is_read = false;
  source.before_read = [&](size_t block) { is_read = block == 21; };  // the last one is empty
  const auto feed =
      feedWithReaderThread(ChunkReader(source, 10, steadyClockMs), true, 5 * 80, [] {});
  feed->front(UINT64_MAX);  // from now on they come, 8 bytes each, while nobody takes any
  while (!is_read) std::this_thread::yield();
  uint64_t samples = 0, next = 0;
  for (const SampleChunk* chunk = feed->front(UINT64_MAX); chunk == nullptr || chunk->samples > 0;
       chunk = feed->front(UINT64_MAX)) {
    if (chunk == nullptr) continue;
    EXPECT_GE(chunk->first_sample, next) << "the order is kept";
    next = chunk->first_sample + chunk->samples;
    samples += chunk->samples;
    feed->release();
  }
  EXPECT_EQ(next, 200u) << "the newest are there";
  EXPECT_EQ(samples + feed->droppedSamples(), 200u);
  EXPECT_GE(feed->droppedSamples(), 100u);
  EXPECT_LE(samples, 70u);
}

TEST_P(HostSession, KeepsThePaceOfTheReceiverWhereThatIsWanted) {
  ScriptedSource source;
  source.length = 20;
  Recorder view;
  const auto begun = std::chrono::steady_clock::now();
  runThrough(FAKE_PLUGIN_PATH, source, view, {.block_samples = 10, .realtime = true});
  EXPECT_GE(std::chrono::steady_clock::now() - begun, std::chrono::milliseconds(200));
}

TEST(SurveyClock, FollowsTheSamplesWithoutDrift) {
  SurveyClock clock(ClockPolicy::sampleClock(1000), 2.4e6);
  for (int i = 0; i < 2399; ++i) clock.advance(1);
  EXPECT_EQ(clock.nowMs(), 1000);  // a sample short of a millisecond
  clock.advance(1);
  EXPECT_EQ(clock.nowMs(), 1001);
  clock.advance(uint64_t{2'400'000} * 3600 * 24 * 365 * 100);
  EXPECT_EQ(clock.nowMs(), int64_t{1001} + int64_t{1000} * 3600 * 24 * 365 * 100);
  // 0 would mean that the time is unknown.
  EXPECT_NE(SurveyClock(ClockPolicy::sampleClock(0), 1.0).nowMs(), 0);
}

TEST(SurveyClock, OfALiveReceiverStartsAtTheTimeOnTheWallAndRunsEvenly) {
  const int64_t before_ms = wallClockMs();
  SurveyClock of_the_system(ClockPolicy::systemClock(), 1.0);
  of_the_system.advance(1'000'000'000);
  of_the_system.leapTo(before_ms + 1'000'000'000);
  EXPECT_GE(of_the_system.nowMs(), before_ms);
  EXPECT_LE(of_the_system.nowMs(), wallClockMs() + 1);
}

TEST(SurveyClock, GoesOnWhileTheSystemsClockIsSetAndFollowsItFromTheNextDwellOn) {
  static int64_t wall_ms, steady_ms;
  wall_ms = 10'000'000, steady_ms = 70'000;
  const SystemClocks clocks{[] { return wall_ms + steady_ms; }, [] { return steady_ms; }};
  const TemporaryDir dir;
  setenv("ORVANE_SURVEY_DIR", dir.path().c_str(), 1);
  dir.write("survey.cfg", "sweep = no\ndwell_seconds = 5\n");
  ScriptedSource source;
  source.length = 60'000;
  source.before_read = [](size_t block) {
    steady_ms += 1000;
    if (block == 7) wall_ms -= 3'600'000;
    if (block == 13) wall_ms += 1500;  // too little to be said
    if (block == 18) wall_ms += 86'400'000;
  };
  Recorder view;
  runThrough(
      PELAGRIM_PLUGIN_PATH, source, view, {.block_samples = 2000}, false, [] { return false; },
      ClockPolicy::systemClock(clocks));
  EXPECT_EQ(view.dwell_times_ms, (std::vector<int64_t>{10'075'000, 10'080'000, 6'485'000, 6'490'000,
                                                       92'896'500, 92'901'500}));
  EXPECT_EQ(std::regex_replace(view.warnings, std::regex("all samples at .* are the same.*\n"), ""),
            "the system's clock was set back by 3600 s; times in the list follow it from the next "
            "dwell on\nthe system's clock was set forward by 86402 s; times in the list follow it "
            "from the next dwell on\n");
}

TEST(SampleCheck, NamesEachFaultOnceForACentreAndNoneOfSoundSamples) {
  struct Case {
    const char* words;  ///< of the line; empty: none
    std::complex<float> constant;
    float noise;
    float limit;  ///< of the converter
  };
  const float nan = std::nanf("");
  const Case cases[] = {{"", {0.02F, 0.0F}, 0.3F, 1.0F},
                        {"", {}, 0.3F, 1.0F},   // 0.2 % at full scale
                        {"", {}, 30.0F, 1e9F},  // floats without a full scale
                        {"are at full scale", {}, 0.5F, 1.0F},
                        {"are at full scale", {}, 0.5F, 0.9921875F},
                        {"is a constant part", {0.06F, 0.0F}, 0.3F, 1.0F},
                        {"are the same", {0.5F, 0.25F}, 0.0F, 1.0F},
                        {"are not numbers", {nan, 0.0F}, 0.3F, 1.0F}};
  for (const Case& c : cases) {
    SCOPED_TRACE(fmt::format("{} {} {}", c.words, c.noise, c.limit));
    std::mt19937 random(1);
    std::normal_distribution<float> normal;
    SampleCheck check;
    const auto dwellAt = [&](double centre_hz, int blocks = 8) {
      std::vector<std::complex<float>> block(512);
      for (int i = 0; i < blocks; ++i) {
        for (auto& sample : block) {
          const auto part = [&](float constant) {
            const float value = constant + c.noise * normal(random);
            return std::isnan(value) ? value : std::clamp(value, -c.limit, c.limit);
          };
          sample = {part(c.constant.real()), part(c.constant.imag())};
        }
        check.take(block, centre_hz);
      }
      return check.judge().value_or("");
    };
    EXPECT_EQ(dwellAt(100e6, 4), "");  // too few for a judgement
    const std::string line = dwellAt(100e6, 4);
    EXPECT_EQ(line.empty(), *c.words == '\0') << line;
    EXPECT_NE(line.find(c.words), std::string::npos) << line;
    EXPECT_EQ(dwellAt(100e6), "");
    EXPECT_EQ(dwellAt(200e6).find("200.000 MHz") == std::string::npos, *c.words == '\0');
  }
}

TEST_P(HostSession, EndsEveryDwellOnItsMillisecondWhereTheClockFollowsTheSamples) {
  const TemporaryDir dir;
  setenv("ORVANE_SURVEY_DIR", dir.path().c_str(), 1);
  dir.write("survey.cfg", "sweep = no\n");
  struct Case {
    double rate_hz;
    int64_t dwell_ms;
    size_t samples;
    std::vector<int64_t> dwell_times_ms;  ///< the last one by the end of the samples
    size_t resumes_at = SIZE_MAX;
    size_t jumps_at = SIZE_MAX;
    int rescan_at = 0;
  };
  const Case cases[] = {
      {250e3, 50, 163'750, {50, 100, 150, 200, 250, 300, 350, 400, 450, 500, 550, 600, 650, 655}},
      {2.4e6, 90, 600'000, {90, 180, 250}},   // blocks of 27.3 ms
      {333'333.3, 33, 30'000, {33, 66, 90}},  // no whole number of samples to a dwell
      {1e6, 100, 300'000, {100, 1000, 1100, 1150}, 150'000},    // a gap, to 1000, ends the second
      {1e6, 100, 300'000, {100, 250, 300}, SIZE_MAX, 150'000},  // what was there before is dropped
      {1e6, 100, 300'000, {50, 150, 250, 300}, SIZE_MAX, SIZE_MAX, 2},
      {1e6, 0, 100'000, {50, 100}},  // every block is one
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(fmt::format("{} ms at {} Hz", c.dwell_ms, c.rate_hz));
    dir.write("survey.cfg",
              fmt::format("sweep = no\ndwell_seconds = {}\n", 0.001 * double(c.dwell_ms)));
    ScriptedSource source;
    source.rate_hz = c.rate_hz;
    source.length = c.samples;
    source.jumps_at = c.jumps_at;
    source.resumes_at = c.resumes_at;
    source.resumes_ms = 2000;
    Recorder view;
    int rescan_at = c.rescan_at;
    runThrough(PELAGRIM_PLUGIN_PATH, source, view, {.dwell_length_ms = [&] { return c.dwell_ms; }},
               false, [&] { return --rescan_at == 0; });
    for (int64_t& unix_ms : view.dwell_times_ms) unix_ms -= 1000;
    EXPECT_EQ(view.dwell_times_ms, c.dwell_times_ms);
  }
}

TEST_P(HostSession, ShowsRefusalAndRecoveryOfTheRealPlugin) {
  const TemporaryDir dir;
  setenv("ORVANE_SURVEY_DIR", dir.path().c_str(), 1);
  dir.write("survey.cfg", "start = 0\nstop = 250\ndwell_seconds = 20\n");
  ScriptedSource source;
  source.length = 20000;
  source.answers = {kTuneOutOfRange, kTuneAccepted, kTuneRefused};
  Recorder view;
  runThrough(PELAGRIM_PLUGIN_PATH, source, view, {.block_samples = 100, .passes = 1});
  const size_t refused = view.messages.find("outside this radio's range");
  const size_t again = view.messages.find("survey: tuning allowed");
  const size_t stuck = view.messages.find("survey: the radio refused to tune");
  EXPECT_TRUE(refused < again && again < stuck && stuck != std::string::npos) << view.messages;
  ASSERT_EQ(view.panels.size(), 1u);
  const std::string table = formatPanel(view.panels[0]);
  EXPECT_NE(table.find("Survey  sweeping  3 slices  3 dwells done"), std::string::npos) << table;
  EXPECT_NE(table.find("! Cannot sweep  the radio refused to tune"), std::string::npos) << table;
}

TEST(PluginLibrary, IsLookedForOnlyWhereNobodyElseCouldHavePutIt) {
  namespace fs = std::filesystem;
  const TemporaryDir dir;
  const fs::path prefix = fs::canonical(dir.path());
  for (const char* folder : {"bin", "lib/pelagrim"}) fs::create_directories(prefix / folder);
  dir.write("bin/program", "");
  const auto found = [&] {
    try {
      return findDefaultPlugin(prefix / "bin/program").lexically_relative(prefix).string();
    } catch (const PluginError& error) {
      return std::string(error.what()).substr(0, 12);
    }
  };
  dir.write("pelagrim_plugin.so", "");
  EXPECT_EQ(found(), "there is no ") << "the folder above the program is anybody's";
  dir.write("lib/pelagrim/pelagrim_plugin.so", "");
  EXPECT_EQ(found(), "lib/pelagrim/pelagrim_plugin.so");
  for (const char* open : {"lib/pelagrim/pelagrim_plugin.so", "lib/pelagrim", "lib"}) {
    fs::permissions(prefix / open, fs::perms::others_write, fs::perm_options::add);
    EXPECT_NE(found(), "lib/pelagrim/pelagrim_plugin.so") << open;
    fs::permissions(prefix / open, fs::perms::others_write, fs::perm_options::remove);
  }
  if (geteuid() == 0) {
    fs::create_directory(prefix / "theirs");
    dir.write("theirs/pelagrim_plugin.so", "");
    ASSERT_EQ(chown((prefix / "theirs/pelagrim_plugin.so").c_str(), 1, 1), 0);
    fs::create_symlink("../theirs/pelagrim_plugin.so", prefix / "bin/pelagrim_plugin.so");
    EXPECT_NE(found(), "theirs/pelagrim_plugin.so");
    fs::remove(prefix / "bin/pelagrim_plugin.so");
  }
  dir.write("bin/pelagrim_plugin.so", "");
  EXPECT_EQ(found(), "bin/pelagrim_plugin.so");
}

TEST(PluginLibrary, RefusesWhatIsNoSoundPluginAndSaysWhy) {
  const std::vector<std::pair<const char*, const char*>> faults = {
      {"other version", "another version of the interface than 3"},
      {"short descriptor", "descriptor has 48 bytes instead of 56"},
      {"mask", "mask 0x2 does not agree with its list, 0x100022"},
      {"short table", "host client has 8 bytes in the list and 8 in itself instead of 16"},
      {"sizes differ", "IQ processor has 72 bytes in the list and 64 in itself"},
      {"null table", "table of its IQ processor is null"},
      {"null function", "function of its IQ processor is null"},
      {"no processor", "no IQ processor"}};
  const auto failureOf = [](const char* path) -> std::string {
    try {
      return PluginLibrary(path).describe();
    } catch (const PluginError& failure) {
      return failure.what();
    }
  };
  for (const auto& [fault, words] : faults) {
    setenv("FAKE_PLUGIN_FAULT", fault, 1);
    EXPECT_NE(failureOf(FAKE_PLUGIN_PATH).find(words), std::string::npos) << fault;
  }
  unsetenv("FAKE_PLUGIN_FAULT");
  EXPECT_NE(failureOf(FAKE_PLUGIN_PATH).find("kind 1048576, not known here"), std::string::npos);
  EXPECT_NE(failureOf("libm.so.6").find("does not export"), std::string::npos);
  EXPECT_NE(failureOf("/nowhere.so").find("/nowhere.so"), std::string::npos);
}

}  // namespace
}  // namespace pelagrim_host
