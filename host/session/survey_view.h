#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "host/session/panel_reader.h"
#include "host/session/tune_request.h"

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
  int64_t unix_ms = 0;                      ///< the survey's clock
  uint64_t samples = 0;                     ///< delivered so far
  uint64_t overflows = 0;                   ///< of the receiver, so far
  double dwell_elapsed_seconds = 0.0;       ///< of the dwell in progress, by the survey's clock
  std::optional<DwellCount> dwells{};       ///< where the plug-in counts them
  std::optional<uint32_t> wanted_passes{};  ///< where the run ends after so many
  std::optional<double> wanted_seconds{};   ///< where the run ends after so much receiver time
};

/// A run at one moment.
struct SurveySnapshot {
  SurveyProgress progress;
  Panel panel;
};

/// Whoever shows a run: to a person as lines or as a live view, to a script as JSON. What a view is
/// told is a copy; it never reads from the run itself. All calls on one thread.
class SurveyView {
 public:
  virtual ~SurveyView() = default;
  SurveyView() = default;
  SurveyView(const SurveyView&) = delete;
  SurveyView& operator=(const SurveyView&) = delete;

  /// The source has been opened.
  virtual void opened(const SourceFacts& source) = 0;

  /// The plug-in has read its files and starts to survey, or has started afresh on a rescan.
  virtual void started() {}

  /// The settings that the run goes by from here on, in one line.
  virtual void inForce(const std::string& line) { note(line); }

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

  /// Asked after every block of samples: how many rows of the panel should come with a snapshot
  /// now; nothing: no snapshot.
  virtual std::optional<size_t> wantsSnapshot() { return std::nullopt; }

  /// The snapshot that was wanted.
  virtual void snapshot(const SurveySnapshot&) {}

  /// The run has ended, the last dwell is evaluated.
  virtual void finished(const Panel& panel) = 0;
};

}  // namespace pelagrim_host
