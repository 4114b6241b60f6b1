#pragma once

#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "host/evidence/evidence_thread.h"
#include "host/history/history_writer.h"
#include "survey/settings.h"

namespace pelagrim_host {

/// The record of a run, in history.sqlite of its survey directory: every dwell as it is observed.
/// The survey never fails because of it.
class KeptHistory {
 public:
  /// `settings`: those in force, asked after each start of the plug-in. `may_wait`: for a
  /// recording.
  KeptHistory(std::filesystem::path directory, HistoryRun run,
              std::function<pelagrim::Settings()> settings, double sample_rate_hz, bool may_wait);

  /// Gets what the plug-in gets.
  SampleObserver& observer() { return *evidence_; }

  /// What the user should know of the record, since the last call. Any thread may call it.
  std::vector<std::string> takeNews();

  /// The run has ended in order.
  void end();

 private:
  EvidenceStart start();
  void say(const std::string& line);

  std::filesystem::path directory_;
  std::function<pelagrim::Settings()> settings_;
  double sample_rate_hz_;
  double band_lo_hz_ = 0.0;  ///< the limits of the last sweep stay in force
  double band_hi_hz_ = 0.0;

  std::mutex mutex_;
  std::vector<std::string> news_;  ///< under the mutex

  HistoryWriter writer_;                    ///< of the thread below, while that exists
  std::optional<EvidenceThread> evidence_;  ///< last: it uses the rest
};

}  // namespace pelagrim_host
