#include "host/evidence/dwell_observer.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "host/evidence/on_air.h"
#include "survey/detection.h"
#include "survey/percentile.h"

namespace pelagrim_host {
namespace {

using pelagrim::kSpectrumBins;

// As in a check of the samples: converters of eight bits end at 127 of 128.
constexpr float kFullScale = 0.992F;
constexpr double kLowRank = 0.1;

uint64_t fullScaleSamples(std::span<const std::complex<float>> samples) {
  return static_cast<uint64_t>(
      std::count_if(samples.begin(), samples.end(), [](std::complex<float> sample) {
        return std::abs(sample.real()) >= kFullScale || std::abs(sample.imag()) >= kFullScale;
      }));
}

std::vector<FrequencyInterval> intervalsOf(const pelagrim::Survey& places) {
  std::vector<FrequencyInterval> intervals;
  for (const auto& [slot, channel] : places.channels) {
    intervals.push_back(
        {channel.centre_hz - 0.5 * channel.width_hz, channel.centre_hz + 0.5 * channel.width_hz});
  }
  return intervals;
}

/// The plug-in takes the median of the quiet bins for the noise. Where fewer than an eighth are
/// quiet, it has to do with a guess.
bool isFloorSure(const std::vector<float>& levels, double threshold_db) {
  const double limit_db = pelagrim::percentileDb(levels, kLowRank) + threshold_db;
  const auto quiet = std::count_if(levels.begin(), levels.end(), [&](float level_db) {
    return static_cast<double>(level_db) <= limit_db;
  });
  return static_cast<size_t>(quiet) >= levels.size() / 8;
}

/// The highest level and a low one of each bin over the rows.
void addRowLevels(const RowSpectra& spectra, DwellRecord& record) {
  if (spectra.rows() == 0) {
    record.max_db = record.low_db = record.mean_db;
    return;
  }
  std::vector<double> highest(kSpectrumBins), low(kSpectrumBins);
  std::vector<float> powers(spectra.rows());
  const auto rank =
      static_cast<size_t>(std::lround(kLowRank * static_cast<double>(powers.size() - 1)));
  for (size_t bin = 0; bin < kSpectrumBins; ++bin) {
    for (size_t row = 0; row < powers.size(); ++row) powers[row] = spectra.row(row)[bin];
    highest[bin] = static_cast<double>(*std::max_element(powers.begin(), powers.end()));
    const auto at_rank = powers.begin() + static_cast<std::ptrdiff_t>(rank);
    std::nth_element(powers.begin(), at_rank, powers.end());
    low[bin] = static_cast<double>(*at_rank);
  }
  record.max_db = pelagrim::levelsDb(highest, 1);
  record.low_db = pelagrim::levelsDb(low, 1);
}

}  // namespace

void DwellObserver::start(const pelagrim::Slice& slice, const pelagrim::Survey& known,
                          double threshold_db) {
  slice_ = slice;
  places_ = known;
  threshold_db_ = threshold_db;
  spectra_.emplace(rowFrames(slice.sample_rate_hz, resolution_seconds_));
  to_discard_ = 0;
  beginDwell();
}

void DwellObserver::take(std::span<const std::complex<float>> samples, int64_t first_unix_ms) {
  if (to_discard_ > 0) {
    const size_t count = std::min<uint64_t>(to_discard_, samples.size());
    to_discard_ -= count;
    next_sample_ += count;
    is_whole_ = false;
    samples = samples.subspan(count);
  }
  if (is_empty_) {
    // A frame that was begun in the last dwell belongs to this one.
    const size_t waiting = spectra_->waitingSamples();
    first_sample_ = next_sample_ - waiting;
    first_unix_ms_ =
        first_unix_ms - std::llround(1000.0 * static_cast<double>(waiting) / slice_.sample_rate_hz);
    is_empty_ = samples.empty();
  }
  full_scale_samples_ += fullScaleSamples(samples);
  spectra_->take(samples);
  next_sample_ += samples.size();
}

void DwellObserver::skip(uint64_t count) {
  // Frames must go on where the plug-in's do.
  const uint64_t begun = to_discard_ > 0 ? kSpectrumBins - to_discard_ : spectra_->waitingSamples();
  const uint64_t in_frame = (begun + count) % kSpectrumBins;
  to_discard_ = in_frame == 0 ? 0 : kSpectrumBins - in_frame;
  next_sample_ += count;
  is_whole_ = false;
  spectra_->restart();
}

std::optional<DwellRecord> DwellObserver::finishDwell(int64_t end_unix_ms) {
  const RowSpectra& spectra = *spectra_;
  if (spectra.frames() == 0 || !is_whole_) {
    beginDwell();
    return std::nullopt;
  }
  DwellRecord record;
  record.slice = slice_;
  record.end_unix_ms = end_unix_ms;
  record.first_unix_ms = first_unix_ms_;
  record.first_sample = first_sample_;
  record.samples = next_sample_ - first_sample_;
  record.frames = spectra.frames();
  record.full_scale_samples = full_scale_samples_;
  record.threshold_db = threshold_db_;
  record.mean_db = pelagrim::levelsDb(spectra.sum(), spectra.frames());
  record.detections = pelagrim::findDetections(record.mean_db, slice_, threshold_db_);
  record.floor_is_sure = isFloorSure(record.mean_db, threshold_db_);
  addRowLevels(spectra, record);

  places_.lookAt(slice_.lowHz(), slice_.highHz());
  for (const auto& found : record.detections) places_.add(found, end_unix_ms);
  record.row_frames = spectra.rowFrames();
  record.places = watchPlaces(spectra, slice_, intervalsOf(places_));
  beginDwell();
  return record;
}

void DwellObserver::retune(double centre_hz) {
  slice_.centre_hz = centre_hz;
  spectra_->restart();
  to_discard_ = 0;
  beginDwell();
}

void DwellObserver::beginDwell() {
  spectra_->clear();
  is_empty_ = true;
  is_whole_ = true;
  full_scale_samples_ = 0;
}

}  // namespace pelagrim_host
