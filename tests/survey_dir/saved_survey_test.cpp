// Reading a survey directory back.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "host/survey_dir/saved_survey.h"

namespace pelagrim_host {
namespace {

constexpr const char* kRow =
    "145012500,12000,10000,14000,-62.3,-98.1,17,20,1731760000000,1731763600000";

TEST(SurveyRows, TakesWhatIsAChannelAndCountsWhatIsNot) {
  const std::string row = kRow;
  const struct {
    std::string text;
    size_t channels;
    size_t skipped;
    const char* why;
  } cases[] = {
      {"", 0, 0, "an empty file"},
      {"# survey.csv format 2\ncentre_hz,width_hz\n \n", 0, 0, "headers alone"},
      {row + ",NFM?\n" + row + ",NFM?\r\n", 2, 0, "both line ends"},
      {row + "\n", 1, 0, "no guess"},
      {row + ",NFM?", 1, 0, "no line feed at the end"},
      {row, 0, 1, "cut off in its last number"},
      {row.substr(0, 40) + "\n" + row + ",NFM?\n", 1, 1, "cut off in the middle"},
      {"145012500 ,1,1,1,1,1,1,1,1,1\n145012500, 1,1,1,1,1,1,1,1,1\n", 1, 1, "blank before, after"},
      {"0,1,1,1,1,1,1,1,1,1,?\n145012500,1,1,1,1,1,0,1,1,1,?\n", 0, 2, "no centre, no hits"},
      {"145012500145012500,1,1,1,1,1,1,1,1,1,?\n5,1000120001200012000,1,1,1,1,1,1,1,1,?\n", 0, 2,
       "two numbers run together"},
      {"145012500,-1,1,1,1,1,1,1,1,1,?\n", 0, 1, "a width below zero"},
      {row + "," + std::string(2000, 'x') + "\n" + row + "\n", 2, 0, "a line longer than any"},
      {std::string("\0\xff\x1b", 3) + "\n", 0, 1, "no text"},
  };
  for (const auto& [text, channels, skipped, why] : cases) {
    const SurveyRows rows = parseSurveyRows(text);
    EXPECT_EQ(rows.channels.size(), channels) << why;
    EXPECT_EQ(rows.skipped_lines, skipped) << why;
  }
}

TEST(SurveyRows, TakesEveryFieldFromItsPlace) {
  const SurveyRows rows =
      parseSurveyRows(std::string("x\n") + kRow + ",<b>\n5,1,1,1,nan,0,7,5,0,0,AM?\n" +
                      "# survey.csv format 2, wherever it stands\n");
  ASSERT_EQ(rows.channels.size(), 2u);
  const SurveyedChannel& channel = rows.channels[0];
  EXPECT_EQ(channel.centre_hz, 145012500.0);
  EXPECT_EQ(channel.min_width_hz, 10000.0);
  EXPECT_EQ(channel.max_width_hz, 14000.0);
  EXPECT_EQ(channel.peak_db, -62.3);
  EXPECT_EQ(channel.floor_db, -98.1);
  EXPECT_EQ(channel.activity(), 0.85);
  EXPECT_EQ(channel.first_unix_ms, 1731760000000);
  EXPECT_EQ(channel.last_unix_ms, 1731763600000);
  EXPECT_EQ(channel.kind, "NFM?") << "by the width, as the file names no kind";
  EXPECT_TRUE(std::isnan(rows.channels[1].peak_db));
  EXPECT_EQ(rows.channels[1].looks, 5u) << "none is made up, though the hits are 7";
  EXPECT_EQ(rows.channels[1].activity(), 1.0);
  EXPECT_EQ(rows.channels[1].kind, "AM?") << "as the file says";
  EXPECT_EQ(rows.first_skipped_line, 1u);
  EXPECT_FALSE(rows.is_older_format);
  EXPECT_TRUE(parseSurveyRows(kRow).is_older_format);
  EXPECT_FALSE(parseSurveyRows("\xEF\xBB\xBF# survey.csv format 2\n").is_older_format);
}

TEST(BandPlan, NamesAFrequencyAfterTheFirstRangeThatHoldsIt) {
  const auto plan = parseLabels(
      "145.5 145.5 Calling # and no more\n144 145 Lower\t\r\n-1 0.5 Longwave\n146 144 Reversed\n"
      "144 146\nword 1 2 x\n145 146 Upper\n144 147 Whole\n147 148 # nothing left\n");
  const struct {
    double hz;
    const char* name;
  } cases[] = {{144e6, "Lower"},     {145e6, "Upper"}, {145.5e6, "Calling"},
               {145500001, "Upper"}, {146e6, "Whole"}, {147e6, nullptr},
               {0, "Longwave"},      {500e3, nullptr}, {143999999.0, nullptr},
               {147.5e6, nullptr}};
  for (const auto& [hz, name] : cases) {
    const pelagrim::BandLabel* const range = pelagrim::lookupLabel(plan, hz);
    EXPECT_EQ(range == nullptr ? "" : range->name, name == nullptr ? "" : name) << hz;
  }
}

}  // namespace
}  // namespace pelagrim_host
