#pragma once

#include <SQLiteCpp/Database.h>

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <variant>

#include "host/history/history_values.h"

namespace pelagrim_host {

/// Milliseconds of a clock that nobody sets.
int64_t steadyMs();

struct HistoryOptions {
  int64_t limit_bytes = 2'000'000'000;  ///< beyond it, the record is thinned
  std::optional<bool> shares_memory{};  ///< nothing: unless the file is on a network
  int64_t (*steady_ms)() = steadyMs;
};

/// Writes the record of one run at a time. Hold the directory's run lock.
///
/// What it is given waits in memory and is written in one transaction by the thread that calls, at
/// most once a second unless there are hundreds of dwells. Nothing fails: where the file cannot be
/// written, that is said once, rows wait, and when there are too many they become a gap; it goes on
/// when it works again. Not synchronised.
class HistoryWriter {
 public:
  /// `tell` gets a line when writing begins to fail and when it works again, on the calling thread.
  HistoryWriter(std::filesystem::path path, HistoryOptions options,
                std::function<void(const std::string&)> tell);

  /// Writes what waits, but does not note that the run ended in order.
  ~HistoryWriter();
  HistoryWriter(const HistoryWriter&) = delete;
  HistoryWriter& operator=(const HistoryWriter&) = delete;

  void beginRun(HistoryRun run) noexcept;
  void anchor(HistoryAnchor anchor) noexcept;
  void dwell(DwellRecord dwell) noexcept;

  /// A dwell was evaluated of which there is no record.
  void gap(int64_t end_unix_ms) noexcept;

  /// Whether the list cannot be followed until there is another anchor.
  bool needsAnchor() const { return needs_anchor_; }

  /// Writes what waits, whenever the last time was.
  void flush() noexcept;

  /// The run has ended in order: writes what waits and leaves one file that can be copied.
  void end() noexcept;

 private:
  struct RunEnd {};
  using Entry = std::variant<HistoryRun, HistoryAnchor, DwellRecord, HistoryGap, RunEnd>;

  template <typename Value>
  void append(Value value) noexcept;
  void addToGap(const HistoryGap& gap) noexcept;
  void write();
  void store(const Entry& entry, int64_t number);
  void keepWithinLimit();
  void tellFailure(const char* why) noexcept;
  void giveUpWaiting() noexcept;

  std::filesystem::path path_;
  HistoryOptions options_;
  std::function<void(const std::string&)> tell_;
  std::optional<SQLite::Database> database_;
  std::deque<Entry> waiting_;
  HistoryGap gap_;   ///< after all that waits
  int64_t run_ = 0;  ///< its id; 0 before the first
  bool needs_anchor_ = true;
  bool fails_ = false;
  std::optional<int64_t> last_write_ms_;  ///< or the last attempt
};

}  // namespace pelagrim_host
