// The form of 16 lanes, for AVX-512.
#define PELAGRIM_PROCESSOR "avx512f"
#include <immintrin.h>

#include "survey/spectrum_kernel.h"
#include "survey/spectrum_kernel_passes.h"

namespace pelagrim {

namespace {

struct Lanes16 {
  static constexpr size_t kLanes = 16;
  using Floats = float __attribute__((vector_size(64)));
  using Doubles = double __attribute__((vector_size(64)));

  PELAGRIM_INLINE static void loadSamples(const float* iq, Floats& re, Floats& im) {
    Floats low, high;
    load(low, iq);
    load(high, iq + 16);
    re = __builtin_shufflevector(low, high, 0, 2, 4, 6, 8, 10, 12, 14,  //
                                 16, 18, 20, 22, 24, 26, 28, 30);
    im = __builtin_shufflevector(low, high, 1, 3, 5, 7, 9, 11, 13, 15,  //
                                 17, 19, 21, 23, 25, 27, 29, 31);
  }

  PELAGRIM_INLINE static void widen(const float* from, Doubles& to) {
    to = Doubles{static_cast<double>(from[0]), static_cast<double>(from[1]),
                 static_cast<double>(from[2]), static_cast<double>(from[3]),
                 static_cast<double>(from[4]), static_cast<double>(from[5]),
                 static_cast<double>(from[6]), static_cast<double>(from[7])};
  }

  PELAGRIM_INLINE static void addProduct(Floats& sum, const Floats& a, const Floats& b) {
    sum = _mm512_fmadd_ps(a, b, sum);
  }

  PELAGRIM_INLINE static void addProduct(Doubles& sum, const Doubles& a, const Doubles& b) {
    sum = _mm512_fmadd_pd(a, b, sum);
  }

  PELAGRIM_INLINE static void otherPasses(Planes& a) {
    pass<Lanes16, 8>(a, 16);
    pass<Lanes16, 8>(a, 128);
  }
};

}  // namespace

[[gnu::target(PELAGRIM_PROCESSOR)]] void addFramePower16(const float* iq, const float* window,
                                                         double* power_sum) noexcept {
  addFrame<Lanes16>(iq, window, power_sum);
}

}  // namespace pelagrim
