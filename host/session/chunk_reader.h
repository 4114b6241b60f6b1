#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <string>

#include "host/session/sample_chunk.h"
#include "host/sources/iq_source.h"

namespace pelagrim_host {

/// What became of a request to tune.
struct TuneOutcome {
  WendleTuneResult answer = kTuneNoRadio;
  std::string why_refused{};  ///< if the source failed: in its words
  double centre_hz = 0.0;     ///< where the source is now
  uint64_t next_sample = 0;   ///< the number of the first one that comes from there
  uint32_t tunes = 0;         ///< accepted so far, as the chunks from there have it
};

/// Fills chunks from a source. After this nobody else reads or tunes the source as long as the
/// object is in use, which is by one thread at a time.
class ChunkReader {
 public:
  /// `chunk_samples`: in a full chunk. `steady_ms`: the clock that chunks are stamped with.
  ChunkReader(IqSource& source, size_t chunk_samples, int64_t (*steady_ms)());

  /// Fills `chunk` with the next samples, at most `max_samples`, which is at least 1. A receiver's
  /// chunk is handed over half full rather than late, or when `hurry` says so; never empty, for
  /// that means the end. Does not throw: a failure of the source is its end.
  void fill(SampleChunk& chunk, uint64_t max_samples, const std::function<bool()>& hurry);

  /// Moves the source. Does not throw.
  TuneOutcome tune(double hz) noexcept;

  size_t chunkSamples() const { return chunk_samples_; }
  size_t chunkBytes() const { return chunk_samples_ * sample_bytes_; }
  /// The number of the next sample, counted from the first that was read.
  uint64_t nextSample() const { return next_sample_; }

 private:
  void settle();
  void readInto(SampleChunk& chunk, uint64_t max_samples, const std::function<bool()>& hurry);

  IqSource& source_;
  size_t chunk_samples_;
  size_t sample_bytes_;
  bool is_live_;
  int64_t (*steady_ms_)();
  uint64_t next_sample_ = 0;
  uint32_t tunes_ = 0;
  bool needs_settling_ = true;
  int64_t last_received_ms_ = 0;
  bool has_settled_ = false;
  uint64_t overflows_in_vain_ = 0;  ///< before the first chunk, and while settling
  std::exception_ptr failure_;      ///< for the next chunk
};

}  // namespace pelagrim_host
