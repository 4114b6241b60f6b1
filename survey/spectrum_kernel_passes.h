#pragma once

// The power spectrum of a frame, computed with vectors
//
// A vector holds neighbouring entries, real parts from one plane and imaginary parts from another.
// Work is easy while the partners of a butterfly lie far apart, because then a vector of neighbours
// is one side of several whole butterflies. In the first stages that holds while the samples are in
// order of time, in the later stages when they are in bit-reversed order. So the reversal is done
// in between, as a matrix transposed in registers. With the ten bits of an index as row h, middle
// m, lane l, and a dash for reversed bits:
//
//       in time  hhh mmmm lll                       in the planes  l'l'l' m'm'm'm' h'h'h'
//
//       row h = 0  | l = 0 1 2 ... 7 |  for every   row l' = 0  | h' = 0 1 2 ... 7 |
//       row h = 1  | l = 0 1 2 ... 7 |  ------->    row l' = 1  | h' = 0 1 2 ... 7 |
//         ...                           middle m      ...
//
//       lanes  first pass                     stages of the other passes  last
//        16    window, stages 1-4, reversal   5-7, 8-10                   powers
//         8    window, stages 1-3, reversal   4-5, 6-7, 8-10              powers
//         4    window, stages 1-2, reversal   3-4, 5-6, 7-8, 9-10         powers
//
// Doing several stages in one pass (radix 2 x 2) saves loads and stores. Every butterfly is still
// the plain formula, so the arrangement changes no bit. The plain recurrence is in
// tests/survey/plain_recurrence.h.
//
// Each form has its own file. It names the processor that it is compiled for (PELAGRIM_PROCESSOR),
// includes this file, and says how its vectors are loaded and widened.

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "survey/spectrum.h"

#ifndef PELAGRIM_PROCESSOR
#error "the processor is missing"
#endif

#define PELAGRIM_INLINE [[gnu::always_inline, gnu::target(PELAGRIM_PROCESSOR)]] inline
// Arrays stay in registers only where every index is a constant; -O2 alone does not unroll.
#define PELAGRIM_UNROLL _Pragma("GCC unroll 16")

// Every form has its own copy of all that follows, compiled for its own processor.
// NOLINTBEGIN(cert-dcl59-cpp,misc-definitions-in-headers)

namespace pelagrim {

namespace {

struct alignas(64) Planes {
  float re[kSpectrumBins];
  float im[kSpectrumBins];
};

/// The twiddles of every stage: those of the stage that pairs entries n apart start at n.
constexpr Planes makeTwiddles() {
  // cos and sin of -2 pi / len in double precision, rounded to float, for len = 2, 4, ... 1024.
  constexpr float kSteps[][2] = {
      {-0x1p+0F, -0x1.1a6264p-53F},      {0x1.1a6264p-54F, -0x1p+0F},
      {0x1.6a09e6p-1F, -0x1.6a09e6p-1F}, {0x1.d906bcp-1F, -0x1.87de2ap-2F},
      {0x1.f6297cp-1F, -0x1.8f8b84p-3F}, {0x1.fd88dap-1F, -0x1.917a6cp-4F},
      {0x1.ff621ep-1F, -0x1.91f66p-5F},  {0x1.ffd886p-1F, -0x1.92156p-6F},
      {0x1.fff622p-1F, -0x1.921d2p-7F},  {0x1.fffd88p-1F, -0x1.921f1p-8F},
  };
  Planes w{};
  size_t half = 1;
  for (const auto& [step_re, step_im] : kSteps) {
    w.re[half] = 1.0F;
    for (size_t n = half + 1; n < 2 * half; ++n) {
      w.re[n] = w.re[n - 1] * step_re - w.im[n - 1] * step_im;
      w.im[n] = w.re[n - 1] * step_im + w.im[n - 1] * step_re;
    }
    half *= 2;
  }
  return w;
}

constexpr Planes kTwiddles = makeTwiddles();

constexpr auto makeReversed() {
  std::array<uint16_t, kSpectrumBins> reversed{};
  for (size_t n = 1; n < kSpectrumBins; ++n) {
    reversed[n] = static_cast<uint16_t>(reversed[n / 2] / 2 + n % 2 * kSpectrumBins / 2);
  }
  return reversed;
}

/// Every index with its bits in reverse.
constexpr std::array<uint16_t, kSpectrumBins> kReversed = makeReversed();

// The builtin, since a checked memcpy (_FORTIFY_SOURCE) keeps clang from using registers.
template <typename Vector, typename Element>
PELAGRIM_INLINE void load(Vector& vector, const Element* from) {
  __builtin_memcpy(&vector, from, sizeof vector);
}

template <typename Vector, typename Element>
PELAGRIM_INLINE void store(const Vector& vector, Element* to) {
  __builtin_memcpy(to, &vector, sizeof vector);
}

// The shuffles. Vectors are always passed by reference: how they are passed by value depends on the
// processor.

/// Collects the even elements of a and b in a, the odd ones in b. Vectors of more than 4 lanes are
/// treated in blocks of 4, each by itself.
template <typename Floats>
PELAGRIM_INLINE void split(Floats& a, Floats& b) {
  Floats even;
  if constexpr (sizeof(Floats) == 16) {
    even = __builtin_shufflevector(a, b, 0, 2, 4, 6);
    b = __builtin_shufflevector(a, b, 1, 3, 5, 7);
  } else if constexpr (sizeof(Floats) == 32) {
    even = __builtin_shufflevector(a, b, 0, 2, 8, 10, 4, 6, 12, 14);
    b = __builtin_shufflevector(a, b, 1, 3, 9, 11, 5, 7, 13, 15);
  } else {
    even = __builtin_shufflevector(a, b, 0, 2, 16, 18, 4, 6, 20, 22, 8, 10, 24, 26, 12, 14, 28, 30);
    b = __builtin_shufflevector(a, b, 1, 3, 17, 19, 5, 7, 21, 23, 9, 11, 25, 27, 13, 15, 29, 31);
  }
  a = even;
}

/// Collects the even blocks of 4 elements of a and b in a, the odd ones in b.
template <typename Floats>
PELAGRIM_INLINE void splitBlocks(Floats& a, Floats& b) {
  Floats even;
  if constexpr (sizeof(Floats) == 32) {
    even = __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11);
    b = __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15);
  } else {
    even = __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11, 16, 17, 18, 19, 24, 25, 26, 27);
    b = __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15, 20, 21, 22, 23, 28, 29, 30, 31);
  }
  a = even;
}

