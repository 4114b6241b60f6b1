// The power spectrum of a frame by vectors
//
// A vector holds neighbouring entries, their real parts from one plane, their imaginary parts from
// another. Partners in the first stages lie far apart as long as the samples stand in order of
// time, partners in the later stages do so in bit-reversed order: there a vector of neighbours is a
// vector of whole butterflies. So the reversal goes in between, where it is a matrix transposed in
// registers. With the ten bits of an index as row h, middle m, lane l, and a dash for reversed
// bits:
//
//       in time  hhh mmmm lll                       in the planes  l'l'l' m'm'm'm' h'h'h'
//
//       row h = 0  | l = 0 1 2 ... 7 |  for every   row l' = 0  | h' = 0 1 2 ... 7 |
//       row h = 1  | l = 0 1 2 ... 7 |  ------->    row l' = 1  | h' = 0 1 2 ... 7 |
//         ...                           middle m      ...
//
//       lanes  first pass                     stages of the other passes  last
//         8    window, stages 1-3, reversal   4-5, 6-7, 8-10              powers
//         4    window, stages 1-2, reversal   3-4, 5-6, 7-8, 9-10         powers
//
// Several stages in one pass (radix 2 x 2) spare loads and stores; every butterfly stays the plain
// formula, so that no bit depends on the arrangement. That includes the twiddle 1 + 0i: an infinity
// times its zero is not a number. The plain recurrence stands in tests/survey/plain_recurrence.h.
#include "survey/spectrum_kernel.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "survey/spectrum.h"

// Inlined into its caller, a function is compiled for the caller's processor.
#define PELAGRIM_INLINE [[gnu::always_inline]] inline
// Arrays stay in registers only where every index is a constant; -O2 alone does not unroll.
#define PELAGRIM_UNROLL _Pragma("GCC unroll 8")

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

using Floats4 = float __attribute__((vector_size(16)));
using Floats8 = float __attribute__((vector_size(32)));

using Doubles2 = double __attribute__((vector_size(16)));
using Doubles4 = double __attribute__((vector_size(32)));

template <typename Floats>
constexpr size_t kLanes = sizeof(Floats) / sizeof(float);

// The shuffles, all that differs between 4 and 8 lanes. Vectors go by reference throughout: how
// they are passed by value depends on the processor.

/// Collects in a the elements of even index of a and b, in b those of odd index; of 8 lanes, in
/// each half of the vectors by itself.
PELAGRIM_INLINE void split(Floats4& a, Floats4& b) {
  const Floats4 even = __builtin_shufflevector(a, b, 0, 2, 4, 6);
  b = __builtin_shufflevector(a, b, 1, 3, 5, 7);
  a = even;
}

PELAGRIM_INLINE void split(Floats8& a, Floats8& b) {
  const Floats8 even = __builtin_shufflevector(a, b, 0, 2, 8, 10, 4, 6, 12, 14);
  b = __builtin_shufflevector(a, b, 1, 3, 9, 11, 5, 7, 13, 15);
  a = even;
}

/// Collects in a the lower halves of a and b, in b the upper halves.
PELAGRIM_INLINE void splitHalves(Floats8& a, Floats8& b) {
  const Floats8 low = __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11);
  b = __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15);
  a = low;
}

PELAGRIM_INLINE void loadSamples(const float* iq, Floats4& re, Floats4& im) {
  load(re, iq);
  load(im, iq + 4);
  split(re, im);
}

PELAGRIM_INLINE void loadSamples(const float* iq, Floats8& re, Floats8& im) {
  Floats4 quarters[4];
  PELAGRIM_UNROLL
  for (size_t n = 0; n < 4; ++n) load(quarters[n], iq + 4 * n);
  re = __builtin_shufflevector(quarters[0], quarters[2], 0, 1, 2, 3, 4, 5, 6, 7);
  im = __builtin_shufflevector(quarters[1], quarters[3], 0, 1, 2, 3, 4, 5, 6, 7);
  split(re, im);
}

template <typename Floats>
PELAGRIM_INLINE void splitFour(Floats* rows) {
  split(rows[0], rows[1]);
  split(rows[2], rows[3]);
  split(rows[0], rows[2]);
  split(rows[1], rows[3]);
}

/// Rows become lanes and lanes become rows, both with the bits of their index in reverse.
PELAGRIM_INLINE void transpose(Floats4 (&rows)[4]) {
  splitFour(rows);
}

PELAGRIM_INLINE void transpose(Floats8 (&rows)[8]) {
  splitFour(rows);
  splitFour(rows + 4);
  PELAGRIM_UNROLL
  for (size_t r = 0; r < 4; ++r) splitHalves(rows[r], rows[r + 4]);
}

// Written out, a widening is one instruction; g++ 12 makes several of __builtin_convertvector.
PELAGRIM_INLINE void widen(const float* from, Doubles2& to) {
  to = Doubles2{static_cast<double>(from[0]), static_cast<double>(from[1])};
}

