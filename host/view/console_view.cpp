#include "host/view/console_view.h"

#include <fmt/format.h>

#include "host/text/display_text.h"
#include "host/text/quantity_text.h"
#include "host/view/panel_text.h"

namespace pelagrim_host {

ConsoleView::ConsoleView(bool quiet) : quiet_(quiet), output_(stdout), errors_(stderr) {}

void ConsoleView::opened(const SourceFacts& source) {
  printLine(fmt::format("source {}: centre {}, {}", source.name, formatFrequency(source.centre_hz),
                        formatSampleRate(source.rate_hz)));
}

void ConsoleView::note(const std::string& line) {
  printLine(line);
}

void ConsoleView::message(const std::string& line) {
  printLine(line);
}

void ConsoleView::warning(const std::string& line) {
  errors_.write(fmt::format("pelagrim-survey: {}\n", displayText(line)));
}

void ConsoleView::dwellDone(const SurveyProgress& progress) {
  if (progress.overflows > overflows_) {
    warning(fmt::format("the receiver has lost samples {} times so far", progress.overflows));
  }
  overflows_ = progress.overflows;
  if (progress.dropped_samples > dropped_samples_) {
    warning(fmt::format("the survey is too slow for the receiver: {} samples left out so far",
                        progress.dropped_samples));
  }
  dropped_samples_ = progress.dropped_samples;
}

void ConsoleView::tuned(const TuneRequest& request, double) {
  if (const auto line = refusals_.news(request)) warning(*line);
}

void ConsoleView::finished(const Panel& panel) {
  if (!panel.columns.empty()) print("\n" + formatPanel(panel) + "\n");
}

void ConsoleView::printLine(const std::string& line) {
  print(displayText(line) + "\n");
}

void ConsoleView::print(const std::string& text) {
  if (!quiet_) output_.write(text);
}

}  // namespace pelagrim_host
