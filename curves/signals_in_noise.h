#pragma once

#include <complex>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "host/simulation/simulated_station.h"
#include "host/simulation/station_signal.h"
#include "host/simulation/white_noise.h"
#include "survey/channel.h"
#include "survey/slice.h"

namespace pelagrim_curves {

using Samples = std::span<std::complex<float>>;

/// Adds its signal to samples `first_index`, `first_index` + 1, ... of the receiver. Called for
/// whole chunks of 4096 samples.
using Signal = std::function<void(Samples, uint64_t first_index)>;

/// Decibels to a ratio of powers.
double powerRatio(double db);

/// A receiver tuned to 0 Hz, white noise with a mean power of 1 per sample, and signals in it.
class NoisyBand {
 public:
  NoisyBand(double rate_hz, uint64_t seed);

  void add(Signal signal) { signals_.push_back(std::move(signal)); }

  /// The level spectrum of a dwell of that many frames, at least 1, starting at chunk
  /// `first_chunk`.
  std::vector<float> listen(uint64_t first_chunk, uint64_t frames) const;

  double rateHz() const { return rate_hz_; }
  double binHz() const { return rate_hz_ / 1024.0; }
  pelagrim::Slice slice() const { return {.sample_rate_hz = rate_hz_, .centre_hz = 0.0}; }
  double secondsOf(uint64_t frames) const { return static_cast<double>(frames) / binHz(); }

 private:
  double rate_hz_;
  pelagrim_host::WhiteNoise noise_;
  std::vector<Signal> signals_;
};

// Levels are decibels over the mean noise of a bin. Places are in bins from the slice's centre.

/// A steady carrier. `level_db`: its highest bin, if its frequency is that of a bin.
Signal steadyCarrier(double place_bins, double level_db);

/// Two carriers in turn, with steady phase: `baud` random bits a second, the tones `shift_hz`
/// apart; rate and tones are rounded to multiples of the bit rate. `level_db`: of one tone sent all
/// the time, as for steadyCarrier.
Signal twoToneFsk(double rate_hz, double centre_hz, double shift_hz, double baud, double level_db);

/// Like noise, equally strong over `width_bins` bins and nothing outside them: a sum of many
/// carriers of random phase, which repeats after 16 717 samples. `level_db`: of each of its bins.
Signal flatBand(double place_bins, double width_bins, double level_db, uint64_t seed);

/// A signal moved up by a number of bins.
Signal shifted(Signal signal, double bins);

/// A station of the simulated band over this receiver's noise; its level_db means the same as
/// there.
Signal station(const pelagrim_host::SimulatedStation& station,
               const pelagrim_host::Programmes& programmes, double rate_hz, double start_seconds);

/// Only the samples from `begin` to `end` of a signal.
Signal burstOf(Signal signal, uint64_t begin, uint64_t end);

/// A signal that is on for the first `on_samples` of every `period_samples`.
Signal keyed(Signal signal, uint64_t on_samples, uint64_t period_samples);

/// The detections that share frequencies with low_hz to high_hz.
std::vector<pelagrim::Detection> detectionsWithin(const std::vector<pelagrim::Detection>& all,
                                                  double low_hz, double high_hz);

}  // namespace pelagrim_curves
