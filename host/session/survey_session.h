#pragma once

#include <chrono>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/session/host_services.h"
#include "host/session/panel_reader.h"
#include "host/session/plugin_library.h"
#include "host/session/sample_check.h"
#include "host/session/sample_feed.h"
#include "host/session/sample_observer.h"
#include "host/session/survey_clock.h"
#include "host/session/survey_view.h"
#include "host/sources/iq_source.h"

namespace pelagrim_host {

/// What a run may do, how it is paced, and when it ends if its source does not end it.
struct SessionSettings {
  bool may_tune = false;                        ///< whether the plug-in may move the receiver
  size_t block_samples = 0;                     ///< per process call; 0: a twentieth of a second
  std::optional<uint32_t> passes = {};          ///< over the band; unset: no limit
  std::optional<double> duration_seconds = {};  ///< of receiver time; unset: no limit
  bool realtime = false;                        ///< no faster than a receiver
  bool has_reader_thread = true;                ///< false: all on the calling thread
  size_t buffer_bytes = size_t{256} << 20;      ///< of samples that the reader thread may keep
  SampleObserver* observer = nullptr;           ///< gets what the plug-in gets; null: nobody does
  std::function<void()> end_reading = [] {};    ///< makes a read of the source return
  std::function<void()> before_start = {};      ///< called before every create; may be empty
  std::function<void()> after_dwell = {};       ///< called after each evaluated dwell; may be empty

  /// How long a dwell is by what the plug-in has read, milliseconds; asked after each start. Where
  /// the clock follows the samples, a block then ends where a dwell does. May be empty.
  std::function<int64_t()> dwell_length_ms = {};
};

/// The outcome of a run.
struct SessionResult {
  uint64_t samples = 0;                 ///< delivered
  uint64_t overflows = 0;               ///< of the receiver
  uint64_t dropped_samples = 0;         ///< because the survey was too slow
  std::optional<std::string> damage;    ///< of a recording that was read to its end
  std::optional<uint32_t> dwells_done;  ///< evaluated; nothing if the plug-in does not count them
};

/// One run of a survey: a source played through a plug-in, from create to destroy, and from create
/// again after a rescan. The surveyor, who calls the plug-in and the view, is the calling thread;
/// the source is read on another one unless the settings say otherwise.
class SurveySession {
 public:
  /// All arguments passed by reference must outlive the session. The plug-in is attached to the
  /// session's clock and tuning for as long as the session exists.
  SurveySession(const PluginLibrary& plugin, IqSource& source, ClockPolicy clock, SurveyView& view,
                const SessionSettings& settings);
  ~SurveySession();
  SurveySession(const SurveySession&) = delete;
  SurveySession& operator=(const SurveySession&) = delete;

  /// Runs until the source ends, a limit is reached, or `stop` says so. Both functions are asked
  /// between blocks, and several times a second where no samples come; if `rescan` says so, the
  /// plug-in saves and starts afresh with its current files, and passes count from there. At the
  /// end the current dwell is evaluated and saved. A source that fails ends the run the same way,
  /// and the failure is then rethrown. Throws PluginError if a number of passes is asked for and
  /// the plug-in does not count dwells.
  SessionResult run(
      const std::function<bool()>& stop,
      const std::function<bool()>& rescan = [] { return false; });

 private:
  /// A part of a chunk that the plug-in gets in one call.
  struct Block {
    std::span<const std::complex<float>> samples;
    double centre_hz;
    std::optional<int64_t> unix_ms;  ///< of the first sample, if a recording says so
    int64_t begun_steady_ms;         ///< when the first sample was received
    int64_t received_steady_ms;      ///< when all were
  };

  /// The outcome of a block, a start or an end, for the view.
  struct News {
    bool started = false;
    std::vector<std::string> messages{};
    std::vector<std::string> warnings{};  ///< of the session's own
    std::optional<SurveyProgress> dwell_done{};
    std::optional<TuneRequest> tune{};
    double centre_hz = 0.0;  ///< after the request
  };

  void play(const std::function<bool()>& stop, const std::function<bool()>& rescan);
  const SampleChunk* nextChunk();
  Block nextBlock(const SampleChunk& chunk);
  News start();
  News feed(const Block& block);
  News end();
  void tell(const News& news);
  void showSnapshot();

  void process(const Block& block);
  void retune(double centre_hz);
  std::vector<std::string> takeMessages();
  std::optional<SurveyProgress> countDwells(double looked_at_hz);
  uint64_t leftInDwell(std::optional<int64_t> unix_ms) const;
  uint64_t readLimit() const;
  bool dwellLengthIsOver() const;
  std::optional<std::string> clockNews();
  bool passesAreDone() const;
  double centreHz() const { return centre_to_tell_hz_.value_or(told_centre_hz_); }
  void beginDwell() { dwell_begun_ms_ = clock_.nowMs(); }
  SurveyProgress progress() const;
  void waitForSamples(const std::function<bool()>& stop) const;

  const WendleIqApi& iq_;
  const WendleHostClientApi* host_client_;
  SurveyView& view_;
  SessionSettings settings_;
  SurveyClock clock_;

  // What the source says of itself for good: it belongs to the reader.
  const double rate_hz_;
  const SampleLayout layout_;
  const std::optional<uint64_t> source_samples_;
  const bool may_read_ahead_;  ///< beyond the end of a dwell
  const size_t chunk_samples_;

  std::unique_ptr<SampleFeed> feed_;
  std::unique_ptr<HostServices> services_;  ///< using feed_ and clock_
  PanelReader panel_;

  void* handle_ = nullptr;
  size_t taken_ = 0;                         ///< samples of the chunk at the front of the feed
  uint64_t position_ = 0;                    ///< number of the next sample to take
  uint32_t tunes_ = 0;                       ///< accepted
  std::vector<std::complex<float>> floats_;  ///< one block, converted
  uint64_t max_samples_;
  uint64_t samples_ = 0;  ///< delivered
  uint64_t overflows_ = 0;
  std::optional<std::string> damage_;
  std::chrono::steady_clock::time_point begun_;
  std::chrono::steady_clock::time_point samples_came_;  ///< the last ones
  double told_centre_hz_;                    ///< the centre that the plug-in was last told
  std::optional<double> centre_to_tell_hz_;  ///< with the first samples from there
  int64_t dwell_begun_ms_ = 0;
  int64_t dwell_length_ms_ = 0;  ///< 0: not known, or every block ends one
  SampleCheck check_;
  bool told_clock_was_set_ = false;
  std::optional<DwellCount> dwells_;  ///< since the last start
  uint32_t dwells_before_ = 0;        ///< of earlier starts
};

}  // namespace pelagrim_host
