#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace pelagrim {

constexpr size_t kSpectrumBins = 1024;

/// The power spectrum of a stream of IQ samples, summed over the frames of one dwell.
///
/// The stream is cut into frames of 1024 consecutive samples; each is windowed (symmetric Hann),
/// transformed and its squared magnitudes are added to `power_sum`. Not synchronised. The buffers
/// are either all empty (nothing is gathered) or all of 1024 entries.
struct Spectrum {
  /// Squared magnitudes summed per bin, not normalised. Entry k stands for the frequency
  /// centre + (k - 512) * rate / 1024: lowest first, the centre at 512.
  std::vector<double> power_sum;
  uint32_t frames = 0;                       ///< frames added to power_sum
  std::vector<std::complex<float>> fft_buf;  ///< the frame being gathered
  std::vector<float> window;
  size_t fill = 0;  ///< samples waiting in fft_buf, below 1024

  /// Sizes the buffers, clears them and builds the window. May throw std::bad_alloc; the buffers
  /// are then empty.
  void prepare();

  /// Empties the buffers. Samples are dropped until the next prepare.
  void release() noexcept;

  /// Sets the sum to zero for the next dwell and keeps a frame that is half gathered.
  void clearSum() noexcept;

  /// Sets the sum to zero and drops a frame that is half gathered.
  void restart() noexcept;

  /// Takes n complex samples: iq points to 2 n floats, I then Q, aligned to 4 bytes. Never
  /// allocates.
  void take(const float* iq, size_t n) noexcept;
};

}  // namespace pelagrim
