#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <vector>

#include "host/history/history_values.h"

namespace pelagrim_host {

// The rows of a record as values, one after the other. All that is read is checked; throws
// HistoryError, which says which row makes no sense and why, and SQLite::Exception.

std::vector<HistoryRun> readRuns(SQLite::Database& database);

enum class DwellOrder { kRecorded, kByEnd };

/// Dwells, from the first to the last of an order.
class DwellRows {
 public:
  /// `from`, `to`: numbers or, by end, Unix milliseconds; `to` is the first one beyond.
  DwellRows(SQLite::Database& database, DwellOrder order, bool with_levels,
            int64_t from = std::numeric_limits<int64_t>::min(),
            int64_t to = std::numeric_limits<int64_t>::max());

  /// Nothing at the end.
  std::optional<HistoryDwell> next();

 private:
  void readDetections(HistoryDwell& dwell);
  void readPlaces(HistoryDwell& dwell);
  void readLevels(HistoryDwell& dwell);

  bool with_levels_;
  SQLite::Statement dwells_;
  SQLite::Statement detections_;
  SQLite::Statement places_;
  SQLite::Statement levels_;
};

template <typename Value>
struct Numbered {
  int64_t number;
  int64_t run;
  Value value;
};

/// Anchors in the order in which they were recorded.
class AnchorRows {
 public:
  AnchorRows(SQLite::Database& database, int64_t from, int64_t to);
  std::optional<Numbered<HistoryAnchor>> next();

 private:
  SQLite::Statement anchors_;
};

/// Gaps, likewise.
class GapRows {
 public:
  GapRows(SQLite::Database& database, int64_t from, int64_t to);
  std::optional<Numbered<HistoryGap>> next();

 private:
  SQLite::Statement gaps_;
};

/// What to do with each part of a record.
struct HistoryVisitor {
  std::function<void(const Numbered<HistoryAnchor>&)> anchor;
  std::function<void(const HistoryDwell&)> dwell;
  std::function<void(const Numbered<HistoryGap>&)> gap;
};

/// Anchors, dwells and gaps, all together, in the order in which they were recorded, for numbers
/// from `from` to before `to`.
void visitRows(SQLite::Database& database, const HistoryVisitor& visitor, bool with_levels,
               int64_t from = std::numeric_limits<int64_t>::min(),
               int64_t to = std::numeric_limits<int64_t>::max());

}  // namespace pelagrim_host
