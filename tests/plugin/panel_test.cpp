// The panel's rows to the byte, through the boundary.

#include "tests/support/plugin_host.h"

namespace {

TEST(Panel, NamesItsSevenColumnsAndWritesNothingElse) {
  PluginHost host;
  char titles[8][WENDLE_CELL_BYTES];
  std::memset(titles, 'x', sizeof titles);
  EXPECT_EQ(host.panel->columns(nullptr, titles), 7);
  const char* const expected[] = {"Frequency",  "Width", "Guess", "Peak dB",
                                  "Over floor", "Seen",  "Band"};
  for (size_t i = 0; i < 7; ++i) {
    EXPECT_STREQ(titles[i], expected[i]);
    EXPECT_EQ(titles[i][std::strlen(expected[i]) + 1], 'x');
  }
  EXPECT_EQ(titles[7][0], 'x');
}

/// A survey read from a file, so that every value is known.
class PanelRows : public ::testing::Test {
 protected:
  void resume(const std::string& rows) {
    host.dir.write("survey.csv", "# survey.csv format 2\n" + rows);
    host.create(1e6, 145e6);
  }
  PluginHost host;
};

TEST_F(PanelRows, ShowChannelsBusiestFirst) {
  resume(
      "137100000,34000,1,1,-40.4,-60,3,10,0,0\n"
      "145500000,12500,1,1,-40.4,-60,3,10,0,0\n"
      "117975000,600,1,1,2.5,0,5,5,0,0\n"
      "1000000000,130000,1,1,3.5,0,9,9,0,0\n");
  const std::vector<Row> expected = {
      {"Survey", "sweeping", "3", "slices", "0", "dwells done", "24 labels"},
      {"117.9750 MHz", "0.6 kHz", "carrier?", "2", "2 dB", "5/5", "Airband, civil AM"},
      {"1000.0000 MHz", "130.0 kHz", "WFM?", "4", "4 dB", "9/9", ""},
      {"137.1000 MHz", "34.0 kHz", "wide NFM?", "-40", "20 dB", "3/10",
       "Weather satellite downlink (NOA"},
      {"145.5000 MHz", "12.5 kHz", "NFM?", "-40", "20 dB", "3/10", "Amateur 2 m"}};
  EXPECT_EQ(host.rows(), expected);
  EXPECT_EQ(host.rawRows()[0].kind, 4);
  EXPECT_EQ(host.rawRows()[1].kind, 0);
  for (unsigned max = 1; max < 6; ++max) {
    EXPECT_EQ(host.rows(max), std::vector<Row>(expected.begin(), expected.begin() + max));
  }
}

TEST_F(PanelRows, GiveTheWarningPriorityOverChannels) {
  host.dir.write("survey.cfg", "dwell_seconds=0\n");
  resume("145500000,12500,1,1,0,0,1,1,0,0\n");
  host.tune_answer = -3;
  host.process(Samples(1));
  EXPECT_EQ(host.rows(1).size(), 1U);
  EXPECT_EQ(host.rows(2)[1], (Row{"Cannot sweep", "no radio open", "", "", "", "", ""}));
  EXPECT_EQ(host.rows(3)[2][0], "145.5000 MHz");
}

TEST_F(PanelRows, CutWhatDoesNotFitAndSurviveOddValues) {
  resume(
      "9000000000000000000,9000000000000000000,1,1,1e300,-1e300,4294967295,4294967295,0,0\n"
      "1,0,1,1,nan,inf,1,4294967295,0,0\n");
  const auto rows = host.rows();
  EXPECT_EQ(rows[1][0], "9000000000000.0000 MHz");
  EXPECT_EQ(rows[1][3].size(), 31U);
  EXPECT_EQ(rows[1][5], "4294967295/4294967295");
  EXPECT_EQ(rows[2], (Row{"0.0000 MHz", "0.0 kHz", "?", "nan", "nan dB", "1/4294967295", ""}));
}

}  // namespace
