#include "survey/detection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "survey/percentile.h"
#include "tests/support/not_finite.h"

namespace pelagrim {
namespace {

TEST(Percentile, PicksTheNearestRank) {
  const float nan = NAN;
  struct Case {
    std::vector<float> levels;
    double p, expected;
  };
  const Case cases[] = {
      {{}, 0.5, 0.0},
      {{3}, 0.0, 3},
      {{3}, 1.0, 3},
      {{1, 2, 2, 2, 9}, 0.5, 2},
      {{9, 8, 7, 6, 5, 4, 3, 2, 1, 0}, 0.5, 5},
      {{8, 7, 6, 5, 4, 3, 2, 1, 0}, 0.5, 4},
      {{1, 2, 3}, 7.0, 3},
      {{1, 2, 3}, -7.0, 1},
      {{1, 2, 3}, kNan, 1},
      {{nan, 5, nan, 4}, 0.3, 5},
  };
  for (const Case& c : cases) EXPECT_EQ(percentileDb(c.levels, c.p), c.expected);
  std::vector<float> ramp(1024);
  for (size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<float>(1023 - i);
  EXPECT_EQ(percentileDb(ramp, 0.1), 102.0);
  EXPECT_EQ(percentileDb(ramp, 0.5), 512.0);
}

TEST(Levels, AreDecibelsOfTheMeanPowerWithAFloorForEmptyBins) {
  EXPECT_EQ(levelsDb({0.0, 200.0}, 2), (std::vector<float>{-200.0F, 20.0F}));
}

/// A spectrum of 1024 bins of 2000 Hz around 145 MHz, quiet at 0 dB except where a case raises it.
struct Raised {
  size_t bin;
  float level_db;
};
std::vector<Detection> detect(const std::vector<Raised>& raised, double threshold_db = 12.0) {
  std::vector<float> levels(1024, 0.0F);
  for (const Raised& r : raised) levels[r.bin] = r.level_db;
  return findDetections(levels, {.sample_rate_hz = 2048000.0, .centre_hz = 145e6}, threshold_db);
}

TEST(Detections, AreRunsOfTwoOrMoreBinsStrictlyAboveTheLevel) {
  const auto found = detect({{0, 20},
                             {1, 30},
                             {100, 13},
                             {101, 12.5},
                             {200, 99},
                             {300, 15},
                             {301, 12},
                             {302, 15},
                             {500, 15},
                             {501, NAN},
                             {502, 15},
                             {1022, 13},
                             {1023, 14}});
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(found[0].centre_hz, 143976000.0 + 1000.0);
  EXPECT_EQ(found[1].centre_hz, 144177000.0);
  EXPECT_EQ(found[1].width_hz, 4000.0);
  EXPECT_EQ(found[1].peak_db, 13.0);
  EXPECT_EQ(found[1].floor_db, 0.0);
  EXPECT_EQ(found[2].centre_hz, 143976000.0 + 1022.5 * 2000.0);
  EXPECT_TRUE(detect({{5, 99}, {6, 99}}, kNan).empty());
}

TEST(Detections, MeasureTheFloorOnTheQuietBinsUnlessTheBandIsFull) {
  for (const size_t quiet : {127UL, 128UL}) {
    std::vector<float> levels(1024, 40.0F);
    for (size_t i = 0; i < quiet; ++i) levels[8 * i] = i < 110 ? 0.0F : 5.0F;
    for (size_t i = 0; i < 60; ++i) levels[8 * i] = -1.0F;
    // The tenth percentile is rank 102; the median of 128 quiet bins is rank 64: both 0 dB.
    EXPECT_EQ(noiseFloorDb(levels, 12.0), 0.0);
    for (size_t i = 0; i < 100; ++i) levels[8 * i] = -1.0F;
    // Now the median is -1 dB, but only if it is used.
    EXPECT_EQ(noiseFloorDb(levels, 12.0), quiet == 128 ? -1.0 : 0.0);
  }
}

TEST(Detections, CountABinAtTheLimitAsQuiet) {
  std::vector<float> levels(1024, 12.0F);
  std::fill_n(levels.begin(), 400, 0.0F);
  EXPECT_EQ(noiseFloorDb(levels, 12.0), 12.0);
  EXPECT_EQ(noiseFloorDb(levels, 11.9), 0.0);
}

TEST(Detections, NeedFourBinsAndAPositiveRate) {
  const std::vector<float> tiny = {0.0F, 50.0F, 50.0F};
  EXPECT_TRUE(findDetections(tiny, {1e6, 0.0}, 1.0).empty());
  const std::vector<float> few = {0.0F, 50.0F, 50.0F, 0.0F, 0.0F, 0.0F};
  EXPECT_EQ(findDetections(few, {1e6, 0.0}, 1.0).size(), 1U);
  for (const double rate_hz : {0.0, -1.0, kNan}) {
    EXPECT_TRUE(findDetections(few, {rate_hz, 0.0}, 1.0).empty());
  }
}

}  // namespace
}  // namespace pelagrim
