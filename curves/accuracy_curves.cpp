// Where a signal is seen, how wide, and as what kind.
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
#include "survey/signal_kind.h"

namespace pelagrim_curves {

namespace {

using pelagrim::Detection;
using pelagrim::findDetections;

const double kThresholdDb = pelagrim::Settings{}.threshold_db;
constexpr double kRateHz = 1e6;
constexpr uint64_t kFrames = 1000;

struct Span {
  double centre_hz = 0.0;
  double width_hz = 0.0;
};

/// From the lowest to the highest edge of the pieces found of a signal; width 0 if there are none.
Span spanOf(const std::vector<Detection>& pieces) {
  if (pieces.empty()) return {};
  const double low_hz = pieces.front().centre_hz - 0.5 * pieces.front().width_hz;
  const double high_hz = pieces.back().centre_hz + 0.5 * pieces.back().width_hz;
  return {0.5 * (low_hz + high_hz), high_hz - low_hz};
}

}  // namespace

void measureAccuracy(const std::filesystem::path& dir) {
  const Axis width{"true width, bins", 2.0, 200.0, true};
  LineChart centres{"Centre: typical error of one dwell of 1000 frames",
                    width,
                    {"error of the centre, root mean square, bins", 0.0, 0.6},
                    {}};
  LineChart widths{"Width: mean error of one dwell of 1000 frames",
                   width,
                   {"measured less true width, bins", -2.0, 6.0},
                   {}};
  constexpr uint64_t kTrials = 16;
  for (const double db : {13.0, 15.0, 20.0, 30.0, 40.0, 50.0}) {
    Series centre{fmt::format("{:g} dB over the floor", db), {}};
    Series extent = centre;
    for (const double bins : {2.0, 3.0, 5.0, 10.0, 20.0, 50.0, 100.0, 200.0}) {
      double squares = 0.0;
      double excess = 0.0;
      uint64_t seen = 0;
      const Signal at_0 = flatBand(0.0, bins, db, 9);
      for (uint64_t trial = 0; trial < kTrials; ++trial) {
        // Every fraction of a bin equally often; the mixer moves the signal there.
        const double place = 200.0 + static_cast<double>(trial) / kTrials;
        NoisyBand band(kRateHz, 51 + trial);
        band.add(shifted(at_0, place));
        const auto all = findDetections(band.listen(0, kFrames), band.slice(), kThresholdDb);
        const double at_hz = place * band.binHz();
        const double reach_hz = 0.5 * bins * band.binHz();
        const auto pieces = detectionsWithin(all, at_hz - reach_hz, at_hz + reach_hz);
        if (pieces.empty()) continue;
        const Span span = spanOf(pieces);
        const double error = (span.centre_hz - at_hz) / band.binHz();
        squares += error * error;
        excess += span.width_hz / band.binHz() - bins;
        ++seen;
      }
      if (2 * seen < kTrials) continue;  // a signal that is hardly ever seen has no typical error
      const auto count = static_cast<double>(seen);
      centre.points.emplace_back(bins, std::sqrt(squares / count));
      extent.points.emplace_back(bins, excess / count);
    }
    centres.series.push_back(std::move(centre));
    widths.series.push_back(std::move(extent));
  }
  centres.write(dir, "centre-error");
  widths.write(dir, "width-error");
}

void measureCarriers(const std::filesystem::path& dir) {
  LineChart chart{"How wide a carrier looks, dwell of 1000 frames",
                  {"highest bin over the noise's mean, dB", 0.0, 80.0},
                  {"width, bins", 0.0, 20.0},
                  {}};
  struct Place {
    const char* name;
    double bins;
  };
  constexpr Place kPlaces[] = {
      {"on a bin", 100.0}, {"between bins", 100.5}, {"centre spike (DC)", 0.0}};
  for (const auto& [name, place] : kPlaces) {
    Series series{name, {}};
    for (int level_db = 0; level_db <= 80; level_db += 2) {
      const double db = level_db;
      NoisyBand band(kRateHz, 61);
      band.add(steadyCarrier(place, db));
      const auto all = findDetections(band.listen(0, kFrames), band.slice(), kThresholdDb);
      const double at_hz = place * band.binHz();
      const auto pieces = detectionsWithin(all, at_hz - band.binHz(), at_hz + band.binHz());
      series.points.emplace_back(db, spanOf(pieces).width_hz / band.binHz());
    }
    chart.series.push_back(std::move(series));
  }
  chart.write(dir, "carrier-width");
}

void measureKinds(const std::filesystem::path& dir) {
  using pelagrim_host::SimulatedKind;
  struct Sort {
    const char* name;
    SimulatedKind kind;
    double width_hz;
    double deviation_hz;
  };
  constexpr Sort kSorts[] = {{"steady carrier", SimulatedKind::kNfmVoice, 1000.0, 0.0},
                             {"CW", SimulatedKind::kCw, 150.0, 0.0},
                             {"SSB voice", SimulatedKind::kSsbVoice, 2200.0, 0.0},
                             {"AM voice", SimulatedKind::kAmVoice, 5200.0, 0.0},
                             {"FM voice, 2.5 kHz", SimulatedKind::kNfmVoice, 10200.0, 2500.0},
                             {"FM voice, 5 kHz", SimulatedKind::kNfmVoice, 15200.0, 5000.0},
                             {"9600 baud data", SimulatedKind::kData, 14800.0, 2600.0},
                             {"FM broadcast", SimulatedKind::kWideFm, 180000.0, 75000.0}};
  constexpr double kDwellSeconds = 4.0;
  const pelagrim_host::Programmes programmes(1);
  struct Strength {
    const char* name;
    double level_db;
  };
  constexpr Strength kStrengths[] = {{"weak", 18.0}, {"medium", 30.0}, {"strong", 45.0}};
  std::string table =
      "| station | strength | 250 kS/s | 1 MS/s | 2.4 MS/s |\n|---|---|---|---|---|\n";
  for (const Sort& sort : kSorts) {
    for (const auto& [strength, level_db] : kStrengths) {
      table += fmt::format("| {} | {} |", sort.name, strength);
      for (const double rate_hz : {250e3, 1e6, 2.4e6}) {
        NoisyBand band(rate_hz, 71);
        const double at_hz = 20.3 * band.binHz();
        const pelagrim_host::SimulatedStation truth{.name = sort.name,
                                                    .kind = sort.kind,
                                                    .centre_hz = at_hz,
                                                    .width_hz = sort.width_hz,
                                                    .level_db = level_db,
                                                    .deviation_hz = sort.deviation_hz};
        band.add(station(truth, programmes, rate_hz, 0.0));
        const auto frames = static_cast<uint64_t>(kDwellSeconds * band.binHz());
        const auto all = findDetections(band.listen(0, frames), band.slice(), kThresholdDb);
        const auto pieces = detectionsWithin(all, truth.lowHz(), truth.highHz());
        if (pieces.empty()) {
          table += " not seen |";
          continue;
        }
        const auto widest =
            std::max_element(pieces.begin(), pieces.end(),
                             [](const auto& a, const auto& b) { return a.width_hz < b.width_hz; });
        table += fmt::format(" {:.0f} dB, {:.1f} kHz {}", widest->peak_db - widest->floor_db,
                             1e-3 * widest->width_hz, pelagrim::guessKind(widest->width_hz));
        table += pieces.size() > 1 ? fmt::format(", {} pieces |", pieces.size()) : " |";
      }
      table += "\n";
    }
  }
  writeFile(dir / "kinds.md", table);
}

}  // namespace pelagrim_curves
