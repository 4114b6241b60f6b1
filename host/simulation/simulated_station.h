#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace pelagrim_host {

/// What a simulated station transmits.
enum class SimulatedKind { kNfmVoice, kAmVoice, kSsbVoice, kCw, kWideFm, kData };

/// "NFM voice", "AM voice", "SSB voice", "CW", "wide FM" or "data".
const char* kindText(SimulatedKind kind);

/// One transmitter of the simulated band: the truth that a survey should find.
struct SimulatedStation {
  std::string name;  ///< "repeater", "CW beacon", ...
  SimulatedKind kind = SimulatedKind::kNfmVoice;
  double centre_hz = 0.0;  ///< the middle of its spectrum: for SSB not the suppressed carrier
  double width_hz = 0.0;   ///< nominal occupied bandwidth
  /// Its mean power while it transmits (CW: key down) over the noise's power in the same width, in
  /// dB; over the noise in 1 kHz for what is narrower. About how far the middle of its spectrum
  /// stands above the noise floor.
  double level_db = 0.0;
  double deviation_hz = 0.0;  ///< peak frequency deviation of the kinds that have one

  // It transmits for on_seconds from first_on_seconds after the start of the simulation and again
  // every period_seconds, also counted back: what reaches across the start is under way then. A
  // period of 0: always.
  double first_on_seconds = 0.0;
  double on_seconds = 0.0;
  double period_seconds = 0.0;

  double lowHz() const { return centre_hz - 0.5 * width_hz; }
  double highHz() const { return centre_hz + 0.5 * width_hz; }

  /// How far beyond its width its weakest parts are still worth keeping clear of.
  double guardHz() const;

  /// The amplitude at this time after the start of the simulation: 0 off the air, 1 on the air, a
  /// slope of kKeySlopeSeconds in between, the transmission's ends included.
  double strengthAt(double seconds) const;
};

/// How long a transmission takes to rise and to fall, so that its edges do not click.
constexpr double kKeySlopeSeconds = 0.005;

/// "always" or, for example, "12 s of 31 s from 4 s".
std::string scheduleText(const SimulatedStation& station);

/// The stations of a band, in order of frequency: voices, keying, a broadcast, a repeater, data,
/// one such set for about every 2 MHz, all inside the band and none on top of another. A band too
/// narrow for the whole set gets the stations that fit. The same for the same limits.
std::vector<SimulatedStation> simulatedPopulation(double low_hz, double high_hz);

}  // namespace pelagrim_host
