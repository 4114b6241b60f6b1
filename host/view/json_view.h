#pragma once

#include "host/process/text_output.h"
#include "host/session/survey_view.h"

namespace pelagrim_host {

/// Shows a run to a script: one JSON object per line on standard output, each with an "event":
/// source, note, warning, message, dwell, tune, panel. The man page lists their members.
class JsonView final : public SurveyView {
 public:
  explicit JsonView(std::FILE* stream) : output_(stream) {}

  void opened(const SourceFacts& source) override;
  void note(const std::string& line) override;
  void warning(const std::string& line) override;
  void message(const std::string& line) override;
  void dwellDone(const SurveyProgress& progress) override;
  void tuned(const TuneRequest& request, double centre_hz) override;
  void finished(const Panel& panel) override;

 private:
  TextOutput output_;
};

}  // namespace pelagrim_host
