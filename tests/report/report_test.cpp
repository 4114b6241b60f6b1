// Comparing two surveys, and names that a page does not expect.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "host/report/band_layout.h"
#include "host/report/band_svg.h"
#include "host/report/mark_colours.h"
#include "host/report/report_data.h"
#include "host/report/report_page.h"
#include "host/report/report_words.h"
#include "host/report/survey_change.h"
#include "host/survey_dir/saved_survey.h"
#include "host/survey_dir/survey_settings.h"
#include "host/text/display_text.h"
#include "survey/signal_kind.h"

namespace pelagrim_host {
namespace {

SurveyedChannel channelAt(double centre_hz, double width_hz, uint32_t hits, uint32_t looks) {
  SurveyedChannel channel;
  channel.centre_hz = centre_hz;
  channel.width_hz = width_hz;
  channel.hits = hits;
  channel.looks = looks;
  channel.kind = pelagrim::guessKind(width_hz);
  return channel;
}

TEST(BandPlan, EdgesThatAreNoNumberSpoilNothing) {
  const auto plan = parseLabels(
      "144.5 nan Never\nnan 144.1 Never\n144.9 inf Up\n-inf 144.2 Down\n144 145 Between\n");
  std::string names;
  for (const auto& stretch : layOutBand({}, plan, parseSettings("").inForce()).strip) {
    names += plan[stretch.range].name + " ";
  }
  EXPECT_EQ(names, "Down Between Up ");
}

TEST(CompareSurveys, PairsNearestCentresAndTellsChanceFromChange) {
  const std::vector<SurveyedChannel> old = {
      channelAt(144.600e6, 160e3, 9, 10), channelAt(145.000e6, 3e3, 10, 40),
      channelAt(145.100e6, 3e3, 10, 10), channelAt(145.200e6, 3e3, 1, 2)};
  const std::vector<SurveyedChannel> now = {
      channelAt(144.610e6, 160e3, 10, 10), channelAt(144.650e6, 12e3, 1, 1),
      channelAt(145.004e6, 3e3, 38, 40), channelAt(145.106e6, 3e3, 10, 10),
      channelAt(145.200e6, 3e3, 2, 2)};
  const Change expected[] = {Change::kNone, Change::kNew,  Change::kMoreOften,
                             Change::kNew,  Change::kNone, Change::kGone};
  const auto reported = compareSurveys(now, old, 5e3).channels;
  ASSERT_EQ(reported.size(), std::size(expected));
  for (size_t index = 0; index < reported.size(); ++index) {
    EXPECT_EQ(reported[index].change, expected[index]) << index;
  }
  EXPECT_EQ(reported.back().channel.centre_hz, 145.1e6);
  EXPECT_EQ(compareSurveys(old, now, 5e3).channels[1].change, Change::kLessOften);
}

TEST(CompareSurveys, TellsOthersFromTheSameAndLooksSinceFromAllLooks) {
  const auto seen = [](uint32_t hits, uint32_t looks, int64_t first_ms, int64_t last_ms) {
    SurveyedChannel channel = channelAt(145e6, 10e3, hits, looks);
    channel.first_unix_ms = first_ms;
    channel.last_unix_ms = last_ms;
    return channel;
  };
  const auto wide = channelAt(144.62e6, 160e3, 9, 9);
  const std::tuple<SurveyedChannel, SurveyedChannel, Change, const char*> cases[] = {
      {wide, channelAt(144.5e6, 60e3, 9, 9), Change::kNew, "beside the old one"},
      {wide, channelAt(144.62e6, 10e3, 9, 9), Change::kNew, "narrow, upon it"},
      {wide, channelAt(144.69e6, 60e3, 9, 9), Change::kNone, "a part of it"},
      {channelAt(145e6, 4e3, 9, 9), channelAt(145.006e6, 12e3, 9, 9), Change::kNone, "its edge"},
      {channelAt(145e6, 4e3, 9, 9), channelAt(145.0061e6, 12e3, 9, 9), Change::kNew, "beyond it"},
      {channelAt(145e6, 12e3, 9, 9), channelAt(145.006e6, 4e3, 9, 9), Change::kNone, "old edge"},
      {channelAt(145e6, 3e3, 9, 9), channelAt(145e6, 12e3, 9, 9), Change::kNone, "four times"},
      {channelAt(145e6, 3e3, 9, 9), channelAt(145e6, 12.1e3, 9, 9), Change::kNew, "over four"},
      {channelAt(145e6, 5e3, 9, 9), channelAt(145e6, 29, 9, 9), Change::kNone, "below raster"},
      {channelAt(145e6, 5.1e3, 9, 9), channelAt(145e6, 29, 9, 9), Change::kNew, "one above it"},
      {seen(90, 100, 1, 5), seen(90, 104, 1, 5), Change::kLessOften, "never since"},
      {seen(2, 100, 1, 5), seen(5, 104, 1, 9), Change::kMoreOften, "three of four times since"},
      {seen(90, 100, 1, 5), seen(90, 104, 2, 5), Change::kNone, "another survey"},
      {seen(90, 100, 1, 5), seen(360, 400, 1, 5), Change::kNone, "one recording, two dwells"}};
  for (const auto& [old, now, change, why] : cases) {
    EXPECT_EQ(compareSurveys({now}, {old}, 5e3).channels[0].change, change) << why;
  }
}

TEST(CompareSurveys, IsAnEarlierStateOnlyWhereEveryOldChannelIsContinued) {
  // Hits, looks, first and last moment of two channels.
  const auto surveyOf = [](std::vector<std::array<uint32_t, 4>> rows) {
    std::vector<SurveyedChannel> channels;
    for (const auto& [hits, looks, first_ms, last_ms] : rows) {
      const double centre_hz = 145e6 + 100e3 * static_cast<double>(channels.size());
      channels.push_back(channelAt(centre_hz, 10e3, hits, looks));
      channels.back().first_unix_ms = first_ms;
      channels.back().last_unix_ms = last_ms;
    }
    return channels;
  };
  const auto old = surveyOf({{9, 9, 1, 50}, {13, 9, 5, 50}});
  const auto later = surveyOf({{9, 29, 1, 50}, {40, 29, 5, 90}, {2, 2, 80, 90}});
  const std::tuple<std::vector<SurveyedChannel>, bool, bool, const char*> cases[] = {
      {later, true, true, "both grew, and one came later"},
      {later, false, false, "another source"},
      {surveyOf({{9, 29, 1, 50}, {40, 29, 6, 90}}), true, false, "one matches, the other does not"},
      {surveyOf({{9, 29, 1, 50}}), true, false, "one is not there any more"},
      {surveyOf({{9, 29, 1, 50}, {40, 29, 5, 90}, {9, 9, 30, 90}}), true, false,
       "one is new that was there before"},
      {old, true, false, "the same once more"}};
  for (const auto& [now, may_be, is_continued, why] : cases) {
    const Comparison comparison = compareSurveys(now, old, 5e3, may_be);
    EXPECT_EQ(comparison.is_continued, is_continued) << why;
    EXPECT_EQ(comparison.channels.size(), std::max(now.size(), old.size())) << why;
    const bool is_less = comparison.channels[0].change == Change::kLessOften;
    EXPECT_EQ(is_less, now[0].looks == 29) << why;
  }
}

TEST(CompareSurveys, PairsTheNearestFirstAndEachOnlyOnce) {
  const auto one = channelAt(145e6, 3e3, 9, 9);
  const auto near = channelAt(145.001e6, 3e3, 9, 9);
  const auto far = channelAt(145.004e6, 3e3, 9, 9);
  const auto split = compareSurveys({far, near}, {one}, 5e3).channels;
  ASSERT_EQ(split.size(), 2u);
  EXPECT_EQ(split[0].change, Change::kNew);
  EXPECT_EQ(split[1].change, Change::kNone);
  const auto merged = compareSurveys({one}, {far, near}, 5e3).channels;
  ASSERT_EQ(merged.size(), 2u);
  EXPECT_EQ(merged[0].change, Change::kNone);
  EXPECT_EQ(merged[1].change, Change::kGone);
  EXPECT_EQ(merged[1].channel.centre_hz, far.centre_hz);
}

TEST(CompareSurveys, CallsNothingNewOrGoneWhereNobodyLookedForIt) {
  const auto lower = parseSettings("start = 144000000\nstop = 145000000\n").inForce();
  const auto staying = parseSettings("stop = 145000000\nsweep = no\n").inForce();
  const auto here = channelAt(144.5e6, 10e3, 5, 5);
  const auto there = channelAt(145.5e6, 10e3, 5, 5);
  for (const auto& [settings, changes] : {std::pair(lower, 0U), std::pair(staying, 1U)}) {
    Comparison gone = compareSurveys({here}, {here, there}, 5e3);
    dropChangesOutsideBands(gone, settings, {});
    EXPECT_EQ(gone.channels.size(), 1U + changes);
    Comparison fresh = compareSurveys({here, there}, {here}, 5e3);
    dropChangesOutsideBands(fresh, {}, settings);
    EXPECT_EQ(fresh.channels[1].change, changes == 0U ? Change::kNone : Change::kNew);
  }
}

TEST(BandSvg, MarksEveryChangeAlsoWhereNoFrequencyHasRoom) {
  ReportData report;
  report.is_compared = true;
  for (const Change change :
       {Change::kNew, Change::kGone, Change::kMoreOften, Change::kLessOften}) {
    const double step_hz = 30e3 * static_cast<double>(report.channels.size());
    report.channels.push_back({channelAt(145e6 + step_hz, 3e3, 1, 1), change, 1, 1});
  }
  report.channels.push_back({channelAt(147e6, 3e3, 1, 1)});
  report.layout = layOutBand(report.channels, {}, {});
  EXPECT_EQ(titleOf(report), "144.999\u2013147.001 MHz, 4 channels, 1 gone");
  const std::string svg = bandSvg(report);
  for (const char* const legend : {"dashed: gone", "looks since first heard: 0"}) {
    EXPECT_NE(svg.find(legend), std::string::npos) << legend;
  }
  for (const char* const symbol : {"+", "×", "▲", "▼"}) {
    EXPECT_NE(svg.find(std::string("class=\"label\">") + symbol), std::string::npos) << symbol;
  }
  report.channels.erase(report.channels.begin() + 1);
  EXPECT_EQ(changeLegend(report).find("gone"), std::string::npos) << "nothing is";
}

TEST(BandSvg, DrawsTheWideFirstThenTheTallInTheColoursOfTheLegend) {
  ReportData report;
  report.channels =
      withoutComparison({channelAt(100.03e6, 3e3, 1, 25), channelAt(100e6, 3e3, 25, 25),
                         channelAt(105e6, 9e6, 5, 10)});
  report.channels[0].channel.peak_db = 15.0;
  report.channels[1].channel.peak_db = 50.0;
  report.layout = layOutBand(report.channels, {}, {});
  const std::string svg = bandSvg(report);
  const auto drawn = [&svg](size_t shade) { return svg.find("\"" + activityShades()[shade]); };
  EXPECT_LT(drawn(5), drawn(10));
  EXPECT_LT(drawn(10), drawn(0));
  EXPECT_EQ(svg.find("opacity:."), std::string::npos);
}

TEST(BandSvg, LabelsInEachOthersWayAreNotBothDrawn) {
  for (const double level_db : {40.0, 20.0}) {
    ReportData report;
    report.channels =
        withoutComparison({channelAt(144e6, 3e3, 1, 1), channelAt(145e6, 3e3, 1, 1),
                           channelAt(145.08e6, 3e3, 1, 1), channelAt(146e6, 3e3, 1, 1)});
    report.channels[1].channel.peak_db = 40.0;
    report.channels[2].channel.peak_db = level_db;
    report.layout = layOutBand(report.channels, {}, {});
    const std::string svg = bandSvg(report);
    EXPECT_NE(svg.find(">145.0000<"), std::string::npos);
    EXPECT_EQ(svg.find(">145.0800<") == std::string::npos, level_db == 40.0) << level_db;
  }
}

TEST(BandSvg, TellsTheBandAndTheTimesOfTheSurveyAndNotOfWhatIsGone) {
  ReportData report;
  report.layout = layOutBand({}, {}, {});
  EXPECT_NE(bandSvg(report).find("<title>0 channels<"), std::string::npos) << "no band is known";
  report.channels = {{channelAt(145e6, 3e3, 1, 1)}, {channelAt(146e6, 3e3, 1, 1), Change::kGone}};
  report.channels[0].channel.first_unix_ms = 1'729'983'600'000;
  report.channels[0].channel.last_unix_ms = 1'729'994'400'000;
  report.channels[1].channel.first_unix_ms = report.channels[1].channel.last_unix_ms = 1000;
  report.layout = layOutBand(report.channels, {}, {});
  EXPECT_EQ(report.layout.marks[1].time_begin, report.layout.measures.time_top);
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  tzset();
  report.times_are_guesses = true;
  for (const char* const guess : {">Seen from ≈2024-10-27 01:00:00 CEST to ≈", ">≈01:00:00<"}) {
    EXPECT_NE(bandSvg(report).find(guess), std::string::npos) << guess;
  }
  report.times_are_guesses = false;
  const std::string svg = bandSvg(report);
  unsetenv("TZ");
  tzset();
  EXPECT_NE(
      svg.find(">Seen from 2024-10-27 01:00:00 CEST to 2024-10-27 03:00:00 CET (local time)<"),
      std::string::npos);
}

TEST(BandLayout, LevelsBeyondReasonMakeNoEndlessScale) {
  auto rows = parseSurveyRows(
      "145012500,1,1,1,1e300,-1e300,1,1,1,1,?\n145112500,1,1,1,900,-900,1,1,1,1,?\n");
  const auto layout = layOutBand(withoutComparison(rows.channels), {}, {});
  EXPECT_EQ(layout.top_db, 2000.0);
  EXPECT_LE(layout.level_lines.size(), 8u);
}

TEST(Report, TellsTheSettingsAlsoThoseThatTheFileLacks) {
  SurveyFiles survey;
  survey.results_path = "survey.csv";
  survey.rows.channels = {channelAt(145e6, 3e3, 1, 1)};
  SurveyFiles old = survey;
  old.rows.channels[0].centre_hz += 5000.0;
  EXPECT_EQ(makeReport(survey, &old).channels.size(), 1u) << "paired within the usual raster";
  old.rows.channels[0].centre_hz += 1.0;
  EXPECT_EQ(makeReport(survey, &old).channels.size(), 2u);

  survey.settings = parseSettings("threshold_db = 9.5\n").inForce();
  using Pairs = std::vector<std::pair<std::string, std::string>>;
  EXPECT_EQ(makeReport(survey, nullptr).settings,
            (Pairs{{"Threshold", "9.5 dB over the noise floor"},
                   {"Dwell", "20 s"},
                   {"Raster", "5 kHz"},
                   {"Band set", "144.0000 to 146.0000 MHz"},
                   {"Sweep", "yes"},
                   {"File", "survey.csv"}}));
  old.settings =
      parseSettings("dwell_seconds = 1\nthreshold_db = 9.5\nstop = 144500000\n").inForce();
  SurveyMemory& memory = survey.memory.emplace();
  memory.start_is_guess = true;
  memory.length_seconds = 0.5;
  const auto told = surveyRemarks(survey);
  ASSERT_EQ(told.size(), 2u) << "guessed times, a dwell longer than the recording";
  EXPECT_NE(told[1].find("20 s is longer than the recording, so a look is its 0.5 s"),
            std::string::npos);
  survey.memory.reset();
  const ReportData report = makeReport(survey, &old);
  ASSERT_EQ(report.remarks.size(), 2u);
  EXPECT_NE(report.remarks[0].find("1 channel outside its band"), std::string::npos);
  EXPECT_NE(report.remarks[1].find("dwells of 1 s and a threshold of 9.5 dB, this survey 20 s"),
            std::string::npos);
}

TEST(Report, ShowsAnyNameWithoutTakingItForMarkup) {
  EXPECT_EQ(
      displayText("\x1b[1m\x7f\xff\xc0\xaf \xed\xa0\x80 \xf0\x9f\x93\xbb\xe2\x80\xae caf\xc3"),
      "␛[1m␡��� ��� 📻� caf�");
  ReportData report;
  report.band_plan = {{144e6, 146e6, "</script><!--<script>\"&'\xff\x02{{page.js}}"}};
  report.channels = withoutComparison({channelAt(145e6, 12e3, 1, 1)});
  report.channels[0].channel.peak_db = std::nan("");
  report.layout = layOutBand(report.channels, report.band_plan, {});
  const std::string page = reportPage(report);
  EXPECT_EQ(page.find("{{page.css"), std::string::npos) << "a place is not filled";
  const size_t begin = page.find("id=\"survey\">");
  const std::string data = page.substr(begin, page.find("</script>", begin) - begin);
  EXPECT_NE(data.find("{{page.js}}"), std::string::npos) << "the data end at the name's markup";
  EXPECT_EQ(data.find('<'), std::string::npos);
  const std::string svg = bandSvg(report);
  size_t names = 0;
  for (size_t at = svg.find("&lt;/script"); at != std::string::npos; ++names) {
    EXPECT_TRUE(svg.substr(at).starts_with("&lt;/script&gt;&lt;!--&lt;script&gt;&quot;&amp;'�␂"));
    at = svg.find("&lt;/script", at + 1);
  }
  EXPECT_EQ(names, 2u) << "in the strip, and as its hint";
  EXPECT_EQ(svg.find("</script"), std::string::npos);
  EXPECT_EQ(svg.find("<!--"), std::string::npos);
}

}  // namespace
}  // namespace pelagrim_host
