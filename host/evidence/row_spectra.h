#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "survey/spectrum.h"

namespace pelagrim_host {

/// The power spectra of a dwell in short rows, one after the other, and their sum, which is the
/// plug-in's to the bit. Not synchronised.
///
/// The frames are cut from the stream exactly as the plug-in cuts them. Each is added to its row
/// and, apart from that and in order, to the sum: rows added up would round differently.
class RowSpectra {
 public:
  /// A row has `row_frames` frames, at least 1, as long as there are no more than kMaxRows; then
  /// two and two become one.
  explicit RowSpectra(uint32_t row_frames);

  static constexpr size_t kMaxRows = 4096;

  /// Takes the samples that follow.
  void take(std::span<const std::complex<float>> samples);

  /// The dwell is over: rows and sum begin anew, the samples of a frame begun go to the next one.
  void clear();

  /// The centre has changed: these samples are dropped, too.
  void restart();

  /// Power of each bin, summed over the frames of the dwell.
  const std::vector<double>& sum() const { return sum_; }
  uint32_t frames() const { return frames_; }

  /// Samples of the frame that is not full yet.
  size_t waitingSamples() const { return frame_.fill; }

  /// Complete rows; the frames after the last of them are in none.
  size_t rows() const { return rows_; }
  uint32_t rowFrames() const { return row_frames_; }

  /// The mean power of each bin in a row.
  std::span<const float> row(size_t index) const {
    return std::span(powers_).subspan(index * pelagrim::kSpectrumBins, pelagrim::kSpectrumBins);
  }

 private:
  void addFrame();
  void endRow();
  void mergeRows();

  const uint32_t shortest_row_frames_;
  pelagrim::Spectrum frame_;  ///< holds one frame at a time
  std::vector<double> sum_;
  uint32_t frames_ = 0;
  std::vector<double> row_sum_;
  uint32_t frames_in_row_ = 0;
  uint32_t row_frames_;
  std::vector<float> powers_;  ///< row after row
  size_t rows_ = 0;
};

}  // namespace pelagrim_host
