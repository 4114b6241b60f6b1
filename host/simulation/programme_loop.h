#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace pelagrim_host {

/// What a station transmits, as a loop of a few seconds without a seam: evenly spaced points, a
/// power of two of them, with straight lines in between.
struct ProgrammeLoop {
  double rate_hz = 0.0;                        ///< points per second
  std::vector<float> level;                    ///< -1 to 1, mean 0
  std::vector<double> integral_s;              ///< of level over time up to the point, in seconds
  std::vector<std::complex<float>> side_band;  ///< voice only: the upper side band about its middle
  double mean_square = 0.0;                    ///< of level

  struct Position {
    size_t point = 0;
    size_t next = 0;
    double fraction = 0.0;  ///< from point to next, 0 to 1
  };

  /// The place in the loop after this time, which is not negative.
  Position at(double seconds) const {
    const double points = seconds * rate_hz;
    const auto whole = static_cast<int64_t>(points);
    const size_t mask = level.size() - 1;
    const size_t point = static_cast<size_t>(whole) & mask;
    return {point, (point + 1) & mask, points - static_cast<double>(whole)};
  }

  double levelAt(const Position& at) const {
    const double level_0 = static_cast<double>(level[at.point]);
    return level_0 + at.fraction * (static_cast<double>(level[at.next]) - level_0);
  }

  /// The integral of levelAt, exactly: what a modulated phase follows.
  double integralAt(const Position& at) const {
    const double level_0 = static_cast<double>(level[at.point]);
    const double rise = static_cast<double>(level[at.next]) - level_0;
    return integral_s[at.point] + at.fraction * (level_0 + 0.5 * at.fraction * rise) / rate_hz;
  }

  std::complex<float> sideBandAt(const Position& at) const {
    const auto fraction = static_cast<float>(at.fraction);
    return side_band[at.point] + fraction * (side_band[at.next] - side_band[at.point]);
  }
};

/// Something that looks like speech: noise of 400 to 2600 Hz in syllables, words and pauses.
/// side_band has a mean power of 1, pauses included.
ProgrammeLoop voiceProgramme(uint64_t seed);

/// Noise of up to 4 kHz at a steady loudness, like a broadcast after its limiter.
ProgrammeLoop musicProgramme(uint64_t seed);

/// Random bits at 9600 baud through a Gaussian filter with a bandwidth-time product of 0.5.
ProgrammeLoop dataProgramme(uint64_t seed);

/// A text in Morse code, endlessly: key down or up.
class MorseKeying {
 public:
  static constexpr double kDotSeconds = 0.06;  // 20 words a minute

  /// Upper-case letters and blanks.
  explicit MorseKeying(std::string_view text);

  /// 0 to 1, with slopes of kKeySlopeSeconds (simulated_station.h). The time is not negative.
  double levelAt(double seconds) const;

 private:
  std::vector<bool> key_down_;  ///< per dot length
};

}  // namespace pelagrim_host
