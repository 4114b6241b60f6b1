#include "host/history/history_store.h"

#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/VariadicBind.h>

#include <string>

#include "host/history/blob_code.h"
#include "survey/spectrum.h"

namespace pelagrim_host {
namespace {

void bindBytes(SQLite::Statement& row, int index, const std::string& bytes) {
  row.bind(index, static_cast<const void*>(bytes.data()), static_cast<int>(bytes.size()));
}

int64_t toInteger(uint64_t count) {
  return static_cast<int64_t>(count);
}

void storeDetections(SQLite::Database& database, int64_t number, const DwellRecord& dwell) {
  SQLite::Statement row(database, "INSERT INTO detections VALUES (?, ?, ?, ?, ?, ?)");
  int64_t ordinal = 0;
  for (const pelagrim::Detection& found : dwell.detections) {
    row.reset();
    SQLite::bind(row, number, ordinal++, found.centre_hz, found.width_hz, found.peak_db,
                 found.floor_db);
    row.exec();
  }
}

void storePlaces(SQLite::Database& database, int64_t number, const DwellRecord& dwell) {
  SQLite::Statement row(database, "INSERT INTO stretches VALUES (?, ?, ?, ?, ?, ?)");
  int64_t ordinal = 0;
  for (const WatchedPlace& place : dwell.places) {
    row.reset();
    SQLite::bind(row, number, ordinal++, place.low_hz, place.high_hz, place.threshold);
    bindBytes(row, 6, packEdges(place.edges_ms));
    row.exec();
  }
}

void storeLevels(SQLite::Database& database, int64_t number, const DwellRecord& dwell) {
  const auto is_whole = [](const std::vector<float>& levels_db) {
    return levels_db.size() == pelagrim::kSpectrumBins;
  };
  if (!is_whole(dwell.mean_db) || !is_whole(dwell.max_db) || !is_whole(dwell.low_db)) return;
  SQLite::Statement row(database, "INSERT INTO levels VALUES (?, ?, ?, ?, ?)");
  SQLite::bind(row, number, static_cast<int>(KeptLevels::kExact));
  bindBytes(row, 3, packExactLevels(dwell.mean_db));
  bindBytes(row, 4, packCentibels(dwell.max_db));
  bindBytes(row, 5, packCentibels(dwell.low_db));
  row.exec();
}

}  // namespace

int64_t nextNumber(SQLite::Database& database) {
  return 1 + database
                 .execAndGet(
                     "SELECT max(ifnull((SELECT max(number) FROM anchors), 0),"
                     " ifnull((SELECT max(number) FROM dwells), 0),"
                     " ifnull((SELECT max(number) FROM gaps), 0))")
                 .getInt64();
}

int64_t storeRun(SQLite::Database& database, const HistoryRun& run) {
  SQLite::Statement row(database,
                        "INSERT INTO runs (name, kind, source, identity, settings, program,"
                        " receiver, place, start_unix_ms, ended)"
                        " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0)");
  SQLite::bind(row, run.name, static_cast<int>(run.kind), run.source, run.identity, run.settings,
               run.program, run.receiver, run.place, run.start_unix_ms);
  row.exec();
  return database.getLastInsertRowid();
}

void storeRunEnd(SQLite::Database& database, int64_t run) {
  SQLite::Statement row(database, "UPDATE runs SET ended = 1 WHERE id = ?");
  row.bind(1, run);
  row.exec();
}

void storeAnchor(SQLite::Database& database, int64_t number, int64_t run,
                 const HistoryAnchor& anchor) {
  SQLite::Statement row(database, "INSERT INTO anchors VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  const size_t size = anchor.channels ? anchor.channels->size() : anchor.list.size();
  SQLite::bind(row, number, run, anchor.rate_hz, anchor.threshold_db, anchor.raster_hz,
               anchor.band_lo_hz, anchor.band_hi_hz, anchor.channels ? 1 : 0, toInteger(size));
  bindBytes(row, 10, anchor.channels ? packChannels(*anchor.channels) : packText(anchor.list));
  row.exec();
}

void storeGap(SQLite::Database& database, int64_t number, int64_t run, const HistoryGap& gap) {
  SQLite::Statement row(database, "INSERT INTO gaps VALUES (?, ?, ?, ?, ?)");
  SQLite::bind(row, number, run, toInteger(gap.dwells), gap.first_unix_ms, gap.last_unix_ms);
  row.exec();
}

void storeDwell(SQLite::Database& database, int64_t number, int64_t run, const DwellRecord& dwell) {
  SQLite::Statement row(database,
                        "INSERT INTO dwells VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  SQLite::bind(row, number, run, dwell.slice.sample_rate_hz, dwell.slice.centre_hz,
               dwell.end_unix_ms, dwell.first_unix_ms, toInteger(dwell.first_sample),
               toInteger(dwell.samples), int64_t{dwell.frames}, toInteger(dwell.lost_samples),
               toInteger(dwell.full_scale_samples), dwell.threshold_db, dwell.floor_is_sure ? 1 : 0,
               int64_t{dwell.row_frames});
  row.exec();
  storeDetections(database, number, dwell);
  storePlaces(database, number, dwell);
  storeLevels(database, number, dwell);
}

}  // namespace pelagrim_host
