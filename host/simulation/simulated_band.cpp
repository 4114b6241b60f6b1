#include "host/simulation/simulated_band.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

namespace pelagrim_host {

namespace {

constexpr double kMinRateHz = 1e3;
constexpr double kMaxRateHz = 1e9;
constexpr double kMaxHz = 1e12;

SimulatedBandConfig checked(SimulatedBandConfig config) {
  const auto refuse = [](const std::string& what) { throw SourceError("simulated band: " + what); };
  if (!(config.low_hz >= 0.0 && config.low_hz < config.high_hz && config.high_hz <= kMaxHz)) {
    refuse(
        fmt::format("cannot lie from {} Hz to {} Hz; give its lower limit first, both within "
                    "0 to {} Hz",
                    config.low_hz, config.high_hz, kMaxHz));
  }
  if (!(config.sample_rate_hz >= kMinRateHz && config.sample_rate_hz <= kMaxRateHz)) {
    refuse(fmt::format("cannot sample at {} Hz; choose a rate of {} to {} Hz",
                       config.sample_rate_hz, kMinRateHz, kMaxRateHz));
  }
  if (!(config.duration_seconds >= 0.0)) {
    refuse(fmt::format("cannot last {} s; choose a duration above 0, or 0 for an endless one",
                       config.duration_seconds));
  }
  return config;
}

bool isInRange(const SimulatedBandConfig& config, double hz) {
  return hz >= config.low_hz - config.sample_rate_hz &&
         hz <= config.high_hz + config.sample_rate_hz;
}

uint64_t sampleCount(const SimulatedBandConfig& config) {
  const double samples = std::floor(config.duration_seconds * config.sample_rate_hz);
  const bool endless = config.duration_seconds == 0.0 || samples >= 0x1p63;
  return endless ? std::numeric_limits<uint64_t>::max() : static_cast<uint64_t>(samples);
}

/// The programmes and the noise have the numbers before.
std::optional<uint64_t> irregularSeed(const SimulatedBandConfig& config) {
  if (!config.irregular) return std::nullopt;
  return hashedNumber(config.seed, 4);
}

double noiseDensity() {
  return std::pow(10.0, 0.1 * kSimulatedNoiseDbfsPerHz);
}

}  // namespace

SimulatedBand::SimulatedBand(const SimulatedBandConfig& config)
    : config_(checked(config)),
      centre_hz_(config.centre_hz.value_or(0.5 * (config.low_hz + config.high_hz))),
      samples_left_(sampleCount(config)),
      stations_(simulatedPopulation(config.low_hz, config.high_hz, irregularSeed(config))),
      programmes_(config.seed),
      noise_(config.seed, noiseDensity() * config.sample_rate_hz),
      chunk_(StationSignal::kChunkSamples) {
  if (!isInRange(config_, centre_hz_)) {
    throw SourceError(fmt::format(
        "simulated band: cannot tune to {} Hz; choose a centre of {} to {} Hz", centre_hz_,
        config_.low_hz - config_.sample_rate_hz, config_.high_hz + config_.sample_rate_hz));
  }
  for (const SimulatedStation& station : stations_) {
    constexpr double kApartSeconds = 1.618;  // no two stations say the same thing at once
    const double start_seconds = kApartSeconds * static_cast<double>(signals_.size());
    signals_.emplace_back(station, programmes_, start_seconds, noiseDensity());
  }
}

void SimulatedBand::renderChunk(uint64_t first_index) {
  const ReceiverSlice slice{.sample_rate_hz = config_.sample_rate_hz, .centre_hz = centre_hz_};
  noise_.fill(first_index, chunk_);
  for (const StationSignal& signal : signals_) {
    if (signal.isHeardIn(slice)) signal.addTo(chunk_, first_index, slice);
  }
  chunk_is_stale_ = false;
}

size_t SimulatedBand::read(std::span<std::complex<float>> block) {
  const auto wanted = static_cast<size_t>(std::min<uint64_t>(block.size(), samples_left_));
  size_t done = 0;
  while (done < wanted) {
    const size_t offset = next_index_ % chunk_.size();
    if (offset == 0 || chunk_is_stale_) renderChunk(next_index_ - offset);
    const size_t part = std::min(wanted - done, chunk_.size() - offset);
    std::copy_n(chunk_.begin() + static_cast<std::ptrdiff_t>(offset), part,
                block.begin() + static_cast<std::ptrdiff_t>(done));
    done += part;
    next_index_ += part;
  }
  samples_left_ -= done;
  return done;
}

WendleTuneResult SimulatedBand::tune(double hz) {
  if (!isInRange(config_, hz)) return kTuneOutOfRange;
  centre_hz_ = hz;
  chunk_is_stale_ = true;
  return kTuneAccepted;
}

}  // namespace pelagrim_host
