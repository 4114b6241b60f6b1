#include "files/settings_file.h"

#include <gtest/gtest.h>

#include <cmath>

#include "files/default_settings.h"
#include "files/settings_text.h"
#include "files/survey_dir.h"
#include "tests/support/temporary_dir.h"

namespace pelagrim {
namespace {

Settings settingsFrom(const std::string& text) {
  const TemporaryDir dir;
  dir.write("survey.cfg", text);
  Settings settings;
  loadSettings(dir.text(), settings);
  return settings;
}

TEST(SettingsFile, ReadsTheStartOfTheBandInManySpellings) {
  const std::pair<std::string, double> cases[] = {
      {"start=146e6", 146e6},
      {" \t start \t = 146000000\r\n", 146e6},
      {"start = 146000000 Hz", 146e6},
      {"start=0x10", 16.0},
      {"start=1\nstart=2\n", 2.0},
      {"start=abc", 0.0},
      {"start= ", 0.0},
      {"start=-5 # below", -5.0},
      {"start=1=2", 1.0},
      {std::string(62, ' ') + "start=3", 3.0},
      {"start" + std::string(58, ' ') + "=4", 4.0},
      {"start" + std::string(59, ' ') + "=4", 144e6},  // the key is too long
      {"#" + std::string(510, 'x') + "start=5", 5.0},  // a separate piece
      {"# start=1", 144e6},
      {"Start=1\nstart_hz=1\nst art=1", 144e6},
      {"start\n=1\nstart=\nstart=\r\n", 144e6},
  };
  for (const auto& [text, start_hz] : cases)
    EXPECT_EQ(settingsFrom(text).start_hz, start_hz) << text;
}

TEST(SettingsText, FindsKeyAndValueInsideTheLine) {
  const std::string_view line = "\tfoo bar \t= 12 # why\r\n";
  const auto found = parseSettingLine(line);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->key, "foo bar");
  EXPECT_EQ(found->value, " 12 # why");
  EXPECT_EQ(found->value.data(), line.data() + 11);
  EXPECT_EQ(parseSettingLine("a=" + std::string(300, '1'))->value.size(), 255U);
  for (const char* none : {"", " \t", "\r\n", "# a=1", "a", " =1", "a=", "a=\r\n"}) {
    EXPECT_FALSE(parseSettingLine(none)) << none;
  }
}

TEST(SettingsFile, TakesAnySweepWithAnNAsNo) {
  for (const char* no : {"no", "No", "none", "on", "yes # not now", " N"}) {
    EXPECT_FALSE(settingsFrom(std::string("sweep=") + no).sweep) << no;
  }
  for (const char* yes : {"yes", "0", "off", "false", " "}) {
    EXPECT_TRUE(settingsFrom(std::string("sweep=") + yes).sweep) << yes;
  }
}

TEST(SettingsFile, FillsEveryFieldAndLeavesAbsentKeysAlone) {
  const Settings s = settingsFrom("stop=1\nthreshold_db=2.5\ndwell_seconds=inf\nraster_hz=-4\n");
  EXPECT_EQ(s.start_hz, 144e6);
  EXPECT_EQ(s.stop_hz, 1.0);
  EXPECT_EQ(s.threshold_db, 2.5);
  EXPECT_EQ(s.dwell_seconds, INFINITY);
  EXPECT_EQ(s.raster_hz, -4.0);
  EXPECT_TRUE(s.sweep);
}

TEST(SettingsFile, IsCreatedWithTheDefaultsOnlyIfMissing) {
  const TemporaryDir dir;
  Settings settings{.start_hz = 1.0};
  loadSettings(dir.text(), settings);
  EXPECT_EQ(dir.read("survey.cfg"), kDefaultSettingsText);
  EXPECT_EQ(kDefaultSettingsText.size(), 1384U);
  EXPECT_EQ(settings.start_hz, 1.0) << "a file just created is not read back";
  loadSettings(dir.text(), settings);
  EXPECT_EQ(settings.start_hz, 144e6);

  std::filesystem::remove(dir.path() / "survey.cfg");
  std::filesystem::create_symlink("survey.cfg", dir.path() / "survey.cfg");  // cannot be opened
  loadSettings(dir.text(), settings);
  EXPECT_TRUE(std::filesystem::is_symlink(dir.path() / "survey.cfg"));
  loadSettings(dir.text() + "/missing", settings);
  EXPECT_FALSE(dir.has("missing"));
}

TEST(SurveyDir, JoinsAPathWithOneSeparator) {
  EXPECT_EQ(pathJoin("", "a"), "a");
  EXPECT_EQ(pathJoin("d", "a"), "d/a");
  EXPECT_EQ(pathJoin("d/", "/a"), "d//a");
  EXPECT_EQ(pathJoin("d\\", "a"), "d\\a");
}

TEST(SurveyDir, IsChosenByTheEnvironment) {
  const TemporaryDir home;
  setenv("ORVANE_SURVEY_DIR", "some/where", 1);
  setenv("HOME", home.text().c_str(), 1);
  EXPECT_EQ(resolveSurveyDir(), "some/where");
  EXPECT_FALSE(std::filesystem::exists("some"));
  setenv("ORVANE_SURVEY_DIR", "", 1);
  EXPECT_EQ(surveyDir(), home.text() + "/.orvane/pelagrim");
  EXPECT_FALSE(home.has(".orvane")) << "asked for, not created";
  EXPECT_EQ(resolveSurveyDir(), home.text() + "/.orvane/pelagrim");
  EXPECT_TRUE(home.has(".orvane/pelagrim"));
  unsetenv("ORVANE_SURVEY_DIR");
  setenv("HOME", "", 1);
  EXPECT_EQ(resolveSurveyDir(), ".");
}

}  // namespace
}  // namespace pelagrim
