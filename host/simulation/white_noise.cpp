#include "host/simulation/white_noise.h"

#include <cmath>
#include <cstddef>
#include <numbers>

namespace pelagrim_host {

namespace {

constexpr int kQuantileBits = 12;
constexpr size_t kQuantiles = size_t{1} << kQuantileBits;  // 16 KiB of floats: half an L1 cache

/// Where the standard normal distribution function reaches `probability`, 0 < probability < 1.
double normalQuantile(double probability) {
  double low = -10.0;
  double high = 10.0;
  for (int step = 0; step < 60; ++step) {
    const double middle = 0.5 * (low + high);
    const bool below = 0.5 * std::erfc(-middle / std::numbers::sqrt2) < probability;
    (below ? low : high) = middle;
  }
  return 0.5 * (low + high);
}

double normalDensity(double x) {
  return std::exp(-0.5 * x * x) / std::sqrt(2.0 * std::numbers::pi);
}

/// The means of kQuantiles equally probable parts of a normal distribution of this variance.
std::vector<float> quantilesOf(double variance) {
  std::vector<double> means(kQuantiles);
  double square_sum = 0.0;
  double density_below = 0.0;
  for (size_t i = 0; i < kQuantiles; ++i) {
    const bool last = i + 1 == kQuantiles;
    const double upper_probability = static_cast<double>(i + 1) / static_cast<double>(kQuantiles);
    const double density_above = last ? 0.0 : normalDensity(normalQuantile(upper_probability));
    means[i] = density_below - density_above;  // up to the scale, set below
    square_sum += means[i] * means[i];
    density_below = density_above;
  }
  const double scale = std::sqrt(variance * static_cast<double>(kQuantiles) / square_sum);
  std::vector<float> scaled(kQuantiles);
  for (size_t i = 0; i < kQuantiles; ++i) scaled[i] = static_cast<float>(scale * means[i]);
  return scaled;
}

}  // namespace

uint64_t hashedNumber(uint64_t seed, uint64_t index) {
  uint64_t z = seed + (index + 1) * 0x9e3779b97f4a7c15U;
  z = (z ^ (z >> 30U)) * 0xbf58476d1ce4e5b9U;
  z = (z ^ (z >> 27U)) * 0x94d049bb133111ebU;
  return z ^ (z >> 31U);
}

WhiteNoise::WhiteNoise(uint64_t seed, double power)
    : seed_(hashedNumber(seed, 0)), quantiles_(quantilesOf(0.5 * power)) {}

void WhiteNoise::fill(uint64_t first_index, std::span<std::complex<float>> samples) const {
  constexpr uint64_t kMask = kQuantiles - 1;
  const float* quantiles = quantiles_.data();
  uint64_t pair = first_index / 2;
  for (size_t i = 0; i + 1 < samples.size(); i += 2, ++pair) {
    const uint64_t random = hashedNumber(seed_, pair);
    samples[i] = {quantiles[random & kMask], quantiles[(random >> 16U) & kMask]};
    samples[i + 1] = {quantiles[(random >> 32U) & kMask], quantiles[(random >> 48U) & kMask]};
  }
}

}  // namespace pelagrim_host
