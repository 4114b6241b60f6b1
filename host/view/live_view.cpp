#include "host/view/live_view.h"

#include <fmt/format.h>

#include <utility>

namespace pelagrim_host {
namespace {

constexpr auto kShortRun = std::chrono::milliseconds(500);
constexpr auto kRedrawInterval = std::chrono::milliseconds(250);
constexpr size_t kKeptLines = 200;     // messages kept, for the tallest of windows
constexpr size_t kRepeatedLines = 20;  // of those, repeated when the screen has closed

/// Keeps the last `max_lines` lines; returns how many were dropped.
size_t keepLast(std::vector<SaidLine>& lines, size_t max_lines) {
  if (lines.size() <= max_lines) return 0;
  const size_t gone = lines.size() - max_lines;
  lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(gone));
  return gone;
}

}  // namespace

LiveView::LiveView(FrameStyle style, LiveViewHooks hooks)
    : style_(style), hooks_(std::move(hooks)), lines_(false) {}

LiveView::~LiveView() {
  close();
}

void LiveView::opened(const SourceFacts& source) {
  state_.source = source;
  lines_.opened(source);
}

void LiveView::inForce(const SettingsInForce& settings) {
  state_.in_force = settings.line;
  state_.dwell_length_seconds = settings.dwell_seconds;
  state_.slice_centres_hz = settings.slice_centres_hz;
  note(settings.line);
}

void LiveView::note(const std::string& line) {
  if (screen_) return say({line});
  lines_.note(line);
}

void LiveView::warning(const std::string& line) {
  say({line, true});
}

void LiveView::message(const std::string& line) {
  say({line});
}

void LiveView::tuned(const TuneRequest& request, double) {
  if (const auto line = refusals_.news(request)) warning(*line);
}

std::optional<size_t> LiveView::wantsSnapshot() {
  const auto now = Clock::now();
  if (!begun_) begun_ = now;
  if (!screen_) {
    if (now < *begun_ + kShortRun) return std::nullopt;
    screen_ = std::make_unique<TerminalScreen>();
    next_draw_ = now;
  }
  if (now < next_draw_) return std::nullopt;
  next_draw_ = now + kRedrawInterval;
  takeKeys();
  if (!screen_->sendRest()) return std::nullopt;
  window_ = screen_->size();
  return channelRoom(window_);
}

void LiveView::snapshot(const SurveySnapshot& run) {
  if (!screen_) return;
  state_.run = run;
  state_.wall_seconds = std::chrono::duration<double>(Clock::now() - *begun_).count();
  state_.offers_keys = screen_->hasKeys();
  screen_->draw(composeFrame(state_, window_, style_));
}

void LiveView::finished(const Panel& panel) {
  close();
  lines_.finished(panel);
}

void LiveView::say(const SaidLine& line) {
  state_.said.push_back(line);
  keepLast(state_.said, kKeptLines);
  if (screen_) {
    unsaid_.push_back(line);
    said_before_ += keepLast(unsaid_, kRepeatedLines);
  } else if (line.is_warning) {
    lines_.warning(line.text);
  } else {
    lines_.message(line.text);
  }
}

void LiveView::takeKeys() {
  while (const auto key = screen_->readKey()) {
    if (*key == 'r') hooks_.rescan();
    if (*key == 'q') hooks_.end();
  }
}

void LiveView::close() {
  if (!screen_) return;
  screen_.reset();
  if (said_before_ > 0) lines_.note(fmt::format("({} earlier lines left out)", said_before_));
  for (const SaidLine& line : unsaid_) say(line);
  unsaid_.clear();
}

}  // namespace pelagrim_host
