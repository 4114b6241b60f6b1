#include "survey/survey.h"

#include <gtest/gtest.h>

#include <cmath>

#include "survey/signal_kind.h"
#include "tests/support/not_finite.h"

namespace pelagrim {
namespace {

TEST(Survey, RoundsAFrequencyToItsSlotHalvesAwayFromZero) {
  Survey survey;
  const std::pair<double, long> cases[] = {{145002499.0, 29000}, {145002500.0, 29001},
                                           {-2500.0, -1},        {2499.9, 0},
                                           {kNan, INT64_MIN},    {1e300, INT64_MIN}};
  for (const auto& [hz, slot] : cases) EXPECT_EQ(survey.slotOf(hz), slot) << hz;
}

TEST(Survey, AveragesWhatOneSlotCollects) {
  Survey survey;
  survey.add({145000000.0, 3000.0, 10.0, 1.0}, 100);
  survey.lookAt(144999999.0, 145000000.0);
  survey.add({145001000.0, 1500.0, 12.0, 3.0}, 200);
  survey.add({145002000.0, 6000.0, 8.0, 2.0}, 300);
  survey.add({145001000.0, 3500.0, 9.0, 4.0}, 150);  // neither the first nor the last is extreme
  ASSERT_EQ(survey.size(), 1U);
  const Channel c = survey.byActivity()[0];
  EXPECT_EQ(c.centre_hz, 145001000.0);
  EXPECT_EQ(c.width_hz, 3500.0);
  EXPECT_EQ(c.min_width_hz, 1500.0);
  EXPECT_EQ(c.max_width_hz, 6000.0);
  EXPECT_EQ(c.peak_db, 12.0);
  EXPECT_EQ(c.floor_db, 4.0);
  EXPECT_EQ(c.first_unix_ms, 100);
  EXPECT_EQ(c.last_unix_ms, 150);
  EXPECT_EQ(c.hits, 4U);
  EXPECT_EQ(c.looks, 2U);
}

TEST(Survey, DropsDetectionsOutsideItsBandLimits) {
  Survey survey;
  survey.raster_hz = 1.0;
  survey.band_lo_hz = 100.0;
  survey.band_hi_hz = 200.0;
  for (const double hz : {99.0, 100.0, 200.0, 201.0}) survey.add({hz, 1.0, 1.0, 0.0}, 0);
  EXPECT_EQ(survey.size(), 2U);
  survey.band_hi_hz = 100.0;  // no limits
  survey.add({99.0, 1.0, 1.0, 0.0}, 0);
  EXPECT_EQ(survey.size(), 3U);
}

TEST(Survey, KeepsADriftedChannelInTheSlotWhereItEntered) {
  Survey survey;
  survey.add({145002499.0, 1.0, 1.0, 0.0}, 0);
  survey.channels.begin()->second.centre_hz = 145002600.0;
  survey.add({145002600.0, 1.0, 1.0, 0.0}, 0);
  EXPECT_EQ(survey.size(), 2U);
  survey.restore({.centre_hz = 145002600.0, .hits = 5, .looks = 9});
  EXPECT_EQ(survey.size(), 2U);
  EXPECT_EQ(survey.channels.at(29001).hits, 5U);
}

TEST(Survey, RanksByActivityThenCentreThenSlotWithOddCentresLast) {
  Survey survey;
  const Channel channels[] = {
      {.centre_hz = 3.0, .hits = 1, .looks = 2},  {.centre_hz = 1.0, .hits = 2, .looks = 4},
      {.centre_hz = kNan, .hits = 3, .looks = 6}, {.centre_hz = 9.0, .hits = 3, .looks = 2},
      {.centre_hz = 5.0, .hits = 7, .looks = 0},  {.centre_hz = 2.0, .hits = 0, .looks = 0},
      {.centre_hz = -1.0, .hits = 1, .looks = 2}, {.centre_hz = 1.0, .hits = 1, .looks = 2},
      {.centre_hz = kNan, .hits = 1, .looks = 2},
  };
  for (Channel channel : channels) {
    channel.peak_db = static_cast<double>(survey.size());
    survey.channels.emplace(survey.size(), channel);
  }
  const std::vector<double> expected = {3, 6, 1, 7, 0, 2, 8, 5, 4};
  for (size_t max_count = 0; max_count <= expected.size() + 1; ++max_count) {
    const std::vector<Channel> busiest = survey.busiest(max_count);
    ASSERT_EQ(busiest.size(), std::min(max_count, expected.size()));
    for (size_t i = 0; i < busiest.size(); ++i) EXPECT_EQ(busiest[i].peak_db, expected[i]);
  }
  for (uint32_t i = 0; i < 50; ++i)
    survey.channels[100 + i] = {.hits = 1 + i * 7 % 50, .looks = 50};
  const std::vector<Channel> all = survey.byActivity();
  for (size_t max_count = 1; max_count <= all.size(); ++max_count) {
    EXPECT_EQ(survey.busiest(max_count).back().hits, all[max_count - 1].hits) << max_count;
  }
}

TEST(SignalKind, IsGuessedFromTheWidth) {
  const std::pair<double, const char*> cases[] = {{kNan, "?"},
                                                  {-1, "?"},
                                                  {0, "?"},
                                                  {0.1, "carrier?"},
                                                  {1199.9, "carrier?"},
                                                  {1200, "SSB/CW?"},
                                                  {4000, "AM?"},
                                                  {9000, "NFM?"},
                                                  {20000, "wide NFM?"},
                                                  {40000, "?"},
                                                  {119999.9, "?"},
                                                  {120000, "WFM?"},
                                                  {259999.9, "WFM?"},
                                                  {260000, "wideband?"},
                                                  {kInfinity, "wideband?"}};
  for (const auto& [width_hz, text] : cases) EXPECT_STREQ(guessKind(width_hz), text) << width_hz;
  EXPECT_EQ(signalKinds(), (std::vector<std::string_view>{"carrier?", "SSB/CW?", "AM?", "NFM?",
                                                          "wide NFM?", "WFM?", "wideband?", "?"}));
}

}  // namespace
}  // namespace pelagrim
