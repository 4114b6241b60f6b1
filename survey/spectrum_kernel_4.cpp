// The form of 4 lanes, for any processor.
#define PELAGRIM_PROCESSOR "sse2"
#include "survey/spectrum_kernel.h"
#include "survey/spectrum_kernel_passes.h"

namespace pelagrim {

namespace {

struct Lanes4 {
  static constexpr size_t kLanes = 4;
  using Floats = float __attribute__((vector_size(16)));
  using Doubles = double __attribute__((vector_size(16)));

  PELAGRIM_INLINE static void loadSamples(const float* iq, Floats& re, Floats& im) {
    load(re, iq);
    load(im, iq + 4);
    split(re, im);
  }

  PELAGRIM_INLINE static void widen(const float* from, Doubles& to) {
    to = Doubles{static_cast<double>(from[0]), static_cast<double>(from[1])};
  }

  template <typename Vector>
  PELAGRIM_INLINE static void addProduct(Vector& sum, const Vector& a, const Vector& b) {
    sum += a * b;
  }

  PELAGRIM_INLINE static void otherPasses(Planes& a) {
    pass<Lanes4, 4>(a, 4);
    pass<Lanes4, 4>(a, 16);
    pass<Lanes4, 4>(a, 64);
    pass<Lanes4, 4>(a, 256);
  }
};

}  // namespace

[[gnu::target(PELAGRIM_PROCESSOR)]] void addFramePower4(const float* iq, const float* window,
                                                        double* power_sum) noexcept {
  addFrame<Lanes4>(iq, window, power_sum);
}

}  // namespace pelagrim
