#pragma once

#include <SQLiteCpp/Database.h>

#include <cstdint>
#include <filesystem>

namespace pelagrim_host {

/// history.sqlite in a survey directory.
std::filesystem::path historyPath(const std::filesystem::path& survey_dir);

/// Whether several processes may not share memory there, which a write-ahead log needs: a network
/// file system, or one that a program serves.
bool isOnNetwork(const std::filesystem::path& directory);

/// Opens a record to write, creates it if there is none, and brings it to the present version.
/// `shares_memory`: it may have a write-ahead log while it is open. Throws HistoryError and
/// SQLite::Exception; a file that is not a record stays as it is.
SQLite::Database openHistoryToWrite(const std::filesystem::path& path, bool shares_memory);

/// Leaves one file with a rollback journal, which can be copied and opened from a read-only place.
/// If somebody is reading, the log stays until the record is closed another time. Throws
/// SQLite::Exception.
void finishHistoryFile(SQLite::Database& database);

/// Opens a record of anybody to read, also from a read-only place and while it is written. Nothing
/// in it can run code, and its schema is checked. Throws HistoryError, naming the file.
SQLite::Database openHistoryToRead(const std::filesystem::path& path);

/// Bytes that the record fills, those of deleted rows excluded.
int64_t usedBytes(SQLite::Database& database);

}  // namespace pelagrim_host
