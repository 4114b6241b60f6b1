// What a user and a script see: the live view's frames, the JSON lines, and a rescan.
#include <gtest/gtest.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <regex>
#include <thread>

#include "host/text/text_width.h"
#include "host/view/console_view.h"
#include "host/view/json_view.h"
#include "host/view/live_frame.h"
#include "host/view/live_view.h"
#include "host/view/panel_text.h"
#include "host/view/tune_text.h"

namespace pelagrim_host {
namespace {

Panel panelOf(int channels) {
  Panel panel{"Pelagrim", {"Frequency", "Guess", "Seen", "Band"}, {}};
  panel.rows.push_back({kRowSummary, {"Survey", "sweeping", "3", "slices"}});
  panel.rows.push_back({kRowWarning, {"Cannot sweep", "no radio"}});
  for (int i = 0; i < channels; ++i) {
    panel.rows.push_back(
        {kRowPlain, {std::to_string(i) + ".5 MHz", "NFM?", "1/2", "Gen\xE9ve \x9B"}});
  }
  return panel;
}

std::string frameText(const std::vector<std::string>& frame) {
  std::string text;
  for (const std::string& line : frame) text += line + "\n";
  return std::regex_replace(text, std::regex("\x1b\\[[0-9;]*m"), "");
}

TEST(LiveFrame, FillsEveryWindowExactlyAndDoesNotSteerTheTerminal) {
  LiveState state{.source = {"a \x1b[2J name", 0, 0}, .run = {{}, panelOf(90)}};
  state.run.progress = {.centre_hz = 145.4e6, .rate_hz = 1e6};
  state.dwell_length_seconds = 5.0;
  state.run.progress.dwells = DwellCount{4, 3, true};
  state.said = {{"survey: \xC2\x9B 東京 resumed"}, {"unplugged\a", true}};
  for (const size_t columns : {1u, 7u, 40u, 80u, 131u, 250u}) {
    for (const size_t rows : {1u, 5u, 8u, 15u, 24u, 70u}) {
      const auto frame = composeFrame(state, {columns, rows}, {true, true});
      ASSERT_EQ(frame.size(), rows);
      const std::string text = frameText(frame);
      EXPECT_EQ(text.find_first_of("\x1b\a"), std::string::npos) << columns << "x" << rows;
      for (size_t begin = 0; begin < text.size(); begin = text.find('\n', begin) + 1) {
        const auto line = text.substr(begin, text.find('\n', begin) - begin);
        EXPECT_EQ(textWidth(line), columns) << line;
      }
    }
  }
}

TEST(LiveFrame, KeepsTheMostImportantRowsInSmallWindowsAndFillsLargeOnes) {
  LiveState state{
      .source = {"band", 0, 0}, .run = {{}, panelOf(90)}, .said = {{"heard"}, {"last"}}};
  state.run.progress = {.rate_hz = 1e6, .overflows = 7};
  const auto has = [&](WindowSize window, const char* words) {
    return frameText(composeFrame(state, window, {})).find(words) != std::string::npos;
  };
  EXPECT_TRUE(has({40, 5}, "! Cannot sweep  no radio"));
  EXPECT_FALSE(has({40, 5}, "0.5 MHz"));
  EXPECT_TRUE(has({40, 9}, "1.5 MHz") && !has({40, 9}, "last"));
  EXPECT_TRUE(has({40, 24}, "7 overflows") && has({40, 24}, "last"));
  EXPECT_TRUE(has({40, 24}, "more in survey.csv"));
  EXPECT_TRUE(has({250, 50}, "89.5 MHz") && !has({250, 50}, "more in"));
  state.run.progress = {.rate_hz = 1e6, .samples = 3'000'000, .overflows = 1};
  state.run.progress.dwells = DwellCount{4, 3, true};
  state.run.progress.dwell_elapsed_seconds = 2.5;
  state.dwell_length_seconds = 5.0;
  state.wall_seconds = 2.0;
  EXPECT_TRUE(has({80, 24}, ("Dwell  " + std::string(22, '#') + ".").c_str()));  // half of 43
  EXPECT_TRUE(has({80, 24}, "..  2.5 of 5 s"));
  EXPECT_TRUE(has({80, 24}, ("Pass   " + std::string(22, '#') + ".").c_str()));  // 1.5 slices of 3
  EXPECT_TRUE(has({80, 24}, "slice 2 of 3, pass 2 "));
  state.slice_centres_hz = {144.5e6, 145.4e6, state.run.progress.centre_hz + 1e3};
  EXPECT_TRUE(has({80, 24}, "slice 3 of 3, pass 2 ")) << "a rescan starts where the receiver is";
  state.slice_centres_hz.clear();
  EXPECT_TRUE(has({80, 24}, "Heard  3.0 s, 1.5x   1 overflow "));
  state.run.progress.wanted_passes = 9;
  state.run.progress.wanted_seconds = 60;
  EXPECT_TRUE(has({80, 24}, "pass 2 of 9") && has({80, 24}, "Heard  3.0 of 60 s"));
  EXPECT_TRUE(has({80, 24}, "Ctrl-C end   Ctrl-C twice") && has({40, 24}, "Ctrl-C end"));
  state.offers_keys = true;
  EXPECT_TRUE(has({80, 24}, "r rescan   q end"));
  state.run.panel = panelOf(3);
  EXPECT_TRUE(has({120, 24}, "2.5 MHz") && has({120, 24}, "Messages"));
  const auto coloured = [&](FrameStyle style) {
    const auto frame = composeFrame(state, {80, 24}, style);
    return frame[0].find("[1;97;44m") != std::string::npos;
  };
  EXPECT_TRUE(coloured({true, false}) && !coloured({false, false}));
}

TEST(LiveFrame, HasRoomForTheNewestMessagesAndBarsOfTheirLength) {
  LiveState state{.source = {"band", 0, 0}, .run = {{}, panelOf(90)}};
  for (int i = 0; i < 60; ++i) state.said.push_back({"line " + std::to_string(i) + "."});
  state.run.progress = {.rate_hz = 1e6, .dwell_elapsed_seconds = 7.0};
  state.dwell_length_seconds = 5.0;
  const auto lines_in = [&](WindowSize window) {
    const std::string text = frameText(composeFrame(state, window, {}));
    std::vector<int> lines;
    const std::regex line("line ([0-9]+)\\.");
    for (std::sregex_iterator found(text.begin(), text.end(), line), end; found != end; ++found) {
      lines.push_back(std::stoi((*found)[1]));
    }
    return lines;
  };
  EXPECT_EQ(lines_in({40, 24}), (std::vector{56, 57, 58, 59}));
  EXPECT_EQ(lines_in({40, 15}), (std::vector{58, 59}));
  const std::string text = frameText(composeFrame(state, {80, 24}, {}));
  EXPECT_NE(text.find("Dwell  " + std::string(43, '#') + "  7.0 of 5 s"), std::string::npos)
      << text;
  EXPECT_NE(text.find("Ctrl-C end"), std::string::npos) << text;
  state.run.panel = panelOf(3);
  const auto beside = lines_in({120, 24});
  ASSERT_GT(beside.size(), 10u);
  EXPECT_EQ(beside.back(), 59);
}

TEST(LiveFrame, SaysHowARecordingGetsOnAndThatSamplesAreMissing) {
  LiveState state{.source = {"band", 0, 0}, .wall_seconds = 2.0};
  state.run.progress = {.rate_hz = 1e6, .samples = 3'000'000, .wanted_samples = 60'000'000};
  const auto heard = [&] {
    const std::string text = frameText(composeFrame(state, {120, 24}, {}));
    const size_t begin = text.find("Heard  ") + 7;
    return text.substr(begin, text.find("   ", text.find("overflow")) - begin);
  };
  SurveyProgress& progress = state.run.progress;
  EXPECT_EQ(heard(), "3.0 of 60.0 s (5 %), 1.5 MS/s, 38 s left   0 overflows");
  progress.wanted_seconds = 1e300;
  progress.wanted_samples = 60'000'000'000;
  EXPECT_EQ(heard(), "3.0 of 60000.0 s (0 %), 1.5 MS/s, 11.1 h left   0 overflows");
  progress.wanted_seconds = 600.0;
  EXPECT_EQ(heard(), "3.0 of 600.0 s (0 %), 1.5 MS/s, 7 min left   0 overflows");
  progress = {.rate_hz = 1e6, .samples = 3'000'000, .overflows = 1, .dropped_samples = 2};
  EXPECT_EQ(heard(), "3.0 s, 1.5x   2 samples dropped   1 overflow");
  progress.stalled_seconds = 3.9;
  EXPECT_EQ(heard(), "3.0 s, 1.5x   no samples for 3 s   2 samples dropped   1 overflow");
  progress.stalled_seconds = 0.9;
  EXPECT_EQ(heard(), "3.0 s, 1.5x   2 samples dropped   1 overflow");
}

TEST(LiveView, RepeatsTheLastLinesOnceItsScreenHasClosed) {
  testing::internal::CaptureStdout();
  LiveView view({}, {.rescan = {}, .end = {}});
  while (!view.wantsSnapshot()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  for (int i = 0; i < 22; ++i) view.message(std::to_string(i));
  view.finished({});
  std::string expected = "(2 earlier lines left out)\n";
  for (int i = 2; i < 22; ++i) expected += std::to_string(i) + "\n";
  EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
}

TEST(ConsoleView, TellsOfLossesOnceEach) {
  testing::internal::CaptureStderr();
  ConsoleView view(true);
  for (const SurveyProgress& progress :
       {SurveyProgress{}, SurveyProgress{.overflows = 1}, SurveyProgress{.overflows = 1},
        SurveyProgress{.overflows = 3, .dropped_samples = 5},
        SurveyProgress{.overflows = 3, .dropped_samples = 5}}) {
    view.dwellDone(progress);
  }
  EXPECT_EQ(
      testing::internal::GetCapturedStderr(),
      "pelagrim-survey: the receiver has lost samples 1 times so far\n"
      "pelagrim-survey: the receiver has lost samples 3 times so far\n"
      "pelagrim-survey: the survey is too slow for the receiver: 5 samples left out so far\n");
}

TEST(PanelText, SetsNumbersRightAndTextLeft) {
  Panel panel{"Pelagrim", {"Hits", "Kind"}, {}};
  panel.rows.push_back({kRowPlain, {"5", "AM"}});
  panel.rows.push_back({kRowPlain, {"1200.5", "7"}});
  EXPECT_EQ(formatPanel(panel), "\n  Hits  Kind\n     5  AM\n1200.5  7\n");
}

TEST(RefusalWords, AreShownOnceUntilTheyChange) {
  RefusalWords words;
  EXPECT_EQ(words.news({145e6, kTuneRefused, "stuck"}), "tuning to 145.000 MHz: stuck");
  EXPECT_FALSE(words.news({146e6, kTuneRefused, "stuck"}));
  EXPECT_FALSE(words.news({146e6, kTuneAccepted, ""}));
  EXPECT_TRUE(words.news({146e6, kTuneRefused, "stuck"}));
}

TEST(JsonView, WritesOneObjectPerLineForEveryEventWhateverTheTextHolds) {
  std::FILE* const stream = std::tmpfile();
  JsonView view(stream, std::chrono::milliseconds(0));
  view.opened({"caf\xE9.cu8", 433e6, 1e6});
  view.message("two\nlines \"quoted\"");
  view.dwellDone({.centre_hz = 433e6, .dwells = DwellCount{4, 3, true}});
  view.tuned({434e6, kTuneRefused, "stuck"}, 433e6);
  EXPECT_EQ(view.wantsSnapshot(), 0u);
  view.snapshot(
      {{.samples = 3, .wanted_samples = 7, .dropped_samples = 5, .stalled_seconds = 2}, {}});
  view.finished(panelOf(2));
  std::rewind(stream);
  std::string events;
  std::vector<nlohmann::json> objects;
  for (char line[4096]; std::fgets(line, sizeof line, stream) != nullptr;) {
    events +=
        objects.emplace_back(nlohmann::json::parse(line)).at("event").get<std::string>() + " ";
  }
  std::fclose(stream);
  ASSERT_EQ(events, "source message dwell tune progress panel ");
  EXPECT_EQ(objects[1]["text"], "two\nlines \"quoted\"");
  EXPECT_EQ(objects[2]["dwells_done"], 4);
  EXPECT_EQ(objects[0]["name"], "caf\uFFFD.cu8");
  EXPECT_EQ(objects[2]["dwells_per_pass"], 3);
  EXPECT_EQ(objects[3]["answer"], "refused");
  EXPECT_EQ(objects[3]["asked_hz"], 434e6);
  EXPECT_EQ(objects[3]["centre_hz"], 433e6);
  EXPECT_EQ(objects[3]["reason"], "stuck");
  EXPECT_EQ(objects[4]["samples"], 3);
  EXPECT_EQ(objects[4]["wanted_samples"], 7);
  EXPECT_EQ(objects[4]["dropped_samples"], 5);
  EXPECT_EQ(objects[4]["stalled_seconds"], 2);
  EXPECT_EQ(objects[5]["columns"][1], "Guess");
  EXPECT_EQ(objects[5]["rows"][0]["kind"], "summary");
  EXPECT_EQ(objects[5]["rows"][1]["kind"], "warning");
  EXPECT_EQ(objects[5]["rows"][2]["cells"][0], "0.5 MHz");
}

}  // namespace
}  // namespace pelagrim_host
