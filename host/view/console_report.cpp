#include "host/view/console_report.h"

#include <fmt/format.h>

#include "host/display_text.h"
#include "host/quantity_text.h"

namespace pelagrim_host {

ConsoleReport::ConsoleReport(bool quiet) : quiet_(quiet), output_(stdout), errors_(stderr) {}

void ConsoleReport::opened(const SourceFacts& source) {
  printLine(fmt::format("source {}: centre {}, {}", source.name, formatFrequency(source.centre_hz),
                        formatSampleRate(source.rate_hz)));
}

void ConsoleReport::note(const std::string& line) {
  printLine(line);
}

void ConsoleReport::message(const std::string& line) {
  printLine(line);
}

void ConsoleReport::warning(const std::string& line) {
  errors_.write(fmt::format("pelagrim-survey: {}\n", displayText(line)));
}

void ConsoleReport::dwellDone(const SurveyProgress& progress) {
  if (progress.overflows > overflows_) {
    warning(fmt::format("the receiver has lost samples {} times so far", progress.overflows));
  }
  overflows_ = progress.overflows;
}

void ConsoleReport::tuned(const TuneRequest& request, double) {
  if (const auto line = refusals_.news(request)) warning(*line);
}

void ConsoleReport::finished(const Panel& panel) {
  if (!panel.columns.empty()) print("\n" + formatPanel(panel) + "\n");
}

void ConsoleReport::printLine(const std::string& line) {
  print(displayText(line) + "\n");
}

void ConsoleReport::print(const std::string& text) {
  if (!quiet_) output_.write(text);
}

}  // namespace pelagrim_host
