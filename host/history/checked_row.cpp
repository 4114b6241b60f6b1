#include "host/history/checked_row.h"

#include <SQLiteCpp/Column.h>
#include <fmt/format.h>

#include "host/history/history_values.h"

namespace pelagrim_host {

void CheckedRow::refuse(std::string_view why) const {
  throw HistoryError(fmt::format("{} makes no sense: {}", what_, why));
}

void CheckedRow::refuse(int column, std::string_view why) const {
  refuse(fmt::format("{} {}", row_.getColumnName(column), why));
}

int64_t CheckedRow::integer(int column, int64_t min, int64_t max) const {
  const SQLite::Column value = row_.getColumn(column);
  if (!value.isInteger()) refuse(column, "is not a whole number");
  const int64_t number = value.getInt64();
  if (number < min || number > max) refuse(column, fmt::format("cannot be {}", number));
  return number;
}

uint32_t CheckedRow::smallCount(int column) const {
  return static_cast<uint32_t>(integer(column, 0, std::numeric_limits<uint32_t>::max()));
}

double CheckedRow::real(int column) const {
  const SQLite::Column value = row_.getColumn(column);
  if (!value.isFloat() && !value.isInteger()) refuse(column, "is not a number");
  return value.getDouble();
}

double CheckedRow::realOrNan(int column) const {
  if (row_.getColumn(column).isNull()) return std::numeric_limits<double>::quiet_NaN();
  return real(column);
}

std::string CheckedRow::text(int column) const {
  const SQLite::Column value = row_.getColumn(column);
  if (!value.isText()) refuse(column, "is not a text");
  return value.getString();
}

std::string_view CheckedRow::blob(int column) const {
  const SQLite::Column value = row_.getColumn(column);
  if (!value.isBlob()) refuse(column, "does not hold bytes");
  const void* const bytes = value.getBlob();
  return {static_cast<const char*>(bytes), static_cast<size_t>(value.getBytes())};
}

}  // namespace pelagrim_host
