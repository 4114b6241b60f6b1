#pragma once

#include <SQLiteCpp/Database.h>

namespace pelagrim_host {

/// In the file's header: marks a record of this program.
inline constexpr int kHistoryApplicationId = 0x50656c67;

/// The version of the schema that this program writes. It reads all from 1 on.
int historyVersion();

/// Brings an empty database or one of an older version up to `version`, in one transaction. Throws
/// HistoryError, and changes nothing, if it belongs to another program or is newer; throws
/// SQLite::Exception.
void migrateHistory(SQLite::Database& database, int version = historyVersion());

/// The version of a record. Throws HistoryError unless the database is one: with its application
/// id, a known version, and exactly the tables and indices of that version, so that there is
/// nothing in it that could run, such as a view or a trigger.
int checkHistorySchema(SQLite::Database& database);

}  // namespace pelagrim_host
