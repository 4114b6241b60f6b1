#include "host/simulation/station_signal.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "host/simulation/white_noise.h"

namespace pelagrim_host {

namespace {

constexpr double kAmDepth = 0.8;

/// Short enough for 75 kHz of deviation: replacing the frequency's curve by a straight line makes
/// an error more than 60 dB below the station.
constexpr double kControlSeconds = 16e-6;

/// A circle in 2048 steps. Rounding a phase to them leaves spurs of at most -66 dBc.
constexpr int kCircleBits = 11;
constexpr size_t kCirclePoints = size_t{1} << kCircleBits;
using Circle = std::array<std::complex<float>, kCirclePoints>;

const Circle& circle() {
  static const Circle kCircle = [] {
    Circle points;
    for (size_t i = 0; i < kCirclePoints; ++i) {
      const double angle = 2.0 * std::numbers::pi * (static_cast<double>(i) + 0.5) /
                           static_cast<double>(kCirclePoints);
      points[i] = std::complex<float>(std::polar(1.0, angle));
    }
    return points;
  }();
  return kCircle;
}

/// A phase with 2^32 to the turn, so that it wraps by itself.
uint32_t phaseOf(double turns) {
  return static_cast<uint32_t>(static_cast<int64_t>(turns * 0x1p32));
}

size_t controlSamples(double sample_rate_hz) {
  const auto samples = static_cast<size_t>(std::clamp(
      sample_rate_hz * kControlSeconds, 1.0, static_cast<double>(StationSignal::kChunkSamples)));
  return std::bit_floor(samples);
}

/// The part of a stretch of samples over which frequency and amplitude change linearly.
struct Segment {
  uint32_t phase;
  uint32_t phase_step;
  uint32_t phase_step_change;
  std::complex<float> amplitude;
  std::complex<float> amplitude_step;
};

void addSegment(std::span<std::complex<float>> samples, const Segment& segment) {
  Segment at = segment;
  const std::complex<float>* points = circle().data();
  for (std::complex<float>& sample : samples) {
    const std::complex<float> carrier = points[at.phase >> (32U - kCircleBits)];
    const float a_re = at.amplitude.real();
    const float a_im = at.amplitude.imag();
    sample += std::complex<float>(a_re * carrier.real() - a_im * carrier.imag(),
                                  a_re * carrier.imag() + a_im * carrier.real());
    at.phase += at.phase_step;
    at.phase_step += at.phase_step_change;
    at.amplitude += at.amplitude_step;
  }
}

const ProgrammeLoop& programmeOf(SimulatedKind kind, const Programmes& programmes) {
  if (kind == SimulatedKind::kWideFm) return programmes.music;
  return kind == SimulatedKind::kData ? programmes.data : programmes.voice;
}

}  // namespace

Programmes::Programmes(uint64_t seed)
    : voice(voiceProgramme(hashedNumber(seed, 1))),
      music(musicProgramme(hashedNumber(seed, 2))),
      data(dataProgramme(hashedNumber(seed, 3))),
      morse("VVV DE PELAGRIM TEST ") {}

StationSignal::StationSignal(const SimulatedStation& station, const Programmes& programmes,
                             double start_seconds, double noise_density)
    : station_(station), programmes_(programmes), start_seconds_(start_seconds) {
  constexpr double kNarrowestHz = 1000.0;
  const double noise_power = noise_density * std::max(station.width_hz, kNarrowestHz);
  const double power = noise_power * std::pow(10.0, 0.1 * station.level_db);
  const double unit_power = station.kind == SimulatedKind::kAmVoice
                                ? 1.0 + kAmDepth * kAmDepth * programmes.voice.mean_square
                                : 1.0;
  amplitude_ = std::sqrt(power / unit_power);
}

bool StationSignal::isHeardIn(const ReceiverSlice& slice) const {
  const double reach_hz = 0.5 * station_.width_hz + station_.guardHz();
  return std::abs(station_.centre_hz - slice.centre_hz) + reach_hz <= 0.5 * slice.sample_rate_hz;
}

StationSignal::ControlPoint StationSignal::controlPointAt(double seconds, double strength) const {
  const double amplitude = amplitude_ * strength;
  ControlPoint point;
  const double programme_seconds = start_seconds_ + seconds;
  if (station_.kind == SimulatedKind::kCw) {
    const double key = programmes_.morse.levelAt(programme_seconds);
    point.amplitude = static_cast<float>(amplitude * key);
    return point;
  }
  const ProgrammeLoop& programme = programmeOf(station_.kind, programmes_);
  const ProgrammeLoop::Position at = programme.at(programme_seconds);
  if (station_.kind == SimulatedKind::kSsbVoice) {
    point.amplitude = static_cast<float>(amplitude) * programme.sideBandAt(at);
  } else if (station_.kind == SimulatedKind::kAmVoice) {
    point.amplitude = static_cast<float>(amplitude * (1.0 + kAmDepth * programme.levelAt(at)));
  } else {
    point.amplitude = static_cast<float>(amplitude);
    point.frequency_hz = station_.deviation_hz * programme.levelAt(at);
    point.turns = station_.deviation_hz * programme.integralAt(at);
  }
  return point;
}

void StationSignal::addTo(std::span<std::complex<float>> samples, uint64_t first_index,
                          const ReceiverSlice& slice) const {
  const size_t length = controlSamples(slice.sample_rate_hz);
  const auto steps = static_cast<double>(length);
  const double carrier_step = (station_.centre_hz - slice.centre_hz) / slice.sample_rate_hz;
  double carrier_turns = static_cast<double>(first_index) * carrier_step;
  carrier_turns -= std::floor(carrier_turns);

  StationStrength strength(station_);
  const auto controlPoint = [&](size_t offset) {
    const double seconds = static_cast<double>(first_index + offset) / slice.sample_rate_hz;
    return controlPointAt(seconds, strength.at(seconds));
  };
  const std::complex<float> silence;
  ControlPoint from = controlPoint(0);
  for (size_t offset = 0; offset < samples.size(); offset += length) {
    const ControlPoint to = controlPoint(offset + length);
    if (from.amplitude != silence || to.amplitude != silence) {
      // From one phase to the next, with a step that changes with the frequency.
      const double turns = to.turns - from.turns + steps * carrier_step;
      const double step_change =
          (to.frequency_hz - from.frequency_hz) / (steps * slice.sample_rate_hz);
      const double step = turns / steps - 0.5 * (steps - 1.0) * step_change;
      const double start = carrier_turns + from.turns + static_cast<double>(offset) * carrier_step;
      addSegment(samples.subspan(offset, length),
                 {phaseOf(start), phaseOf(step), phaseOf(step_change), from.amplitude,
                  (to.amplitude - from.amplitude) * static_cast<float>(1.0 / steps)});
    }
    from = to;
  }
}

}  // namespace pelagrim_host
