#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "host/session/survey_view.h"

namespace pelagrim_host {

/// Shows a run through another view on a thread of its own, the shower, in the order of the calls,
/// so that a slow reader or terminal does not hold up the survey.
///
/// Any thread may call; wantsSnapshot and snapshot belong to one. The inner view is called on the
/// shower alone, between construction and destruction. While a run lasts, from started to finished,
/// the shower asks it every 50 ms whether it wants a snapshot, whether or not samples come, so it
/// can read keys there. A snapshot that has not been shown gives way to a newer one.
///
/// What the inner view throws does not reach the caller: the view goes on, and the first such
/// failure is reported as one of the output (requireOutput).
class BackgroundView final : public SurveyView {
 public:
  /// What happens while the lines that wait take more than their room.
  enum class Overflowing {
    kWait,  ///< the caller waits: a recording waits, too
    kDrop,  ///< lines are left out, counted, and later replaced by one warning: a receiver goes on
  };

  static constexpr size_t kUsualRoomBytes = size_t{64} << 20;

  BackgroundView(std::unique_ptr<SurveyView> inner, Overflowing overflowing,
                 size_t room_bytes = kUsualRoomBytes);

  /// Waits until everything has been shown. That takes as long as the inner view does, which for
  /// text is no more than two seconds once an orderly end has been asked for (TextOutput).
  ~BackgroundView() override;

  void opened(const SourceFacts& source) override;
  void started() override;
  void inForce(const SettingsInForce& settings) override;
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
  using Lock = std::unique_lock<std::mutex>;

  struct Event {
    std::function<void(SurveyView&)> show;
    size_t bytes = 0;  ///< roughly what it takes
  };

  /// `text_bytes`: what it holds beside itself. A line may be left out, anything else may not.
  void addLine(std::function<void(SurveyView&)> show, size_t text_bytes);
  void add(std::function<void(SurveyView&)> show);
  void append(Event event);

  void runShower();
  void showEvents(Lock& lock);
  void showSnapshot(Lock& lock);
  void askForSnapshot(Lock& lock);
  void tellOfDroppedLines();
  void withoutLock(Lock& lock, const std::function<void()>& action);

  const std::unique_ptr<SurveyView> inner_;
  const Overflowing overflowing_;
  const size_t room_bytes_;

  std::atomic<int64_t> wanted_rows_;  ///< of the snapshot that is wanted; kNone if none is

  std::mutex mutex_;              // for what follows
  std::condition_variable news_;  ///< for the shower: an event, a snapshot, the end
  std::condition_variable room_;  ///< for callers: the queue has become shorter
  std::deque<Event> events_;
  size_t queued_bytes_ = 0;     ///< of events_ and of the event that is being shown
  uint64_t dropped_lines_ = 0;  ///< since the inner view was last told
  std::optional<SurveySnapshot> snapshot_;
  bool ending_ = false;

  // Of the shower alone.
  bool run_lasts_ = false;
  Clock::time_point next_question_;

  std::thread shower_;  // last: it uses everything above
};

}  // namespace pelagrim_host
