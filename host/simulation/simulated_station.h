#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/simulation/irregular_times.h"

namespace pelagrim_host {

/// What a simulated station transmits.
enum class SimulatedKind { kNfmVoice, kAmVoice, kSsbVoice, kCw, kWideFm, kData };

/// "NFM voice", "AM voice", "SSB voice", "CW", "wide FM" or "data".
const char* kindText(SimulatedKind kind);

/// One transmitter of the simulated band: the truth that a survey should find.
struct SimulatedStation {
  std::string name;  ///< "repeater", "CW beacon", ...
  SimulatedKind kind = SimulatedKind::kNfmVoice;
  double centre_hz = 0.0;  ///< the middle of its spectrum, not the suppressed carrier of SSB
  double width_hz = 0.0;   ///< nominal occupied bandwidth
  /// Its mean power while it transmits (CW: key down) over the noise power in the same width, in
  /// dB; for anything narrower than 1 kHz over the noise in 1 kHz. This is about how far the middle
  /// of its spectrum is above the noise floor.
  double level_db = 0.0;
  double deviation_hz = 0.0;  ///< peak frequency deviation, for the kinds that have one

  // It transmits for on_seconds, first_on_seconds after the start of the simulation and again every
  // period_seconds. Counted back, too: a transmission that spans the start is already on the air
  // then. A period of 0: always.
  double first_on_seconds = 0.0;
  double on_seconds = 0.0;
  double period_seconds = 0.0;

  /// If set, it comes and goes at random instead.
  std::optional<IrregularTimes> irregular{};

  double lowHz() const { return centre_hz - 0.5 * width_hz; }
  double highHz() const { return centre_hz + 0.5 * width_hz; }

  /// How far beyond its width its weakest parts are still worth keeping clear of.
  double guardHz() const;

  /// The stretch on or off the air that this time is part of. Pauses of a speaker and of a Morse
  /// key belong to the transmission.
  Stretch stretchAt(int64_t ms) const;

  /// The share of time on the air in the long run, 0 to 1.
  double onAir() const;
};

/// How strong a station is, moment by moment. Looks up the times of a station once in a while only,
/// where one moment follows another. Refers to the station.
class StationStrength {
 public:
  explicit StationStrength(const SimulatedStation& station) : station_(station) {}

  /// The amplitude at this time after the start of the simulation: 0 off the air, 1 on the air,
  /// with slopes of kKeySlopeSeconds in between, also at the start and end of a transmission.
  double at(double seconds);

 private:
  const SimulatedStation& station_;
  Stretch stretch_;  ///< the last one looked up
};

/// The time in which a transmission rises and falls, so that its edges do not click.
constexpr double kKeySlopeSeconds = 0.005;

/// "always" or, for example, "12 s of 31 s from 4 s" or "~3 s on, ~20 s off".
std::string scheduleText(const SimulatedStation& station);

/// The stations of a band, in order of frequency: a set of voices, keying, a broadcast, a repeater
/// and data for about every 2 MHz, all inside the band and none on top of another. A band too
/// narrow for the whole set gets the stations that fit. The same limits always give the same
/// stations.
/// With a seed most of them come and go at random, those that otherwise never pause among them;
/// broadcast, beacons and one talk stay on the air.
std::vector<SimulatedStation> simulatedPopulation(
    double low_hz, double high_hz, std::optional<uint64_t> irregular_seed = std::nullopt);

}  // namespace pelagrim_host
