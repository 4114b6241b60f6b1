#include "host/history/history_writer.h"

#include <SQLiteCpp/Transaction.h>
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

#include "host/history/history_file.h"
#include "host/history/history_store.h"
#include "host/history/history_thinning.h"
#include "host/history/value_check.h"

namespace pelagrim_host {
namespace {

constexpr int64_t kWriteEveryMs = 1000;
constexpr size_t kMaxWaiting = 512;  // of about 15 kB each
constexpr int kMaxSteps = 16;        // of thinning, at a time: some 10 ms each

}  // namespace

int64_t steadyMs() {
  using std::chrono::milliseconds;
  return std::chrono::duration_cast<milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

HistoryWriter::HistoryWriter(std::filesystem::path path, HistoryOptions options,
                             std::function<void(const std::string&)> tell)
    : path_(std::move(path)), options_(options), tell_(std::move(tell)) {}

HistoryWriter::~HistoryWriter() {
  flush();
}

void HistoryWriter::beginRun(HistoryRun run) noexcept {
  needs_anchor_ = true;
  append(std::move(run));
}

void HistoryWriter::anchor(HistoryAnchor anchor) noexcept {
  if (!whatIsWrong(anchor).empty()) return;
  needs_anchor_ = false;
  append(std::move(anchor));
}

void HistoryWriter::dwell(DwellRecord dwell) noexcept {
  if (!whatIsWrong(dwell).empty()) return gap(dwell.end_unix_ms);
  append(std::move(dwell));
}

void HistoryWriter::gap(int64_t end_unix_ms) noexcept {
  addToGap({.dwells = 1, .first_unix_ms = end_unix_ms, .last_unix_ms = end_unix_ms});
}

void HistoryWriter::addToGap(const HistoryGap& gap) noexcept {
  if (gap.dwells == 0) return;
  if (gap_.dwells == 0) gap_.first_unix_ms = gap.first_unix_ms;
  gap_.dwells += gap.dwells;
  gap_.last_unix_ms = gap.last_unix_ms;
  needs_anchor_ = true;
}

/// Lets a value wait, after the gap before it. Writes if it is time.
template <typename Value>
void HistoryWriter::append(Value value) noexcept {
  try {
    if (waiting_.size() >= kMaxWaiting && !fails_) flush();
    if (waiting_.size() >= kMaxWaiting) giveUpWaiting();
    if (gap_.dwells > 0) {
      waiting_.emplace_back(gap_);
      gap_ = {};
    }
    waiting_.emplace_back(std::move(value));
  } catch (const std::exception&) {  // no memory, and the value has not been moved
    if constexpr (std::is_same_v<Value, DwellRecord>) gap(value.end_unix_ms);
    needs_anchor_ = true;
    return;
  }
  if (!last_write_ms_ || options_.steady_ms() - *last_write_ms_ >= kWriteEveryMs) flush();
}

/// Too much waits: the dwells become a gap. Runs are kept.
void HistoryWriter::giveUpWaiting() noexcept {
  HistoryGap lost;
  const auto lose = [&](const HistoryGap& gap) {
    if (lost.dwells == 0) lost.first_unix_ms = gap.first_unix_ms;
    lost.dwells += gap.dwells;
    lost.last_unix_ms = gap.last_unix_ms;
  };
  const auto is_lost = [&](const Entry& entry) {
    if (const auto* const dwell = std::get_if<DwellRecord>(&entry)) {
      lose({1, dwell->end_unix_ms, dwell->end_unix_ms});
      return true;
    }
    if (const auto* const gap = std::get_if<HistoryGap>(&entry)) {
      lose(*gap);
      return true;
    }
    return std::holds_alternative<HistoryAnchor>(entry);
  };
  waiting_.erase(std::remove_if(waiting_.begin(), waiting_.end(), is_lost), waiting_.end());
  if (gap_.dwells > 0) lose(gap_);
  gap_ = {};
  addToGap(lost);
  needs_anchor_ = true;
}

void HistoryWriter::flush() noexcept {
  last_write_ms_ = options_.steady_ms();
  if (waiting_.empty() && gap_.dwells == 0) return;
  try {
    write();
  } catch (const std::exception& failure) {
    database_.reset();  // whatever is wrong with it, the next attempt begins anew
    tellFailure(failure.what());
    return;
  }
  if (std::exchange(fails_, false)) {
    try {
      tell_(fmt::format("{} is written again", path_.string()));
    } catch (const std::exception&) {
    }
  }
  try {
    keepWithinLimit();
  } catch (const std::exception& failure) {
    tellFailure(failure.what());
  }
}

void HistoryWriter::write() {
  if (!database_) {
    const bool shares = options_.shares_memory.value_or(
        !isOnNetwork(path_.has_parent_path() ? path_.parent_path() : "."));
    database_.emplace(openHistoryToWrite(path_, shares));
  }
  const int64_t run_before = run_;
  try {
    SQLite::Transaction transaction(*database_, SQLite::TransactionBehavior::IMMEDIATE);
    int64_t number = nextNumber(*database_);
    for (const Entry& entry : waiting_) store(entry, number++);
    if (gap_.dwells > 0) storeGap(*database_, number, run_, gap_);
    transaction.commit();
  } catch (...) {
    run_ = run_before;
    throw;
  }
  waiting_.clear();
  gap_ = {};
}

void HistoryWriter::store(const Entry& entry, int64_t number) {
  if (const auto* const run = std::get_if<HistoryRun>(&entry)) run_ = storeRun(*database_, *run);
  if (const auto* const anchor = std::get_if<HistoryAnchor>(&entry)) {
    storeAnchor(*database_, number, run_, *anchor);
  }
  if (const auto* const dwell = std::get_if<DwellRecord>(&entry)) {
    storeDwell(*database_, number, run_, *dwell);
  }
  if (const auto* const gap = std::get_if<HistoryGap>(&entry)) {
    storeGap(*database_, number, run_, *gap);
  }
  if (std::holds_alternative<RunEnd>(entry)) storeRunEnd(*database_, run_);
}

void HistoryWriter::keepWithinLimit() {
  int steps = 0;
  while (steps < kMaxSteps && thinHistory(*database_, options_.limit_bytes)) ++steps;
  if (steps > 0) database_->exec("PRAGMA incremental_vacuum");
}

void HistoryWriter::tellFailure(const char* why) noexcept {
  if (std::exchange(fails_, true)) return;
  try {
    tell_(fmt::format("{} cannot be written: {}; the survey goes on without it", path_.string(),
                      why));
  } catch (const std::exception&) {
  }
}

void HistoryWriter::end() noexcept {
  append(RunEnd{});
  flush();
  if (!database_) return;
  try {
    finishHistoryFile(*database_);
  } catch (const std::exception&) {
    // Somebody is reading; the file is whole with its log beside it.
  }
  database_.reset();
}

}  // namespace pelagrim_host
