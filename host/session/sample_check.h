#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>

namespace pelagrim_host {

/// Notices what is wrong with a receiver's samples while its user can still do something: samples
/// that are no numbers, that are all the same, that are at full scale, and a constant part that
/// appears as a channel at the centre of a slice.
///
/// It looks at a part of each block, which costs next to nothing. Not synchronised.
class SampleCheck {
 public:
  /// Takes the samples of a block, all from `centre_hz`.
  void take(std::span<const std::complex<float>> block, double centre_hz);

  /// What was wrong with the samples taken since the last judgement, in one line with its remedy;
  /// each cause is told once for a centre. Call it at the end of a dwell and of a run, and before
  /// the centre changes. Where too few were taken, those of the next dwell there come in addition.
  std::optional<std::string> judge();

  /// Whether enough was taken for a judgement within a long dwell.
  bool isDue() const { return taken_ >= kMaxSamples; }

 private:
  enum class Cause { kNoNumbers, kAllEqual, kFullScale, kSpike };

  static constexpr uint64_t kMaxSamples = 1 << 16;

  void reset();
  std::optional<Cause> cause() const;
  std::string words(Cause cause) const;
  double fullScaleShare() const;
  double constantShare() const;

  double centre_hz_ = 0.0;
  uint64_t taken_ = 0;  ///< samples looked at; of them, and of I and Q apart where there are two:
  double sum_[2] = {};
  double power_ = 0.0;
  double full_scale_ = 0.0;  ///< components at full scale
  float min_[2] = {};
  float max_[2] = {};
  std::set<std::pair<Cause, double>> told_;
};

}  // namespace pelagrim_host
