#include "host/view/background_view.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

#include "host/process/signals.h"
#include "host/process/text_output.h"
#include "host/text/counted_text.h"

namespace pelagrim_host {
namespace {

constexpr auto kPace = std::chrono::milliseconds(50);
constexpr int64_t kNone = -1;

}  // namespace

BackgroundView::BackgroundView(std::unique_ptr<SurveyView> inner, Overflowing overflowing,
                               size_t room_bytes)
    : inner_(std::move(inner)),
      overflowing_(overflowing),
      room_bytes_(room_bytes),
      wanted_rows_(kNone),
      shower_([this] { runShower(); }) {}

BackgroundView::~BackgroundView() {
  {
    const Lock lock(mutex_);
    ending_ = true;
  }
  news_.notify_one();
  shower_.join();
}

// ---- the callers' side --------------------------------------------------------------------------

void BackgroundView::opened(const SourceFacts& source) {
  add([source](SurveyView& view) { view.opened(source); });
}

void BackgroundView::started() {
  add([this](SurveyView& view) {
    run_lasts_ = true;
    view.started();
  });
}

void BackgroundView::inForce(const SettingsInForce& settings) {
  add([settings](SurveyView& view) { view.inForce(settings); });
}

void BackgroundView::note(const std::string& line) {
  addLine([line](SurveyView& view) { view.note(line); }, line.size());
}

void BackgroundView::warning(const std::string& line) {
  addLine([line](SurveyView& view) { view.warning(line); }, line.size());
}

void BackgroundView::message(const std::string& line) {
  addLine([line](SurveyView& view) { view.message(line); }, line.size());
}

void BackgroundView::dwellDone(const SurveyProgress& progress) {
  addLine([progress](SurveyView& view) { view.dwellDone(progress); }, sizeof progress);
}

void BackgroundView::tuned(const TuneRequest& request, double centre_hz) {
  addLine([request, centre_hz](SurveyView& view) { view.tuned(request, centre_hz); },
          sizeof request + request.why_refused.size());
}

std::optional<size_t> BackgroundView::wantsSnapshot() {
  const int64_t rows = wanted_rows_.load(std::memory_order_relaxed);
  if (rows == kNone) return std::nullopt;
  return static_cast<size_t>(rows);
}

void BackgroundView::snapshot(const SurveySnapshot& run) {
  wanted_rows_ = kNone;
  {
    const Lock lock(mutex_);
    snapshot_ = run;
  }
  news_.notify_one();
}

void BackgroundView::finished(const Panel& panel) {
  add([this, panel](SurveyView& view) {
    run_lasts_ = false;
    view.finished(panel);
  });
}

void BackgroundView::addLine(std::function<void(SurveyView&)> show, size_t text_bytes) {
  Lock lock(mutex_);
  if (overflowing_ == Overflowing::kWait) {
    room_.wait(lock, [this] { return queued_bytes_ <= room_bytes_; });
  } else if (dropped_lines_ > 0 || queued_bytes_ > room_bytes_) {
    ++dropped_lines_;
    return;
  }
  append({std::move(show), sizeof(Event) + text_bytes});
}

void BackgroundView::add(std::function<void(SurveyView&)> show) {
  const Lock lock(mutex_);
  append({std::move(show), sizeof(Event)});
}

void BackgroundView::append(Event event) {
  queued_bytes_ += event.bytes;
  events_.push_back(std::move(event));
  news_.notify_one();
}

// ---- the shower ---------------------------------------------------------------------------------

void BackgroundView::runShower() {
  leaveSignalsToOtherThreads();
  Lock lock(mutex_);
  while (!ending_ || !events_.empty()) {
    news_.wait_for(lock, kPace, [this] { return ending_ || !events_.empty() || snapshot_; });
    showEvents(lock);
    showSnapshot(lock);
    askForSnapshot(lock);
  }
}

/// Shows what waits, but not for so long that a picture would stand still under a flood of lines.
void BackgroundView::showEvents(Lock& lock) {
  const auto until = Clock::now() + kPace;
  while (!events_.empty() && Clock::now() < until) {
    const Event event = std::move(events_.front());
    events_.pop_front();
    withoutLock(lock, [&] { event.show(*inner_); });
    queued_bytes_ -= event.bytes;
    tellOfDroppedLines();
    room_.notify_all();
  }
}

/// Takes the place of the lines that were left out, once enough room is free to go on for a while.
void BackgroundView::tellOfDroppedLines() {
  if (dropped_lines_ == 0 || queued_bytes_ > room_bytes_ / 2) return;
  const std::string line = countedText(std::exchange(dropped_lines_, 0), "line") +
                           " left out here, because the output was not read in time";
  append({[line](SurveyView& view) { view.warning(line); }, sizeof(Event) + line.size()});
}

void BackgroundView::showSnapshot(Lock& lock) {
  const auto run = std::exchange(snapshot_, std::nullopt);
  if (!run || !run_lasts_) return;
  withoutLock(lock, [&] { inner_->snapshot(*run); });
}

void BackgroundView::askForSnapshot(Lock& lock) {
  const auto now = Clock::now();
  if (!run_lasts_ || ending_ || now < next_question_) return;
  next_question_ = now + kPace;
  withoutLock(lock, [&] {
    constexpr size_t kMaxRows = std::numeric_limits<int64_t>::max();
    const auto rows = inner_->wantsSnapshot();
    if (rows) wanted_rows_ = static_cast<int64_t>(std::min(*rows, kMaxRows));
  });
}

void BackgroundView::withoutLock(Lock& lock, const std::function<void()>& action) {
  lock.unlock();
  try {
    action();
  } catch (const std::exception& failure) {
    reportOutputFailure(failure.what());
  } catch (...) {
    reportOutputFailure("failed without a reason given");
  }
  lock.lock();
}

}  // namespace pelagrim_host
