#include "host/sources/offset_tuned_source.h"

#include <fmt/format.h>

#include <cmath>
#include <numbers>

#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

constexpr size_t kRunSamples = 1024;

/// The angle as a whole number, which wraps with the circle and never drifts.
uint64_t turnsToFraction(double turns) {
  return static_cast<uint64_t>(std::llround((turns - std::round(turns)) * 0x1p63)) * 2;
}

std::complex<double> rotation(uint64_t turn) {
  const double angle = 2.0 * std::numbers::pi * static_cast<double>(turn) * 0x1p-64;
  return {std::cos(angle), std::sin(angle)};
}

/// Without the standard operator's check for infinities, which costs a call per product.
std::complex<float> product(std::complex<float> a, std::complex<float> b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

}  // namespace

OffsetTunedSource::OffsetTunedSource(std::unique_ptr<IqSource> source, double offset_hz)
    : source_(std::move(source)),
      offset_hz_(offset_hz),
      turn_step_(turnsToFraction(offset_hz / source_->sampleRateHz())),
      rotations_(kRunSamples) {
  if (!(std::abs(offset_hz) < 0.5 * source_->sampleRateHz())) {
    throw SourceError(fmt::format(
        "--lo-offset: {} is outside what {} receives at once; give less than {}",
        formatFrequency(offset_hz), name(), formatFrequency(0.5 * source_->sampleRateHz())));
  }
  const double hz = source_->centreHz() + offset_hz;
  if (source_->tune(hz) != kTuneAccepted) {
    throw SourceError(
        fmt::format("--lo-offset: {} cannot be tuned to {}", name(), formatFrequency(hz)));
  }
  uint64_t turn = 0;
  for (auto& turned : rotations_) {
    turned = std::complex<float>(rotation(turn));
    turn += turn_step_;
  }
}

size_t OffsetTunedSource::read(std::span<std::complex<float>> block) {
  const size_t count = source_->read(block);
  for (size_t first = 0; first < count; first += kRunSamples) {
    // Every run starts from the exact angle, so rounding errors do not add up.
    const std::complex<float> start(rotation(turn_));
    const auto run = block.subspan(first, std::min(kRunSamples, count - first));
    for (size_t i = 0; i < run.size(); ++i) run[i] = product(run[i], product(rotations_[i], start));
    turn_ += turn_step_ * run.size();
  }
  return count;
}

}  // namespace pelagrim_host
