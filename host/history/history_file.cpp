#include "host/history/history_file.h"

#include <SQLiteCpp/Exception.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <sys/vfs.h>

#include <algorithm>
#include <string>
#include <system_error>

#include "host/history/history_schema.h"
#include "host/history/history_values.h"

namespace pelagrim_host {
namespace {

namespace fs = std::filesystem;

constexpr int kBusyMs = 2000;
constexpr int kMaxValueBytes = 1 << 28;

// Types of file systems as statfs gives them; see its manual page.
constexpr uint32_t kNetworkTypes[] = {
    0x6969,      // NFS
    0x517B,      // SMB
    0xFE534D42,  // SMB 2
    0xFF534D42,  // CIFS
    0x65735546,  // FUSE
    0x01021997,  // 9P
    0x5346414F,  // AFS
    0x6B414653,  // AFS of the kernel
    0x00C36400,  // Ceph
    0x0BD00BD0,  // Lustre
    0x73757245,  // Coda
};

std::string fileUri(const fs::path& path) {
  std::string uri = "file:";
  for (const char c : fs::absolute(path).string()) {
    const bool plain = c != '?' && c != '#' && c != '%';
    if (plain) {
      uri += c;
    } else {
      uri += fmt::format("%{:02X}", static_cast<unsigned>(c));
    }
  }
  return uri;
}

SQLite::Database openStrangers(const fs::path& path, bool immutable) {
  const std::string uri = fileUri(path) + (immutable ? "?immutable=1" : "");
  SQLite::Database database(uri, SQLite::OPEN_READONLY | SQLite::OPEN_URI, kBusyMs);
  sqlite3* const handle = database.getHandle();
  int ignored = 0;
  sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, &ignored);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, &ignored);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_VIEW, 0, &ignored);
  sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, kMaxValueBytes);
  database.exec("PRAGMA trusted_schema = OFF");
  database.exec("PRAGMA cell_size_check = ON");
  database.exec("PRAGMA mmap_size = 0");
  checkHistorySchema(database);
  return database;
}

bool cannotBeShared(const SQLite::Exception& failure) {
  const int code = failure.getErrorCode();
  return code == SQLITE_CANTOPEN || code == SQLITE_READONLY;
}

}  // namespace

fs::path historyPath(const fs::path& survey_dir) {
  return survey_dir / "history.sqlite";
}

bool isOnNetwork(const fs::path& directory) {
  struct statfs facts {};
  if (statfs(directory.c_str(), &facts) != 0) return true;  // the careful assumption
  const auto type = static_cast<uint32_t>(facts.f_type);
  return std::find(std::begin(kNetworkTypes), std::end(kNetworkTypes), type) !=
         std::end(kNetworkTypes);
}

SQLite::Database openHistoryToWrite(const fs::path& path, bool shares_memory) {
  SQLite::Database database(path.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, kBusyMs);
  database.exec("PRAGMA trusted_schema = OFF");
  database.exec("PRAGMA auto_vacuum = INCREMENTAL");  // counts only before there are tables
  migrateHistory(database);
  database.exec(shares_memory ? "PRAGMA journal_mode = WAL" : "PRAGMA journal_mode = DELETE");
  // What has been committed survives a power cut.
  database.exec("PRAGMA synchronous = FULL");
  return database;
}

void finishHistoryFile(SQLite::Database& database) {
  database.exec("PRAGMA journal_mode = DELETE");
}

SQLite::Database openHistoryToRead(const fs::path& path) {
  try {
    std::error_code error;
    if (!fs::exists(path, error)) throw HistoryError("there is no such file");
    if (!fs::is_regular_file(path, error)) throw HistoryError("it is not a regular file");
    try {
      return openStrangers(path, false);
    } catch (const SQLite::Exception& failure) {
      if (!cannotBeShared(failure)) throw;
      // The memory for a write-ahead log cannot be created. That log is missed if it holds
      // anything; else the file is all there is, and nobody can be writing.
      const fs::path log = path.string() + "-wal";
      const auto waiting = fs::file_size(log, error);
      if (!error && waiting > 0) {
        throw HistoryError(
            "its last run was cut off, and it cannot be put in order in a read-only place: copy "
            "it, with all files whose names begin like it, to where it can be written");
      }
      return openStrangers(path, true);
    }
  } catch (const SQLite::Exception& failure) {
    throw HistoryError(fmt::format("{} cannot be read: {}", path.string(), failure.what()));
  } catch (const HistoryError& failure) {
    throw HistoryError(fmt::format("{} cannot be read: {}", path.string(), failure.what()));
  }
}

int64_t usedBytes(SQLite::Database& database) {
  const int64_t pages = database.execAndGet("PRAGMA page_count").getInt64();
  const int64_t free = database.execAndGet("PRAGMA freelist_count").getInt64();
  return (pages - free) * database.execAndGet("PRAGMA page_size").getInt64();
}

}  // namespace pelagrim_host
