#pragma once

#include <SQLiteCpp/Database.h>

#include <cstdint>

#include "host/history/history_values.h"

namespace pelagrim_host {

// Values as rows of a record, within the caller's transaction. All throw SQLite::Exception.

/// The number that follows those of all anchors, dwells and gaps.
int64_t nextNumber(SQLite::Database& database);

/// Returns the run's id; the one in `run` is ignored.
int64_t storeRun(SQLite::Database& database, const HistoryRun& run);

/// The run ended in order.
void storeRunEnd(SQLite::Database& database, int64_t run);

void storeAnchor(SQLite::Database& database, int64_t number, int64_t run,
                 const HistoryAnchor& anchor);
void storeGap(SQLite::Database& database, int64_t number, int64_t run, const HistoryGap& gap);
void storeDwell(SQLite::Database& database, int64_t number, int64_t run, const DwellRecord& dwell);

}  // namespace pelagrim_host
