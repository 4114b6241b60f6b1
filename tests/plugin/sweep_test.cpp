// Slice stepping, tune requests and what the user is told about them, through the boundary.

#include "tests/support/plugin_host.h"

namespace {

constexpr char kNotAllowed[] =
    "survey: not allowed to tune - tick 'allow tuning' on this plugin's row to sweep - surveying "
    "only the tuned slice";

/// A host whose dwells end at every call; `slice_count` slices of 1 MHz from 144 MHz.
class Sweep : public ::testing::Test {
 protected:
  void start(const std::string& stop_mhz, const std::string& more = "") {
    host.dir.write("survey.cfg", "start=144e6\nstop=" + stop_mhz + "e6\ndwell_seconds=0\n" + more);
    host.create(1e6, 144.5e6);
    host.lines();
  }
  /// Ends a dwell with no frames: no dwell line is logged, but the survey steps.
  std::vector<std::string> step(int answer) {
    host.tune_answer = answer;
    host.process(Samples(1));
    return host.lines();
  }
  PluginHost host;
};

TEST_F(Sweep, VisitsTheSlicesInTurnFromTheSecond) {
  start("146");
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(step(0).empty());
  const std::vector<double> expected = {144.5e6 + 0.9e6, 144.5e6 + 0.9e6 + 0.9e6, 144.5e6,
                                        144.5e6 + 0.9e6};
  EXPECT_EQ(host.tuned_hz, expected);
  host.create(1e6, 144.5e6);
  step(0);
  EXPECT_EQ(host.tuned_hz.back(), 145.4e6) << "a new create starts over";
}

TEST_F(Sweep, StaysPutWhenFixedOrWithOneSliceOrWithoutTune) {
  start("146", "sweep = no\n");
  step(0);
  start("144.5", "sweep = yes\n");
  step(0);
  EXPECT_TRUE(host.tuned_hz.empty());
  start("146", "sweep = yes\n");
  host.services.tune = nullptr;
  EXPECT_TRUE(step(0).empty());
  EXPECT_EQ(host.rows().size(), 1U);
}

TEST_F(Sweep, ReportsEachReasonOnceAndKeepsAsking) {
  const std::pair<int, const char*> reasons[] = {
      {-1, "not allowed to tune - tick 'allow tuning' on this plugin's row to sweep"},
      {-2, "the band in survey.cfg is outside this radio's range"},
      {-3, "no radio open"},
      {-4, "the radio refused to tune"},
      {7, "the radio refused to tune"}};
  for (const auto& [answer, reason] : reasons) {
    start("146");
    EXPECT_EQ(step(answer), std::vector<std::string>{std::string("survey: ") + reason +
                                                     " - surveying only the tuned slice"});
    EXPECT_TRUE(step(-3).empty());
    EXPECT_EQ(host.tuned_hz.back(), 146.3e6) << "a refusal does not hold up the plan";
    ASSERT_EQ(host.rawRows().size(), 2U);
    EXPECT_EQ(host.rawRows()[1].kind, 2);
    EXPECT_EQ(host.rows()[1][0], "Cannot sweep");
    EXPECT_EQ(host.rows()[1][1], std::string(reason).substr(0, 31)) << "the first reason stays";
    EXPECT_EQ(step(0), std::vector<std::string>{"survey: tuning allowed - sweeping the band"});
    EXPECT_TRUE(step(0).empty());
    EXPECT_EQ(host.rows().size(), 1U);
  }
}

TEST_F(Sweep, RemembersARefusalAcrossCreatesAndAFullLog) {
  start("146");
  for (int i = 0; i < 16; ++i) host.create(1e6, 144.5e6);  // fills the log
  host.tune_answer = -1;
  host.process(Samples(1));
  for (const std::string& line : host.lines()) EXPECT_NE(line, kNotAllowed);
  EXPECT_EQ(host.rows()[1][1], "not allowed to tune - tick 'all");
  host.create(1e6, 144.5e6);
  host.lines();
  EXPECT_TRUE(step(-1).empty()) << "still the same refusal";
  EXPECT_EQ(host.rows().size(), 2U);
}

TEST_F(Sweep, AttributesSamplesToTheOldCentreUntilTheHostReportsTheNew) {
  start("146");
  host.processUntil(2'000'000, band(1, {}));
  EXPECT_EQ(host.lastLine(), "survey: 144.500 MHz, 0 here, 0 known after 1 dwell");
  host.processUntil(3'000'000, band(1, {}));
  EXPECT_EQ(host.lastLine(), "survey: 144.500 MHz, 0 here, 0 known after 2 dwells");
  host.iq->retune(host.handle, host.tuned_hz.back());
  host.processUntil(4'000'000, band(1, {}));
  EXPECT_EQ(host.lastLine(), "survey: 146.300 MHz, 0 here, 0 known after 3 dwells");
}

TEST_F(Sweep, KeepsSettingsThatTheFileNoLongerHolds) {
  start("146", "threshold_db = 9\n");
  host.dir.write("survey.cfg", "start = 145e6\n");
  host.create(1e6, 144.5e6);
  EXPECT_EQ(host.lastLine(), "survey: 145.000-146.000 MHz in 2 slices of 1.00 MHz, 0 s each");
}

TEST_F(Sweep, LimitsTheSurveyToTheBandWhileItSweeps) {
  start("144.6");
  host.processUntil(2'000'000, band(2, {300}));  // at 144.793 MHz
  EXPECT_EQ(host.lastLine(), "survey: 144.500 MHz, 1 here, 0 known after 1 dwell");
  start("150", "sweep = no\n");  // the limits of the last sweep stay
  host.processUntil(3'000'000, band(2, {300}));
  EXPECT_EQ(host.lastLine(), "survey: 144.500 MHz, 1 here, 0 known after 1 dwell");
}

}  // namespace
