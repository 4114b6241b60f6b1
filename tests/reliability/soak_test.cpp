// A month of survey, with the clock running ahead of the samples.

#include "tests/support/plugin_host.h"

namespace {

TEST(Soak, AMonthOfSurveyCountsRightAndGrowsNothing) {
#ifdef PELAGRIM_SANITIZED
  constexpr int kDays = 1;
#else
  constexpr int kDays = 30;
#endif
  constexpr double kRateHz = 1024000.0;
  constexpr int kDwellsPerDay = 86'400 / 20;
  setenv("TMPDIR", "/dev/shm", 1);  // files in memory: this is not a test of the disk
  PluginHost host;
  host.tuned_hz.reserve(kDays * kDwellsPerDay);
  host.create(kRateHz, 144.512e6);  // the first of the three slices
  // One station that is always there and one that sends in every fourth dwell of the second slice.
  const Samples quiet = band(1, {});
  const Samples beacon = band(1, {100});
  const Samples visitor = band(1, {-200});
  uint32_t looks[3] = {};
  uint32_t visits = 0;
  size_t heap_bytes = 0;
  for (int dwell = 0; dwell < kDays * kDwellsPerDay; ++dwell) {
    const size_t slice = static_cast<size_t>(dwell) % 3;
    const bool visited = slice == 1 && looks[1] % 4 == 0;
    ++looks[slice];
    if (visited) ++visits;
    host.processUntil(host.now_ms + 20'000, slice == 0 ? beacon : visited ? visitor : quiet);
    ASSERT_EQ(host.tuned_hz.size(), static_cast<size_t>(dwell) + 1) << "the dwell did not end";
    host.iq->retune(host.handle, host.tuned_hz.back());
    ASSERT_EQ(host.lines().size(), dwell == 0 ? 3U : 1U);
    if (dwell == kDwellsPerDay / 2) heap_bytes = heapBytes();
  }
  EXPECT_LE(heapBytes(), heap_bytes + 4096);

  const auto rows = host.rows();
  ASSERT_EQ(rows.size(), 3U);
  const auto counts = [](uint32_t hits, uint32_t covered) {
    return std::to_string(hits) + "/" + std::to_string(covered);
  };
  EXPECT_EQ(rows[0][4], std::to_string(kDays * kDwellsPerDay));
  EXPECT_EQ(rows[1][0], "144.6120 MHz");
  EXPECT_EQ(rows[1][5], counts(looks[0], looks[0]));
  EXPECT_EQ(rows[2][0], "145.2336 MHz");
  EXPECT_EQ(rows[2][5], counts(visits, looks[1]));
  host.create(kRateHz, 145e6);
  auto resumed = host.rows();
  resumed[0] = rows[0];  // counts dwells since create
  EXPECT_EQ(resumed, rows) << "the file is not what memory held";
}

}  // namespace
