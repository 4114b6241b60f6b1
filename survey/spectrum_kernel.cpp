// The power spectrum of one frame, and how it passes through the processor
//
// A vector holds kLanes neighbouring entries, their real parts from one plane, their imaginary
// parts from the other. Before the bit reversal the partners of the first stages lie far apart, so
// that a vector of neighbours is a vector of whole butterflies; after it that holds for the later
// stages. So the reversal goes in between, where it is a matrix transposed in registers. With the
// ten bits of a sample's index written as row h, middle m, lane l, and a dash for bits in reverse:
//
//            in time  hhh mmmm lll                        in the planes  l'l'l' m'm'm'm' h'h'h'
//
//      row h = 0   | l = 0  1  2 ... 7 |   for each    block l' = 0   | h' = 0  1  2 ... 7 |
//      row h = 1   | l = 0  1  2 ... 7 |  --------->   block l' = 1   | h' = 0  1  2 ... 7 |
//          ...                            middle m          ...
//
//     lanes   first pass                      further passes, stages    last pass
//       8     window, stages 1-3, reversal    4-5, 6-7, 8-10            powers
//       4     window, stages 1-2, reversal    3-4, 5-6, 7-8, 9-10       powers
//
// Several stages in one pass (radix 2 x 2) spare loads and stores; each butterfly remains the plain
// formula, so that no bit of the result depends on the arrangement. That includes the twiddle 1 +
// 0i: an infinity times its zero is not a number. The plain recurrence that this must agree with
// stands in tests/plain_recurrence.h.
#include "survey/spectrum_kernel.h"

#include <array>
#include <cstddef>
#include <cstring>

#include "survey/spectrum.h"

// Inlined into its caller, a function is compiled for the caller's processor.
#define PELAGRIM_INLINE [[gnu::always_inline]] inline
// Arrays stay in registers only where every index is a constant; -O2 alone does not unroll.
#define PELAGRIM_UNROLL _Pragma("GCC unroll 8")

namespace pelagrim {

namespace {

/// Real parts in one plane, imaginary parts in the other.
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

/// The indices below kCount with their bits in reverse.
template <size_t kCount>
constexpr std::array<size_t, kCount> makeReversed() {
  std::array<size_t, kCount> reversed{};
  for (size_t n = 1; n < kCount; ++n) {
    reversed[n] = reversed[n / 2] / 2 + n % 2 * kCount / 2;
  }
  return reversed;
}

template <size_t kCount>
constexpr auto kReversed = makeReversed<kCount>();

template <typename Vector, typename Element>
PELAGRIM_INLINE void load(Vector& vector, const Element* from) {
  std::memcpy(&vector, from, sizeof vector);
}

template <typename Vector, typename Element>
PELAGRIM_INLINE void store(const Vector& vector, Element* to) {
  std::memcpy(to, &vector, sizeof vector);
}

using Floats4 = float __attribute__((vector_size(16)));
using Floats8 = float __attribute__((vector_size(32)));

/// What depends on the number of lanes: the shuffles. Vectors are passed by reference throughout,
/// since how they go by value differs between processors.
struct Lanes4 {
  static constexpr size_t kLanes = 4;
  using Floats = Floats4;
  using Doubles = double __attribute__((vector_size(16)));

  /// Collects in a the elements of even index of a and b, in b those of odd index.
  PELAGRIM_INLINE static void split(Floats4& a, Floats4& b) {
    const Floats4 even = __builtin_shufflevector(a, b, 0, 2, 4, 6);
    b = __builtin_shufflevector(a, b, 1, 3, 5, 7);
    a = even;
  }

  PELAGRIM_INLINE static void loadSamples(const float* iq, Floats4& re, Floats4& im) {
    load(re, iq);
    load(im, iq + 4);
    split(re, im);
  }

  /// Rows become lanes and lanes become rows, both with their index bits in reverse.
  PELAGRIM_INLINE static void transpose(Floats4* rows) {
    split(rows[0], rows[1]);
    split(rows[2], rows[3]);
    split(rows[0], rows[2]);
    split(rows[1], rows[3]);
  }

  /// One instruction; g++ 12 makes several of __builtin_convertvector.
  PELAGRIM_INLINE static void widen(const float* from, Doubles& to) {
    to = Doubles{static_cast<double>(from[0]), static_cast<double>(from[1])};
  }
};

struct Lanes8 {
  static constexpr size_t kLanes = 8;
  using Floats = Floats8;
  using Doubles = double __attribute__((vector_size(32)));

  /// The same in each half of the vectors.
  PELAGRIM_INLINE static void split(Floats8& a, Floats8& b) {
    const Floats8 even = __builtin_shufflevector(a, b, 0, 2, 8, 10, 4, 6, 12, 14);
    b = __builtin_shufflevector(a, b, 1, 3, 9, 11, 5, 7, 13, 15);
    a = even;
  }

  PELAGRIM_INLINE static void splitHalves(Floats8& a, Floats8& b) {
    const Floats8 low = __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11);
    b = __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15);
    a = low;
  }

