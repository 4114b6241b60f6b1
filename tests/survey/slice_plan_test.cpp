#include "survey/slice_plan.h"

#include <gtest/gtest.h>

#include "survey/dwell_timer.h"
#include "tests/support/not_finite.h"

namespace pelagrim {
namespace {

TEST(SlicePlan, CoversTheBandWithOverlappingSlices) {
  struct Case {
    double start_mhz, stop_mhz, rate_mhz;
    std::vector<double> centres_mhz;
  };
  const Case cases[] = {
      {144, 146, 2.4, {145.2}},
      {144, 146, 1, {144.5, 145.4, 146.3}},
      {144, 146.4, 2.4, {145.2, 147.36}},
      {430, 440, 2.4, {431.2, 433.36, 435.52, 437.68, 439.84}},
      {146, 144, 1, {}},
      {146, 146, 1, {}},
      {144, 146, 0, {}},
      {144, 146, -1, {}},
      {kNan, 146, 1, {}},
      {144, 146, kNan, {145}},
      {144, 146, kInfinity, {145}},
  };
  for (const Case& c : cases) {
    const auto slices = planSlices(c.start_mhz * 1e6, c.stop_mhz * 1e6, c.rate_mhz * 1e6);
    ASSERT_EQ(slices.size(), c.centres_mhz.size()) << c.start_mhz << " " << c.rate_mhz;
    for (size_t i = 0; i < slices.size(); ++i) {
      EXPECT_NEAR(slices[i], c.centres_mhz[i] * 1e6, 1e-6);
    }
  }
  EXPECT_EQ(planSlices(0, 1e12, 1).size(), 100001U);
  EXPECT_EQ(planSlices(0, kInfinity, 1e6).size(), 100001U);
}

TEST(DwellTimer, MeasuresDwellsOfEveryLength) {
  struct Case {
    int64_t start_ms, now_ms;
    double dwell_seconds;
    bool over;
  };
  const Case cases[] = {
      {1, 20000, 20, false},
      {1, 20001, 20, true},
      {0, 20001, 20, false},
      {1, 0, -1, false},
      {5, 5, 0.0009, true},
      {5, 4, 0, false},
      {5, 4, -0.001, true},
      {1, 20001, kNan, true},
      {1, 20000, kNan, false},
      {1, INT64_MAX, kInfinity, false},
      {INT64_MAX, 1, -kInfinity, true},
      {INT64_MIN, INT64_MAX, 20, false},  // 1 ms back, around the end
      {INT64_MAX, INT64_MIN, 0.001, true},
      {INT64_MAX, INT64_MIN + 19'998, 20, false},
      {INT64_MAX, INT64_MIN + 19'999, 20, true},
      {INT64_MAX - 20'000, INT64_MAX, 20, true},
      {-20'000, -1, 20, false},
      {-20'000, 1, 20, true},
      {1'000'000, 1'000'000 - 365LL * 86'400'000, 20, false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(dwellIsOver(c.start_ms, c.now_ms, c.dwell_seconds), c.over)
        << c.start_ms << " " << c.now_ms << " " << c.dwell_seconds;
  }
}

}  // namespace
}  // namespace pelagrim
