#pragma once

#include <complex>
#include <cstdint>
#include <span>
#include <vector>

namespace pelagrim_host {

/// A well-mixed 64-bit number for a seed and an index: the index-th output of SplitMix64 (Steele,
/// Lea, Flood: "Fast splittable pseudorandom number generators", 2014), without state.
uint64_t hashedNumber(uint64_t seed, uint64_t index);

/// Complex white Gaussian noise as a function of seed and sample index. Immutable, so any thread
/// may use it.
class WhiteNoise {
 public:
  /// `power`: the mean of |sample|^2.
  WhiteNoise(uint64_t seed, double power);

  /// Overwrites `samples` with noise samples `first_index`, `first_index` + 1, ... The first index
  /// and the number of samples are even.
  void fill(uint64_t first_index, std::span<std::complex<float>> samples) const;

 private:
  uint64_t seed_;
  /// The normal distribution of one component, cut into parts of equal probability: the mean of
  /// each part. A uniform index then gives independent normal values without a logarithm per
  /// sample.
  std::vector<float> quantiles_;
};

}  // namespace pelagrim_host