  PELAGRIM_INLINE static void loadSamples(const float* iq, Floats8& re, Floats8& im) {
    Floats4 a, b, c, d;
    load(a, iq);
    load(b, iq + 4);
    load(c, iq + 8);
    load(d, iq + 12);
    re = __builtin_shufflevector(a, c, 0, 1, 2, 3, 4, 5, 6, 7);
    im = __builtin_shufflevector(b, d, 0, 1, 2, 3, 4, 5, 6, 7);
    split(re, im);
  }

  PELAGRIM_INLINE static void transpose(Floats8* rows) {
    split(rows[0], rows[1]);
    split(rows[2], rows[3]);
    split(rows[4], rows[5]);
    split(rows[6], rows[7]);
    split(rows[0], rows[2]);
    split(rows[1], rows[3]);
    split(rows[4], rows[6]);
    split(rows[5], rows[7]);
    splitHalves(rows[0], rows[4]);
    splitHalves(rows[1], rows[5]);
    splitHalves(rows[2], rows[6]);
    splitHalves(rows[3], rows[7]);
  }

  PELAGRIM_INLINE static void widen(const float* from, Doubles& to) {
    to = Doubles{static_cast<double>(from[0]), static_cast<double>(from[1]),
                 static_cast<double>(from[2]), static_cast<double>(from[3])};
  }
};

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

/// Window, the stages across kLanes rows, and the bit reversal.
template <typename Lanes>
PELAGRIM_INLINE void firstPass(const float* iq, const float* window, Planes& a) {
  constexpr size_t kLanes = Lanes::kLanes;
  constexpr size_t kStride = kSpectrumBins / kLanes;
  constexpr size_t kMiddles = kStride / kLanes;
  for (size_t middle = 0; middle < kMiddles; ++middle) {
    Rows<typename Lanes::Floats, kLanes> rows;
    PELAGRIM_UNROLL
    for (size_t r = 0; r < kLanes; ++r) {
      const size_t at = kReversed<kLanes>[r] * kStride + middle * kLanes;
      typename Lanes::Floats coefficients;
      load(coefficients, window + at);
      Lanes::loadSamples(iq + 2 * at, rows.re[r], rows.im[r]);
      rows.re[r] *= coefficients;
      rows.im[r] *= coefficients;
    }
    butterflies(rows, kTwiddles);
    const size_t to = kReversed<kMiddles>[middle] * kLanes;
    Lanes::transpose(rows.re);
    PELAGRIM_UNROLL
    for (size_t r = 0; r < kLanes; ++r)
      store(rows.re[r], a.re + kReversed<kLanes>[r] * kStride + to);
    Lanes::transpose(rows.im);
    PELAGRIM_UNROLL
    for (size_t r = 0; r < kLanes; ++r)
      store(rows.im[r], a.im + kReversed<kLanes>[r] * kStride + to);
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
template <typename Lanes, size_t kRows>
PELAGRIM_INLINE void pass(Planes& a, size_t stride) {
  for (size_t j = 0; j < stride; j += Lanes::kLanes) {
    Rows<typename Lanes::Floats, kRows> w;
    loadRows(w, kTwiddles, j, stride);
    for (size_t at = j; at < kSpectrumBins; at += kRows * stride) {
      Rows<typename Lanes::Floats, kRows> rows;
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
template <typename Lanes>
PELAGRIM_INLINE void addPowers(const Planes& a, double* power_sum) {
  for (size_t k = 0; k < kSpectrumBins; k += Lanes::kLanes / 2) {
    const size_t bin = (k + kSpectrumBins / 2) % kSpectrumBins;
    typename Lanes::Doubles re, im, sum;
    Lanes::widen(a.re + bin, re);
    Lanes::widen(a.im + bin, im);
    load(sum, power_sum + k);
    sum += re * re + im * im;
    store(sum, power_sum + k);
  }
}

template <typename Lanes>
PELAGRIM_INLINE void addFrame(const float* iq, const float* window, double* power_sum) {
  constexpr size_t kLanes = Lanes::kLanes;
  Planes a;
  firstPass<Lanes>(iq, window, a);
  if constexpr (kLanes == 8) {
    pass<Lanes, 4>(a, 8);
    pass<Lanes, 4>(a, 32);
    pass<Lanes, 8>(a, 128);
  } else {
    pass<Lanes, 4>(a, 4);
    pass<Lanes, 4>(a, 16);
    pass<Lanes, 4>(a, 64);
    pass<Lanes, 4>(a, 256);
  }
  addPowers<Lanes>(a, power_sum);
}

}  // namespace

void addFramePower4(const float* iq, const float* window, double* power_sum) noexcept {
  addFrame<Lanes4>(iq, window, power_sum);
}

[[gnu::target("avx2")]] void addFramePower8(const float* iq, const float* window,
                                            double* power_sum) noexcept {
  addFrame<Lanes8>(iq, window, power_sum);
}

void addFramePower(const float* iq, const float* window, double* power_sum) noexcept {
  const bool avx2 = __builtin_cpu_supports("avx2");
  (avx2 ? addFramePower8 : addFramePower4)(iq, window, power_sum);
}

}  // namespace pelagrim
