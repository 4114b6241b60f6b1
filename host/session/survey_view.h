#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/session/host_services.h"
#include "host/session/panel_reader.h"

namespace pelagrim_host {

/// What a run listens to.
struct SourceFacts {
  std::string name;
  double centre_hz = 0.0;  ///< at the beginning
  double rate_hz = 0.0;
};

/// How far a run is.
struct SurveyProgress {
  double centre_hz = 0.0;
  double rate_hz = 0.0;
  int64_t unix_ms = 0;                 ///< the survey's clock
  uint64_t samples = 0;                ///< delivered so far
  uint64_t overflows = 0;              ///< of the receiver, so far
  double dwell_elapsed_seconds = 0.0;  ///< of the dwell in progress, by the survey's clock
  std::optional<double> dwell_length_seconds{};  ///< where it is known
  std::optional<DwellCount> dwells{};            ///< where the plug-in counts them
  std::optional<uint32_t> wanted_passes{};       ///< where the run ends after so many
  std::optional<double> wanted_seconds{};        ///< where the run ends after so much receiver time
};

/// Whoever shows a run: to a person as lines or as a live view, to a script as JSON. All calls on
/// the thread that runs the survey, which is the interface thread too.
class SurveyView {
 public:
  virtual ~SurveyView() = default;
  SurveyView() = default;
  SurveyView(const SurveyView&) = delete;
  SurveyView& operator=(const SurveyView&) = delete;

  /// The source has been opened.
  virtual void opened(const SourceFacts& source) = 0;

  /// What the host itself has to say: what was taken for what, where files are.
  virtual void note(const std::string& line) = 0;

  /// Something that the user should look into, and that stops nothing.
  virtual void warning(const std::string& line) = 0;

  /// A message line of the plug-in.
  virtual void message(const std::string& line) = 0;

  /// A dwell has been evaluated. `progress` has its centre and what is done by now.
  virtual void dwellDone(const SurveyProgress& progress) = 0;

  /// The plug-in asked to tune. `centre_hz`: where the receiver is now.
  virtual void tuned(const TuneRequest& request, double centre_hz) = 0;

  /// After every block of samples. `panel` may be read there and then.
  virtual void progress(const SurveyProgress& progress, PanelReader& panel) = 0;

  /// The run has ended, the last dwell is evaluated.
  virtual void finished(const Panel& panel) = 0;
};

}  // namespace pelagrim_host
