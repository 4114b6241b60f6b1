#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/session/panel_reader.h"
#include "host/session/tune_request.h"

namespace pelagrim_host {

/// The source of a run.
struct SourceFacts {
  std::string name;
  double centre_hz = 0.0;  ///< at the start
  double rate_hz = 0.0;
};

/// How far a run is.
struct SurveyProgress {
  double centre_hz = 0.0;
  double rate_hz = 0.0;
  int64_t unix_ms = 0;                       ///< the survey's clock
  uint64_t samples = 0;                      ///< delivered so far
  uint64_t overflows = 0;                    ///< of the receiver, so far
  double dwell_elapsed_seconds = 0.0;        ///< in the current dwell, by the survey's clock
  std::optional<DwellCount> dwells{};        ///< nothing if the plug-in does not count them
  std::optional<uint32_t> wanted_passes{};   ///< after which the run ends, if limited
  std::optional<double> wanted_seconds{};    ///< of receiver time, likewise
  std::optional<uint64_t> wanted_samples{};  ///< that the source delivers in all, if that is known
  uint64_t dropped_samples = 0;  ///< by this program, because the survey was too slow, so far
  double stalled_seconds = 0.0;  ///< since the last samples came, where none came in time
};

/// The settings that the plug-in surveys by.
struct SettingsInForce {
  std::string line;                        ///< in words
  double dwell_seconds = 0.0;              ///< on each slice
  std::vector<double> slice_centres_hz{};  ///< of a sweep; empty: it stays where it is
};

/// The state of a run at one moment.
struct SurveySnapshot {
  SurveyProgress progress;
  Panel panel;
};

/// Shows a run: to a person as lines or as a live view, to a script as JSON. A view gets copies and
/// never reads from the run itself. All calls on one thread.
class SurveyView {
 public:
  virtual ~SurveyView() = default;
  SurveyView() = default;
  SurveyView(const SurveyView&) = delete;
  SurveyView& operator=(const SurveyView&) = delete;

  /// The source has been opened.
  virtual void opened(const SourceFacts& source) = 0;

  /// The plug-in has read its files and starts to survey, at the start or after a rescan.
  virtual void started() {}

  /// The settings in force from the next start on.
  virtual void inForce(const SettingsInForce& settings) { note(settings.line); }

  /// A line from the host itself: what was taken from where, where files are.
  virtual void note(const std::string& line) = 0;

  /// Something that the user should look into, but that does not stop the run.
  virtual void warning(const std::string& line) = 0;

  /// A message line from the plug-in.
  virtual void message(const std::string& line) = 0;

  /// A dwell has been evaluated. `progress` has its centre and the counts so far.
  virtual void dwellDone(const SurveyProgress& progress) = 0;

  /// The plug-in asked to tune. `centre_hz`: where the receiver is now.
  virtual void tuned(const TuneRequest& request, double centre_hz) = 0;

  /// Asked after every block of samples, and now and then while none come: how many rows of the
  /// panel a snapshot should have now; nothing for no snapshot.
  virtual std::optional<size_t> wantsSnapshot() { return std::nullopt; }

  /// The snapshot that was asked for.
  virtual void snapshot(const SurveySnapshot&) {}

  /// The run has ended and the last dwell has been evaluated.
  virtual void finished(const Panel& panel) = 0;
};

}  // namespace pelagrim_host
