// Time on the air as it is computed from dwells: bridging, transmissions, the interval.
#include "host/history/occupancy.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>

#include "host/evidence/dwell_record.h"

namespace pelagrim_host {
namespace {

/// A dwell at 1000 samples per second.
Watch watch(uint64_t from_ms, uint64_t to_ms, std::vector<OnAirStretch> on_air, int64_t run = 1) {
  return {run,
          from_ms,
          to_ms,
          static_cast<int64_t>(from_ms),
          1e-3 * double(to_ms - from_ms),
          std::move(on_air)};
}

TEST(Occupancy, BridgesShortGapsAlsoFromDwellToDwell) {
  const Watch watches[] = {
      watch(0, 10'000, {{1.0, 2.0}, {2.9, 3.0}, {4.1, 5.0}, {9.5, 9.8}}),
      watch(10'000, 20'000, {{0.5, 1.0}}),     // goes on: the gap from 9.8 to 10.5 is bridged
      watch(21'000, 22'000, {{0.1, 1.0}}),     // a gap in time: nothing is bridged
      watch(22'000, 23'000, {{0.0, 0.4}}, 2),  // nor from run to run
  };
  const Occupancy heard = occupancyOf(watches, 1.0);
  EXPECT_DOUBLE_EQ(heard.observed_s, 22.0);
  EXPECT_DOUBLE_EQ(heard.on_air_s, 2.0 + 0.9 + 1.5 + 0.9 + 0.4);
  EXPECT_EQ(heard.visits, 3u);
  ASSERT_EQ(heard.transmissions.size(), 5u);
  const struct {
    int64_t start_ms;
    double seconds;
    bool is_cut;
  } wanted[] = {{1000, 2.0, false},
                {4100, 0.9, false},
                {9500, 1.5, false},
                {21100, 0.9, true},
                {22000, 0.4, true}};
  for (size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(heard.transmissions[i].start_unix_ms, wanted[i].start_ms);
    EXPECT_NEAR(heard.transmissions[i].seconds, wanted[i].seconds, 1e-12);
    EXPECT_EQ(heard.transmissions[i].is_cut, wanted[i].is_cut);
  }
  EXPECT_EQ(heard.changes, 8u);  // 6, 1, none between two visits that both are on, 1
  EXPECT_FALSE(heard.interval);
  EXPECT_EQ(occupancyOf(watches, 0.0).transmissions.size(), 7u);
  EXPECT_EQ(occupancyOf({}).share(), 0.0);
}

TEST(Occupancy, WhatADwellSaysOfAnInterval) {
  DwellRecord dwell;
  dwell.slice = {1024e3, 100e6};
  dwell.first_sample = 500;
  dwell.samples = 2048'000;
  dwell.threshold_db = 12.0;
  dwell.row_frames = 10;
  dwell.mean_db.assign(1024, -50.0F);
  dwell.max_db.assign(1024, -47.0F);
  dwell.places = {{100.00e6, 100.01e6, 3.0, {0, 500, 1500}},
                  {100.008e6, 100.02e6, 3.0, {400, 900}}};

  const auto both = watchOf(dwell, 3, {100.005e6, 100.012e6});
  ASSERT_TRUE(both);
  EXPECT_EQ(both->end_sample, 2048'500u);
  EXPECT_EQ(both->seconds, 2.0);
  ASSERT_EQ(both->on_air.size(), 2u);
  EXPECT_EQ(both->on_air[0].to_s, 0.9);
  EXPECT_EQ(both->on_air[1].from_s, 1.5);
  EXPECT_EQ(both->on_air[1].to_s, 2.0);  // on at the end

  const auto silent = watchOf(dwell, 3, {99.9e6, 99.91e6});
  ASSERT_TRUE(silent);
  EXPECT_TRUE(silent->on_air.empty());
  EXPECT_FALSE(watchOf(dwell, 3, {99.4e6, 99.6e6}));   // not all in the slice
  dwell.max_db[412] = -30.0F;                          // 99.9 MHz
  EXPECT_FALSE(watchOf(dwell, 3, {99.9e6, 99.91e6}));  // perhaps on, for a while
  dwell.max_db.clear();
  EXPECT_FALSE(watchOf(dwell, 3, {99.8e6, 99.81e6}));  // levels were dropped
}

using Random = std::mt19937_64;

/// A station: how long it stays on or off, seconds, and what share of the time that makes.
struct OnOff {
  const char* name;
  double share;
  std::function<double(Random&, bool is_on)> length;
  double dwell_s;
  double revisit_s;  ///< from the start of a dwell to that of the next one
  int dwells;
};

double exponential(Random& random, double mean) {
  return std::exponential_distribution(1.0 / mean)(random);
}

std::vector<OnOff> kinds() {
  return {
      {"exponential", 0.25, [](Random& r, bool on) { return exponential(r, on ? 5.0 : 15.0); }, 2.0,
       14.0, 600},
      {"slow", 0.4, [](Random& r, bool on) { return exponential(r, on ? 40.0 : 60.0); }, 2.0, 14.0,
       1500},
      {"watched without a break", 0.3,
       [](Random& r, bool on) { return exponential(r, on ? 3.0 : 7.0); }, 2.0, 2.0, 1200},
      {"regular", 0.2,
       [](Random& r, bool on) {
         return (on ? 4.0 : 16.0) * std::uniform_real_distribution(0.7, 1.3)(r);
       },
       2.0, 9.0, 600},
      {"bursts", 1.0 / 3.0,
       [](Random& r, bool on) {
         const bool pause = !on && std::bernoulli_distribution(0.25)(r);
         return exponential(r, on ? 4.0 : pause ? 26.0 : 2.0);
       },
       2.0, 14.0, 900},
  };
}

/// What one hears of it; it has been running for long.
std::vector<Watch> heard(const OnOff& station, Random& random) {
  std::vector<Watch> watches;
  bool is_on = false;
  double until_s = -std::uniform_real_distribution(300.0, 600.0)(random);
  for (int i = 0; i < station.dwells; ++i) {
    const double from_s = i * station.revisit_s;
    const double to_s = from_s + station.dwell_s;
    Watch watch{1,
                static_cast<uint64_t>(1000 * from_s),
                static_cast<uint64_t>(1000 * to_s),
                0,
                station.dwell_s,
                {}};
    double at_s = from_s;
    while (true) {
      while (until_s <= at_s) {
        is_on = !is_on;
        until_s += station.length(random, is_on);
      }
      const double end_s = std::min(until_s, to_s);
      if (is_on) watch.on_air.push_back({at_s - from_s, end_s - from_s});
      at_s = end_s;
      if (at_s >= to_s) break;
    }
    watches.push_back(std::move(watch));
  }
  return watches;
}

TEST(Occupancy, IntervalsHoldTheLongRunShare) {
  constexpr int kRuns = 4000;
  for (const OnOff& station : kinds()) {
    Random random(20);
    int held = 0, given = 0;
    double width = 0.0;
    for (int i = 0; i < kRuns; ++i) {
      const auto interval = occupancyOf(heard(station, random), 0.0).interval;
      if (!interval) continue;
      ++given;
      width += interval->high - interval->low;
      held += interval->low <= station.share && station.share <= interval->high ? 1 : 0;
    }
    EXPECT_EQ(given, kRuns) << station.name;
    const double share = double(held) / given;
    EXPECT_GE(share, 0.94) << station.name;
    EXPECT_LE(share, 0.96) << station.name;
    EXPECT_LT(width / given, 0.2) << station.name;
  }
}

TEST(Occupancy, NoIntervalWithoutEnoughChanges) {
  std::vector<Watch> watches;
  for (uint64_t i = 0; i < 100; ++i) {
    watches.push_back(watch(i * 5000, i * 5000 + 1000, {}));
    if (i % 20 < 10) watches.back().on_air.push_back({0.0, 1.0});
  }
  EXPECT_EQ(occupancyOf(watches).changes, 9u);
  EXPECT_FALSE(occupancyOf(watches).interval);
  watches.push_back(watch(600'000, 601'000, {{0.0, 1.0}}));
  EXPECT_TRUE(occupancyOf(watches).interval);
}

}  // namespace
}  // namespace pelagrim_host
