#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <utility>

#include "survey/spectrum.h"

namespace pelagrim {

/// What addFramePower must compute, written to be read: the radix-2 decimation-in-time FFT with its
/// twiddles as a running product, and the plain formula of the complex product throughout (infinity
/// times zero is not a number and stays that way). The kernel must match it bit for bit.
namespace plain {

using Complex = std::complex<float>;

inline Complex product(Complex a, Complex b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

inline void reverseBits(Complex* a) {
  size_t j = 0;
  for (size_t i = 1; i < kSpectrumBins; ++i) {
    size_t bit = kSpectrumBins / 2;
    for (; (j & bit) != 0; bit /= 2) j ^= bit;
    j |= bit;
    if (i < j) std::swap(a[i], a[j]);
  }
}

inline void transform(Complex* a) {
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

inline void addFramePower(const float* iq, const float* window, double* power_sum) {
  Complex a[kSpectrumBins];
  for (size_t k = 0; k < kSpectrumBins; ++k) {
    a[k] = {iq[2 * k] * window[k], iq[2 * k + 1] * window[k]};
  }
  transform(a);
  for (size_t k = 0; k < kSpectrumBins; ++k) {
    const Complex bin = a[(k + kSpectrumBins / 2) % kSpectrumBins];
    const auto re = static_cast<double>(bin.real());
    const auto im = static_cast<double>(bin.imag());
    power_sum[k] += re * re + im * im;
  }
}

}  // namespace plain

}  // namespace pelagrim
