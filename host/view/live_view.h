#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/session/survey_view.h"
#include "host/view/console_view.h"
#include "host/view/live_frame.h"
#include "host/view/terminal_screen.h"
#include "host/view/tune_text.h"

namespace pelagrim_host {

/// What the live view asks of the program around it.
struct LiveViewHooks {
  std::function<void()> rescan;  ///< key r
  std::function<void()> end;     ///< key q
};

/// Shows a run on a terminal as a picture that is redrawn in place, four times a second.
///
/// The picture has its own screen, which opens once the run has lasted half a second; a shorter run
/// prints only its lines. When it closes, the last messages are printed again as lines, and the
/// final table follows. Key r rescans, key q ends.
class LiveView final : public SurveyView {
 public:
  LiveView(FrameStyle style, LiveViewHooks hooks);
  ~LiveView() override;

  void opened(const SourceFacts& source) override;
  void inForce(const SettingsInForce& settings) override;
  void note(const std::string& line) override;
  void warning(const std::string& line) override;
  void message(const std::string& line) override;
  void dwellDone(const SurveyProgress&) override {}
  void tuned(const TuneRequest& request, double centre_hz) override;
  std::optional<size_t> wantsSnapshot() override;
  void snapshot(const SurveySnapshot& run) override;
  void finished(const Panel& panel) override;

 private:
  using Clock = std::chrono::steady_clock;

  void say(const SaidLine& line);
  void takeKeys();
  void close();

  FrameStyle style_;
  LiveViewHooks hooks_;
  ConsoleView lines_;
  RefusalWords refusals_;
  LiveState state_;
  std::vector<SaidLine> unsaid_;  ///< since the screen was opened, not yet printed as lines
  size_t said_before_ = 0;        ///< how many of those were not kept
  std::optional<Clock::time_point> begun_;
  Clock::time_point next_draw_;
  std::unique_ptr<TerminalScreen> screen_;
  WindowSize window_;  ///< at the last snapshot
};

}  // namespace pelagrim_host
