#include "survey/spectrum.h"

#include <gtest/gtest.h>

namespace pelagrim {
namespace {

TEST(Spectrum, WindowIsASymmetricHannWindow) {
  Spectrum spectrum;
  spectrum.prepare();
  const std::pair<size_t, float> literals[] = {
      {0, 0.0F}, {1, 9.430769e-06F}, {100, 0.09138035F}, {256, 0.50076777F}, {511, 0.99999762F}};
  for (const auto& [i, value] : literals) {
    EXPECT_FLOAT_EQ(spectrum.window[i], value) << i;
    EXPECT_FLOAT_EQ(spectrum.window[1023 - i], value) << i;
  }
}

}  // namespace
}  // namespace pelagrim
