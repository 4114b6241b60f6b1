#include "host/simulation/programme_loop.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <numeric>
#include <span>

#include "host/simulation/simulated_station.h"
#include "host/simulation/white_noise.h"

namespace pelagrim_host {

namespace {

using std::numbers::pi;

constexpr size_t kVoicePoints = size_t{1} << 18U;
constexpr double kVoiceRateHz = 48000.0;
constexpr double kVoiceLowHz = 400.0;
constexpr double kVoiceHighHz = 2600.0;
constexpr double kVoiceMiddleHz = 0.5 * (kVoiceLowHz + kVoiceHighHz);

constexpr size_t kMusicPoints = size_t{1} << 18U;
constexpr double kMusicRateHz = 96000.0;
constexpr double kMusicHighHz = 4000.0;

constexpr size_t kBits = size_t{1} << 13U;
constexpr size_t kPointsPerBit = 8;
constexpr double kBaud = 9600.0;

/// Low-pass filters the loop with a fourth-order Butterworth filter: two sections of the cookbook
/// formulae (Bristow-Johnson). The loop is run twice, the first time only to let the filter settle.
void lowPass(std::span<std::complex<float>> loop, double cutoff_hz, double rate_hz) {
  const double w = 2.0 * pi * cutoff_hz / rate_hz;
  for (const double quality : {0.54119610, 1.30656296}) {
    const double alpha = std::sin(w) / (2.0 * quality);
    const double b0 = 0.5 * (1.0 - std::cos(w)) / (1.0 + alpha);
    const double a1 = -2.0 * std::cos(w) / (1.0 + alpha);
    const double a2 = (1.0 - alpha) / (1.0 + alpha);
    std::array<std::complex<double>, 2> in{};
    std::array<std::complex<double>, 2> out{};
    const std::vector<std::complex<float>> original(loop.begin(), loop.end());
    for (int round = 0; round < 2; ++round) {
      for (size_t i = 0; i < loop.size(); ++i) {
        const std::complex<double> x(original[i]);
        const auto y = b0 * (x + 2.0 * in[0] + in[1]) - a1 * out[0] - a2 * out[1];
        in = {x, in[0]};
        out = {y, out[0]};
        loop[i] = std::complex<float>(y);
      }
    }
  }
}

/// Gives the loop a mean power of `power`.
void setPower(std::span<std::complex<float>> loop, double power) {
  double sum = 0.0;
  for (const auto& z : loop) sum += static_cast<double>(std::norm(z));
  const auto gain = static_cast<float>(std::sqrt(power * static_cast<double>(loop.size()) / sum));
  for (auto& z : loop) z *= gain;
}

/// The loudness of speech, 0 to 1, point by point.
std::vector<float> syllables(uint64_t seed, size_t points, double rate_hz) {
  std::vector<float> loudness(points, 0.0F);
  uint64_t drawn = 0;
  const auto uniform = [&](double low, double high) {
    const uint64_t random = hashedNumber(seed, drawn++) >> 11U;
    return low + (high - low) * static_cast<double>(random) * 0x1p-53;
  };
  size_t point = 0;
  while (true) {
    const auto length = static_cast<size_t>(uniform(0.12, 0.25) * rate_hz);
    const double peak = uniform(0.5, 1.0);
    if (point + length >= points) return loudness;
    for (size_t i = 0; i < length; ++i) {
      const double phase = static_cast<double>(i) / static_cast<double>(length);
      loudness[point + i] = static_cast<float>(peak * std::sin(pi * phase));
    }
    const double draw = uniform(0.0, 1.0);
    double pause_s = 0.02;           // within a word
    if (draw < 0.35) pause_s = 0.1;  // between words
    if (draw < 0.06) pause_s = 0.6;  // between sentences
    point += length + static_cast<size_t>(pause_s * rate_hz);
  }
}

/// Subtracts the mean from `level`, so that the integral closes, and computes what depends on it.
void finish(ProgrammeLoop& loop) {
  const auto points = static_cast<double>(loop.level.size());
  const double mean = std::accumulate(loop.level.begin(), loop.level.end(), 0.0) / points;
  for (float& level : loop.level) level -= static_cast<float>(mean);
  loop.integral_s.resize(loop.level.size());
  double sum = 0.0;
  double squares = 0.0;
  for (size_t i = 0; i < loop.level.size(); ++i) {
    loop.integral_s[i] = sum / loop.rate_hz;
    const auto level = static_cast<double>(loop.level[i]);
    sum += 0.5 * (level + static_cast<double>(loop.level[(i + 1) % loop.level.size()]));
    squares += level * level;
  }
  loop.mean_square = squares / points;
}

float clipped(float level) {
  return std::clamp(level, -0.98F, 0.98F);
}

std::string_view morseCode(char letter) {
  static constexpr std::array<std::string_view, 26> kLetters = {
      ".-",   "-...", "-.-.", "-..",  ".",   "..-.", "--.",  "....", "..",
      ".---", "-.-",  ".-..", "--",   "-.",  "---",  ".--.", "--.-", ".-.",
      "...",  "-",    "..-",  "...-", ".--", "-..-", "-.--", "--.."};
  if (letter < 'A' || letter > 'Z') return "";
  return kLetters[static_cast<size_t>(letter - 'A')];
}

}  // namespace

ProgrammeLoop voiceProgramme(uint64_t seed) {
  ProgrammeLoop loop;
  loop.rate_hz = kVoiceRateHz;
  loop.side_band.resize(kVoicePoints);
  WhiteNoise(seed, 1.0).fill(0, loop.side_band);
  lowPass(loop.side_band, 0.5 * (kVoiceHighHz - kVoiceLowHz), kVoiceRateHz);
  const std::vector<float> loudness = syllables(seed, kVoicePoints, kVoiceRateHz);
  for (size_t i = 0; i < kVoicePoints; ++i) loop.side_band[i] *= loudness[i];
  setPower(loop.side_band, 1.0);

  // The nearest frequency with a whole number of turns in the loop.
  const double turns =
      std::round(kVoiceMiddleHz / kVoiceRateHz * static_cast<double>(kVoicePoints));
  loop.level.resize(kVoicePoints);
  for (size_t i = 0; i < kVoicePoints; ++i) {
    const double cycle = turns * static_cast<double>(i) / static_cast<double>(kVoicePoints);
    const auto carrier =
        std::polar(1.0F, static_cast<float>(2.0 * pi * (cycle - std::floor(cycle))));
    constexpr float kLoudness = 0.7F;  // a peak is clipped now and then, as in a transmitter
    loop.level[i] = clipped(kLoudness * (loop.side_band[i] * carrier).real());
  }
  finish(loop);
  return loop;
}

ProgrammeLoop musicProgramme(uint64_t seed) {
  std::vector<std::complex<float>> noise(kMusicPoints);
  WhiteNoise(seed, 1.0).fill(0, noise);
  lowPass(noise, kMusicHighHz, kMusicRateHz);
  constexpr double kRmsLevel = 0.44;
  setPower(noise, 2.0 * kRmsLevel * kRmsLevel);  // half of it in the real part
  ProgrammeLoop loop;
  loop.rate_hz = kMusicRateHz;
  loop.level.resize(kMusicPoints);
  std::transform(noise.begin(), noise.end(), loop.level.begin(),
                 [](const std::complex<float>& z) { return clipped(z.real()); });
  finish(loop);
  return loop;
}

ProgrammeLoop dataProgramme(uint64_t seed) {
  // The Gaussian's impulse response, in points; it spans a bit and a half on either side.
  constexpr size_t kReach = 12;
  constexpr double kBandwidthTime = 0.5;
  const double sigma = std::sqrt(std::numbers::ln2) / (2.0 * pi * kBandwidthTime) *
                       static_cast<double>(kPointsPerBit);
  std::array<float, 2 * kReach + 1> response{};
  for (size_t k = 0; k < response.size(); ++k) {
    const double x = (static_cast<double>(k) - static_cast<double>(kReach)) / sigma;
    response[k] = static_cast<float>(std::exp(-0.5 * x * x));
  }
  const float sum = std::accumulate(response.begin(), response.end(), 0.0F);

  ProgrammeLoop loop;
  loop.rate_hz = kBaud * static_cast<double>(kPointsPerBit);
  loop.level.assign(kBits * kPointsPerBit, 0.0F);
  for (size_t i = 0; i < loop.level.size(); ++i) {
    const bool one = (hashedNumber(seed, i / kPointsPerBit) & 1U) != 0;
    for (size_t k = 0; k < response.size(); ++k) {
      const size_t point = (i + loop.level.size() + k - kReach) % loop.level.size();
      loop.level[point] += (one ? 0.98F : -0.98F) * response[k] / sum;
    }
  }
  finish(loop);
  return loop;
}

MorseKeying::MorseKeying(std::string_view text) {
  const auto add = [this](bool down, size_t dots) {
    key_down_.insert(key_down_.end(), dots, down);
  };
  for (const char letter : text) {
    for (const char sign : morseCode(letter)) {
      add(true, sign == '-' ? 3 : 1);
      add(false, 1);
    }
    add(false, letter == ' ' ? 4 : 2);
  }
  add(false, 4);
}

double MorseKeying::levelAt(double seconds) const {
  const double dots = seconds / kDotSeconds;
  const auto dot = static_cast<int64_t>(dots);
  const auto count = static_cast<int64_t>(key_down_.size());
  const double now = key_down_[static_cast<size_t>(dot % count)] ? 1.0 : 0.0;
  const double before = key_down_[static_cast<size_t>((dot + count - 1) % count)] ? 1.0 : 0.0;
  const double slope = (dots - static_cast<double>(dot)) * kDotSeconds / kKeySlopeSeconds;
  return slope < 1.0 ? before + slope * (now - before) : now;
}

}  // namespace pelagrim_host
