#include "host/evidence/evidence_thread.h"

#include <utility>

#include "host/process/signals.h"

namespace pelagrim_host {
namespace {

constexpr size_t kMaxWaitingSamples = size_t{1} << 22;  // 32 MiB

template <typename... Handlers>
struct Overloaded : Handlers... {
  using Handlers::operator()...;
};
template <typename... Handlers>
Overloaded(Handlers...) -> Overloaded<Handlers...>;  // clang 14 does not find it by itself

}  // namespace

EvidenceThread::EvidenceThread(Hooks hooks, bool may_wait, double resolution_seconds)
    : hooks_(std::move(hooks)),
      may_wait_(may_wait),
      observer_(resolution_seconds),
      thread_([this] { run(); }) {}

EvidenceThread::~EvidenceThread() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  to_observer_.notify_one();
  thread_.join();
}

// ---- the surveyor's side ------------------------------------------------------------------------

void EvidenceThread::started(double rate_hz, double centre_hz) {
  append(Start{{rate_hz, centre_hz}, hooks_.start()});
}

void EvidenceThread::samples(std::span<const std::complex<float>> block, int64_t first_unix_ms,
                             uint64_t lost_samples) {
  const uint64_t lost = lost_samples - std::exchange(lost_before_, lost_samples);
  std::vector<std::complex<float>> copy;
  {
    std::unique_lock lock(mutex_);
    const auto has_room = [this] { return waiting_samples_ <= kMaxWaitingSamples; };
    if (may_wait_) to_surveyor_.wait(lock, has_room);
    if (!has_room()) {
      if (!std::holds_alternative<Dropped>(events_.back())) events_.push_back(Dropped{0});
      std::get<Dropped>(events_.back()).samples += block.size();
      return;
    }
    waiting_samples_ += block.size();
    if (!free_.empty()) {
      copy = std::move(free_.back());
      free_.pop_back();
    }
  }
  copy.assign(block.begin(), block.end());
  append(Samples{std::move(copy), first_unix_ms, lost});
}

void EvidenceThread::dwellEvaluated(int64_t unix_ms) {
  append(Evaluated{unix_ms});
}

void EvidenceThread::retuned(double centre_hz) {
  append(Retuned{centre_hz});
}

void EvidenceThread::append(Event event) {
  {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
  }
  to_observer_.notify_one();
}

// ---- the observer's side ------------------------------------------------------------------------

void EvidenceThread::run() {
  leaveSignalsToOtherThreads();
  std::unique_lock lock(mutex_);
  while (true) {
    to_observer_.wait(lock, [this] { return ending_ || !events_.empty(); });
    if (events_.empty()) return;
    Event event = std::move(events_.front());
    events_.pop_front();
    lock.unlock();
    observe(event);
    lock.lock();
    if (auto* const samples = std::get_if<Samples>(&event)) {
      waiting_samples_ -= samples->block.size();
      free_.push_back(std::move(samples->block));
      to_surveyor_.notify_one();
    }
  }
}

void EvidenceThread::observe(Event& event) {
  std::visit(Overloaded{
                 [&](const Start& start) {
                   if (start.with.begun) start.with.begun();
                   observer_.start(start.slice, start.with.known, start.with.threshold_db);
                   lost_samples_ = 0;
                 },
                 [&](const Samples& samples) {
                   lost_samples_ += samples.lost;
                   observer_.take(samples.block, samples.first_unix_ms);
                 },
                 [&](const Evaluated& evaluated) {
                   auto record = observer_.finishDwell(evaluated.unix_ms);
                   if (record) {
                     record->lost_samples = lost_samples_;
                     hooks_.record(*record);
                   } else {
                     hooks_.gap(evaluated.unix_ms);
                   }
                   lost_samples_ = 0;
                 },
                 [&](const Retuned& retuned) {
                   observer_.retune(retuned.centre_hz);
                   lost_samples_ = 0;
                 },
                 [&](const Dropped& dropped) { observer_.skip(dropped.samples); },
             },
             event);
}

}  // namespace pelagrim_host
