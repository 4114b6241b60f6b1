#pragma once

#include <memory>
#include <vector>

#include "host/sources/iq_source.h"

namespace pelagrim_host {

/// A receiver that is tuned off to the side of the centre asked for, with its samples shifted back
/// digitally.
///
/// Direct-conversion receivers have a spike at their own centre, which a survey takes for a signal;
/// this moves it to `offset_hz` above the centre. The price is one edge of the slice: a sampled
/// spectrum is a circle, so the strip of |offset_hz| that is shifted out at one edge comes in at
/// the other, where it does not belong.
class OffsetTunedSource final : public IqSource {
 public:
  /// Tunes `source` to offset_hz above where it is. Throws SourceError if it cannot be tuned there,
  /// or if the offset is not smaller than half the sample rate.
  OffsetTunedSource(std::unique_ptr<IqSource> source, double offset_hz);

  std::string name() const override { return source_->name(); }
  double sampleRateHz() const override { return source_->sampleRateHz(); }
  double centreHz() const override { return source_->centreHz() - offset_hz_; }
  std::optional<int64_t> startUnixMs() const override { return source_->startUnixMs(); }
  bool isLive() const override { return source_->isLive(); }
  bool canTune() const override { return source_->canTune(); }
  uint64_t overflows() const override { return source_->overflows(); }
  size_t read(std::span<std::complex<float>> block) override;
  void settle() override { source_->settle(); }
  WendleTuneResult tune(double hz) override { return source_->tune(hz + offset_hz_); }

 private:
  std::unique_ptr<IqSource> source_;
  double offset_hz_;
  uint64_t turn_step_;  ///< the angle from one sample to the next; 2^64 is a whole turn
  uint64_t turn_ = 0;   ///< the next sample's angle
  std::vector<std::complex<float>> rotations_;  ///< of the samples of a run, from angle 0 on
};

}  // namespace pelagrim_host
