// The reader: a thread of its own that reads the source and hands chunks to the surveyor.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "host/process/signals.h"
#include "host/session/sample_feed.h"

namespace pelagrim_host {
namespace {

// How long the surveyor waits for samples before it looks after something else.
constexpr std::chrono::milliseconds kPatience(50);

// More would only push each other out of the processor's cache where nothing is lost by waiting.
constexpr size_t kMaxWaitingChunks = 8;

/// One mutex guards everything but the source, which belongs to the reader, and the chunk at the
/// front, which belongs to the surveyor. Chunks move by pointer, some thousand a second at most.
class ThreadedFeed final : public SampleFeed {
 public:
  ThreadedFeed(ChunkReader reader, bool is_live, size_t buffer_bytes,
               std::function<void()> end_reading)
      : reader_(std::move(reader)),
        is_live_(is_live),
        max_chunks_(std::clamp<size_t>(buffer_bytes / reader_.chunkBytes(), 2,
                                       is_live ? SIZE_MAX : kMaxWaitingChunks)),
        end_reading_(std::move(end_reading)),
        thread_([this] { run(); }) {}

  ~ThreadedFeed() override {
    {
      const std::lock_guard lock(mutex_);
      is_reading_ = false;
      is_over_ = true;
    }
    end_reading_();
    to_reader_.notify_one();
    thread_.join();
  }

  const SampleChunk* front(uint64_t limit) override {
    if (front_) return front_.get();
    std::unique_lock lock(mutex_);
    if (limit > limit_) {
      limit_ = limit;
      to_reader_.notify_one();
    }
    to_surveyor_.wait_for(lock, kPatience, [this] { return !full_.empty() || failure_; });
    if (full_.empty() && failure_) std::rethrow_exception(failure_);
    if (full_.empty()) return nullptr;
    front_ = std::move(full_.front());
    full_.pop_front();
    return front_.get();
  }

  void release() override {
    const std::lock_guard lock(mutex_);
    free_.push_back(std::move(front_));
    // A reader that waits for room is woken for more than one chunk.
    if (full_.size() <= max_chunks_ / 2) to_reader_.notify_one();
  }

  TuneOutcome tune(double hz) noexcept override {
    std::unique_lock lock(mutex_);
    wanted_hz_ = hz;
    has_request_ = true;
    to_reader_.notify_one();
    to_surveyor_.wait(lock, [this] { return !has_request_; });
    return std::exchange(outcome_, {});
  }

  uint64_t droppedSamples() const override {
    const std::lock_guard lock(mutex_);
    return dropped_samples_;
  }

  void end() override {
    const std::lock_guard lock(mutex_);
    is_reading_ = false;
  }

 private:
  void run() {
    leaveSignalsToOtherThreads();
    std::unique_lock lock(mutex_);
    while (!is_over_) {
      if (has_request_) {
        answer(lock);
      } else if (mayRead()) {
        try {
          read(lock);
        } catch (...) {  // no memory for another chunk
          failure_ = std::current_exception();
          is_reading_ = false;
          to_surveyor_.notify_one();
        }
      } else {
        to_reader_.wait(lock);
      }
    }
    if (has_request_) answer(lock);
  }

  bool mayRead() const {
    if (!is_reading_ || reader_.nextSample() >= limit_) return false;
    return is_live_ || full_.size() < max_chunks_;
  }

  void answer(std::unique_lock<std::mutex>& lock) {
    const double hz = wanted_hz_;
    lock.unlock();
    TuneOutcome outcome = reader_.tune(hz);
    lock.lock();
    if (outcome.answer == kTuneAccepted) {
      // The end of the source stays known.
      const bool has_ended = !full_.empty() && full_.back()->samples == 0;
      full_.erase(full_.begin(), full_.end() - (has_ended ? 1 : 0));
    }
    outcome_ = std::move(outcome);
    has_request_ = false;
    to_surveyor_.notify_one();
  }

  void read(std::unique_lock<std::mutex>& lock) {
    auto chunk = takeFree();
    const uint64_t max_samples = limit_ - reader_.nextSample();
    lock.unlock();
    reader_.fill(*chunk, max_samples, [this] { return has_request_ || !is_reading_; });
    lock.lock();
    if (chunk->samples == 0) is_reading_ = false;
    full_.push_back(std::move(chunk));
    to_surveyor_.notify_one();
  }

  /// A chunk to fill: one that was used before, the last one first, for it is in the cache; a new
  /// one as long as there is room; else the oldest that nobody has taken.
  std::unique_ptr<SampleChunk> takeFree() {
    std::unique_ptr<SampleChunk> chunk;
    if (!free_.empty()) {
      chunk = std::move(free_.back());
      free_.pop_back();
    } else if (full_.size() < max_chunks_) {
      chunk = std::make_unique<SampleChunk>();
    } else {
      chunk = std::move(full_.front());
      full_.pop_front();
      dropped_samples_ += chunk->samples;
    }
    return chunk;
  }

  ChunkReader reader_;
  const bool is_live_;
  const size_t max_chunks_;  ///< that wait for the surveyor
  const std::function<void()> end_reading_;

  mutable std::mutex mutex_;
  std::condition_variable to_reader_;
  std::condition_variable to_surveyor_;
  std::deque<std::unique_ptr<SampleChunk>> full_;
  std::vector<std::unique_ptr<SampleChunk>> free_;
  uint64_t limit_ = 0;  ///< nothing is read before the surveyor asks
  uint64_t dropped_samples_ = 0;
  std::atomic<bool> is_reading_ = true;    ///< read without the mutex, too
  std::atomic<bool> has_request_ = false;  ///< likewise
  bool is_over_ = false;
  std::exception_ptr failure_;  ///< of the reader itself
  double wanted_hz_ = 0.0;
  TuneOutcome outcome_;

  std::unique_ptr<SampleChunk> front_;  ///< the surveyor's
  std::thread thread_;                  ///< last, for it uses the rest
};

}  // namespace

std::unique_ptr<SampleFeed> feedWithReaderThread(ChunkReader reader, bool is_live,
                                                 size_t buffer_bytes,
                                                 std::function<void()> end_reading) {
  return std::make_unique<ThreadedFeed>(std::move(reader), is_live, buffer_bytes,
                                        std::move(end_reading));
}

}  // namespace pelagrim_host
