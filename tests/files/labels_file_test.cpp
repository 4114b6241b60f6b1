#include "files/labels_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "files/labels_text.h"
#include "tests/support/not_finite.h"
#include "tests/support/temporary_dir.h"

namespace pelagrim {
namespace {

LabelsFile labelsFrom(const std::string& text) {
  const TemporaryDir dir;
  dir.write("survey-labels.txt", text);
  return loadLabels(dir.text()).value();
}

TEST(LabelsFile, ReadsOddLabelLines) {
  struct Case {
    std::string line;
    double low_hz, high_hz;
    std::string name;
  };
  const Case cases[] = {
      {"144 146 Amateur 2 m\n", 144e6, 146e6, "Amateur 2 m"},
      {"\t144\t146\tTwo  words \t\r\n", 144e6, 146e6, "Two  words"},
      {"145.5 145.5 x # comment", 145.5e6, 145.5e6, "x"},
      {"-1 1e1 below", -1e6, 10e6, "below"},
      {".5 1.5abc", 0.5e6, 1.5e6, "abc"},
      {"1 2 " + std::string(600, 'y'), 1e6, 2e6, std::string(507, 'y')},
  };
  for (const Case& c : cases) {
    const LabelsFile read = labelsFrom(c.line);
    ASSERT_EQ(read.labels.size(), 1U) << c.line;
    EXPECT_EQ(read.labels[0].low_hz, c.low_hz) << c.line;
    EXPECT_EQ(read.labels[0].high_hz, c.high_hz) << c.line;
    EXPECT_EQ(read.labels[0].name, c.name) << c.line;
    EXPECT_EQ(read.unreadable_lines, 0) << c.line;
  }
}

TEST(LabelsFile, CountsUnreadableLinesThatBeginWithADigit) {
  for (const char* line : {"144 146", "144 146 \n", "146 144 reversed", " 144 # 146 x",
                           "144 146 # name", "1x 2 y", "\t9"}) {
    EXPECT_EQ(labelsFrom(line).unreadable_lines, 1) << line;
  }
  for (const char* line : {"", "\n", "# 144 146 x", "band 144 146", "- 1 x", ".x", "-5 -6 x"}) {
    const LabelsFile read = labelsFrom(line);
    EXPECT_EQ(read.unreadable_lines, 0) << line;
    EXPECT_TRUE(read.labels.empty()) << line;
  }
}

TEST(LabelsText, EndsALineAtANulByte) {
  EXPECT_EQ(parseLabelLine(std::string_view("1 2 name \0more", 14)).value().name, "name");
  EXPECT_FALSE(parseLabelLine(std::string_view("1 2\0 name", 9)));
}

TEST(LabelsFile, IsCreatedWithABandPlanIfMissing) {
  const TemporaryDir dir;
  const auto read = loadLabels(dir.text());
  ASSERT_TRUE(read);
  EXPECT_EQ(read->labels.size(), 24U);
  EXPECT_EQ(read->unreadable_lines, 0);
  const std::string text = dir.read("survey-labels.txt");
  EXPECT_EQ(text.size(), 3186U);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 79);
  EXPECT_FALSE(loadLabels(dir.text() + "/missing"));
}

TEST(BandLabel, MatchesTheFirstRangeThatCoversAFrequency) {
  const std::vector<BandLabel> labels = {
      {5.0, 5.0, "spot"}, {1.0, 5.0, "low"}, {4.0, 9.0, "high"}, {kNan, 99.0, "odd"}};
  const std::pair<double, const char*> cases[] = {{1.0, "low"},  {4.9, "low"},   {5.0, "spot"},
                                                  {5.1, "high"}, {9.0, nullptr}, {kNan, nullptr}};
  for (const auto& [hz, name] : cases) {
    const BandLabel* const found = lookupLabel(labels, hz);
    EXPECT_EQ(found == nullptr ? "" : found->name, name == nullptr ? "" : name) << hz;
  }
}

}  // namespace
}  // namespace pelagrim
