// Whether a signal is seen at all.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "curves/line_chart.h"
#include "curves/measurements.h"
#include "curves/signals_in_noise.h"
#include "survey/detection.h"
#include "survey/settings.h"

namespace pelagrim_curves {

namespace {

using pelagrim::findDetections;

const double kThresholdDb = pelagrim::Settings{}.threshold_db;
constexpr uint64_t kChunk = pelagrim_host::StationSignal::kChunkSamples;

struct FrameCount {
  uint64_t frames;
  uint64_t trials;
};

uint64_t chunksOf(uint64_t frames) {
  return (frames + 3) / 4;
}

uint64_t framesIn(double seconds, const NoisyBand& band) {
  return static_cast<uint64_t>(std::llround(seconds * band.binHz()));
}

/// In how many dwells `isSeen` accepts what is found; the dwells follow one another.
template <typename IsSeen>
double shareSeen(const NoisyBand& band, const FrameCount& count, IsSeen isSeen) {
  uint64_t seen = 0;
  for (uint64_t trial = 0; trial < count.trials; ++trial) {
    const auto levels = band.listen(trial * chunksOf(count.frames), count.frames);
    if (isSeen(findDetections(levels, band.slice(), kThresholdDb))) ++seen;
  }
  return static_cast<double>(seen) / static_cast<double>(count.trials);
}

constexpr double kFullRateHz = 1e6;
constexpr double kLevelsDb[] = {6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                                16, 17, 18, 19, 20, 21, 22, 23, 24};
constexpr FrameCount kFrameCounts[] = {{1, 400}, {10, 200}, {100, 100}, {1000, 20}};

std::string framesText(uint64_t frames) {
  return fmt::format("{} frame{}", frames, frames == 1 ? "" : "s");
}

}  // namespace

void measureLevels(const std::filesystem::path& dir) {
  const Axis level{"highest bin over the noise's mean, dB", 6.0, 24.0};
  const Axis share{"share of dwells in which it is seen", 0.0, 1.0};
  LineChart carriers{"A steady carrier, threshold 12 dB", level, share, {}};
  LineChart wide{
      "Ten bins wide, threshold 12 dB", {"level of its bins over the noise, dB", 6, 24}, share, {}};
  size_t colour = 0;
  for (const FrameCount& count : kFrameCounts) {
    const std::string frames = framesText(count.frames);
    for (const bool between : {false, true}) {
      Series series{frames + (between ? ", between bins" : ", on a bin"), {}, between, colour};
      const double place = between ? 100.5 : 100.0;
      for (const double db : kLevelsDb) {
        // Between two bins the window gathers 1.42 dB less; the axis tells what the bin shows.
        NoisyBand band(kFullRateHz, 11);
        band.add(steadyCarrier(place, db + (between ? 1.42 : 0.0)));
        const double at_hz = place * band.binHz();
        const double reach_hz = 1.5 * band.binHz();
        const double seen = shareSeen(band, count, [&](const auto& all) {
          return !detectionsWithin(all, at_hz - reach_hz, at_hz + reach_hz).empty();
        });
        series.points.emplace_back(db, seen);
      }
      carriers.series.push_back(std::move(series));
    }
    Series seen{frames, {}, false, colour};
    Series whole{frames + ", in one piece", {}, true, colour};
    for (const double db : kLevelsDb) {
      NoisyBand band(kFullRateHz, 12);
      band.add(flatBand(100.3, 10.0, db, 5));
      const double low_hz = 95.3 * band.binHz();
      const double high_hz = 105.3 * band.binHz();
      uint64_t whole_dwells = 0;
      const double share_seen = shareSeen(band, count, [&](const auto& all) {
        const auto found = detectionsWithin(all, low_hz, high_hz);
        if (found.size() == 1 && found[0].width_hz > 8.0 * band.binHz()) ++whole_dwells;
        return !found.empty();
      });
      seen.points.emplace_back(db, share_seen);
      whole.points.emplace_back(
          db, static_cast<double>(whole_dwells) / static_cast<double>(count.trials));
    }
    wide.series.push_back(std::move(seen));
    wide.series.push_back(std::move(whole));
    ++colour;
  }
  carriers.write(dir, "level-carrier");
  wide.write(dir, "level-wide");
}

namespace {

/// A rate at which twenty seconds are computed quickly; a voice channel is 110 bins wide.
constexpr double kSlowRateHz = 100e3;

/// A voice that talks two seconds at a time for `duty` of the time.
pelagrim_host::SimulatedStation talkFor(double duty) {
  constexpr double kOnSeconds = 2.0;
  const bool always = duty >= 1.0;
  return {.name = "talk",
          .kind = pelagrim_host::SimulatedKind::kNfmVoice,
          .centre_hz = 20e3,
          .width_hz = 11.2e3,
          .level_db = 20.0,  // over the noise in its own width
          .deviation_hz = 3000.0,
          .on_seconds = always ? 0.0 : kOnSeconds,
          .period_seconds = always ? 0.0 : kOnSeconds / duty};
}

/// How far its strongest bin is above the floor in 20 s of talk without a pause.
double talkOverFloorDb(const pelagrim_host::Programmes& programmes) {
  NoisyBand band(kSlowRateHz, 21);
  band.add(station(talkFor(1.0), programmes, kSlowRateHz, 0.0));
  const auto levels = band.listen(0, framesIn(20.0, band));
  double over_db = 0.0;
  for (const auto& found : findDetections(levels, band.slice(), kThresholdDb)) {
    over_db = std::max(over_db, found.peak_db - found.floor_db);
  }
  return over_db;
}

/// The share of dwells in which it is seen, over all starting points.
double shareOfTalkSeen(const pelagrim_host::Programmes& programmes, double dwell_seconds,
                       double duty, uint64_t trials) {
  const bool always = duty >= 1.0;
  NoisyBand band(kSlowRateHz, 21);
  const pelagrim_host::SimulatedStation talk = talkFor(duty);
  band.add(station(talk, programmes, kSlowRateHz, 0.0));
  const uint64_t frames = framesIn(dwell_seconds, band);
  const uint64_t period_chunks =
      always ? 1000 : static_cast<uint64_t>(talk.period_seconds * kSlowRateHz) / kChunk;
  uint64_t seen = 0;
  for (uint64_t trial = 0; trial < trials; ++trial) {
    // Starting points spread evenly over one period.
    const uint64_t first = (2 * trial + 1) * period_chunks / (2 * trials);
    const auto found = findDetections(band.listen(first, frames), band.slice(), kThresholdDb);
    if (!detectionsWithin(found, talk.lowHz(), talk.highHz()).empty()) ++seen;
  }
  return static_cast<double>(seen) / static_cast<double>(trials);
}

constexpr double kDuties[] = {0.01, 0.02, 0.03, 0.05, 0.07, 0.1, 0.15, 0.2, 0.3, 0.5, 0.7, 1.0};

}  // namespace

void measureDutyCycles(const std::filesystem::path& dir) {
  const pelagrim_host::Programmes programmes(1);
  const Axis percent{"share of time on the air, %", 1.0, 100.0, true};
  const Axis share{"share of dwells in which it is seen", 0.0, 1.0};
  LineChart dwells{fmt::format("FM voice, 2 s at a time, {:.0f} dB over the floor while it talks",
                               talkOverFloorDb(programmes)),
                   percent,
                   share,
                   {}};
  for (const double dwell : {0.2, 1.0, 5.0, 20.0}) {
    Series series{fmt::format("dwell {:g} s", dwell), {}};
    for (const double duty : kDuties) {
      const double seen = shareOfTalkSeen(programmes, dwell, duty, 24);
      series.points.emplace_back(100.0 * duty, seen);
    }
    dwells.series.push_back(std::move(series));
  }
  dwells.write(dir, "duty-by-dwell");

  LineChart levels{"Ten bins wide, 0.1 s at a time, dwell 20 s", percent, share, {}};
  constexpr uint64_t kTrials = 8;
  constexpr double kOnSamples = 0.1 * kSlowRateHz;
  for (const double db : {15.0, 20.0, 25.0, 30.0}) {
    Series series{fmt::format("{:g} dB over the floor", db), {}};
    for (const double duty : kDuties) {
      NoisyBand band(kSlowRateHz, 22);
      const auto period = static_cast<uint64_t>(kOnSamples / duty);
      band.add(keyed(flatBand(200.3, 10.0, db, 6), static_cast<uint64_t>(kOnSamples), period));
      const uint64_t frames = framesIn(20.0, band);
      const double seen = shareSeen(band, {frames, kTrials}, [&](const auto& all) {
        return !detectionsWithin(all, 195.3 * band.binHz(), 205.3 * band.binHz()).empty();
      });
      series.points.emplace_back(100.0 * duty, seen);
    }
    levels.series.push_back(std::move(series));
  }
  levels.write(dir, "duty-by-level");
}

void measureFalseAlarms(const std::filesystem::path& dir) {
  LineChart chart{"Noise alone: detections per dwell",
                  {"threshold, dB", 0.0, 14.0},
                  {"detections per dwell of 1024 bins", 1e-4, 1e3, true},
                  {}};
  constexpr FrameCount kNoiseDwells[] = {{1, 40000}, {2, 20000}, {4, 20000}, {10, 5000},
                                         {30, 1500}, {100, 500}, {1000, 50}};
  const NoisyBand band(kFullRateHz, 31);
  for (const FrameCount& count : kNoiseDwells) {
    constexpr double kStepDb = 0.5;
    std::vector<uint64_t> alarms(29);
    for (uint64_t trial = 0; trial < count.trials; ++trial) {
      const auto levels = band.listen(trial * chunksOf(count.frames), count.frames);
      for (size_t i = 0; i < alarms.size(); ++i) {
        const double threshold_db = kStepDb * static_cast<double>(i);
        const size_t found = findDetections(levels, band.slice(), threshold_db).size();
        alarms[i] += found;
        if (found == 0 && threshold_db > 3.0) break;  // there are none above it either
      }
    }
    Series series{framesText(count.frames), {}};
    for (size_t i = 0; i < alarms.size(); ++i) {
      const double per_dwell = static_cast<double>(alarms[i]) / static_cast<double>(count.trials);
      series.points.emplace_back(kStepDb * static_cast<double>(i), per_dwell);
      if (alarms[i] == 0) break;
    }
    chart.series.push_back(std::move(series));
  }
  chart.write(dir, "false-alarms");
}

void measureBursts(const std::filesystem::path& dir) {
  LineChart chart{"One burst, 30 dB over the floor, ten bins wide",
                  {"length of the burst, ms", 1.0, 1000.0, true},
                  {"share of dwells in which it is seen", 0.0, 1.0},
                  {}};
  constexpr double kLengthsMs[] = {1,  2,  3,   5,   7,   10,  15,  20,  30,
                                   50, 70, 100, 150, 200, 300, 500, 1000};
  constexpr uint64_t kTrials = 20;
  const Signal burst = flatBand(200.3, 10.0, 30.0, 6);
  for (const double dwell : {0.05, 0.2, 1.0, 5.0, 20.0}) {
    Series series{fmt::format("dwell {:g} s", dwell), {}};
    for (const double length_ms : kLengthsMs) {
      const auto length = static_cast<uint64_t>(1e-3 * length_ms * kSlowRateHz);
      uint64_t seen = 0;
      for (uint64_t trial = 0; trial < kTrials; ++trial) {
        NoisyBand band(kSlowRateHz, 41 + trial);
        const uint64_t frames = framesIn(dwell, band);
        const uint64_t samples = frames * 1024;
        // It begins anywhere in the dwell; the end of the dwell may cut it off.
        const uint64_t begin = pelagrim_host::hashedNumber(3, trial) % samples;
        band.add(burstOf(burst, begin, begin + length));
        const auto found = findDetections(band.listen(0, frames), band.slice(), kThresholdDb);
        if (!detectionsWithin(found, 195 * band.binHz(), 205 * band.binHz()).empty()) ++seen;
      }
      series.points.emplace_back(length_ms, static_cast<double>(seen) / kTrials);
    }
    chart.series.push_back(std::move(series));
  }
  chart.write(dir, "bursts");
}

}  // namespace pelagrim_curves