/// Rows become lanes and lanes become rows.
template <typename Floats, size_t kRows>
PELAGRIM_INLINE void transpose(Floats (&rows)[kRows]) {
  PELAGRIM_UNROLL
  for (size_t distance = 1; distance < kRows; distance *= 2) {
    PELAGRIM_UNROLL
    for (size_t pair = 0; pair < kRows / 2; ++pair) {
      const size_t r = 2 * pair - pair % distance;
      if (distance < 4) {
        split(rows[r], rows[r + distance]);
      } else if constexpr (kRows > 4) {
        splitBlocks(rows[r], rows[r + distance]);
      }
    }
  }
}

template <typename Floats, size_t kRows>
struct Rows {
  Floats re[kRows];
  Floats im[kRows];
};

/// Stages across rows in registers: partners one row apart, then two, then four, ...
template <typename Floats, size_t kRows, typename Twiddles>
PELAGRIM_INLINE void butterflies(Rows<Floats, kRows>& a, const Twiddles& twiddles) {
  PELAGRIM_UNROLL
  for (size_t distance = 1; distance < kRows; distance *= 2) {
    PELAGRIM_UNROLL
    for (size_t pair = 0; pair < kRows / 2; ++pair) {
      const size_t j = pair % distance;
      const size_t even = 2 * (pair - j) + j;
      const size_t odd = even + distance;
      Floats re, im;
      twiddles.multiply(distance + j, a.re[odd], a.im[odd], re, im);
      a.re[odd] = a.re[even] - re;
      a.im[odd] = a.im[even] - im;
      a.re[even] += re;
      a.im[even] += im;
    }
  }
}

/// The twiddles of the first stages: the same for a whole row, and known at compile time.
///
/// kFinite leaves out products by zero, and so all products by 1 + 0i. Infinity times zero is not a
/// number, but as long as all values are finite, leaving them out changes at most the sign of a
/// zero. Such a sign never reaches a power: equal terms and factors give equal sums and products
/// whatever the signs of their zeros, and at the end everything is squared.
template <bool kFinite>
struct KnownTwiddles {
  template <typename Floats>
  PELAGRIM_INLINE static void multiply(size_t n, const Floats& a_re, const Floats& a_im, Floats& re,
                                       Floats& im) {
    const float w_re = kTwiddles.re[n];
    const float w_im = kTwiddles.im[n];
    if (kFinite && w_re == 1 && w_im == 0) {
      re = a_re;
      im = a_im;
    } else if (kFinite && w_re == 0) {
      re = -(a_im * w_im);
      im = a_re * w_im;
    } else if (w_re == w_im || w_re == -w_im) {  // two products instead of four
      const Floats p = a_re * w_re;
      const Floats q = a_im * w_re;
      re = w_re == w_im ? p - q : p + q;
      im = w_re == w_im ? p + q : q - p;
    } else {
      re = a_re * w_re - a_im * w_im;
      im = a_re * w_im + a_im * w_re;
    }
  }
};

/// The twiddles of later stages, which differ from lane to lane.
template <typename Floats, size_t kRows>
struct LoadedTwiddles {
  Rows<Floats, kRows> w;

  PELAGRIM_INLINE void multiply(size_t n, const Floats& a_re, const Floats& a_im, Floats& re,
                                Floats& im) const {
    re = a_re * w.re[n] - a_im * w.im[n];
    im = a_re * w.im[n] + a_im * w.re[n];
  }
};

