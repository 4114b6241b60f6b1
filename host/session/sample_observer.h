#pragma once

#include <complex>
#include <cstdint>
#include <span>

namespace pelagrim_host {

/// Watches a run beside the plug-in: gets what the plug-in gets, in the same order, on the
/// surveyor's thread, which must not be kept waiting for a receiver's samples.
class SampleObserver {
 public:
  virtual ~SampleObserver() = default;
  SampleObserver() = default;
  SampleObserver(const SampleObserver&) = delete;
  SampleObserver& operator=(const SampleObserver&) = delete;

  /// The plug-in has read its files and begins at that centre.
  virtual void started(double rate_hz, double centre_hz) = 0;

  /// Samples that the plug-in is about to get. `first_unix_ms`: when the first was received.
  /// `lost_samples`: how many samples were lost before them since the start of the run.
  virtual void samples(std::span<const std::complex<float>> block, int64_t first_unix_ms,
                       uint64_t lost_samples) = 0;

  /// The plug-in has evaluated the dwell that these samples belong to; its clock read `unix_ms`.
  virtual void dwellEvaluated(int64_t unix_ms) = 0;

  /// The plug-in has been told of a centre, and drops what it has gathered.
  virtual void retuned(double centre_hz) = 0;

  /// The plug-in is done.
  virtual void ended() = 0;
};

}  // namespace pelagrim_host
