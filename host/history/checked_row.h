#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

namespace pelagrim_host {

/// The row of a query whose values nobody vouches for. Each reading names the column for the error;
/// all throw HistoryError, which the reader completes with the name of the file.
class CheckedRow {
 public:
  /// `what`: the row, for errors: "dwell 12".
  CheckedRow(SQLite::Statement& row, std::string what) : row_(row), what_(std::move(what)) {}

  int64_t integer(int column, int64_t min = std::numeric_limits<int64_t>::min(),
                  int64_t max = std::numeric_limits<int64_t>::max()) const;
  uint64_t count(int column) const { return static_cast<uint64_t>(integer(column, 0)); }
  uint32_t smallCount(int column) const;

  double real(int column) const;

  /// NULL stands for what is not a number.
  double realOrNan(int column) const;

  std::string text(int column) const;

  /// Valid until the next step of the query.
  std::string_view blob(int column) const;

  [[noreturn]] void refuse(std::string_view why) const;

 private:
  [[noreturn]] void refuse(int column, std::string_view why) const;

  SQLite::Statement& row_;
  std::string what_;
};

}  // namespace pelagrim_host
