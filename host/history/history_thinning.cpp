#include "host/history/history_thinning.h"

#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/history/blob_code.h"
#include "host/history/history_file.h"
#include "host/history/history_rows.h"
#include "host/history/history_store.h"
#include "host/history/replay.h"
#include "survey/spectrum.h"

namespace pelagrim_host {
namespace {

constexpr int kStepDwells = 32;

/// Rounds the oldest exact levels. Returns how many there were.
size_t roundLevels(SQLite::Database& database) {
  SQLite::Statement oldest(
      database,
      "SELECT dwell, mean FROM levels WHERE kind = 0 AND dwell <="
      " (SELECT (min(dwell) + max(dwell)) / 2 FROM levels) ORDER BY dwell LIMIT ?");
  oldest.bind(1, kStepDwells);
  std::vector<std::pair<int64_t, std::string>> rounded;
  while (oldest.executeStep()) {
    const std::string exact = oldest.getColumn(1).getString();
    rounded.emplace_back(oldest.getColumn(0).getInt64(),
                         packCentibels(unpackExactLevels(exact, pelagrim::kSpectrumBins)));
  }
  SQLite::Statement update(database, "UPDATE levels SET kind = 1, mean = ? WHERE dwell = ?");
  for (const auto& [dwell, mean] : rounded) {
    update.reset();
    update.bind(1, static_cast<const void*>(mean.data()), static_cast<int>(mean.size()));
    update.bind(2, dwell);
    update.exec();
  }
  return rounded.size();
}

size_t dropLevels(SQLite::Database& database) {
  SQLite::Statement oldest(database,
                           "DELETE FROM levels WHERE dwell IN"
                           " (SELECT dwell FROM levels ORDER BY dwell LIMIT ?)");
  oldest.bind(1, kStepDwells);
  return static_cast<size_t>(oldest.exec());
}

/// The number of the last of the oldest dwells; nothing where only one is left.
std::optional<int64_t> lastOfOldest(SQLite::Database& database) {
  SQLite::Statement oldest(database,
                           "SELECT max(number), count(*) FROM (SELECT number FROM dwells"
                           " WHERE number < (SELECT max(number) FROM dwells)"
                           " ORDER BY number LIMIT ?)");
  oldest.bind(1, kStepDwells);
  if (!oldest.executeStep() || oldest.getColumn(1).getInt() == 0) return std::nullopt;
  return oldest.getColumn(0).getInt64();
}

/// Puts what follows from the oldest dwells in their place: an anchor, or a gap if the list cannot
/// be followed there.
bool dropDwells(SQLite::Database& database) {
  const auto last = lastOfOldest(database);
  if (!last) return false;
  int64_t run = 0;
  std::optional<Replay> replay;
  HistoryGap gap;
  HistoryVisitor visitor;
  visitor.anchor = [&](const Numbered<HistoryAnchor>& anchor) {
    run = anchor.run;
    replay.emplace(anchor.value);
    gap = {};
  };
  visitor.dwell = [&](const HistoryDwell& dwell) {
    run = dwell.run;
    if (replay) replay->add(dwell.record);
    if (!replay && gap.dwells++ == 0) gap.first_unix_ms = dwell.record.end_unix_ms;
    gap.last_unix_ms = dwell.record.end_unix_ms;
  };
  visitor.gap = [&](const Numbered<HistoryGap>& missing) {
    run = missing.run;
    replay.reset();
    if (gap.dwells == 0) gap.first_unix_ms = missing.value.first_unix_ms;
    gap.dwells += missing.value.dwells;
    gap.last_unix_ms = missing.value.last_unix_ms;
  };
  visitRows(database, visitor, false, std::numeric_limits<int64_t>::min(), *last + 1);
  for (const auto& [table, column] : {std::pair{"anchors", "number"},
                                      {"gaps", "number"},
                                      {"dwells", "number"},
                                      {"detections", "dwell"},
                                      {"stretches", "dwell"},
                                      {"levels", "dwell"}}) {
    SQLite::Statement rows(database,
                           std::string("DELETE FROM ") + table + " WHERE " + column + " <= ?");
    rows.bind(1, *last);
    rows.exec();
  }
  if (replay) {
    storeAnchor(database, *last, run, replay->anchor());
  } else {
    storeGap(database, *last, run, gap);
  }
  return true;
}

}  // namespace

bool thinHistory(SQLite::Database& database, int64_t limit_bytes) {
  if (usedBytes(database) <= limit_bytes) return false;
  SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
  const bool done = roundLevels(database) > 0 || dropLevels(database) > 0 || dropDwells(database);
  transaction.commit();
  return done;
}

}  // namespace pelagrim_host
