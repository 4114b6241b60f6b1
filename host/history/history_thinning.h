#pragma once

#include <SQLiteCpp/Database.h>

#include <cstdint>

namespace pelagrim_host {

/// Takes a step towards `limit_bytes` if the record fills more: exact levels become centibels,
/// oldest first, up to the middle of those dwells that have levels; then the oldest levels are
/// dropped; then whole dwells, and an anchor with all digits takes their place, so that the list
/// can be followed as before. A step covers some dozen dwells, in a
/// transaction of its own. Returns whether it did anything. Throws SQLite::Exception and
/// HistoryError.
bool thinHistory(SQLite::Database& database, int64_t limit_bytes);

}  // namespace pelagrim_host
