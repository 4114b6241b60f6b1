// Numbers at and beyond the ends of their ranges.

#include <xmmintrin.h>

#include <algorithm>
#include <limits>

#include "tests/support/not_finite.h"
#include "tests/support/plugin_host.h"

namespace {

constexpr double kRateHz = 1024000.0;

/// The rows of survey.csv, its two header lines left out.
std::vector<std::string> savedRows(const PluginHost& host) {
  std::istringstream text(host.dir.read("survey.csv"));
  std::vector<std::string> rows;
  for (std::string line; std::getline(text, line);) rows.push_back(line);
  EXPECT_GE(rows.size(), 2U) << "no header";
  rows.erase(rows.begin(), rows.begin() + 2);
  return rows;
}

/// One dwell after the odd ones; it has to find its one tone.
void expectSaneSurvey(PluginHost& host) {
  std::filesystem::remove(host.dir.path() / "survey.csv");
  host.now_ms = 1'000'000;
  host.create(kRateHz, 145e6);
  host.processUntil(1'020'000, band(2, {100}));
  host.iq->destroy(host.handle);
  const auto rows = savedRows(host);
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0].substr(0, 24), "145100000,3000,3000,3000");
}

TEST(Numbers, OfAnyRateGiveCentresAndWidthsInProportion) {
  const Samples samples = band(2, {100});
  for (const double rate_hz : {1.0, 48e3, 96e3, 2.4e6, 1e7, 1e8, 1e9}) {
    PluginHost host;
    host.dir.write("survey.cfg", "sweep=no\nraster_hz=1\n");
    host.create(rate_hz, 2e9);
    host.processUntil(1'020'000, samples);
    const auto rows = savedRows(host);
    ASSERT_EQ(rows.size(), 1U) << rate_hz;
    const double centre_hz = 2e9 + 100 * rate_hz / 1024;
    EXPECT_EQ(rows[0].rfind(std::to_string(std::llround(centre_hz)) + "," +
                                std::to_string(std::llround(3 * rate_hz / 1024)) + ",",
                            0),
              0U)
        << rows[0];
  }
}

TEST(Numbers, ThatMakeNoSenseLeaveTheNextSurveySane) {
  const double odd[] = {0.0,       -1.0,       5e-324, 1e308, -1e308,
                        kInfinity, -kInfinity, kNan,   1e-9,  9.3e18};
  PluginHost host;
  host.dir.write("survey.cfg", "start=144e6\nstop=146e6\n");
  const Samples samples = band(2, {100});
  for (const double rate_hz : odd) {
    for (const double centre_hz : odd) {
      SCOPED_TRACE(testing::Message() << rate_hz << " Hz at " << centre_hz);
      host.create(rate_hz, centre_hz);
      host.processUntil(host.now_ms + 20'000, samples);
      host.iq->retune(host.handle, centre_hz);
      host.processUntil(host.now_ms + 20'000, samples);
      host.iq->destroy(host.handle);
      host.lines();
      EXPECT_EQ(host.rows()[0][4], "2");
    }
  }
  expectSaneSurvey(host);
}

TEST(Numbers, InSamplesMayBeAnyFloat) {
  const float odd[] = {NAN,    INFINITY, -INFINITY, std::numeric_limits<float>::max(),
                       1e-45F, 1e-38F,   0.0F,      -0.0F};
  PluginHost host;
  host.create(kRateHz, 145e6);
  for (const float value : odd) {
    for (const bool everywhere : {false, true}) {
      Samples samples = band(2, {100});
      for (size_t i = 0; i < samples.size(); i += everywhere ? 1 : 700)
        samples[i] = {value, -value};
      host.processUntil(host.now_ms + 20'000, samples);
      const std::string odd_dwell = host.lastLine();
      EXPECT_TRUE(std::isfinite(value) || odd_dwell.find(" 0 here,") != std::string::npos)
          << odd_dwell;
      host.processUntil(host.now_ms + 20'000, band(2, {100}));
      EXPECT_EQ(host.lastLine().substr(0, 36), "survey: 145.000 MHz, 1 here, 1 known") << value;
    }
  }
  EXPECT_EQ(host.rows()[0][4], "32");
  EXPECT_EQ(_mm_getcsr() & ~_MM_EXCEPT_MASK, 0x1F80U) << "the processor's usual mode changed";
  // Silence and denormal samples are a spectrum without signals; one bad sample among good ones
  // never makes more than the one channel.
  EXPECT_LE(savedRows(host).size(), 1U);
  expectSaneSurvey(host);
}

TEST(Numbers, OfCountersWrapAtTheirLimitAndSurviveTheFile) {
  PluginHost host;
  host.dir.write("survey.csv",
                 "# survey.csv format 2\n"
                 "145100000,3000,3000,3000,54.2,8.8,4294967294,4294967294,9223372036854775807,"
                 "-9223372036854775808,AM?\n");
  host.create(kRateHz, 145e6);
  for (std::string count : {"4294967295/4294967295", "0/0", "1/1"}) {
    host.processUntil(host.now_ms + 20'000, band(1, {100}));
    EXPECT_EQ(host.rows()[1][5], count);
    EXPECT_EQ(host.rows()[1][0], "145.1000 MHz");
    std::ranges::replace(count, '/', ',');
    EXPECT_NE(savedRows(host)[0].find("," + count + ","), std::string::npos);
  }
  EXPECT_EQ(savedRows(host)[0],
            "145100000,3000,3000,3000,54.2,6.4,1,1,9223372036854775807,1060000,SSB/CW?");
}

}  // namespace
