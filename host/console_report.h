#pragma once

#include <string>

#include "host/progress_line.h"
#include "host/survey_report.h"
#include "host/text_output.h"

namespace pelagrim_host {

/// Shows a run as lines on standard output, with a progress line below them on a terminal.
/// Warnings go to standard error, each with the program's name before it.
class ConsoleReport final : public SurveyReport {
 public:
  /// `quiet`: nothing but warnings.
  explicit ConsoleReport(bool quiet);

  void note(const std::string& line) override;
  void warning(const std::string& line) override;
  void message(const std::string& line) override;
  void tuned(const TuneRequest& request, double centre_hz) override;
  void progress(const SurveyProgress& progress) override;
  void finished(const Panel& panel) override;

 private:
  void print(const std::string& text);

  bool quiet_;
  TextOutput output_;
  TextOutput errors_;
  ProgressLine progress_line_;
  std::string last_refusal_;
};

}  // namespace pelagrim_host
