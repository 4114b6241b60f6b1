#include "survey/spectrum.h"

#include <algorithm>
#include <cmath>

#include "survey/spectrum_kernel.h"

namespace pelagrim {

namespace {

/// The symmetric Hann window: zero at both ends.
std::vector<float> hannWindow() {
  constexpr double kTwoPi = 6.283185307179586;
  std::vector<float> window(kSpectrumBins);
  for (size_t i = 1; i < kSpectrumBins; ++i) {
    const double angle = static_cast<double>(i) * kTwoPi / (kSpectrumBins - 1);
    window[i] = static_cast<float>((1.0 - std::cos(angle)) * 0.5);
  }
  return window;
}

}  // namespace

void Spectrum::prepare() {
  release();
  std::vector<double> sum(kSpectrumBins);
  std::vector<std::complex<float>> frame(kSpectrumBins);
  window = hannWindow();
  power_sum = std::move(sum);
  fft_buf = std::move(frame);
}

void Spectrum::release() noexcept {
  power_sum = {};
  fft_buf = {};
  window = {};
  frames = 0;
  fill = 0;
}

void Spectrum::clearSum() noexcept {
  std::fill(power_sum.begin(), power_sum.end(), 0.0);
  frames = 0;
}

void Spectrum::restart() noexcept {
  clearSum();
  fill = 0;
}

void Spectrum::take(const float* iq, size_t n) noexcept {
  if (fft_buf.empty()) return;
  const float* const end = iq + 2 * n;
  const auto add_frame = [this](const float* frame) {
    addFramePower(frame, window.data(), power_sum.data());
    ++frames;
  };
  // Only the ragged ends of a block are copied; whole frames are used in place.
  auto* const gathered = reinterpret_cast<float*>(fft_buf.data());
  while (iq != end) {
    const size_t waiting = static_cast<size_t>(end - iq) / 2;
    if (fill == 0 && waiting >= kSpectrumBins) {
      add_frame(iq);
      iq += 2 * kSpectrumBins;
      continue;
    }
    const size_t taken = std::min(waiting, kSpectrumBins - fill);
    std::copy_n(iq, 2 * taken, gathered + 2 * fill);
    iq += 2 * taken;
    fill += taken;
    if (fill == kSpectrumBins) {
      add_frame(gathered);
      fill = 0;
    }
  }
}

}  // namespace pelagrim
