#include "host/evidence/row_spectra.h"

#include <algorithm>

namespace pelagrim_host {

using pelagrim::kSpectrumBins;

RowSpectra::RowSpectra(uint32_t row_frames)
    : shortest_row_frames_(std::max<uint32_t>(row_frames, 1)),
      sum_(kSpectrumBins),
      row_sum_(kSpectrumBins),
      row_frames_(shortest_row_frames_) {
  frame_.prepare();
}

void RowSpectra::take(std::span<const std::complex<float>> samples) {
  while (!samples.empty()) {
    const size_t count = std::min(samples.size(), kSpectrumBins - frame_.fill);
    frame_.take(reinterpret_cast<const float*>(samples.data()), count);
    if (frame_.frames > 0) addFrame();
    samples = samples.subspan(count);
  }
}

void RowSpectra::addFrame() {
  // The power of a frame added to zero is that power, so both sums are as if added to directly.
  const std::vector<double>& power = frame_.power_sum;
  for (size_t k = 0; k < kSpectrumBins; ++k) {
    sum_[k] += power[k];
    row_sum_[k] += power[k];
  }
  frame_.clearSum();
  ++frames_;
  if (++frames_in_row_ == row_frames_) endRow();
}

void RowSpectra::endRow() {
  if (rows_ == kMaxRows) mergeRows();
  if (frames_in_row_ < row_frames_) return;  // rows have become longer
  powers_.resize(std::max(powers_.size(), (rows_ + 1) * kSpectrumBins));
  float* const row = &powers_[rows_ * kSpectrumBins];
  const double scale = 1.0 / row_frames_;
  for (size_t k = 0; k < kSpectrumBins; ++k) row[k] = static_cast<float>(row_sum_[k] * scale);
  std::fill(row_sum_.begin(), row_sum_.end(), 0.0);
  frames_in_row_ = 0;
  ++rows_;
}

void RowSpectra::mergeRows() {
  rows_ /= 2;
  row_frames_ *= 2;
  for (size_t i = 0; i < rows_; ++i) {
    const float* const first = &powers_[2 * i * kSpectrumBins];
    const float* const second = first + kSpectrumBins;
    float* const merged = &powers_[i * kSpectrumBins];
    for (size_t k = 0; k < kSpectrumBins; ++k) merged[k] = 0.5F * (first[k] + second[k]);
  }
}

void RowSpectra::clear() {
  std::fill(sum_.begin(), sum_.end(), 0.0);
  std::fill(row_sum_.begin(), row_sum_.end(), 0.0);
  frames_ = frames_in_row_ = 0;
  rows_ = 0;
  row_frames_ = shortest_row_frames_;
}

void RowSpectra::restart() {
  clear();
  frame_.restart();
}

}  // namespace pelagrim_host
