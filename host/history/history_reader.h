#pragma once

#include <SQLiteCpp/Database.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "host/history/history_rows.h"
#include "host/history/history_values.h"

namespace pelagrim_host {

/// Reads a record, anybody's, also while it is written. All that it gives is checked: a damaged or
/// made-up file gives errors, never nonsense. Every call sees the record as it is at one moment.
/// Not synchronised. Everything throws HistoryError, naming the file.
class HistoryReader {
 public:
  explicit HistoryReader(const std::filesystem::path& path);

  std::vector<HistoryRun> runs();

  /// Anchors, dwells and gaps in the order in which they were recorded, so that a list can be
  /// followed.
  void visit(const HistoryVisitor& visitor, bool with_levels);

  /// Dwells that ended from `from_unix_ms` to before `to_unix_ms`, in that order.
  void visitDwells(const std::function<void(const HistoryDwell&)>& dwell, bool with_levels,
                   int64_t from_unix_ms = std::numeric_limits<int64_t>::min(),
                   int64_t to_unix_ms = std::numeric_limits<int64_t>::max());

 private:
  template <typename Work>
  auto reading(const Work& work);

  std::string name_;
  SQLite::Database database_;
};

}  // namespace pelagrim_host
