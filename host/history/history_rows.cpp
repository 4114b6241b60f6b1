#include "host/history/history_rows.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "host/history/blob_code.h"
#include "host/history/checked_row.h"
#include "host/history/value_check.h"
#include "survey/spectrum.h"

namespace pelagrim_host {
namespace {

using pelagrim::kSpectrumBins;

constexpr int64_t kMaxAnchorBytes = 100'000'000;

std::string dwellQuery(DwellOrder order) {
  const auto* const columns =
      "SELECT number, run, rate_hz, centre_hz, end_unix_ms, first_unix_ms, first_sample, samples,"
      " frames, lost_samples, full_scale_samples, threshold_db, floor_is_sure, row_frames"
      " FROM dwells";
  return fmt::format("{} {}", columns,
                     order == DwellOrder::kByEnd
                         ? "WHERE end_unix_ms >= ? AND end_unix_ms < ? ORDER BY end_unix_ms, number"
                         : "WHERE number >= ? AND number < ? ORDER BY number");
}

void bindRange(SQLite::Statement& query, int64_t from, int64_t to) {
  query.bind(1, from);
  query.bind(2, to);
}

/// The bytes of a column, unpacked; what is wrong with them becomes an error of the row.
template <typename Unpack>
auto unpacked(const CheckedRow& row, int column, const Unpack& unpack) {
  try {
    return unpack(row.blob(column));
  } catch (const BlobError& failure) {
    row.refuse(failure.what());
  }
}

template <typename Value>
void refuseNonsense(const CheckedRow& row, const Value& value) {
  const std::string_view wrong = whatIsWrong(value);
  if (!wrong.empty()) row.refuse(wrong);
}

}  // namespace

std::vector<HistoryRun> readRuns(SQLite::Database& database) {
  SQLite::Statement rows(database,
                         "SELECT id, name, kind, source, identity, settings, program, receiver,"
                         " place, start_unix_ms, ended FROM runs ORDER BY id");
  std::vector<HistoryRun> runs;
  while (rows.executeStep()) {
    const CheckedRow row(rows, fmt::format("run {}", rows.getColumn(0).getInt64()));
    runs.push_back({.id = row.integer(0),
                    .name = row.text(1),
                    .kind = static_cast<HistorySource>(row.integer(2, 0, 2)),
                    .source = row.text(3),
                    .identity = row.text(4),
                    .settings = row.text(5),
                    .program = row.text(6),
                    .receiver = row.text(7),
                    .place = row.text(8),
                    .start_unix_ms = row.integer(9),
                    .ended = row.integer(10, 0, 1) == 1});
  }
  return runs;
}

// ---- dwells -------------------------------------------------------------------------------------

DwellRows::DwellRows(SQLite::Database& database, DwellOrder order, bool with_levels, int64_t from,
                     int64_t to)
    : with_levels_(with_levels),
      dwells_(database, dwellQuery(order)),
      detections_(database,
                  "SELECT centre_hz, width_hz, peak_db, floor_db FROM detections"
                  " WHERE dwell = ? ORDER BY ordinal"),
      places_(database,
              "SELECT low_hz, high_hz, threshold, edges FROM stretches"
              " WHERE dwell = ? ORDER BY ordinal"),
      levels_(database, "SELECT kind, mean, max, low FROM levels WHERE dwell = ?") {
  bindRange(dwells_, from, to);
}

std::optional<HistoryDwell> DwellRows::next() {
  if (!dwells_.executeStep()) return std::nullopt;
  const CheckedRow row(dwells_, fmt::format("dwell {}", dwells_.getColumn(0).getInt64()));
  HistoryDwell dwell;
  dwell.number = row.integer(0);
  dwell.run = row.integer(1);
  DwellRecord& record = dwell.record;
  record.slice = {.sample_rate_hz = row.real(2), .centre_hz = row.real(3)};
  record.end_unix_ms = row.integer(4);
  record.first_unix_ms = row.integer(5);
  record.first_sample = row.count(6);
  record.samples = row.count(7);
  record.frames = row.smallCount(8);
  record.lost_samples = row.count(9);
  record.full_scale_samples = row.count(10);
  record.threshold_db = row.realOrNan(11);
  record.floor_is_sure = row.integer(12, 0, 1) == 1;
  record.row_frames = row.smallCount(13);
  readDetections(dwell);
  readPlaces(dwell);
  if (with_levels_) readLevels(dwell);
  refuseNonsense(row, record);
  return dwell;
}

void DwellRows::readDetections(HistoryDwell& dwell) {
  detections_.reset();
  detections_.bind(1, dwell.number);
  const CheckedRow row(detections_, fmt::format("a detection of dwell {}", dwell.number));
  while (detections_.executeStep()) {
    dwell.record.detections.push_back({.centre_hz = row.real(0),
                                       .width_hz = row.real(1),
                                       .peak_db = row.real(2),
                                       .floor_db = row.real(3)});
  }
}

void DwellRows::readPlaces(HistoryDwell& dwell) {
  places_.reset();
  places_.bind(1, dwell.number);
  const CheckedRow row(places_, fmt::format("a place of dwell {}", dwell.number));
  while (places_.executeStep()) {
    dwell.record.places.push_back({.low_hz = row.real(0),
                                   .high_hz = row.real(1),
                                   .threshold = row.real(2),
                                   .edges_ms = unpacked(row, 3, unpackEdges)});
  }
}

void DwellRows::readLevels(HistoryDwell& dwell) {
  levels_.reset();
  levels_.bind(1, dwell.number);
  if (!levels_.executeStep()) return;
  const CheckedRow row(levels_, fmt::format("the levels of dwell {}", dwell.number));
  const auto exact = [](std::string_view bytes) { return unpackExactLevels(bytes, kSpectrumBins); };
  const auto rounded = [](std::string_view bytes) { return unpackCentibels(bytes, kSpectrumBins); };
  dwell.levels = row.integer(0, 0, 1) == 0 ? KeptLevels::kExact : KeptLevels::kCentibels;
  dwell.record.mean_db =
      dwell.levels == KeptLevels::kExact ? unpacked(row, 1, exact) : unpacked(row, 1, rounded);
  dwell.record.max_db = unpacked(row, 2, rounded);
  dwell.record.low_db = unpacked(row, 3, rounded);
}

// ---- anchors and gaps ---------------------------------------------------------------------------

AnchorRows::AnchorRows(SQLite::Database& database, int64_t from, int64_t to)
    : anchors_(database,
               "SELECT number, run, rate_hz, threshold_db, raster_hz, band_lo_hz, band_hi_hz,"
               " is_channels, size, content FROM anchors"
               " WHERE number >= ? AND number < ? ORDER BY number") {
  bindRange(anchors_, from, to);
}

std::optional<Numbered<HistoryAnchor>> AnchorRows::next() {
  if (!anchors_.executeStep()) return std::nullopt;
  const CheckedRow row(anchors_, fmt::format("anchor {}", anchors_.getColumn(0).getInt64()));
  HistoryAnchor anchor{.rate_hz = row.real(2),
                       .threshold_db = row.realOrNan(3),
                       .raster_hz = row.real(4),
                       .band_lo_hz = row.realOrNan(5),
                       .band_hi_hz = row.realOrNan(6)};
  const bool is_channels = row.integer(7, 0, 1) == 1;
  const auto size = static_cast<size_t>(
      row.integer(8, 0, kMaxAnchorBytes / static_cast<int64_t>(is_channels ? kChannelBytes : 1)));
  if (is_channels) {
    anchor.channels =
        unpacked(row, 9, [&](std::string_view bytes) { return unpackChannels(bytes, size); });
  } else {
    anchor.list = unpacked(row, 9, [&](std::string_view bytes) { return unpackText(bytes, size); });
  }
  refuseNonsense(row, anchor);
  return Numbered<HistoryAnchor>{row.integer(0), row.integer(1), std::move(anchor)};
}

GapRows::GapRows(SQLite::Database& database, int64_t from, int64_t to)
    : gaps_(database,
            "SELECT number, run, dwells, first_unix_ms, last_unix_ms FROM gaps"
            " WHERE number >= ? AND number < ? ORDER BY number") {
  bindRange(gaps_, from, to);
}

std::optional<Numbered<HistoryGap>> GapRows::next() {
  if (!gaps_.executeStep()) return std::nullopt;
  const CheckedRow row(gaps_, fmt::format("gap {}", gaps_.getColumn(0).getInt64()));
  return Numbered<HistoryGap>{
      row.integer(0),
      row.integer(1),
      {.dwells = row.count(2), .first_unix_ms = row.integer(3), .last_unix_ms = row.integer(4)}};
}

void visitRows(SQLite::Database& database, const HistoryVisitor& visitor, bool with_levels,
               int64_t from, int64_t to) {
  AnchorRows anchors(database, from, to);
  DwellRows dwells(database, DwellOrder::kRecorded, with_levels, from, to);
  GapRows gaps(database, from, to);
  auto anchor = anchors.next();
  auto dwell = dwells.next();
  auto gap = gaps.next();
  constexpr int64_t kEnd = std::numeric_limits<int64_t>::max();
  while (anchor || dwell || gap) {
    const int64_t anchor_at = anchor ? anchor->number : kEnd;
    const int64_t dwell_at = dwell ? dwell->number : kEnd;
    const int64_t gap_at = gap ? gap->number : kEnd;
    if (anchor && anchor_at <= std::min(dwell_at, gap_at)) {
      visitor.anchor(*anchor);
      anchor = anchors.next();
    } else if (gap && gap_at <= dwell_at) {
      visitor.gap(*gap);
      gap = gaps.next();
    } else {
      visitor.dwell(*dwell);
      dwell = dwells.next();
    }
  }
}

}  // namespace pelagrim_host
