#pragma once

#include <complex>
#include <cstdint>
#include <span>

#include "host/simulation/programme_loop.h"
#include "host/simulation/simulated_station.h"

namespace pelagrim_host {

/// The programmes that the stations of a band share, each starting at a different place.
struct Programmes {
  explicit Programmes(uint64_t seed);

  ProgrammeLoop voice;
  ProgrammeLoop music;
  ProgrammeLoop data;
  MorseKeying morse;
};

/// What the receiver sees: the sample rate and the frequency that becomes 0 Hz.
struct ReceiverSlice {
  double sample_rate_hz = 0.0;
  double centre_hz = 0.0;
};

/// One station as samples.
///
/// Modulation is slow compared with the sample rate, so phase, frequency and amplitude are computed
/// exactly only every few samples, at indices that depend only on the rate. In between, frequency
/// and amplitude change linearly. Immutable; refers to the programmes.
class StationSignal {
 public:
  /// Samples are rendered in whole multiples of this many, from a multiple of it.
  static constexpr size_t kChunkSamples = 4096;

  /// `start_seconds`: where in its programme it starts. `noise_density`: the noise's power in 1 Hz.
  StationSignal(const SimulatedStation& station, const Programmes& programmes, double start_seconds,
                double noise_density);

  /// True if all of the station lies inside the slice, so that it can be rendered without aliases.
  bool isHeardIn(const ReceiverSlice& slice) const;

  /// Adds the samples `first_index`, `first_index` + 1, ... counted from the start of the
  /// simulation.
  void addTo(std::span<std::complex<float>> samples, uint64_t first_index,
             const ReceiverSlice& slice) const;

 private:
  struct ControlPoint {
    double turns = 0.0;         ///< phase of the modulation
    double frequency_hz = 0.0;  ///< its derivative
    std::complex<float> amplitude;
  };
  ControlPoint controlPointAt(double seconds, double strength) const;

  SimulatedStation station_;
  const Programmes& programmes_;
  double start_seconds_;
  double amplitude_;
};

}  // namespace pelagrim_host
