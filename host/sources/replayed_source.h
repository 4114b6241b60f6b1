#pragma once

#include <functional>
#include <memory>

#include "host/sources/iq_source.h"
#include "host/sources/stop_function.h"

namespace pelagrim_host {

/// A recording played several times, each time starting at `offset`: the samples of one play follow
/// those of the last, and the clock runs on.
class ReplayedSource final : public IqSource {
 public:
  using Open = std::function<std::unique_ptr<IqSource>()>;

  /// `open` opens the recording again. `plays` 0: without end. Throws SourceError if the recording
  /// ends before the offset, unless that is because `stop` says so.
  ReplayedSource(Open open, uint64_t plays, double offset_seconds, StopFunction stop);

  std::string name() const override { return source_->name(); }
  double sampleRateHz() const override { return source_->sampleRateHz(); }
  double centreHz() const override { return centre_hz_; }
  std::optional<int64_t> startUnixMs() const override { return start_unix_ms_; }
  std::optional<int64_t> nextUnixMs() const override { return next_unix_ms_; }
  std::optional<uint64_t> lengthSamples() const override { return source_->lengthSamples(); }
  std::optional<RecordingFacts> facts() const override { return source_->facts(); }
  std::optional<double> shortestStaySeconds() const override {
    return source_->shortestStaySeconds();
  }
  std::optional<std::string> damage() const override;
  size_t read(std::span<std::complex<float>> block) override;

 private:
  void start();
  void lookAhead();
  bool takeNext();

  Open open_;
  uint64_t plays_;
  double offset_seconds_;
  StopFunction stop_;
  uint64_t plays_begun_ = 0;
  std::unique_ptr<IqSource> source_;
  /// The first sample of the next read, its centre and time: only a sample shows whether a play has
  /// ended and where the next one begins. None at the end.
  std::optional<std::complex<float>> next_;
  double centre_hz_ = 0.0;
  std::optional<int64_t> next_unix_ms_;
  std::optional<int64_t> start_unix_ms_;
  std::optional<std::string> damage_;  ///< of earlier plays
};

}  // namespace pelagrim_host
