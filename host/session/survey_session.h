#pragma once

#include <chrono>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/session/host_services.h"
#include "host/session/panel_reader.h"
#include "host/session/plugin_library.h"
#include "host/session/survey_clock.h"
#include "host/session/survey_view.h"
#include "host/sources/iq_source.h"

namespace pelagrim_host {

/// What a run may do, how it is paced and when it ends, other than with its source.
struct SessionSettings {
  bool may_tune = false;                        ///< whether the plug-in may move the receiver
  size_t block_samples = 0;                     ///< to a process call; 0: a twentieth of a second
  std::optional<uint32_t> passes = {};          ///< over what is surveyed
  std::optional<double> duration_seconds = {};  ///< of receiver time
  bool realtime = false;                        ///< no faster than the receiver would be
  std::function<void()> before_start = {};      ///< called before every create; may be empty
  std::function<void()> after_dwell = {};       ///< called when one was evaluated; may be empty
};

/// What came of a run.
struct SessionResult {
  uint64_t samples = 0;                 ///< delivered
  std::optional<uint32_t> dwells_done;  ///< evaluated, where the plug-in counts them
};

/// One run of a survey: a source played through a plug-in, from create to destroy, and from create
/// again where a rescan is asked for. Everything happens on the calling thread.
class SurveySession {
 public:
  /// All that is referred to outlives the session. The plug-in is attached to the session's clock
  /// and tuning for as long as the session exists.
  SurveySession(const PluginLibrary& plugin, IqSource& source, ClockPolicy clock, SurveyView& view,
                const SessionSettings& settings);
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
  /// Samples as they were read, with what the source says of them.
  struct Block {
    std::span<const std::complex<float>> samples;
    double centre_hz;
    std::optional<int64_t> unix_ms;  ///< of the first sample, where a recording says so
  };

  /// What came of a block, a start or an end, for the view.
  struct News {
    bool started = false;
    std::vector<std::string> messages{};
    std::optional<SurveyProgress> dwell_done{};
    std::optional<TuneRequest> tune{};
    double centre_hz = 0.0;  ///< after the request
  };

  void play(const std::function<bool()>& stop, const std::function<bool()>& rescan);
  Block readBlock();
  News start();
  News feed(const Block& block);
  News end();
  void tell(const News& news);
  void showSnapshot();

  void retune(double centre_hz);
  std::vector<std::string> takeMessages();
  std::optional<SurveyProgress> countDwells(double looked_at_hz);
  size_t nextBlockSize() const;
  bool passesAreDone() const;
  void beginDwell() { dwell_begun_ms_ = clock_.nowMs(); }
  SurveyProgress progress() const;
  void waitForSamples(const std::function<bool()>& stop) const;

  const WendleIqApi& iq_;
  const WendleHostClientApi* host_client_;
  IqSource& source_;
  SurveyView& view_;
  SessionSettings settings_;
  SurveyClock clock_;
  HostServices services_;  ///< of source_ and clock_
  PanelReader panel_;

  void* handle_ = nullptr;
  std::vector<std::complex<float>> buffer_;  ///< of one block
  uint64_t max_samples_;
  uint64_t samples_ = 0;
  std::chrono::steady_clock::time_point begun_;
  double told_centre_hz_ = 0.0;  ///< what the plug-in takes the centre to be
  int64_t dwell_begun_ms_ = 0;
  std::optional<DwellCount> dwells_;  ///< since the last start
  uint32_t dwells_before_ = 0;        ///< of earlier starts
};

}  // namespace pelagrim_host
