#include "host/session/chunk_reader.h"

#include <algorithm>
#include <span>
#include <utility>

namespace pelagrim_host {
namespace {

// Samples of a receiver are not kept waiting for longer than this: dwells end by the clock.
constexpr int64_t kMaxFillMs = 50;

}  // namespace

ChunkReader::ChunkReader(IqSource& source, size_t chunk_samples, int64_t (*steady_ms)())
    : source_(source),
      chunk_samples_(chunk_samples),
      sample_bytes_(source.layout().sampleBytes()),
      is_live_(source.isLive()),
      steady_ms_(steady_ms) {}

/// Waits for samples from the present centre, at the start and after a tune.
void ChunkReader::settle() {
  if (!needs_settling_) return;
  const uint64_t counted = has_settled_ ? source_.overflows() : 0;
  source_.settle();
  // What the receiver lost while nobody wanted its samples is no loss.
  overflows_in_vain_ += source_.overflows() - counted;
  has_settled_ = true;
  needs_settling_ = false;
  last_received_ms_ = steady_ms_();
}

void ChunkReader::fill(SampleChunk& chunk, uint64_t max_samples,
                       const std::function<bool()>& hurry) {
  chunk.samples = 0;
  chunk.first_sample = next_sample_;
  chunk.tunes = tunes_;
  chunk.failure = nullptr;
  chunk.damage.reset();
  try {
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
    settle();
    chunk.centre_hz = source_.centreHz();
    chunk.unix_ms = source_.nextUnixMs();
    chunk.bytes.resize(chunkBytes());
    chunk.begun_steady_ms = last_received_ms_;
    readInto(chunk, std::min<uint64_t>(max_samples, chunk_samples_), hurry);
    if (chunk.samples == 0) chunk.damage = source_.damage();
  } catch (...) {
    // What was read before the failure is delivered first.
    (chunk.samples > 0 ? failure_ : chunk.failure) = std::current_exception();
  }
  chunk.overflows = source_.overflows() - overflows_in_vain_;
  chunk.received_steady_ms = last_received_ms_ = steady_ms_();
  next_sample_ += chunk.samples;
}

void ChunkReader::readInto(SampleChunk& chunk, uint64_t max_samples,
                           const std::function<bool()>& hurry) {
  const auto room = std::span(chunk.bytes).first(max_samples * sample_bytes_);
  chunk.samples = source_.readNative(room);
  // A recording fills its chunks by itself, as far as its centre and its times allow.
  while (is_live_ && chunk.samples > 0 && chunk.samples < max_samples && !hurry() &&
         steady_ms_() - chunk.begun_steady_ms < kMaxFillMs) {
    const size_t more = source_.readNative(room.subspan(chunk.samples * sample_bytes_));
    if (more == 0) break;
    chunk.samples += more;
  }
}

TuneOutcome ChunkReader::tune(double hz) noexcept {
  TuneOutcome outcome;
  const double before_hz = source_.centreHz();
  try {
    outcome.answer = source_.tune(hz);
  } catch (const std::exception& failure) {
    outcome.answer = kTuneRefused;
    outcome.why_refused = failure.what();
  } catch (...) {
    outcome.answer = kTuneRefused;
    outcome.why_refused = "the receiver failed without saying why";
  }
  outcome.centre_hz = source_.centreHz();
  outcome.next_sample = next_sample_;
  if (outcome.answer == kTuneAccepted) ++tunes_;
  outcome.tunes = tunes_;
  // A receiver may refuse and have moved all the same.
  if (outcome.answer == kTuneAccepted || outcome.centre_hz != before_hz) needs_settling_ = true;
  return outcome;
}

}  // namespace pelagrim_host
