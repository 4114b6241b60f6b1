#include "curves/signals_in_noise.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <utility>

#include "survey/detection.h"
#include "survey/spectrum.h"

namespace pelagrim_curves {

namespace {

constexpr double kBins = 1024.0;
constexpr double kTurn = 2.0 * std::numbers::pi;

/// The Hann window collects the noise of one and a half bins.
constexpr double kNoiseBins = 1.5;

/// The amplitude of a carrier whose highest bin is `level_db` over the noise of a bin.
double carrierAmplitude(double level_db) {
  return std::sqrt(powerRatio(level_db) * kNoiseBins / kBins);
}

std::complex<float> phasor(double turns) {
  return std::complex<float>(std::polar(1.0, kTurn * (turns - std::floor(turns))));
}

/// The product, without the operator's check for infinities.
std::complex<float> times(std::complex<float> a, std::complex<float> b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

/// Adds a carrier of constant frequency, its phase exact at the first sample.
void addCarrier(Samples samples, double first_turns, double step_turns, double amplitude) {
  const std::complex<float> step = phasor(step_turns);
  std::complex<float> now = phasor(first_turns) * static_cast<float>(amplitude);
  for (auto& sample : samples) {
    sample += now;
    now = times(now, step);
  }
}

double uniform(uint64_t seed, uint64_t index) {
  return static_cast<double>(pelagrim_host::hashedNumber(seed, index) >> 11U) * 0x1p-53;
}

}  // namespace

double powerRatio(double db) {
  return std::pow(10.0, 0.1 * db);
}

NoisyBand::NoisyBand(double rate_hz, uint64_t seed) : rate_hz_(rate_hz), noise_(seed, 1.0) {}

std::vector<float> NoisyBand::listen(uint64_t first_chunk, uint64_t frames) const {
  constexpr size_t kChunk = pelagrim_host::StationSignal::kChunkSamples;
  constexpr uint64_t kFramesPerChunk = kChunk / pelagrim::kSpectrumBins;
  std::vector<std::complex<float>> chunk(kChunk);
  pelagrim::Spectrum spectrum;
  spectrum.prepare();
  for (uint64_t done = 0; done < frames; done += kFramesPerChunk) {
    const uint64_t first_index = (first_chunk + done / kFramesPerChunk) * kChunk;
    noise_.fill(first_index, chunk);
    for (const Signal& signal : signals_) signal(chunk, first_index);
    const uint64_t part = std::min(frames - done, kFramesPerChunk);
    spectrum.take(reinterpret_cast<const float*>(chunk.data()), part * pelagrim::kSpectrumBins);
  }
  return pelagrim::levelsDb(spectrum.power_sum, spectrum.frames);
}

Signal steadyCarrier(double place_bins, double level_db) {
  const double step_turns = place_bins / kBins;
  return [step_turns, amplitude = carrierAmplitude(level_db)](Samples samples, uint64_t first) {
    addCarrier(samples, static_cast<double>(first) * step_turns, step_turns, amplitude);
  };
}

Signal twoToneFsk(double rate_hz, double centre_hz, double shift_hz, double baud, double level_db) {
  // Both tones have whole cycles per bit, so the phase is continuous and known at every index.
  const double low_hz = std::round((centre_hz - 0.5 * shift_hz) / baud) * baud;
  const double high_hz = low_hz + std::round(shift_hz / baud) * baud;
  const auto bit_samples = static_cast<uint64_t>(std::llround(rate_hz / baud));
  const double amplitude = carrierAmplitude(level_db);
  return [=](Samples samples, uint64_t first) {
    size_t done = 0;
    while (done < samples.size()) {
      const uint64_t index = first + done;
      const uint64_t left = bit_samples - index % bit_samples;
      const size_t part = std::min<size_t>(left, samples.size() - done);
      const bool one = (pelagrim_host::hashedNumber(7, index / bit_samples) & 1U) != 0;
      const double step_turns = (one ? high_hz : low_hz) / rate_hz;
      const auto into_bit = static_cast<double>(index % bit_samples);
      addCarrier(samples.subspan(done, part), into_bit * step_turns, step_turns, amplitude);
      done += part;
    }
  };
}

Signal flatBand(double place_bins, double width_bins, double level_db, uint64_t seed) {
  constexpr size_t kLoop = 16 * 1024 + 333;  // not a multiple of a frame, so every frame differs
  const double line_bins = kBins / static_cast<double>(kLoop);
  const auto lines = static_cast<uint64_t>(std::llround(width_bins / line_bins));
  const double power = powerRatio(level_db) * width_bins / kBins;
  const double amplitude = std::sqrt(power / static_cast<double>(lines));
  const auto loop = std::make_shared<std::vector<std::complex<float>>>(kLoop);
  for (uint64_t line = 0; line < lines; ++line) {
    const double lines_off = static_cast<double>(line) - 0.5 * static_cast<double>(lines - 1);
    // Whole lines, so that the loop closes; half a line of a bin's 16 is lost.
    const double step_turns = std::floor(lines_off) / static_cast<double>(kLoop);
    addCarrier(*loop, uniform(seed, line), step_turns, amplitude);
  }
  const Signal at_0 = [loop](Samples samples, uint64_t first) {
    uint64_t at = first % kLoop;
    for (auto& sample : samples) {
      sample += (*loop)[at];
      at = at + 1 == kLoop ? 0 : at + 1;
    }
  };
  return place_bins == 0.0 ? at_0 : shifted(at_0, place_bins);
}

Signal shifted(Signal signal, double bins) {
  return [signal = std::move(signal), step_turns = bins / kBins](Samples samples, uint64_t first) {
    std::vector<std::complex<float>> moved(samples.size());
    signal(moved, first);
    const std::complex<float> step = phasor(step_turns);
    std::complex<float> shift = phasor(static_cast<double>(first) * step_turns);
    for (size_t i = 0; i < samples.size(); ++i) {
      samples[i] += times(moved[i], shift);
      shift = times(shift, step);
    }
  };
}

Signal station(const pelagrim_host::SimulatedStation& station,
               const pelagrim_host::Programmes& programmes, double rate_hz, double start_seconds) {
  const pelagrim_host::ReceiverSlice slice{.sample_rate_hz = rate_hz, .centre_hz = 0.0};
  const auto signal = std::make_shared<pelagrim_host::StationSignal>(station, programmes,
                                                                     start_seconds, 1.0 / rate_hz);
  return [signal, slice](Samples samples, uint64_t first) { signal->addTo(samples, first, slice); };
}

Signal burstOf(Signal signal, uint64_t begin, uint64_t end) {
  return [signal = std::move(signal), begin, end](Samples samples, uint64_t first) {
    const uint64_t last = first + samples.size();
    if (end <= first || begin >= last) return;
    std::vector<std::complex<float>> whole(samples.size());
    signal(whole, first);
    const uint64_t to = std::min(end, last);
    for (uint64_t i = std::max(begin, first); i < to; ++i) samples[i - first] += whole[i - first];
  };
}

Signal keyed(Signal signal, uint64_t on_samples, uint64_t period_samples) {
  return [signal = std::move(signal), on_samples, period_samples](Samples samples, uint64_t first) {
    std::vector<std::complex<float>> whole(samples.size());
    signal(whole, first);
    for (uint64_t i = 0; i < samples.size(); ++i) {
      if ((first + i) % period_samples < on_samples) samples[i] += whole[i];
    }
  };
}

std::vector<pelagrim::Detection> detectionsWithin(const std::vector<pelagrim::Detection>& all,
                                                  double low_hz, double high_hz) {
  std::vector<pelagrim::Detection> within;
  std::copy_if(all.begin(), all.end(), std::back_inserter(within),
               [=](const pelagrim::Detection& found) {
                 return found.centre_hz + 0.5 * found.width_hz > low_hz &&
                        found.centre_hz - 0.5 * found.width_hz < high_hz;
               });
  return within;
}

}  // namespace pelagrim_curves
