#include "host/sources/replayed_source.h"

#include <fmt/format.h>

#include <array>
#include <cmath>
#include <utility>

namespace pelagrim_host {

ReplayedSource::ReplayedSource(Open open, uint64_t plays, double offset_seconds, StopFunction stop)
    : open_(std::move(open)),
      plays_(plays),
      offset_seconds_(offset_seconds),
      stop_(std::move(stop)) {
  start();
  centre_hz_ = source_->centreHz();
  lookAhead();
  start_unix_ms_ = next_unix_ms_;
  const auto start_ms = source_->startUnixMs();
  if (start_unix_ms_ || !start_ms) return;
  start_unix_ms_ = *start_ms + static_cast<int64_t>(offset_seconds_ * 1000.0);
}

std::optional<std::string> ReplayedSource::damage() const {
  return damage_ ? damage_ : source_->damage();
}

size_t ReplayedSource::read(std::span<std::complex<float>> block) {
  const double centre_hz = centre_hz_;
  size_t got = 0;
  // Blocks are full across the seams, so the dwells are those of one long recording.
  while (got < block.size() && next_ && centre_hz_ == centre_hz) {
    block[got++] = *next_;
    if (source_->centreHz() == centre_hz) got += source_->read(block.subspan(got));
    lookAhead();
  }
  return got;
}

void ReplayedSource::lookAhead() {
  if (takeNext()) return;
  if (plays_ != 0 && plays_begun_ == plays_) return;
  // A play without samples ends the replay, too, or an endless replay of an empty file would never
  // return.
  start();
  takeNext();
}

bool ReplayedSource::takeNext() {
  const double centre_hz = source_->centreHz();
  const auto unix_ms = source_->nextUnixMs();
  std::array<std::complex<float>, 1> sample;
  next_.reset();
  if (source_->read(sample) == 0) return false;
  next_ = sample[0];
  centre_hz_ = centre_hz;
  next_unix_ms_ = unix_ms;
  return true;
}

void ReplayedSource::start() {
  if (source_) damage_ = damage();
  source_ = open_();
  ++plays_begun_;
  const auto wanted = static_cast<uint64_t>(std::llround(offset_seconds_ * sampleRateHz()));
  const uint64_t skipped = source_->skip(wanted);
  if (skipped < wanted && !stop_()) {
    throw SourceError(fmt::format("{}: it is only {:.3f} s long, so --offset {} is past its end",
                                  name(), static_cast<double>(skipped) / sampleRateHz(),
                                  offset_seconds_));
  }
}

}  // namespace pelagrim_host