PELAGRIM_INLINE void widen(const float* from, Doubles4& to) {
  to = Doubles4{static_cast<double>(from[0]), static_cast<double>(from[1]),
                static_cast<double>(from[2]), static_cast<double>(from[3])};
}

template <typename Floats, size_t kRows>
struct Rows {
  Floats re[kRows];
  Floats im[kRows];
};

/// Stages across rows in registers: partners one row apart, then two, then four.
template <typename Floats, size_t kRows, typename Twiddles>
PELAGRIM_INLINE void butterflies(Rows<Floats, kRows>& a, const Twiddles& w) {
  PELAGRIM_UNROLL
  for (size_t distance = 1; distance < kRows; distance *= 2) {
    PELAGRIM_UNROLL
    for (size_t pair = 0; pair < kRows / 2; ++pair) {
      const size_t j = pair % distance;
      const size_t even = 2 * (pair - j) + j;
      const size_t odd = even + distance;
      const size_t n = distance + j;
      const Floats re = a.re[odd] * w.re[n] - a.im[odd] * w.im[n];
      const Floats im = a.re[odd] * w.im[n] + a.im[odd] * w.re[n];
      a.re[odd] = a.re[even] - re;
      a.im[odd] = a.im[even] - im;
      a.re[even] += re;
      a.im[even] += im;
    }
  }
}

/// Window, the stages across kLanes rows, and the bit reversal. A row's number reversed is also the
/// distance of its first entry, on either side.
template <typename Floats>
PELAGRIM_INLINE void firstPass(const float* iq, const float* window, Planes& a) {
  constexpr size_t kRows = kLanes<Floats>;
  for (size_t middle = 0; middle < kSpectrumBins / kRows; middle += kRows) {
    Rows<Floats, kRows> rows;
    PELAGRIM_UNROLL
    for (size_t r = 0; r < kRows; ++r) {
      const size_t at = kReversed[r] + middle;
      Floats coefficients;
      load(coefficients, window + at);
      loadSamples(iq + 2 * at, rows.re[r], rows.im[r]);
      rows.re[r] *= coefficients;
      rows.im[r] *= coefficients;
    }
    butterflies(rows, kTwiddles);
    transpose(rows.re);
    transpose(rows.im);
    const size_t to = kReversed[middle];
    PELAGRIM_UNROLL
    for (size_t r = 0; r < kRows; ++r) {
      store(rows.re[r], a.re + kReversed[r] + to);
      store(rows.im[r], a.im + kReversed[r] + to);
    }
  }
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
template <typename Floats, size_t kRows>
PELAGRIM_INLINE void pass(Planes& a, size_t stride) {
  for (size_t j = 0; j < stride; j += kLanes<Floats>) {
    Rows<Floats, kRows> w;
    loadRows(w, kTwiddles, j, stride);
    for (size_t at = j; at < kSpectrumBins; at += kRows * stride) {
      Rows<Floats, kRows> rows;
      loadRows(rows, a, at, stride);
      butterflies(rows, w);
      PELAGRIM_UNROLL
      for (size_t r = 0; r < kRows; ++r) {
        store(rows.re[r], a.re + at + r * stride);
        store(rows.im[r], a.im + at + r * stride);
      }
    }
  }
}

/// The squared magnitudes, summed in order of frequency.
template <typename Floats>
PELAGRIM_INLINE void addPowers(const Planes& a, double* power_sum) {
  using Doubles = std::conditional_t<kLanes<Floats> == 8, Doubles4, Doubles2>;
  for (size_t k = 0; k < kSpectrumBins; k += kLanes<Floats> / 2) {
    const size_t bin = (k + kSpectrumBins / 2) % kSpectrumBins;
    Doubles re, im, sum;
    widen(a.re + bin, re);
    widen(a.im + bin, im);
    load(sum, power_sum + k);
    sum += re * re + im * im;
    store(sum, power_sum + k);
  }
}

template <typename Floats>
PELAGRIM_INLINE void addFrame(const float* iq, const float* window, double* power_sum) {
  Planes a;
  firstPass<Floats>(iq, window, a);
  if constexpr (kLanes<Floats> == 8) {
    pass<Floats, 4>(a, 8);
    pass<Floats, 4>(a, 32);
    pass<Floats, 8>(a, 128);
  } else {
    pass<Floats, 4>(a, 4);
    pass<Floats, 4>(a, 16);
    pass<Floats, 4>(a, 64);
    pass<Floats, 4>(a, 256);
  }
  addPowers<Floats>(a, power_sum);
}

}  // namespace

void addFramePower4(const float* iq, const float* window, double* power_sum) noexcept {
  addFrame<Floats4>(iq, window, power_sum);
}

[[gnu::target("avx2")]] void addFramePower8(const float* iq, const float* window,
                                            double* power_sum) noexcept {
  addFrame<Floats8>(iq, window, power_sum);
}

void addFramePower(const float* iq, const float* window, double* power_sum) noexcept {
  const bool avx2 = __builtin_cpu_supports("avx2");
  (avx2 ? addFramePower8 : addFramePower4)(iq, window, power_sum);
}

}  // namespace pelagrim
