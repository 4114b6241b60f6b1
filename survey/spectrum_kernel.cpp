#include "survey/spectrum_kernel.h"

#include <cmath>
#include <complex>
#include <cstddef>
#include <utility>

#include "survey/spectrum.h"

namespace pelagrim {

namespace {

using Complex = std::complex<float>;

/// The plain formula: an infinity times anything may be not-a-number.
Complex product(Complex a, Complex b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

void reverseBits(Complex* a) {
  size_t j = 0;
  for (size_t i = 1; i < kSpectrumBins; ++i) {
    size_t bit = kSpectrumBins / 2;
    for (; (j & bit) != 0; bit /= 2) j ^= bit;
    j |= bit;
    if (i < j) std::swap(a[i], a[j]);
  }
}

void transform(Complex* a) {
  constexpr double kTwoPi = 6.283185307179586;
  reverseBits(a);
  for (size_t len = 2; len <= kSpectrumBins; len *= 2) {
    const double angle = -kTwoPi / static_cast<double>(len);
    const Complex step(static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)));
    for (size_t block = 0; block < kSpectrumBins; block += len) {
      Complex w(1.0F, 0.0F);
      for (size_t j = 0; j < len / 2; ++j) {
        const Complex t = product(a[block + j + len / 2], w);
        const Complex u = a[block + j];
        a[block + j] = u + t;
        a[block + j + len / 2] = u - t;
        w = product(w, step);
      }
    }
  }
}

}  // namespace

void addFramePower(const float* iq, const float* window, double* power_sum) noexcept {
  Complex a[kSpectrumBins];
  for (size_t k = 0; k < kSpectrumBins; ++k) {
    a[k] = {iq[2 * k] * window[k], iq[2 * k + 1] * window[k]};
  }
  transform(a);
  for (size_t k = 0; k < kSpectrumBins; ++k) {
    const Complex bin = a[(k + kSpectrumBins / 2) % kSpectrumBins];
    const double re = bin.real();
    const double im = bin.imag();
    power_sum[k] += re * re + im * im;
  }
}

}  // namespace pelagrim
