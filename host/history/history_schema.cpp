#include "host/history/history_schema.h"

#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>
#include <fmt/format.h>

#include <array>
#include <string>
#include <vector>

#include "host/history/history_values.h"

namespace pelagrim_host {
namespace {

// Step n leads from version n - 1 to n. Steps are never changed once they have been released: old
// records are known by their exact text.
constexpr std::array kSteps = {
    // Anchors, dwells and gaps are numbered in the order in which they happened, all together. A
    // setting that is not a number is NULL.
    R"(
CREATE TABLE runs (
  id INTEGER PRIMARY KEY,
  name TEXT NOT NULL,
  kind INTEGER NOT NULL,
  source TEXT NOT NULL,
  identity TEXT NOT NULL,
  settings TEXT NOT NULL,
  program TEXT NOT NULL,
  receiver TEXT NOT NULL,
  place TEXT NOT NULL,
  start_unix_ms INTEGER NOT NULL,
  ended INTEGER NOT NULL
) STRICT;
CREATE TABLE anchors (
  number INTEGER PRIMARY KEY,
  run INTEGER NOT NULL,
  rate_hz REAL NOT NULL,
  threshold_db REAL,
  raster_hz REAL NOT NULL,
  band_lo_hz REAL,
  band_hi_hz REAL,
  is_channels INTEGER NOT NULL,
  size INTEGER NOT NULL,
  content BLOB NOT NULL
) STRICT;
CREATE TABLE gaps (
  number INTEGER PRIMARY KEY,
  run INTEGER NOT NULL,
  dwells INTEGER NOT NULL,
  first_unix_ms INTEGER NOT NULL,
  last_unix_ms INTEGER NOT NULL
) STRICT;
CREATE TABLE dwells (
  number INTEGER PRIMARY KEY,
  run INTEGER NOT NULL,
  rate_hz REAL NOT NULL,
  centre_hz REAL NOT NULL,
  end_unix_ms INTEGER NOT NULL,
  first_unix_ms INTEGER NOT NULL,
  first_sample INTEGER NOT NULL,
  samples INTEGER NOT NULL,
  frames INTEGER NOT NULL,
  lost_samples INTEGER NOT NULL,
  full_scale_samples INTEGER NOT NULL,
  threshold_db REAL,
  floor_is_sure INTEGER NOT NULL,
  row_frames INTEGER NOT NULL
) STRICT;
CREATE INDEX dwells_by_end ON dwells (end_unix_ms);
CREATE TABLE levels (
  dwell INTEGER PRIMARY KEY,
  kind INTEGER NOT NULL,
  mean BLOB NOT NULL,
  max BLOB NOT NULL,
  low BLOB NOT NULL
) STRICT;
CREATE INDEX exact_levels ON levels (dwell) WHERE kind = 0;
CREATE TABLE detections (
  dwell INTEGER NOT NULL,
  ordinal INTEGER NOT NULL,
  centre_hz REAL NOT NULL,
  width_hz REAL NOT NULL,
  peak_db REAL NOT NULL,
  floor_db REAL NOT NULL,
  PRIMARY KEY (dwell, ordinal)
) STRICT, WITHOUT ROWID;
CREATE TABLE stretches (
  dwell INTEGER NOT NULL,
  ordinal INTEGER NOT NULL,
  low_hz REAL NOT NULL,
  high_hz REAL NOT NULL,
  threshold REAL NOT NULL,
  edges BLOB NOT NULL,
  PRIMARY KEY (dwell, ordinal)
) STRICT, WITHOUT ROWID;
)",
    R"(
CREATE TABLE hours (
  rate_hz REAL NOT NULL,
  centre_hz REAL NOT NULL,
  hour INTEGER NOT NULL,
  dwells INTEGER NOT NULL,
  samples INTEGER NOT NULL,
  mean BLOB NOT NULL,
  max BLOB NOT NULL,
  low BLOB NOT NULL,
  PRIMARY KEY (rate_hz, centre_hz, hour)
) STRICT, WITHOUT ROWID;
)",
};

int pragma(SQLite::Database& database, const char* name) {
  return database.execAndGet(fmt::format("PRAGMA {}", name)).getInt();
}

/// Everything that the schema consists of.
std::vector<std::string> schemaOf(SQLite::Database& database) {
  std::vector<std::string> parts;
  SQLite::Statement rows(database,
                         "SELECT type, name, tbl_name, sql FROM sqlite_schema"
                         " WHERE name NOT LIKE 'sqlite_stat%' ORDER BY type, name");
  while (rows.executeStep()) {
    for (int i = 0; i < 4; ++i) parts.push_back(rows.getColumn(i).getString());
  }
  return parts;
}

std::string newerText(int version) {
  return fmt::format("it was written by a newer version of this program (schema {}, known: {})",
                     version, historyVersion());
}

}  // namespace

int historyVersion() {
  return kSteps.size();
}

void migrateHistory(SQLite::Database& database, int version) {
  SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
  int have = pragma(database, "user_version");
  const int id = pragma(database, "application_id");
  const bool is_empty = have == 0 && id == 0 && schemaOf(database).empty();
  if (!is_empty && id != kHistoryApplicationId) throw HistoryError("it is not a survey's record");
  if (have > historyVersion()) throw HistoryError(newerText(have));
  if (!is_empty) checkHistorySchema(database);
  if (have >= version) return;
  for (; have < version; ++have) database.exec(kSteps[static_cast<size_t>(have)]);
  database.exec(fmt::format("PRAGMA application_id = {}", kHistoryApplicationId));
  database.exec(fmt::format("PRAGMA user_version = {}", version));
  transaction.commit();
}

int checkHistorySchema(SQLite::Database& database) {
  if (pragma(database, "application_id") != kHistoryApplicationId) {
    throw HistoryError("it is not a survey's record");
  }
  const int version = pragma(database, "user_version");
  if (version > historyVersion()) throw HistoryError(newerText(version));
  if (version < 1) throw HistoryError(fmt::format("there is no schema {}", version));
  SQLite::Database ours(":memory:", SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
  for (int i = 0; i < version; ++i) ours.exec(kSteps[static_cast<size_t>(i)]);
  if (schemaOf(database) != schemaOf(ours)) {
    throw HistoryError("its tables are not those of a survey's record");
  }
  return version;
}

}  // namespace pelagrim_host
