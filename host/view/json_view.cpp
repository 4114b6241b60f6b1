#include "host/view/json_view.h"

#include <nlohmann/json.hpp>

#include "host/view/run_pace.h"
#include "host/view/tune_text.h"

namespace pelagrim_host {
namespace {

using Json = nlohmann::ordered_json;

/// One line. Text that is not UTF-8, such as a label or a file name, loses its malformed bytes.
std::string jsonLine(const Json& object) {
  return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string textLine(const char* event, const std::string& text) {
  return jsonLine({{"event", event}, {"text", text}});
}

const char* rowKindText(int32_t kind) {
  if (kind == kRowSummary) return "summary";
  return kind == kRowWarning ? "warning" : "channel";
}

}  // namespace

void JsonView::opened(const SourceFacts& source) {
  output_.write(jsonLine({{"event", "source"},
                          {"name", source.name},
                          {"centre_hz", source.centre_hz},
                          {"rate_hz", source.rate_hz}}));
}

void JsonView::note(const std::string& line) {
  output_.write(textLine("note", line));
}

void JsonView::warning(const std::string& line) {
  output_.write(textLine("warning", line));
}

void JsonView::message(const std::string& line) {
  output_.write(textLine("message", line));
}

void JsonView::dwellDone(const SurveyProgress& progress) {
  output_.write(jsonLine({{"event", "dwell"},
                          {"unix_ms", progress.unix_ms},
                          {"centre_hz", progress.centre_hz},
                          {"dwells_done", progress.dwells->dwells_done},
                          {"dwells_per_pass", progress.dwells->dwellsPerPass()},
                          {"samples", progress.samples},
                          {"overflows", progress.overflows},
                          {"dropped_samples", progress.dropped_samples}}));
}

void JsonView::tuned(const TuneRequest& request, double centre_hz) {
  Json line = {{"event", "tune"},
               {"asked_hz", request.hz},
               {"answer", tuneAnswerText(request.answer)},
               {"centre_hz", centre_hz}};
  if (!request.why_refused.empty()) line["reason"] = request.why_refused;
  output_.write(jsonLine(line));
}

std::optional<size_t> JsonView::wantsSnapshot() {
  const auto now = Clock::now();
  if (!begun_) {
    begun_ = now;
    next_progress_ = now + progress_interval_;
  }
  if (now < next_progress_) return std::nullopt;
  next_progress_ = now + progress_interval_;
  return 0;
}

void JsonView::snapshot(const SurveySnapshot& run) {
  const SurveyProgress& progress = run.progress;
  const std::chrono::duration<double> wall_time = Clock::now() - *begun_;
  Json line = {{"event", "progress"},
               {"unix_ms", progress.unix_ms},
               {"centre_hz", progress.centre_hz},
               {"samples", progress.samples},
               {"overflows", progress.overflows},
               {"dropped_samples", progress.dropped_samples},
               {"stalled_seconds", progress.stalled_seconds}};
  if (const auto pace = paceOf(progress, wall_time.count())) {
    line["wanted_samples"] = pace->wanted_samples;
    line["samples_per_second"] = pace->samples_per_second;
    line["seconds_left"] = pace->seconds_left;
  }
  output_.write(jsonLine(line));
}

void JsonView::finished(const Panel& panel) {
  Json rows = Json::array();
  for (const PanelRow& row : panel.rows) {
    rows.push_back({{"kind", rowKindText(row.kind)}, {"cells", row.cells}});
  }
  output_.write(jsonLine(
      {{"event", "panel"}, {"title", panel.title}, {"columns", panel.columns}, {"rows", rows}}));
}

}  // namespace pelagrim_host
