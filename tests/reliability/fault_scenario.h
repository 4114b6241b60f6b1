#pragma once

#include <algorithm>

#include "tests/reliability/fault_injection.h"
#include "tests/support/plugin_host.h"

/// A survey session that touches everything: settings and labels written and read, results resumed
/// and rewritten, new channels, a refused tune and its recovery, both polls, a restart, a destroy.
class FaultScenario {
 public:
  static constexpr char kResults[] =
      "# survey.csv format 2\n"
      "144100000,12500,12500,12500,-20.0,-60.0,3,10,1,2,NFM?\n"
      "145900000,12500,12500,12500,-20.0,-60.0,3,10,1,2,NFM?\n";

  /// Plays the session in the directory, with the planned faults only in the plug-in's calls; it
  /// leaves no file open.
  void play(PluginHost& host) {
    host.tuned_hz.reserve(64);  // the host's own memory does not fail
    lines_in_file_ = 0;
    const size_t files_before = openFiles();
    host.now_ms = 1'000'000;
    host.tune_answer = -1;
    const auto dwell = [&](const Samples& samples) {
      host.now_ms += 20'000;
      step(host, [&] { host.process(samples); });
    };
    step(host, [&] { host.create(kRateHz, 144.5e6); });
    dwell(two_tones_);
    dwell(two_tones_);
    host.tune_answer = 0;
    dwell(two_tones_);
    step(host, [&] { host.iq->retune(host.handle, 145.4e6); });
    dwell(one_tone_);
    step(host, [&] { host.iq->poll_text(host.handle, text_, sizeof text_); });
    rows_[0].cells[0][0] = '?';
    unsigned rows = 0;
    step(host, [&] { rows = host.panel->poll_rows(host.handle, rows_, 8); });
    EXPECT_TRUE(rows == 0 || rows_[0].cells[0][0] == 'S') << "a row that was not written";
    step(host, [&] { host.create(kRateHz, 145.4e6); });
    dwell(one_tone_);
    host.process(one_tone_);
    step(host, [&] { host.iq->destroy(host.handle); });
    EXPECT_EQ(openFiles(), files_before);
  }

  /// The directory's files were written by the user: survey.csv holds two channels, others as
  /// given.
  static void fill(const PluginHost& host) { host.dir.write("survey.csv", kResults); }

  /// What the session leaves behind if nothing fails.
  static std::string outcome(const PluginHost& host) {
    std::string all = host.dir.read("survey.csv");
    for (const Row& row : host.rows()) {
      for (const std::string& cell : row) all += cell + "|";
    }
    return all;
  }

  /// What must hold whatever has failed.
  static void expectSane(const PluginHost& host) {
    const auto lines = host.lines();
    EXPECT_LE(lines.size(), 32U);
    for (const std::string& line : lines) EXPECT_EQ(line.substr(0, 8), "survey: ");
    EXPECT_EQ(host.rows()[0][0], "Survey");
  }

  static bool remembersItsLastDwell(const PluginHost& host) {
    return std::ranges::any_of(host.rows(), [](auto& row) { return row[0] == "145.4500 MHz"; });
  }

  /// Whether survey.csv may lose lines: it does if the disk refuses to write.
  bool may_shrink = false;

 private:
  static constexpr double kRateHz = 1024000.0;

  template <typename Step>
  void step(PluginHost& host, Step&& call) {
    {
      const faults::Armed armed;
      call();
    }
    const bool regular = std::filesystem::symlink_status(host.dir.path() / "survey.csv").type() ==
                         std::filesystem::file_type::regular;
    const std::string file = regular ? host.dir.read("survey.csv") : "";
    const auto lines = std::count(file.begin(), file.end(), '\n');
    if (!may_shrink) {
      EXPECT_GE(lines, lines_in_file_) << "survey.csv got shorter";
    }
    lines_in_file_ = lines;
  }

  const Samples two_tones_ = band(2, {-100, 200});
  const Samples one_tone_ = band(2, {50});
  std::ptrdiff_t lines_in_file_ = 0;
  char text_[200];
  WendlePanelRow rows_[8];
};
