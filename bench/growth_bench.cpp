#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "files/results_file.h"
#include "survey/detection.h"
#include "survey/spectrum.h"
#include "survey/survey.h"
#include "wendle_plugin.h"

// How the work under the lock grows with the number of channels. One line per kind of work: its
// name and the milliseconds for each number of channels, tab-separated. The shortest of all runs is
// given, which is the cost if nothing disturbs it.

namespace {

using pelagrim::Survey;

constexpr int64_t kChannelCounts[] = {0, 400, 10'000, 1'000'000};
constexpr double kRasterHz = 5000.0;
constexpr double kRateHz = 2'400'000.0;
constexpr double kCentreHz = 145e6;
constexpr unsigned kRows = 64;
constexpr const char* kMinMs = "min_ms";

Survey makeSurvey(int64_t channel_count) {
  std::mt19937 random(1);
  std::uniform_int_distribution<uint32_t> count(1, 1000);
  Survey survey;
  for (int64_t n = 0; n < channel_count; ++n) {
    const uint32_t hits = count(random);
    survey.restore({.centre_hz = kRasterHz * static_cast<double>(20000 + n),
                    .width_hz = 12.5 * count(random),
                    .peak_db = -0.1 * count(random),
                    .floor_db = -110.0,
                    .first_unix_ms = 1731760000000,
                    .last_unix_ms = 1731769999999,
                    .hits = hits,
                    .looks = hits + count(random),
                    .min_width_hz = 2500.0,
                    .max_width_hz = 12500.0});
  }
  return survey;
}

/// A directory that is removed with the object; a plug-in created meanwhile keeps its survey there.
class SurveyDir {
 public:
  SurveyDir() {
    std::string name = std::filesystem::temp_directory_path() / "pelagrim-bench-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot create " + name);
    path_ = name;
    setenv("ORVANE_SURVEY_DIR", path_.c_str(), 1);
  }
  ~SurveyDir() { std::filesystem::remove_all(path_); }
  SurveyDir(const SurveyDir&) = delete;
  SurveyDir& operator=(const SurveyDir&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

/// The built plug-in, resumed from a survey of that many channels, with its clock at `now_ms`.
class LoadedPlugin {
 public:
  explicit LoadedPlugin(int64_t channel_count) {
    pelagrim::saveSurvey(dir_.path(), makeSurvey(channel_count));
    if (library_ == nullptr) throw std::runtime_error(dlerror());
    const auto query =
        reinterpret_cast<WendlePluginQuery>(dlsym(library_, WENDLE_PLUGIN_QUERY_SYMBOL));
    const WendlePluginDesc* const desc = query(WENDLE_ABI_VERSION);
    for (uint32_t n = 0; n < desc->capability_count; ++n) {
      const WendleCapability& offer = desc->capabilities[n];
      if (offer.kind == kIqProcessor) iq = static_cast<const WendleIqApi*>(offer.table);
      if (offer.kind == kPanel) panel = static_cast<const WendlePanelApi*>(offer.table);
      if (offer.kind == kHostClient) {
        static_cast<const WendleHostClientApi*>(offer.table)->attach(&services_);
      }
    }
    services_.ctx = this;
    services_.now_ms = [](void* ctx) { return static_cast<LoadedPlugin*>(ctx)->now_ms; };
    handle = iq->create(kRateHz, kCentreHz);
  }
  ~LoadedPlugin() { dlclose(library_); }
  LoadedPlugin(const LoadedPlugin&) = delete;
  LoadedPlugin& operator=(const LoadedPlugin&) = delete;

  int64_t now_ms = 1731770000000;
  const WendleIqApi* iq = nullptr;
  const WendlePanelApi* panel = nullptr;
  void* handle = nullptr;

 private:
  SurveyDir dir_;
  void* library_ = dlopen(PELAGRIM_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
  WendleHostApi services_{};
};

std::vector<float> noise(size_t samples) {
  std::mt19937 random(1);
  std::normal_distribution<float> gaussian;
  std::vector<float> iq(2 * samples);
  for (float& value : iq) value = gaussian(random);
  return iq;
}

/// Runs the work once per iteration; the shortest time goes into the counter.
template <typename Work>
void timeEach(benchmark::State& state, const Work& work) {
  using Clock = std::chrono::steady_clock;
  auto shortest = Clock::duration::max();
  for ([[maybe_unused]] auto iteration : state) {
    const auto start = Clock::now();
    work();
    shortest = std::min(shortest, Clock::now() - start);
  }
  state.counters[kMinMs] = std::chrono::duration<double, std::milli>(shortest).count();
}

void pollPanel(benchmark::State& state) {
  LoadedPlugin plugin(state.range(0));
  std::vector<WendlePanelRow> rows(kRows);
  const auto expected = static_cast<unsigned>(std::min<int64_t>(kRows, 1 + state.range(0)));
  timeEach(state, [&] {
    if (plugin.panel->poll_rows(plugin.handle, rows.data(), kRows) != expected) {
      throw std::runtime_error("the survey was not resumed");
    }
  });
}

void writeResults(benchmark::State& state) {
  const SurveyDir dir;
  const Survey survey = makeSurvey(state.range(0));
  timeEach(state, [&] { pelagrim::saveSurvey(dir.path(), survey); });
}

/// Everything that the end of a dwell does to the survey, without the file.
void evaluateDwell(benchmark::State& state) {
  Survey survey = makeSurvey(state.range(0));
  pelagrim::Spectrum spectrum;
  spectrum.prepare();
  const std::vector<float> iq = noise(100 * pelagrim::kSpectrumBins);
  spectrum.take(iq.data(), iq.size() / 2);
  const pelagrim::Slice slice{.sample_rate_hz = kRateHz, .centre_hz = kCentreHz};
  timeEach(state, [&] {
    const std::vector<float> levels = pelagrim::levelsDb(spectrum.power_sum, spectrum.frames);
    const auto found = pelagrim::findDetections(levels, slice, 12.0);
    survey.lookAt(slice.lowHz(), slice.highHz());
    for (const pelagrim::Detection& detection : found) survey.add(detection, 0);
    benchmark::ClobberMemory();
  });
}

/// The process call that ends a dwell, as the sample thread sees it.
void endDwell(benchmark::State& state) {
  LoadedPlugin plugin(state.range(0));
  const std::vector<float> iq = noise(pelagrim::kSpectrumBins);
  timeEach(state, [&] {
    plugin.now_ms += 1'000'000;
    plugin.iq->process(plugin.handle, iq.data(), iq.size() / 2);
  });
}

/// Keeps the shortest time of each kind of work for each number of channels.
class LeastTimes : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& /*context*/) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      ms_[run.run_name.function_name][run.run_name.args] = run.counters.at(kMinMs);
    }
  }
  double of(const std::string& work, int64_t channel_count) const {
    return ms_.at(work).at(std::to_string(channel_count));
  }

 private:
  std::map<std::string, std::map<std::string, double>> ms_;
};

}  // namespace

int main() {
  const std::pair<const char*, void (*)(benchmark::State&)> works[] = {
      {"panel poll, 64 rows", pollPanel},
      {"results file", writeResults},
      {"dwell evaluation without it", evaluateDwell},
      {"whole call that ends a dwell", endDwell},
  };
  for (const auto& [name, work] : works) {
    for (const int64_t channel_count : kChannelCounts) {
      benchmark::RegisterBenchmark(name, work)
          ->Arg(channel_count)
          ->Iterations(channel_count < 1'000'000 ? 200 : 10);
    }
  }
  LeastTimes times;
  benchmark::RunSpecifiedBenchmarks(&times);
  for (const auto& [name, work] : works) {
    std::printf("%s", name);
    for (const int64_t channel_count : kChannelCounts) {
      std::printf("\t%.4f", times.of(name, channel_count));
    }
    std::printf("\n");
  }
  return 0;
}
