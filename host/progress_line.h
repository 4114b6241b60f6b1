#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "host/survey_report.h"
#include "host/text_output.h"

namespace pelagrim_host {

/// One line that says where a run is, cut to `columns` characters: the centre, the dwell in
/// progress, the pass over the band, the receiver time so far and how it compares to the time on
/// the wall, e.g. "145.400 MHz  [#####.....] 2.5/5 s  dwell 2/3  pass 1/2  7.5 s at 23x".
std::string formatProgress(const SurveyProgress& progress, double wall_seconds, size_t columns);

/// A progress line redrawn in place, about ten times a second. Draws nothing on what is no
/// terminal.
class ProgressLine {
 public:
  explicit ProgressLine(TextOutput& output);

  /// Draws the line when it is time to.
  void show(const SurveyProgress& progress);

  /// Removes the line, so that others can be written; the next show draws it again.
  void clear();

 private:
  using Clock = std::chrono::steady_clock;

  TextOutput& output_;
  Clock::time_point begun_;
  Clock::time_point next_draw_;
  bool drawn_ = false;
};

}  // namespace pelagrim_host
