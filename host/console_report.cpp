#include "host/console_report.h"

#include <fmt/format.h>

#include "host/quantity_text.h"

namespace pelagrim_host {

ConsoleReport::ConsoleReport(bool quiet)
    : quiet_(quiet), output_(stdout), errors_(stderr), progress_line_(output_) {}

void ConsoleReport::note(const std::string& line) {
  print(line + "\n");
}

void ConsoleReport::message(const std::string& line) {
  print(line + "\n");
}

void ConsoleReport::warning(const std::string& line) {
  progress_line_.clear();
  errors_.write(fmt::format("pelagrim-survey: {}\n", line));
}

void ConsoleReport::tuned(const TuneRequest& request, double) {
  // The plug-in says that tuning was refused and that it works again; the source knows why. It is
  // asked at every dwell's end, so the same words are said once.
  if (!request.why_refused.empty() && request.why_refused != last_refusal_) {
    warning(fmt::format("tuning to {}: {}", formatFrequency(request.hz), request.why_refused));
  }
  last_refusal_ = request.why_refused;
}

void ConsoleReport::progress(const SurveyProgress& progress) {
  if (!quiet_) progress_line_.show(progress);
}

void ConsoleReport::finished(const Panel& panel) {
  if (!panel.columns.empty()) print("\n" + formatPanel(panel) + "\n");
}

void ConsoleReport::print(const std::string& text) {
  if (quiet_) return;
  progress_line_.clear();
  output_.write(text);
}

}  // namespace pelagrim_host
