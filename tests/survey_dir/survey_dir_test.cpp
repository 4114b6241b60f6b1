// Where a survey is, its settings file, and the watch on its results.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "files/default_settings.h"
#include "host/survey_dir/results_watch.h"
#include "host/survey_dir/settings_doubts.h"
#include "host/survey_dir/survey_place.h"
#include "host/survey_dir/survey_settings.h"
#include "tests/support/temporary_dir.h"

namespace pelagrim_host {
namespace {

namespace fs = std::filesystem;

TEST(SurveySettings, EditsKeepEveryOtherByte) {
  const std::string text =
      "# start = 1\r\n start\t= 144000000 Hz  # mine\r\nsweep = yes # not now\n\nstop=1\nstop =2\n"
      "odd line\nraster_hz = \nthreshold_db = inf\nraster_hz = \n";
  const SurveySettings read = parseSettings(text);
  EXPECT_EQ(read.text(), "start = 144000000, stop = 2, raster_hz = 0, sweep = no")
      << "the last line of a key counts, and so does the n of \"not\"";
  EXPECT_EQ(read.inForce().threshold_db, 12.0) << "what is not finite is not set";
  EXPECT_EQ(read.inForce().dwell_seconds, 20.0);
  EXPECT_EQ(read.inForce({.dwell_seconds = 7.0}).dwell_seconds, 7.0);
  EXPECT_TRUE(SurveySettings{}.inForce().sweep && SurveySettings{}.isEmpty());

  const SurveySettings changes{.start_hz = 430e6, .stop_hz = 440e6, .raster_hz = 12500.0};
  EXPECT_EQ(withSettings(
                text, changes.changedBy({.start_hz = 431e6, .dwell_seconds = 0.5, .sweep = true})),
            "# start = 1\r\n start\t= 431000000 Hz  # mine\r\nsweep = yes\n\nstop=1\n"
            "stop =440000000\nodd line\nraster_hz = \nthreshold_db = inf\nraster_hz = 12500\n"
            "dwell_seconds = 0.5\n");
}

TEST(SurveySettings, AreDoubtedWhereTheFileProbablyMeansSomethingElse) {
  EXPECT_EQ(settingsDoubts(pelagrim::kDefaultSettingsText), std::vector<std::string>{});
  EXPECT_EQ(settingsDoubts("\n# x\r\nstart = 145e6 # Hz\r\nsweep = yes # all\ndwell_seconds=2"),
            std::vector<std::string>{});
  const auto doubts = [](const std::string& text, const std::string& why) {
    const auto lines = settingsDoubts("raster_hz = 5000\n" + text);
    return lines.size() == 1 && lines[0] == "survey.cfg, line 2: '" + text + "' " + why;
  };
  EXPECT_TRUE(doubts("stop = 146", "is in hertz; 146 MHz is 146e6"));
  EXPECT_TRUE(
      doubts("start = 144.0M", "is read as 144; write a number alone, in hertz, seconds or dB"));
  for (const char* const odd : {"strat = 1e8", "start: 1e8", "start =", "= 5"}) {
    EXPECT_TRUE(doubts(odd,
                       "sets nothing: lines are start, stop, threshold_db, dwell_seconds, "
                       "raster_hz or sweep, = and a value"))
        << odd;
  }
  for (const auto& [odd, meaning] :
       {std::pair("on", "no"), {"yes # not now", "no"}, {"false", "yes"}}) {
    EXPECT_TRUE(doubts(
        std::string("sweep = ") + odd,
        std::string("means ") + meaning + ", because of the letters in it; write yes or no alone"))
        << odd;
  }
  const auto many = settingsDoubts("a\nb\nc\nd\ne");
  EXPECT_EQ(many.size(), 4u);
  EXPECT_EQ(many.back(), "survey.cfg: 2 more lines like that");
}

TEST(SurveySettings, EditingTheFileKeepsItsLinkAndItsMode) {
  const TemporaryDir dir;
  dir.write("shared.cfg", "# ours\nstart = 1\n");
  fs::permissions(dir.path() / "shared.cfg", fs::perms(0640));
  fs::create_directory(dir.path() / "survey");
  fs::create_symlink("../shared.cfg", dir.path() / "survey/survey.cfg");
  editSettings(dir.path() / "survey", {.stop_hz = 2.0});
  EXPECT_EQ(dir.read("shared.cfg"), "# ours\nstart = 1\nstop = 2\n");
  EXPECT_EQ(fs::status(dir.path() / "shared.cfg").permissions(), fs::perms(0640));
  EXPECT_TRUE(fs::is_symlink(dir.path() / "survey/survey.cfg"));
  EXPECT_EQ(readSettings(dir.path() / "survey")->stop_hz, 2.0);

  EXPECT_FALSE(readSettings(dir.path()));
  editSettings(dir.path(), {.sweep = false});
  EXPECT_EQ(readSettings(dir.path())->text(), "sweep = no") << dir.read("survey.cfg");
  fs::remove(dir.path() / "survey.cfg");
  mkfifo((dir.path() / "survey.cfg").c_str(), 0600);
  EXPECT_THROW(editSettings(dir.path(), {.sweep = true}), std::runtime_error);
  fs::remove(dir.path() / "survey.cfg");
  fs::create_symlink("/dev/zero", dir.path() / "survey.cfg");
  EXPECT_TRUE(readSettings(dir.path())->isEmpty()) << "a device is an empty file";
  EXPECT_THROW(editSettings(dir.path(), {.sweep = true}), std::runtime_error);
}

TEST(SurveyPlace, IsAsNamedElseFromTheEnvironmentElseFromTheSourceElseInTheHome) {
  const struct {
    const char* named;
    const char* variable;
    std::optional<fs::path> of_source;
    const char* home;
    const char* place;
  } cases[] = {{"a", "b", "c", "/h", "a"},     {"", "b", "c", "/h", "b"},
               {"", "", "c", "/h", "c"},       {"", nullptr, "c", "/h", "c"},
               {"", "b", {}, "/h", "b"},       {"", nullptr, {}, "/h", "/h/.orvane/pelagrim"},
               {"", nullptr, {}, nullptr, "."}};
  const std::string home = std::getenv("HOME") == nullptr ? "" : std::getenv("HOME");
  const auto set = [](const char* name, const char* value) {
    value == nullptr ? unsetenv(name) : setenv(name, value, 1);
  };
  for (const auto& [named, variable, of_source, home_now, place] : cases) {
    set("ORVANE_SURVEY_DIR", variable);
    set("HOME", home_now);
    EXPECT_EQ(surveyPlace(named, of_source), place);
  }
  pointPluginTo("there");
  EXPECT_EQ(surveyPlace("", "here"), "there");
  unsetenv("ORVANE_SURVEY_DIR");
  set("HOME", home.c_str());
}

TEST(ResultsWatch, SaysOnceWhenSavingFailsAndOnceWhenItWorksAgain) {
  const TemporaryDir dir;
  const auto path = dir.path() / "survey.csv";
  int second = 0;
  const auto save = [&](const char* text) {
    dir.write("survey.csv", text);
    fs::last_write_time(path, fs::file_time_type() + std::chrono::seconds(++second));
  };
  save("of an earlier run\n");
  ResultsWatch watch(path, std::chrono::seconds(0));
  EXPECT_FALSE(watch.written());
  const struct {
    const char* text;  ///< null: nothing is written
    const char* news;
    bool written;
  } dwells[] = {{"row\n", "", true},      {"row\nro", "could not be written whole", false},
                {"row\nro", "", false},   {"row\nrow\n", "written again", true},
                {"row\nrow\n", "", true}, {nullptr, "could not be written whole", true},
                {"", "", false}};
  for (const auto& [text, news, written] : dwells) {
    if (text != nullptr) save(text);
    const std::string said = watch.news().value_or("");
    EXPECT_TRUE(*news == '\0' ? said.empty() : said.find(news) != std::string::npos) << said;
    EXPECT_EQ(watch.written(), written);
  }
  ResultsWatch patient(path);
  EXPECT_FALSE(patient.news()) << "two dwells in one tick of the file's clock are no failure";
}

}  // namespace
}  // namespace pelagrim_host
