#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "host/session/chunk_reader.h"
#include "host/session/sample_chunk.h"

namespace pelagrim_host {

/// The way of the samples from a source to the surveyor, who calls all functions on one thread and
/// gets the chunks in the order in which they were read.
class SampleFeed {
 public:
  virtual ~SampleFeed() = default;
  SampleFeed() = default;
  SampleFeed(const SampleFeed&) = delete;
  SampleFeed& operator=(const SampleFeed&) = delete;

  /// The next chunk, which stays the next until it is released; null if none has come for a moment.
  /// At most `limit` samples are read in all, counted from the first; those already read are given
  /// anyway.
  virtual const SampleChunk* front(uint64_t limit) = 0;

  /// Gives the front chunk back.
  virtual void release() = 0;

  /// Moves the source, as the plug-in asks for within its call. Where that is accepted, chunks that
  /// have been read and not been given are dropped, because they come from the old centre.
  virtual TuneOutcome tune(double hz) noexcept = 0;

  /// How many samples of a receiver were dropped, because the surveyor was too slow.
  virtual uint64_t droppedSamples() const { return 0; }

  /// Reads no more; front and release may not be called any more, tune still may.
  virtual void end() = 0;
};

/// A feed that reads when it is asked, on the surveyor's thread.
std::unique_ptr<SampleFeed> feedOnThisThread(ChunkReader reader);

/// A feed with a reader thread, which keeps up to `buffer_bytes` of samples, at least two chunks. A
/// receiver is read all the time: when the buffer is full, the oldest chunk is dropped. Other
/// sources wait. `end_reading` must make a read return that waits for samples; the source is not
/// used any more when the feed is destroyed. Throws std::system_error if there can be no thread.
std::unique_ptr<SampleFeed> feedWithReaderThread(ChunkReader reader, bool is_live,
                                                 size_t buffer_bytes,
                                                 std::function<void()> end_reading);

}  // namespace pelagrim_host
