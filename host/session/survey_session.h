#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "host/session/host_services.h"
#include "host/session/plugin_library.h"
#include "host/session/survey_clock.h"
#include "host/session/survey_view.h"
#include "host/sources/iq_source.h"

namespace pelagrim_host {

/// How a run is paced and when it ends, other than with its source.
struct SessionSettings {
  size_t block_samples = 0;                     ///< to a process call; 0: a twentieth of a second
  std::optional<uint32_t> passes = {};          ///< over what is surveyed
  std::optional<double> duration_seconds = {};  ///< of receiver time
  bool realtime = false;                        ///< no faster than the receiver would be
  /// Asked at every start for the length of a dwell, to show progress against; may be empty.
  std::function<std::optional<double>()> dwell_length_seconds = {};
  std::function<void()> after_dwell = {};  ///< called when one was evaluated; may be empty
};

/// What came of a run.
struct SessionResult {
  uint64_t samples = 0;                 ///< delivered
  std::optional<uint32_t> dwells_done;  ///< evaluated, where the plug-in counts them
};

/// One run of a survey: a source played through a plug-in, from create to destroy, and from create
/// again where a rescan is asked for.
///
/// Everything happens on the calling thread. The plug-in is attached to `services`, which have the
/// source and clock of the session, for as long as the session exists.
class SurveySession {
 public:
  SurveySession(const PluginLibrary& plugin, IqSource& source, HostServices& services,
                SurveyClock& clock, SurveyView& report, const SessionSettings& settings);
  ~SurveySession();
  SurveySession(const SurveySession&) = delete;
  SurveySession& operator=(const SurveySession&) = delete;

  /// Runs until the source or the limits end, or `stop` says so; it is asked between blocks, and so
  /// is `rescan`, which makes the plug-in save and start afresh with what its files say by then;
  /// passes count from there. At the end the dwell in progress is evaluated and saved. A source
  /// that fails ends the run in the same order, after which the failure is thrown on. Throws
  /// PluginError when passes are wanted of a plug-in that counts no dwells.
  SessionResult run(
      const std::function<bool()>& stop,
      const std::function<bool()>& rescan = [] { return false; });

 private:
  void start();
  void end();
  void deliver(const std::function<bool()>& stop, const std::function<bool()>& rescan);
  size_t nextBlockSize() const;
  bool passesAreDone() const;
  void retune();
  void beginDwell() { dwell_begun_ms_ = clock_.nowMs(); }
  bool reportMessages();
  void countDwells(double looked_at_hz);
  SurveyProgress progress() const;
  void waitForSamples(const std::function<bool()>& stop) const;

  const WendleIqApi& iq_;
  const WendleHostClientApi* host_client_;
  IqSource& source_;
  HostServices& services_;
  SurveyClock& clock_;
  SurveyView& report_;
  SessionSettings settings_;
  PanelReader panel_;

  void* handle_ = nullptr;
  size_t block_samples_;
  uint64_t most_samples_;
  uint64_t samples_ = 0;
  std::chrono::steady_clock::time_point begun_;
  double told_centre_hz_ = 0.0;  ///< what the plug-in takes the centre to be
  int64_t dwell_begun_ms_ = 0;
  std::optional<double> dwell_length_seconds_;
  std::optional<DwellCount> dwells_;  ///< since the last start
  uint32_t dwells_before_ = 0;        ///< of earlier starts
};

}  // namespace pelagrim_host
