// A view on a thread of its own: the order of what is shown, and what happens when it is slow.
#include "host/view/background_view.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "host/process/signals.h"
#include "host/process/text_output.h"
#include "host/view/console_view.h"

namespace pelagrim_host {
namespace {

using Overflowing = BackgroundView::Overflowing;

void waitUntil(const std::function<bool()>& reached) {
  while (!reached()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

/// What a view was told, and what it does then.
struct Stage {
  std::vector<std::string> told{};  // read by the test once the view is gone
  std::function<void(const std::string&)> at_line = [](const std::string&) {};
  std::atomic<size_t> lines = 0;  // begun
  std::atomic<size_t> questions = 0;
  std::atomic<size_t> held_after = SIZE_MAX;  // later lines are not done before it grows
  std::optional<size_t> wanted_rows{};
  std::thread::id thread{};
};

class StagedView final : public SurveyView {
 public:
  explicit StagedView(Stage& stage) : stage_(stage) {}

  void opened(const SourceFacts& source) override { tell("opened " + source.name); }
  void started() override { tell("started"); }
  void inForce(const SettingsInForce& in_force) override { tell("in force " + in_force.line); }
  void note(const std::string& line) override { tell("note " + line); }
  void warning(const std::string& line) override { tell("warning " + line); }
  void message(const std::string& line) override { tell(line); }
  void dwellDone(const SurveyProgress& progress) override {
    tell("dwell " + std::to_string(progress.samples));
  }
  void tuned(const TuneRequest& request, double centre_hz) override {
    tell("tuned " + std::to_string(static_cast<int>(request.hz + centre_hz)));
  }
  std::optional<size_t> wantsSnapshot() override {
    ++stage_.questions;
    return stage_.wanted_rows;
  }
  void snapshot(const SurveySnapshot& run) override { tell("picture " + run.panel.title); }
  void finished(const Panel& panel) override { tell("finished " + panel.title); }

 private:
  void tell(const std::string& line) {
    stage_.thread = std::this_thread::get_id();
    stage_.told.push_back(line);
    ++stage_.lines;
    stage_.at_line(line);
    waitUntil([this] { return stage_.lines <= stage_.held_after; });
  }

  Stage& stage_;
};

TEST(BackgroundView, TellsEverythingInOrderOnOneOtherThread) {
  Stage stage;
  {
    BackgroundView view(std::make_unique<StagedView>(stage), Overflowing::kWait);
    view.opened({"band", 0, 0});
    view.started();
    view.inForce({"1", 20.0});
    view.note("2");
    view.warning("3");
    view.message("4");
    view.dwellDone({.samples = 5});
    view.tuned({4.0, 0, ""}, 2.0);
    for (int i = 0; i < 1000; ++i) view.message(std::to_string(i));
    view.finished({"end", {}, {}});
  }
  std::vector<std::string> expected = {"opened band", "started", "in force 1", "note 2",
                                       "warning 3",   "4",       "dwell 5",    "tuned 6"};
  for (int i = 0; i < 1000; ++i) expected.push_back(std::to_string(i));
  expected.push_back("finished end");
  EXPECT_EQ(stage.told, expected);
  EXPECT_NE(stage.thread, std::this_thread::get_id());
}

TEST(BackgroundView, HoldsUpARecordingWhileTooManyLinesWait) {
  constexpr size_t kLines = 300;
  constexpr size_t kMostAhead = 110;  // 10,000 bytes of lines of 100 and more
  Stage stage;
  std::atomic<size_t> sent = 0;
  size_t most_ahead = 0;
  stage.at_line = [&](const std::string&) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));  // slower than the sender
    most_ahead = std::max(most_ahead, sent - stage.lines + 1);
  };
  {
    BackgroundView view(std::make_unique<StagedView>(stage), Overflowing::kWait, 10'000);
    for (; sent < kLines; ++sent) view.message(std::string(100, 'x'));
  }
  EXPECT_EQ(stage.told.size(), kLines);
  EXPECT_LT(most_ahead, kMostAhead);
}

TEST(BackgroundView, LeavesOutAndCountsLinesOfAReceiverAndNeverTheTable) {
  Stage stage{.held_after = 0};
  std::atomic<bool> warned = false;
  stage.at_line = [&](const std::string& line) { warned = line.starts_with("warning"); };
  {
    BackgroundView view(std::make_unique<StagedView>(stage), Overflowing::kDrop, 10'000);
    for (int i = 0; i < 1000; ++i) view.message(std::string(100, 'x'));
    view.finished({"first", {}, {}});
    stage.held_after = 5;
    waitUntil([&] { return stage.lines == 6; });
    view.message("while there is little room");
    stage.held_after = SIZE_MAX;
    waitUntil([&] { return warned.load(); });
    view.message("after");
  }
  ASSERT_GT(stage.told.size(), 10u);
  ASSERT_LT(stage.told.size(), 110u);
  const size_t shown = stage.told.size() - 3;
  EXPECT_EQ(stage.told[shown - 1], std::string(100, 'x'));
  EXPECT_EQ(stage.told[shown], "finished first");
  EXPECT_EQ(stage.told[shown + 1],
            "warning " + std::to_string(1001 - shown) +
                " lines left out here, because the output was not read in time");
  EXPECT_EQ(stage.told[shown + 2], "after");
}

TEST(BackgroundView, AsksForPicturesOnlyDuringTheRunAndShowsTheNewest) {
  Stage stage{.wanted_rows = 7};
  {
    BackgroundView view(std::make_unique<StagedView>(stage), Overflowing::kWait);
    view.opened({"band", 0, 0});
    waitUntil([&] { return stage.lines == 1; });
    EXPECT_EQ(stage.questions, 0u);
    EXPECT_FALSE(view.wantsSnapshot());
    view.started();
    waitUntil([&] { return stage.questions > 3; });  // while nothing comes
    waitUntil([&] { return view.wantsSnapshot().has_value(); });
    EXPECT_EQ(view.wantsSnapshot(), 7u);

    stage.held_after = 2;
    view.note("slow");
    waitUntil([&] { return stage.lines == 3; });
    view.snapshot({{}, {"old", {}, {}}});
    EXPECT_FALSE(view.wantsSnapshot());
    view.snapshot({{}, {"new", {}, {}}});
    stage.held_after = SIZE_MAX;
    waitUntil([&] { return stage.lines == 4; });
    view.finished({"end", {}, {}});
    view.snapshot({{}, {"late", {}, {}}});
  }
  EXPECT_EQ(stage.told, (std::vector<std::string>{"opened band", "started", "note slow",
                                                  "picture new", "finished end"}));
}

TEST(BackgroundView, GoesOnAfterAFailureAndHasItReported) {
  Stage stage;
  stage.at_line = [](const std::string& line) {
    if (line != "third") throw std::runtime_error("no " + line);
  };
  {
    BackgroundView view(std::make_unique<StagedView>(stage), Overflowing::kWait);
    for (const char* const line : {"first", "second", "third"}) view.message(line);
  }
  EXPECT_EQ(stage.told, (std::vector<std::string>{"first", "second", "third"}));
  try {
    requireOutput();
    ADD_FAILURE() << "nothing reported";
  } catch (const std::runtime_error& failure) {
    EXPECT_NE(std::string(failure.what()).find("no first"), std::string::npos) << failure.what();
  }
}

/// In a process of its own: shows more than an unread pipe holds, after a request to end.
void showToNobody() {
  int ends[2] = {};
  if (pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) std::_Exit(2);
  requestStop();
  {
    BackgroundView view(std::make_unique<ConsoleView>(false), Overflowing::kWait, 1000);
    for (int i = 0; i < 2000; ++i) view.message(std::string(100, 'x'));
  }
  try {
    requireOutput();
  } catch (const std::runtime_error&) {
    std::_Exit(0);
  }
  std::_Exit(1);
}

TEST(BackgroundView, LetsACallerThatWaitsForRoomEndOnRequest) {
  EXPECT_EXIT(showToNobody(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace pelagrim_host
