#include "host/evidence/on_air.h"

#include <algorithm>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <optional>

namespace pelagrim_host {
namespace {

using pelagrim::kSpectrumBins;

constexpr double kFalseRows = 1e-6;
constexpr double kMaxThreshold = 3.981;  // 6 dB
constexpr double kMinThreshold =
    1.413;                             // 1.5 dB: the noise is not known better from its neighbours
constexpr size_t kNeighbours = 16;     // free bins on each side
constexpr size_t kMaxDistance = 192;   // bins to the farthest of them
constexpr size_t kRowsForNoise = 128;  // enough for a median
constexpr size_t kGuardBins = 2;       // the window spreads a signal so far
constexpr size_t kMinWideBins = 8;
constexpr size_t kSpikeFirst = kSpectrumBins / 2 - 1;  // the three bins of a receiver's own spike
constexpr size_t kSpikeEnd = kSpectrumBins / 2 + 2;
constexpr double kShareOfNextBin = 4.0 / 9;  // squared correlation of a Hann window's bins: (2/3)²
constexpr double kShareOfThirdBin = 1.0 / 36;  // and two apart: (1/6)²

/// Bins [first, end).
struct BinRange {
  size_t first;
  size_t end;
  size_t size() const { return end - first; }
};

/// How many independent exponential powers m neighbouring bins are worth: squared mean over
/// variance of their sum.
double independentBins(size_t bins) {
  const auto m = static_cast<double>(bins);
  const double variance =
      m + 2.0 * (m - 1.0) * kShareOfNextBin + 2.0 * std::max(m - 2.0, 0.0) * kShareOfThirdBin;
  return m * m / variance;
}

std::optional<BinRange> binsOf(const FrequencyInterval& interval, const pelagrim::Slice& slice) {
  const double bin_hz = slice.sample_rate_hz / kSpectrumBins;
  // A bin reaches half its width to both sides of its frequency.
  const auto bin = [&](double hz) { return (hz - slice.lowHz()) / bin_hz; };
  double low = std::floor(bin(interval.low_hz) + 0.5);
  double high = std::floor(bin(interval.high_hz) + 0.5);
  if (high - low < 2.0) {
    low = std::floor(bin(0.5 * (interval.low_hz + interval.high_hz)));
    high = low + 2.0;
  }
  if (!(low >= 0.0 && high <= kSpectrumBins)) return std::nullopt;
  return BinRange{static_cast<size_t>(low), static_cast<size_t>(high)};
}

/// The median; the values are reordered. 0 for none.
float medianOf(std::vector<float>& values) {
  if (values.empty()) return 0.0F;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// The noise of a dwell: what the free bins show.
class Noise {
 public:
  Noise(const RowSpectra& spectra, const std::vector<BinRange>& occupied)
      : spectra_(spectra), is_free_(kSpectrumBins, true) {
    for (const BinRange& range : occupied) {
      const size_t first = range.first - std::min(range.first, kGuardBins);
      const size_t end = std::min(range.end + kGuardBins, kSpectrumBins);
      std::fill(is_free_.begin() + static_cast<std::ptrdiff_t>(first),
                is_free_.begin() + static_cast<std::ptrdiff_t>(end), false);
    }
    findGains();
  }

  /// What the receiver's gain, or a disturbance of the whole slice, makes of the noise in a row.
  float gain(size_t row) const { return gains_[row]; }

  /// The mean noise power of the bins of `range` at gain 1: half-way between that below and that
  /// above it. 0 if there are no free bins on either side.
  double at(const BinRange& range) const {
    std::vector<size_t> below, above;
    for (size_t d = 1; d <= kMaxDistance; ++d) {
      if (d <= range.first) takeIfFree(range.first - d, below);
      if (range.end - 1 + d < kSpectrumBins) takeIfFree(range.end - 1 + d, above);
    }
    if (below.empty() || above.empty()) return meanPower(below.empty() ? above : below);
    return 0.5 * (meanPower(below) + meanPower(above));
  }

 private:
  void takeIfFree(size_t bin, std::vector<size_t>& bins) const {
    if (is_free_[bin] && bins.size() < kNeighbours) bins.push_back(bin);
  }

  /// Of a bin of noise, from the median of many, which is below the mean and does not follow the
  /// signals that some of them may hold.
  double meanPower(const std::vector<size_t>& bins) const {
    std::vector<float> powers;
    for (size_t row = 0; row < spectra_.rows(); row += stride()) {
      const auto spectrum = spectra_.row(row);
      for (const size_t bin : bins) powers.push_back(spectrum[bin] / gains_[row]);
    }
    const double frames = spectra_.rowFrames();
    return static_cast<double>(medianOf(powers)) * frames / boost::math::gamma_p_inv(frames, 0.5);
  }

  size_t stride() const { return (spectra_.rows() + kRowsForNoise - 1) / kRowsForNoise; }

  void findGains() {
    gains_.assign(spectra_.rows(), 1.0F);
    std::vector<size_t> free_bins;
    for (size_t bin = 0; bin < kSpectrumBins; ++bin) {
      if (is_free_[bin]) free_bins.push_back(bin);
    }
    // Few bins would tell the gain only roughly, and may be the edges of one strong signal.
    if (free_bins.size() < kSpectrumBins / 8) return;
    std::vector<float> usual(kSpectrumBins);
    std::vector<float> values;
    for (const size_t bin : free_bins) {
      values.clear();
      for (size_t row = 0; row < spectra_.rows(); row += stride()) {
        values.push_back(spectra_.row(row)[bin]);
      }
      usual[bin] = medianOf(values);
    }
    for (size_t row = 0; row < spectra_.rows(); ++row) {
      const auto spectrum = spectra_.row(row);
      values.clear();
      for (const size_t bin : free_bins) {
        if (usual[bin] > 0.0F) values.push_back(spectrum[bin] / usual[bin]);
      }
      const float gain = medianOf(values);
      if (std::isfinite(gain) && gain > 0.0F) gains_[row] = gain;
    }
  }

  const RowSpectra& spectra_;
  std::vector<bool> is_free_;
  std::vector<float> gains_;  ///< of each row
};

WatchedPlace watch(const RowSpectra& spectra, const pelagrim::Slice& slice, const Noise& noise,
                   const BinRange& range, double noise_power) {
  const double bin_hz = slice.sample_rate_hz / kSpectrumBins;
  const double row_ms = 1000.0 * kSpectrumBins * spectra.rowFrames() / slice.sample_rate_hz;
  WatchedPlace place;
  place.low_hz = slice.lowHz() + (static_cast<double>(range.first) - 0.5) * bin_hz;
  place.high_hz = slice.lowHz() + (static_cast<double>(range.end) - 0.5) * bin_hz;
  place.threshold = onAirThreshold(range.size(), spectra.rowFrames());
  // Next to a wide signal's power the receiver's spike says nothing of it.
  const auto counts = [&](size_t bin) {
    return range.size() < kMinWideBins || bin < kSpikeFirst || bin >= kSpikeEnd;
  };
  std::vector<size_t> bins;
  for (size_t bin = range.first; bin < range.end; ++bin) {
    if (counts(bin)) bins.push_back(bin);
  }
  const double limit = place.threshold * noise_power * static_cast<double>(bins.size());
  bool was_on = false;
  for (size_t row = 0; row < spectra.rows(); ++row) {
    double power = 0.0;
    const auto spectrum = spectra.row(row);
    for (const size_t bin : bins) power += static_cast<double>(spectrum[bin]);
    const bool is_on = power > limit * static_cast<double>(noise.gain(row));
    if (is_on == was_on) continue;
    place.edges_ms.push_back(
        static_cast<uint32_t>(std::llround(static_cast<double>(row) * row_ms)));
    was_on = is_on;
  }
  return place;
}

}  // namespace

double onAirThreshold(size_t bins, uint32_t frames) {
  const double shape = independentBins(std::max<size_t>(bins, 2)) * frames;
  return std::max(boost::math::gamma_q_inv(shape, kFalseRows) / shape, kMinThreshold);
}

uint32_t rowFrames(double sample_rate_hz, double resolution_seconds) {
  constexpr double kMaxFrames = 1e6;
  const double wanted = std::round(resolution_seconds * sample_rate_hz / kSpectrumBins);
  auto frames = static_cast<uint32_t>(std::clamp(wanted, 1.0, kMaxFrames));
  while (onAirThreshold(2, frames) > kMaxThreshold) ++frames;
  return frames;
}

std::vector<WatchedPlace> watchPlaces(const RowSpectra& spectra, const pelagrim::Slice& slice,
                                      std::span<const FrequencyInterval> intervals) {
  std::vector<WatchedPlace> places;
  if (spectra.rows() == 0) return places;
  std::vector<BinRange> ranges;
  for (const FrequencyInterval& interval : intervals) {
    if (const auto range = binsOf(interval, slice)) ranges.push_back(*range);
  }
  const Noise noise(spectra, ranges);
  for (const BinRange& range : ranges) {
    const double noise_power = noise.at(range);
    if (noise_power > 0.0) places.push_back(watch(spectra, slice, noise, range, noise_power));
  }
  return places;
}

}  // namespace pelagrim_host