/// Window, the stages across kLanes rows, and the bit reversal. A row's number reversed is also the
/// distance of its first entry, on either side.
///
/// Returns false if kFinite did not hold, and the pass must be done again without it. A value that
/// is not finite makes both results of its next butterfly non-finite, in at least one part; so by
/// the last stage it has reached one of the rows of the lower half.
template <typename Form, bool kFinite>
PELAGRIM_INLINE bool firstPass(const float* iq, const float* window, Planes& a) {
  using Floats = typename Form::Floats;
  constexpr size_t kRows = Form::kLanes;
  // A sum of products that is not finite stays that way. From 1 on, tiny products are not denormal
  // sums.
  Floats check = Floats{} + 1.0F;
  for (size_t middle = 0; middle < kSpectrumBins / kRows; middle += kRows) {
    Rows<Floats, kRows> rows;
    PELAGRIM_UNROLL
    for (size_t r = 0; r < kRows; ++r) {
      const size_t at = kReversed[r] + middle;
      Floats coefficients;
      load(coefficients, window + at);
      Form::loadSamples(iq + 2 * at, rows.re[r], rows.im[r]);
      rows.re[r] *= coefficients;
      rows.im[r] *= coefficients;
    }
    butterflies(rows, KnownTwiddles<kFinite>());
    if constexpr (kFinite) {
      PELAGRIM_UNROLL
      for (size_t r = 0; r < kRows / 2; ++r) Form::addProduct(check, rows.re[r], rows.im[r]);
    }
    transpose(rows.re);
    transpose(rows.im);
    const size_t to = kReversed[middle];
    PELAGRIM_UNROLL
    for (size_t r = 0; r < kRows; ++r) {
      store(rows.re[r], a.re + kReversed[r] + to);
      store(rows.im[r], a.im + kReversed[r] + to);
    }
  }
  float sum = 0.0F;
  for (size_t lane = 0; lane < kRows; ++lane) sum += check[lane];
  return std::isfinite(sum);
}

template <typename Floats, size_t kRows>
PELAGRIM_INLINE void loadRows(Rows<Floats, kRows>& rows, const Planes& a, size_t at,
                              size_t stride) {
  PELAGRIM_UNROLL
  for (size_t r = 0; r < kRows; ++r) {
    load(rows.re[r], a.re + at + r * stride);
    load(rows.im[r], a.im + at + r * stride);
  }
}

/// The stages that pair entries stride, 2 stride, ... kRows / 2 * stride apart.
template <typename Form, size_t kRows>
PELAGRIM_INLINE void pass(Planes& a, size_t stride) {
  using Floats = typename Form::Floats;
  for (size_t j = 0; j < stride; j += Form::kLanes) {
    LoadedTwiddles<Floats, kRows> twiddles;
    loadRows(twiddles.w, kTwiddles, j, stride);
    for (size_t at = j; at < kSpectrumBins; at += kRows * stride) {
      Rows<Floats, kRows> rows;
      loadRows(rows, a, at, stride);
      butterflies(rows, twiddles);
      PELAGRIM_UNROLL
      for (size_t r = 0; r < kRows; ++r) {
        store(rows.re[r], a.re + at + r * stride);
        store(rows.im[r], a.im + at + r * stride);
      }
    }
  }
}

/// The squared magnitudes of half the bins. The square of a float is exact in a double, so a fused
/// multiply-add rounds the same way.
///
/// Not inlined: with this loop in the same function, g++ 12 makes the whole function a sixth
/// slower.
template <typename Form>
[[gnu::noinline, gnu::target(PELAGRIM_PROCESSOR)]] void addPowers(const float* re, const float* im,
                                                                  double* power_sum) {
  using Doubles = typename Form::Doubles;
  _Pragma("GCC unroll 4") for (size_t k = 0; k < kSpectrumBins / 2; k += Form::kLanes / 2) {
    Doubles wide_re, wide_im, sum;
    Form::widen(re + k, wide_re);
    Form::widen(im + k, wide_im);
    load(sum, power_sum + k);
    Doubles power = wide_re * wide_re;
    Form::addProduct(power, wide_im, wide_im);
    sum += power;
    store(sum, power_sum + k);
  }
}

template <typename Form>
PELAGRIM_INLINE void addFrame(const float* iq, const float* window, double* power_sum) {
  constexpr size_t kHalf = kSpectrumBins / 2;
  Planes a;
  if (!firstPass<Form, true>(iq, window, a)) firstPass<Form, false>(iq, window, a);
  Form::otherPasses(a);
  addPowers<Form>(a.re + kHalf, a.im + kHalf, power_sum);
  addPowers<Form>(a.re, a.im, power_sum + kHalf);
}

}  // namespace

}  // namespace pelagrim

// NOLINTEND(cert-dcl59-cpp,misc-definitions-in-headers)
