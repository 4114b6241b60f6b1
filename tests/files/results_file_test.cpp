#include "files/results_file.h"

#include <gtest/gtest.h>

#include <cmath>

#include "files/c_locale.h"
#include "files/results_row.h"
#include "tests/support/not_finite.h"
#include "tests/support/temporary_dir.h"

namespace pelagrim {
namespace {

constexpr char kMark[] = "# survey.csv format 2: rows follow\n";

ResultsFile surveyFrom(const std::string& text, double rate_hz = 2400000.0) {
  const TemporaryDir dir;
  dir.write("survey.csv", text);
  return loadSurvey(dir.text(), rate_hz);
}

TEST(ResultsFile, BringsBackWhatItWroteToWholeHertzAndTenthsOfADecibel) {
  Survey survey;
  survey.restore({145012500.4, 12000.5, -62.34, -98.06, 1731760000000, 1731763600000, 17, 20,
                  9999.5, 14000.4});
  const TemporaryDir dir;
  saveSurvey(dir.text(), survey);
  EXPECT_EQ(dir.read("survey.csv"),
            "# survey.csv format 2: each centre_hz is the middle of its signal's bins\n"
            "centre_hz,width_hz,min_width_hz,max_width_hz,peak_db,floor_db,hits,looks,"
            "first_unix_ms,last_unix_ms,guess\n"
            "145012500,12001,10000,14000,-62.3,-98.1,17,20,1731760000000,1731763600000,NFM?\n");
  const ResultsFile read = loadSurvey(dir.text(), 1.0);
  EXPECT_FALSE(read.older);
  ASSERT_EQ(read.channels.size(), 1U);
  const Channel& c = read.channels[0];
  EXPECT_EQ(c.centre_hz, 145012500.0);
  EXPECT_EQ(c.width_hz, 12001.0);
  EXPECT_EQ(c.min_width_hz, 10000.0);
  EXPECT_EQ(c.max_width_hz, 14000.0);
  EXPECT_EQ(c.peak_db, -62.3);
  EXPECT_EQ(c.floor_db, -98.1);
  EXPECT_EQ(c.hits, 17U);
  EXPECT_EQ(c.looks, 20U);
  EXPECT_EQ(c.first_unix_ms, 1731760000000);
  EXPECT_EQ(c.last_unix_ms, 1731763600000);
}

TEST(ResultsFile, SkipsRowsThatMakeNoSense) {
  const std::pair<std::string, size_t> cases[] = {
      {"145,1,1,1,1,1,7,5,0,0", 1},
      {"145,1,1,1,1,1,7,5,0,0,NFM?,and more\n", 1},
      {" 145, 1, 1, 1, 1e3, inf, 7, 5, -1, 0\n", 1},
      {"145 ,1,1,1,1,1,7,5,0,0\n", 0},
      {"0,1,1,1,1,1,7,5,0,0\n-5,1,1,1,1,1,7,5,0,0\n", 0},
      {"145,1,1,1,1,1,0,5,0,0\n", 0},
      {"145,1,1,1,1,1,7,5,0\n145,1.5,1,1,1,1,7,5,0,0\n", 0},
      {"c145,1,1,1,1,1,7,5,0,0\n\n# 145,1,1,1,1,1,7,5,0,0\n", 0},
      {std::string(511, 'x') + "145,1,1,1,1,1,7,5,0,0\n", 1},  // the piece after the 511th byte
  };
  for (const auto& [rows, count] : cases) {
    const ResultsFile read = surveyFrom(kMark + rows);
    EXPECT_EQ(read.channels.size(), count) << rows;
    for (const Channel& c : read.channels) EXPECT_EQ(c.looks, 7U) << "raised to the hits";
  }
}

TEST(ResultsRow, HandsOverWhatFollowsTheNumbers) {
  const std::pair<std::string, const char*> cases[] = {
      {"", ""}, {",NFM?\n", ",NFM?\n"}, {".5", ".5"}, {std::string(",a\0b", 4), ",a"}};
  const CLocale c_locale;  // the levels of a row have decimals
  for (const auto& [after, rest] : cases) {
    const std::string line = "145,1,1,1,1,1,7,5,0,9" + after;
    const auto row = parseResultsRow(line.c_str());
    ASSERT_TRUE(row) << line;
    EXPECT_EQ(row->rest, rest);
    EXPECT_EQ(row->channel.last_unix_ms, 9);
  }
}

TEST(ResultsFile, MovesTheCentresOfAnOlderFileDownHalfABin) {
  const std::string row = "145012500,1,1,1,1,1,7,9,0,0\n";
  for (const std::string& older : {row, "# survey.csv format 1\n" + row, "x" + (kMark + row)}) {
    const ResultsFile read = surveyFrom(older);
    EXPECT_TRUE(read.older);
    ASSERT_EQ(read.channels.size(), 1U);
    EXPECT_EQ(read.channels[0].centre_hz, 145011328.125);
  }
  EXPECT_EQ(surveyFrom(row + kMark).channels[0].centre_hz, 145012500.0) << "the mark may come last";
  EXPECT_TRUE(loadSurvey("/nonexistent", 1.0).channels.empty());
}

TEST(ResultsFile, CutsARowThatOddLevelsMakeTooLong) {
  Survey survey;
  survey.restore({145e6, kNan, 1e300, kInfinity, INT64_MIN, INT64_MAX, 1, 1, -1e300, 0.5});
  const std::string text = surveyText(survey);
  const std::string row = text.substr(text.find("145000000"));
  EXPECT_EQ(row.size(), 256U);
  EXPECT_EQ(row.substr(0, 72),
            "145000000,-9223372036854775808,-9223372036854775808,1,100000000000000005");
  EXPECT_EQ(row.back(), '\n');
}

}  // namespace
}  // namespace pelagrim
