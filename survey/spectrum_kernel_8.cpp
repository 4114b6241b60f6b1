// The form of 8 lanes, for AVX2 with FMA.
#define PELAGRIM_PROCESSOR "avx2,fma"
#include <immintrin.h>

#include "survey/spectrum_kernel.h"
#include "survey/spectrum_kernel_passes.h"

namespace pelagrim {

namespace {

struct Lanes8 {
  static constexpr size_t kLanes = 8;
  using Floats = float __attribute__((vector_size(32)));
  using Doubles = double __attribute__((vector_size(32)));

  // Intrinsics, because g++ 12 turns shuffled vectors into a load and a shuffle instead of one
  // load.
  PELAGRIM_INLINE static void loadSamples(const float* iq, Floats& re, Floats& im) {
    re = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(iq)), _mm_loadu_ps(iq + 8), 1);
    im = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(iq + 4)), _mm_loadu_ps(iq + 12),
                              1);
    split(re, im);
  }

  // Written out, this is one instruction; g++ 12 turns __builtin_convertvector into several.
  PELAGRIM_INLINE static void widen(const float* from, Doubles& to) {
    to = Doubles{static_cast<double>(from[0]), static_cast<double>(from[1]),
                 static_cast<double>(from[2]), static_cast<double>(from[3])};
  }

  PELAGRIM_INLINE static void addProduct(Floats& sum, const Floats& a, const Floats& b) {
    sum = _mm256_fmadd_ps(a, b, sum);
  }

  PELAGRIM_INLINE static void addProduct(Doubles& sum, const Doubles& a, const Doubles& b) {
    sum = _mm256_fmadd_pd(a, b, sum);
  }

  PELAGRIM_INLINE static void otherPasses(Planes& a) {
    pass<Lanes8, 4>(a, 8);
    pass<Lanes8, 4>(a, 32);
    pass<Lanes8, 8>(a, 128);
  }
};

}  // namespace

[[gnu::target(PELAGRIM_PROCESSOR)]] void addFramePower8(const float* iq, const float* window,
                                                        double* power_sum) noexcept {
  addFrame<Lanes8>(iq, window, power_sum);
}

}  // namespace pelagrim
