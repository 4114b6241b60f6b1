#include "host/session/sample_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "host/text/quantity_text.h"

namespace pelagrim_host {
namespace {

// What is looked at of a block: a part, and so many components at least.
constexpr size_t kPart = 64;
constexpr size_t kMinRun = 1024;
constexpr uint64_t kMinSamples = 4096;  // of fewer nothing is said

// The ends of 8 bits lie at 0.992 and -1.0, of more bits nearer to 1.0.
constexpr float kFullScale = 0.992F;
constexpr float kMaxFullScale = 1.01F;  // beyond it they are floats that have none
// A strong signal may touch full scale now and then; from here on it makes signals that are not
// there.
constexpr double kMaxFullScaleShare = 0.01;
// A bin of a spectrum of 1024 holds a 1024th part of the power of noise. Ten times that stands out.
constexpr double kMaxConstantShare = 10.0 / 1024.0;

constexpr size_t kLanes = 8;  // side by side, as a single sum would wait for itself; I, Q, I, Q ...

struct Lanes {
  float sum[kLanes] = {};
  float power[kLanes] = {};
  float full_scale[kLanes] = {};
  float min[kLanes];
  float max[kLanes];
};

/// `components`: as many as make whole lanes, at least one of each. The loops are vectorised.
Lanes lanesOf(std::span<const float> components) {
  Lanes lanes;
  for (size_t i = 0; i < kLanes; ++i) lanes.min[i] = lanes.max[i] = components[i];
  for (size_t at = 0; at < components.size(); at += kLanes) {
    for (size_t i = 0; i < kLanes; ++i) {
      const float value = components[at + i];
      lanes.sum[i] += value;
      lanes.power[i] += value * value;
      lanes.full_scale[i] += std::abs(value) >= kFullScale ? 1.0F : 0.0F;
      lanes.min[i] = value < lanes.min[i] ? value : lanes.min[i];
      lanes.max[i] = value > lanes.max[i] ? value : lanes.max[i];
    }
  }
  return lanes;
}

}  // namespace

void SampleCheck::take(std::span<const std::complex<float>> block, double centre_hz) {
  if (centre_hz != centre_hz_) reset();
  centre_hz_ = centre_hz;
  // An array of complex numbers is an array of their parts.
  const std::span all(reinterpret_cast<const float*>(block.data()), 2 * block.size());
  const size_t wanted = std::min(all.size(), std::max(kMinRun, all.size() / kPart));
  const auto run = all.first(wanted / kLanes * kLanes);
  if (run.empty()) return;
  const Lanes lanes = lanesOf(run);
  if (taken_ == 0) std::copy_n(lanes.min, 2, min_), std::copy_n(lanes.max, 2, max_);
  taken_ += run.size() / 2;
  for (size_t i = 0; i < kLanes; ++i) {
    const size_t part = i % 2;
    sum_[part] += static_cast<double>(lanes.sum[i]);
    power_ += static_cast<double>(lanes.power[i]);
    full_scale_ += static_cast<double>(lanes.full_scale[i]);
    min_[part] = std::min(min_[part], lanes.min[i]);
    max_[part] = std::max(max_[part], lanes.max[i]);
  }
}

std::optional<std::string> SampleCheck::judge() {
  if (taken_ < kMinSamples) return std::nullopt;  // the next dwell's come in addition
  const auto found = cause();
  std::optional<std::string> line;
  if (found && told_.emplace(*found, centre_hz_).second) line = words(*found);
  reset();
  return line;
}

void SampleCheck::reset() {
  taken_ = 0;
  sum_[0] = sum_[1] = power_ = full_scale_ = 0.0;
}

double SampleCheck::fullScaleShare() const {
  return full_scale_ / (2.0 * static_cast<double>(taken_));
}

double SampleCheck::constantShare() const {
  return (sum_[0] * sum_[0] + sum_[1] * sum_[1]) / (power_ * static_cast<double>(taken_));
}

std::optional<SampleCheck::Cause> SampleCheck::cause() const {
  if (!std::isfinite(power_)) return Cause::kNoNumbers;
  if (min_[0] == max_[0] && min_[1] == max_[1]) return Cause::kAllEqual;
  const bool has_full_scale = std::max({max_[0], max_[1], -min_[0], -min_[1]}) <= kMaxFullScale;
  if (has_full_scale && fullScaleShare() > kMaxFullScaleShare) return Cause::kFullScale;
  if (constantShare() > kMaxConstantShare) return Cause::kSpike;
  return std::nullopt;
}

std::string SampleCheck::words(Cause cause) const {
  const std::string centre = formatFrequency(centre_hz_);
  switch (cause) {
    case Cause::kNoNumbers:
      return fmt::format(
          "some samples at {} are not numbers, and nothing is found in a dwell that has them; "
          "see that the format is right",
          centre);
    case Cause::kAllEqual:
      return fmt::format(
          "all samples at {} are the same, so nothing is received; see that the antenna is "
          "connected and the gain is set, or start the receiver anew",
          centre);
    case Cause::kFullScale:
      return fmt::format(
          "{:.2g} % of the samples at {} are at full scale, which makes signals that are not "
          "there; lower the gain",
          100.0 * fullScaleShare(), centre);
    case Cause::kSpike:
      return fmt::format(
          "{:.2g} % of the power at {} is a constant part, so the channel there is the receiver's "
          "own; --lo-offset keeps it out of a live receiver's survey",
          100.0 * constantShare(), centre);
  }
  return {};
}

}  // namespace pelagrim_host
