#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "iq_source.h"
#include "simulated_station.h"

namespace pelagrim_host {

/// The power density of the simulated noise, in dB of full scale per hertz: -50 dBFS in 1 MHz.
constexpr double kSimulatedNoiseDbfsPerHz = -110.0;

struct SimulatedBandConfig {
  double low_hz = 144e6;
  double high_hz = 146e6;
  double sample_rate_hz = 1e6;
  std::optional<double> centre_hz;        ///< where the receiver starts; the band's middle
  uint64_t seed = 1;                      ///< of the noise and of what is said
  int64_t start_unix_ms = 1767225600000;  ///< 2026-01-01T00:00:00Z
  double duration_seconds = 0.0;          ///< 0: endless
};

/// A receiver on a band full of simulated stations over white Gaussian noise.
///
/// Every sample follows from the configuration, its index and the centre alone, so that two runs
/// agree to the bit, whatever the sizes of the blocks. The receiver's filter is a perfect one that
/// hears a station when all of it lies inside the slice, and else not at all: nothing is aliased.
class SimulatedBand final : public IqSource {
 public:
  /// Throws SourceError when the configuration makes no sense.
  explicit SimulatedBand(const SimulatedBandConfig& config);
  ~SimulatedBand() override;

  std::string name() const override { return "simulated band"; }
  double sampleRateHz() const override;
  double centreHz() const override;
  std::optional<int64_t> startUnixMs() const override;
  bool canTune() const override { return true; }
  size_t read(std::span<std::complex<float>> block) override;

  /// The receiver tunes from one sample rate below the band to one above it.
  WendleTuneResult tune(double hz) override;

  /// The truth, in order of frequency.
  const std::vector<SimulatedStation>& stations() const;

 private:
  class Receiver;
  std::unique_ptr<Receiver> receiver_;
};

}  // namespace pelagrim_host
