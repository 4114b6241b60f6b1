#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/rival_pipelines.h"
#include "survey/spectrum.h"
#include "survey/spectrum_kernel.h"
#include "tests/survey/plain_recurrence.h"

// The cost of a frame: ours, the plain recurrence and other libraries' transforms. Each contender
// runs for a millisecond in turn, so that whatever else the machine does hits all of them alike;
// the results are medians of the ratios within a round. One line per contender: name, ns per frame,
// times as fast as plain, times as long as ours; tab-separated.

namespace {

using pelagrim::kSpectrumBins;

constexpr size_t kRounds = 250;
constexpr std::chrono::duration<double> kRoundSeconds{0.001};
constexpr size_t kFrames = 16;  // a host's block, 128 KiB

using AddFrame = std::function<void(const float* iq, const float* window, double* power_sum)>;

struct Contender {
  std::string name;
  AddFrame add_frame;
  std::vector<float> block;
  std::vector<double> power_sum = std::vector<double>(kSpectrumBins);
};

template <typename Value>
std::vector<float> makeBlock(const Value& value) {
  std::vector<float> block(2 * kSpectrumBins * kFrames);
  std::generate(block.begin(), block.end(), value);
  return block;
}

std::vector<Contender> makeContenders() {
  std::mt19937 random(1);
  std::normal_distribution<float> gaussian;
  const std::vector<float> noise = makeBlock([&] { return gaussian(random); });
  const std::vector<float> denormals =
      makeBlock([&] { return gaussian(random) * 1000 * std::numeric_limits<float>::denorm_min(); });
  const auto rival = [](std::unique_ptr<pelagrim::FramePipeline> pipeline) -> AddFrame {
    return [shared = std::shared_ptr(std::move(pipeline))](const float* iq, const float* window,
                                                           double* power_sum) {
      shared->addFrame(iq, window, power_sum);
    };
  };

  std::vector<Contender> contenders = {
      {"plain recurrence", pelagrim::plain::addFramePower, noise},
      {"ours", pelagrim::addFramePower, noise},
      {"ours, 4 lanes", pelagrim::addFramePower4, noise},
      {"ours, silence", pelagrim::addFramePower, makeBlock([] { return 0.0F; })},
      {"ours, denormals", pelagrim::addFramePower, denormals},
      {"FFTW", rival(pelagrim::makeFftwPipeline()), noise},
  };
  if (pelagrim::hasAddFramePower8()) {
    contenders.push_back({"ours, 8 lanes", pelagrim::addFramePower8, noise});
  }
  if (pelagrim::hasAddFramePower16()) {
    contenders.push_back({"ours, 16 lanes", pelagrim::addFramePower16, noise});
  }
  if (__builtin_cpu_supports("avx2")) {
    contenders.push_back({"FFTW, AVX2 glue", rival(pelagrim::makeTunedFftwPipeline()), noise});
  }
  contenders.push_back({"KissFFT", rival(pelagrim::makeKissFftPipeline()), noise});
  contenders.push_back({"liquid-dsp", rival(pelagrim::makeLiquidPipeline()), noise});
  return contenders;
}

/// Calls add_frame once per iteration, with each frame of the block in turn.
template <typename Iterations>
void addFrames(Contender& contender, const float* window, Iterations&& iterations) {
  size_t frame = 0;
  for ([[maybe_unused]] auto iteration : iterations) {
    contender.add_frame(&contender.block[2 * kSpectrumBins * frame], window,
                        contender.power_sum.data());
    frame = (frame + 1) % kFrames;
  }
  benchmark::DoNotOptimize(contender.power_sum.data());
}

benchmark::IterationCount framesPerRound(Contender& contender, const float* window) {
  using Clock = std::chrono::steady_clock;
  constexpr int kFew = 20;
  const std::vector<int> few(kFew);
  auto shortest = Clock::duration::max();
  for (int attempt = 0; attempt < 20; ++attempt) {
    const auto start = Clock::now();
    addFrames(contender, window, few);
    shortest = std::min(shortest, Clock::now() - start);
  }
  return static_cast<benchmark::IterationCount>(kRoundSeconds / shortest * kFew);
}

/// Keeps the time of every round.
class RoundTimes : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& /*context*/) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) ns_[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
  }
  const std::vector<double>& of(const std::string& name) const { return ns_.at(name); }

 private:
  std::map<std::string, std::vector<double>> ns_;
};

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

double medianRatio(const std::vector<double>& over, const std::vector<double>& under) {
  std::vector<double> ratios(over.size());
  std::transform(over.begin(), over.end(), under.begin(), ratios.begin(), std::divides<>());
  return median(ratios);
}

}  // namespace

int main() {
  pelagrim::Spectrum spectrum;
  spectrum.prepare();
  const float* const window = spectrum.window.data();
  std::vector<Contender> contenders = makeContenders();
  std::vector<benchmark::IterationCount> frame_counts;
  frame_counts.reserve(contenders.size());
  for (Contender& contender : contenders) {
    frame_counts.push_back(framesPerRound(contender, window));
  }
  for (size_t round = 0; round < kRounds; ++round) {
    for (size_t c = 0; c < contenders.size(); ++c) {
      const auto run = [&contender = contenders[c], window](benchmark::State& state) {
        addFrames(contender, window, state);
      };
      benchmark::RegisterBenchmark(contenders[c].name.c_str(), run)->Iterations(frame_counts[c]);
    }
  }
  RoundTimes times;
  benchmark::RunSpecifiedBenchmarks(&times);

  const std::vector<double>& plain = times.of(contenders[0].name);
  const std::vector<double>& ours = times.of(contenders[1].name);
  for (const Contender& contender : contenders) {
    const std::vector<double>& own = times.of(contender.name);
    std::printf("%s\t%.0f\t%.3f\t%.3f\n", contender.name.c_str(), median(own),
                medianRatio(plain, own), medianRatio(own, ours));
  }
  return 0;
}
