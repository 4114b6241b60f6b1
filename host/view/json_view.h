#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <optional>

#include "host/process/text_output.h"
#include "host/session/survey_view.h"

namespace pelagrim_host {

/// Shows a run to a script: one JSON object per line on standard output, each with an "event":
/// source, note, warning, message, dwell, tune, progress, panel. The man page lists their members.
class JsonView final : public SurveyView {
 public:
  /// `progress_interval`: from one progress event to the next, and from the start to the first.
  explicit JsonView(std::FILE* stream,
                    std::chrono::milliseconds progress_interval = std::chrono::seconds(1))
      : output_(stream), progress_interval_(progress_interval) {}

  void opened(const SourceFacts& source) override;
  void note(const std::string& line) override;
  void warning(const std::string& line) override;
  void message(const std::string& line) override;
  void dwellDone(const SurveyProgress& progress) override;
  void tuned(const TuneRequest& request, double centre_hz) override;
  std::optional<size_t> wantsSnapshot() override;
  void snapshot(const SurveySnapshot& run) override;
  void finished(const Panel& panel) override;

 private:
  using Clock = std::chrono::steady_clock;

  TextOutput output_;
  std::chrono::milliseconds progress_interval_;
  std::optional<Clock::time_point> begun_;  ///< when it was first asked for a snapshot
  Clock::time_point next_progress_;
};

}  // namespace pelagrim_host
