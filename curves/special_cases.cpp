// Signals that break into pieces, and signals that drown in their neighbours.
#include <fmt/format.h>

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
#include "survey/survey.h"

namespace pelagrim_curves {

namespace {

using pelagrim::findDetections;

const double kThresholdDb = pelagrim::Settings{}.threshold_db;

}  // namespace

void measureShortDwells(const std::filesystem::path& dir) {
  constexpr double kRateHz = 250e3;
  constexpr double kCentreHz = 30e3;
  constexpr uint64_t kDwells = 50;
  struct Case {
    const char* name;
    double half_width_hz;
    Signal signal;
  };
  const pelagrim_host::Programmes programmes(1);
  const pelagrim_host::SimulatedStation am{.name = "AM",
                                           .kind = pelagrim_host::SimulatedKind::kAmVoice,
                                           .centre_hz = kCentreHz,
                                           .width_hz = 5200.0,
                                           .level_db = 30.0};
  const Case kCases[] = {
      {"AM voice", 2600.0, station(am, programmes, kRateHz, 0.0)},
      {"50 baud, 500 Hz apart", 500.0, twoToneFsk(kRateHz, kCentreHz, 500.0, 50.0, 30.0)},
      {"50 baud, 2 kHz apart", 1500.0, twoToneFsk(kRateHz, kCentreHz, 2000.0, 50.0, 30.0)},
      {"500 baud, 9 kHz apart", 5500.0, twoToneFsk(kRateHz, kCentreHz, 9000.0, 500.0, 30.0)}};
  const Axis dwell_axis{"dwell, s (250 kS/s)", 0.004, 20.0, true};
  LineChart pieces{"Detections that one station gives rise to, on average",
                   dwell_axis,
                   {"detections per dwell", 0.0, 3.0},
                   {}};
  LineChart channels{"Channels that 50 dwells on one station leave behind, raster 5 kHz",
                     dwell_axis,
                     {"channels in the list", 0.0, 4.0},
                     {}};
  LineChart widths{"Mean width of what is found of it", dwell_axis, {"width, kHz", 0.0, 7.0}, {}};
  for (const auto& [name, half_width_hz, signal] : kCases) {
    Series count{name, {}};
    Series kept{name, {}};
    Series width{name, {}};
    NoisyBand band(kRateHz, 81);
    band.add(signal);
    for (uint64_t frames = 1; frames <= 4096; frames *= 4) {
      const uint64_t dwells = frames < 4096 ? kDwells : 20;
      pelagrim::Survey survey;
      uint64_t found = 0;
      double width_sum_hz = 0.0;
      for (uint64_t dwell = 0; dwell < dwells; ++dwell) {
        const uint64_t first = dwell * (frames / 4 + 37);  // never the same place
        const auto all = findDetections(band.listen(first, frames), band.slice(), kThresholdDb);
        for (const auto& piece :
             detectionsWithin(all, kCentreHz - half_width_hz, kCentreHz + half_width_hz)) {
          survey.add(piece, 0);
          width_sum_hz += piece.width_hz;
          ++found;
        }
      }
      const double seconds = band.secondsOf(frames);
      count.points.emplace_back(seconds, static_cast<double>(found) / static_cast<double>(dwells));
      kept.points.emplace_back(seconds, static_cast<double>(survey.size()));
      if (found > 0) {
        width.points.emplace_back(seconds, 1e-3 * width_sum_hz / static_cast<double>(found));
      }
    }
    pieces.series.push_back(std::move(count));
    channels.series.push_back(std::move(kept));
    widths.series.push_back(std::move(width));
  }
  pieces.write(dir, "short-dwell-pieces");
  channels.write(dir, "short-dwell-channels");
  widths.write(dir, "short-dwell-width");
}

void measureFullBands(const std::filesystem::path& dir) {
  constexpr double kRateHz = 1e6;
  constexpr uint64_t kFrames = 1000;
  constexpr int kStations = 8;
  constexpr double kSpacingBins = 128.0;
  const Axis full{"share of the slice in use, %", 60.0, 100.0};
  LineChart floors{"Eight equally strong stations: the floor",
                   full,
                   {"floor that is measured, less the true one, dB", -2.0, 42.0},
                   {}};
  LineChart found{
      "Eight equally strong stations: how many are found", full, {"stations found", 0.0, 8.0}, {}};
  for (const double db : {15.0, 20.0, 30.0, 40.0}) {
    Series floor{fmt::format("{:g} dB over the floor", db), {}};
    Series seen = floor;
    for (int step = 0; step <= 26; ++step) {
      const double percent = 60.0 + 1.5 * step;
      const double width_bins = 0.01 * percent * kSpacingBins;
      const Signal at_0 = flatBand(0.0, width_bins, db, 13);
      NoisyBand band(kRateHz, 91);
      for (int i = 0; i < kStations; ++i) {
        band.add(shifted(at_0, (i - 0.5 * (kStations - 1)) * kSpacingBins));
      }
      const auto levels = band.listen(0, kFrames);
      // The noise's mean power of a bin: the window's squares summed, times 1 per sample.
      const double true_floor_db = 10.0 * std::log10(0.375 * 1023.0);
      floor.points.emplace_back(percent,
                                pelagrim::noiseFloorDb(levels, kThresholdDb) - true_floor_db);
      const auto all = findDetections(levels, band.slice(), kThresholdDb);
      int alone = 0;
      for (int i = 0; i < kStations; ++i) {
        const double at_hz = (i - 0.5 * (kStations - 1)) * kSpacingBins * band.binHz();
        const double half_hz = 0.25 * width_bins * band.binHz();
        const auto pieces = detectionsWithin(all, at_hz - half_hz, at_hz + half_hz);
        // It counts if it is found on its own: not just a piece of it, nor together with its
        // neighbours.
        if (pieces.size() == 1 && pieces[0].width_hz > 0.8 * width_bins * band.binHz() &&
            pieces[0].width_hz < kSpacingBins * band.binHz()) {
          ++alone;
        }
      }
      seen.points.emplace_back(percent, alone);
    }
    floors.series.push_back(std::move(floor));
    found.series.push_back(std::move(seen));
  }
  floors.write(dir, "full-band-floor");
  found.write(dir, "full-band-found");
}

}  // namespace pelagrim_curves
