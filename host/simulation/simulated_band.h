#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/simulation/simulated_station.h"
#include "host/simulation/station_signal.h"
#include "host/simulation/white_noise.h"
#include "host/sources/iq_source.h"

namespace pelagrim_host {

/// The power density of the simulated noise, in dB of full scale per hertz: -50 dBFS in 1 MHz.
constexpr double kSimulatedNoiseDbfsPerHz = -110.0;

struct SimulatedBandConfig {
  double low_hz = 144e6;
  double high_hz = 146e6;
  double sample_rate_hz = 1e6;
  std::optional<double> centre_hz{};      ///< where the receiver starts; the band's middle
  uint64_t seed = 1;                      ///< for the noise, the programmes, irregular times
  bool irregular = false;                 ///< whether stations come and go at random
  int64_t start_unix_ms = 1767225600000;  ///< 2026-01-01T00:00:00Z
  double duration_seconds = 0.0;          ///< 0: endless
};

/// A receiver on a band full of simulated stations over white Gaussian noise.
///
/// A sample depends only on the configuration, its index and the centre, so two runs agree to the
/// bit whatever the block sizes. The receiver's filter is perfect: it passes a station that lies
/// wholly inside the slice, and blocks any other, so nothing is aliased.
class SimulatedBand final : public IqSource {
 public:
  /// Throws SourceError if the configuration makes no sense.
  explicit SimulatedBand(const SimulatedBandConfig& config);

  std::string name() const override { return "simulated band"; }
  double sampleRateHz() const override { return config_.sample_rate_hz; }
  double centreHz() const override { return centre_hz_; }
  std::optional<int64_t> startUnixMs() const override { return config_.start_unix_ms; }
  bool canTune() const override { return true; }
  size_t read(std::span<std::complex<float>> block) override;

  /// The receiver tunes from one sample rate below the band to one above it.
  WendleTuneResult tune(double hz) override;

  /// The stations that are really there, in order of frequency.
  const std::vector<SimulatedStation>& stations() const { return stations_; }

 private:
  /// Fills chunk_ with the chunk that begins at sample first_index, as heard at the centre.
  void renderChunk(uint64_t first_index);

  SimulatedBandConfig config_;
  double centre_hz_;
  uint64_t samples_left_;
  std::vector<SimulatedStation> stations_;
  Programmes programmes_;
  WhiteNoise noise_;
  std::vector<StationSignal> signals_;
  uint64_t next_index_ = 0;  ///< of the first sample of the next read
  std::vector<std::complex<float>> chunk_;
  bool chunk_is_stale_ = true;
};

}  // namespace pelagrim_host
