#include "host/progress_line.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/quantity_text.h"

namespace pelagrim_host {
namespace {

constexpr auto kRedrawInterval = std::chrono::milliseconds(100);

std::string bar(double part) {
  constexpr double kBarWidth = 10.0;
  const auto filled = static_cast<size_t>(std::clamp(part, 0.0, 1.0) * kBarWidth);
  return fmt::format("[{}{}]", std::string(filled, '#'),
                     std::string(static_cast<size_t>(kBarWidth) - filled, '.'));
}

std::string dwellText(const SurveyProgress& progress) {
  if (!progress.dwell_length_seconds)
    return fmt::format("{:.1f} s", progress.dwell_elapsed_seconds);
  return fmt::format("{} {:.1f}/{:g} s",
                     bar(progress.dwell_elapsed_seconds / *progress.dwell_length_seconds),
                     progress.dwell_elapsed_seconds, *progress.dwell_length_seconds);
}

std::string passText(const SurveyProgress& progress) {
  if (!progress.dwells) return {};
  const uint32_t per_pass = progress.dwells->dwellsPerPass();
  const uint32_t passes_done = progress.dwells->dwells_done / per_pass;
  std::string text =
      fmt::format("  dwell {}/{}  pass {}", progress.dwells->dwells_done % per_pass + 1, per_pass,
                  passes_done + 1);
  if (progress.wanted_passes) text += fmt::format("/{}", *progress.wanted_passes);
  return text;
}

}  // namespace

std::string formatProgress(const SurveyProgress& progress, double wall_seconds, size_t columns) {
  const double seconds = static_cast<double>(progress.samples) / progress.rate_hz;
  std::string line = fmt::format("{}  {}{}  {:.1f}", formatFrequency(progress.centre_hz),
                                 dwellText(progress), passText(progress), seconds);
  if (progress.wanted_seconds) line += fmt::format("/{:g}", *progress.wanted_seconds);
  line += " s";
  if (wall_seconds > 0.0) line += fmt::format(" at {:.3g}x", seconds / wall_seconds);
  return line.substr(0, columns);
}

ProgressLine::ProgressLine(TextOutput& output)
    : output_(output), begun_(Clock::now()), next_draw_(begun_) {}

void ProgressLine::show(const SurveyProgress& progress) {
  if (!output_.isTerminal()) return;
  const auto now = Clock::now();
  if (now < next_draw_) return;
  next_draw_ = now + kRedrawInterval;
  const double wall_seconds = std::chrono::duration<double>(now - begun_).count();
  // The last column stays free: some terminals go to the next line once it is written.
  const auto line = formatProgress(progress, wall_seconds, output_.columns() - 1);
  output_.write("\r" + line + "\x1b[K");
  drawn_ = true;
}

void ProgressLine::clear() {
  if (!drawn_) return;
  output_.write("\r\x1b[K");
  drawn_ = false;
  next_draw_ = Clock::now();
}

}  // namespace pelagrim_host
