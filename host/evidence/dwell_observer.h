#pragma once

#include <complex>
#include <cstdint>
#include <optional>
#include <span>

#include "host/evidence/dwell_record.h"
#include "host/evidence/row_spectra.h"
#include "survey/survey.h"

namespace pelagrim_host {

/// Makes a record of every dwell from the samples that the plug-in gets. Not synchronised; it takes
/// as long as the plug-in does.
class DwellObserver {
 public:
  /// `resolution_seconds`: of what is on the air and when.
  explicit DwellObserver(double resolution_seconds) : resolution_seconds_(resolution_seconds) {}

  /// A survey begins: `known` are the channels and the raster that it begins with, whose places
  /// are watched, and `threshold_db` is in force.
  void start(const pelagrim::Slice& slice, const pelagrim::Survey& known, double threshold_db);

  /// The samples that follow. `first_unix_ms`: when the first of them was received.
  void take(std::span<const std::complex<float>> samples, int64_t first_unix_ms);

  /// The plug-in got `count` samples here that this object does not get. There will be no record
  /// of the dwell, nor of the next one if their last frame reaches into it.
  void skip(uint64_t count);

  /// The dwell was evaluated when the clock read `end_unix_ms`. Nothing if it had no frame or was
  /// not seen as a whole.
  std::optional<DwellRecord> finishDwell(int64_t end_unix_ms);

  /// The centre has changed. Samples from before that no dwell was made of are dropped.
  void retune(double centre_hz);

 private:
  void beginDwell();

  double resolution_seconds_;
  pelagrim::Slice slice_;
  pelagrim::Survey places_;  ///< everything that has been a channel
  double threshold_db_ = 0.0;
  std::optional<RowSpectra> spectra_;
  uint64_t next_sample_ = 0;   ///< its number, counted from the first of the run
  uint64_t first_sample_ = 0;  ///< of the dwell
  int64_t first_unix_ms_ = 0;  ///< likewise
  bool is_empty_ = true;       ///< no sample of this dwell has come yet
  bool is_whole_ = true;       ///< none of it is missing
  uint64_t to_discard_ = 0;    ///< samples until the plug-in begins a frame
  uint64_t full_scale_samples_ = 0;
};

}  // namespace pelagrim_host
