#include "host/commands/kept_history.h"

#include <exception>
#include <utility>

#include "host/history/history_file.h"
#include "host/history/replay.h"
#include "host/process/whole_file.h"
#include "host/survey_dir/survey_place.h"

namespace pelagrim_host {
namespace {

constexpr double kRowSeconds = 0.01;  // short enough for syllables and keying

}  // namespace

KeptHistory::KeptHistory(std::filesystem::path directory, HistoryRun run,
                         std::function<pelagrim::Settings()> settings, double sample_rate_hz,
                         bool may_wait)
    : directory_(std::move(directory)),
      settings_(std::move(settings)),
      sample_rate_hz_(sample_rate_hz),
      writer_(historyPath(directory_), {}, [this](const std::string& line) { say(line); }) {
  writer_.beginRun(std::move(run));
  evidence_.emplace(
      EvidenceThread::Hooks{.start = [this] { return start(); },
                            .record = [this](const DwellRecord& dwell) { writer_.dwell(dwell); },
                            .gap = [this](int64_t end_unix_ms) { writer_.gap(end_unix_ms); }},
      may_wait, kRowSeconds);
}

/// The plug-in has just read the list, and does not write it before the next dwell's end.
EvidenceStart KeptHistory::start() {
  const pelagrim::Settings settings = settings_();
  if (settings.sweep) {
    band_lo_hz_ = settings.start_hz;
    band_hi_hz_ = settings.stop_hz;
  }
  HistoryAnchor anchor;
  anchor.rate_hz = sample_rate_hz_;
  anchor.threshold_db = settings.threshold_db;
  anchor.raster_hz = settings.raster_hz > 0.0 ? settings.raster_hz : 1.0;
  anchor.band_lo_hz = band_lo_hz_;
  anchor.band_hi_hz = band_hi_hz_;
  bool is_read = true;
  try {
    anchor.list = readIfThere(resultsPath(directory_)).value_or("");
  } catch (const std::exception& failure) {
    say(failure.what());
    is_read = false;  // nobody can follow a list whose beginning is not known
  }
  EvidenceStart start{Replay(anchor).survey(), settings.threshold_db, {}};
  if (is_read) start.begun = [this, anchor] { writer_.anchor(anchor); };
  return start;
}

void KeptHistory::say(const std::string& line) {
  const std::lock_guard lock(mutex_);
  news_.push_back(line);
}

std::vector<std::string> KeptHistory::takeNews() {
  const std::lock_guard lock(mutex_);
  return std::exchange(news_, {});
}

void KeptHistory::end() {
  evidence_.reset();  // everything has been observed
  writer_.end();
}

}  // namespace pelagrim_host
