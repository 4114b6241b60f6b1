#pragma once

#include <cstdint>
#include <string>

#include "host/process/text_output.h"
#include "host/session/survey_view.h"
#include "host/view/tune_text.h"

namespace pelagrim_host {

/// Shows a run as lines on standard output. Warnings go to standard error, each with the program's
/// name in front.
class ConsoleView final : public SurveyView {
 public:
  /// `quiet`: nothing but warnings.
  explicit ConsoleView(bool quiet);

  void opened(const SourceFacts& source) override;
  void note(const std::string& line) override;
  void warning(const std::string& line) override;
  void message(const std::string& line) override;
  void dwellDone(const SurveyProgress& progress) override;
  void tuned(const TuneRequest& request, double centre_hz) override;
  void finished(const Panel& panel) override;

 private:
  void printLine(const std::string& line);
  void print(const std::string& text);

  bool quiet_;
  TextOutput output_;
  TextOutput errors_;
  RefusalWords refusals_;
  uint64_t overflows_ = 0;        ///< that the user has been told about
  uint64_t dropped_samples_ = 0;  ///< likewise
};

}  // namespace pelagrim_host
