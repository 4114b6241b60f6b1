#include "survey/spectrum_kernel.h"

namespace pelagrim {

// The builtin also asks whether the system keeps the registers.

bool hasAddFramePower8() noexcept {
  return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
}

bool hasAddFramePower16() noexcept {
  return __builtin_cpu_supports("avx512f");
}

void addFramePower(const float* iq, const float* window, double* power_sum) noexcept {
  if (hasAddFramePower16()) {
    addFramePower16(iq, window, power_sum);
  } else if (hasAddFramePower8()) {
    addFramePower8(iq, window, power_sum);
  } else {
    addFramePower4(iq, window, power_sum);
  }
}

}  // namespace pelagrim
