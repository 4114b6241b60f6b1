#include "host/history/history_reader.h"

#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Transaction.h>
#include <fmt/format.h>

#include "host/history/history_file.h"

namespace pelagrim_host {

HistoryReader::HistoryReader(const std::filesystem::path& path)
    : name_(path.string()), database_(openHistoryToRead(path)) {}

/// One transaction, so that what is read belongs together.
template <typename Work>
auto HistoryReader::reading(const Work& work) {
  try {
    const SQLite::Transaction transaction(database_);
    return work();
  } catch (const SQLite::Exception& failure) {
    throw HistoryError(fmt::format("{} cannot be read: {}", name_, failure.what()));
  } catch (const HistoryError& failure) {
    throw HistoryError(fmt::format("{} is damaged: {}", name_, failure.what()));
  }
}

std::vector<HistoryRun> HistoryReader::runs() {
  return reading([this] { return readRuns(database_); });
}

void HistoryReader::visit(const HistoryVisitor& visitor, bool with_levels) {
  reading([&] { visitRows(database_, visitor, with_levels); });
}

void HistoryReader::visitDwells(const std::function<void(const HistoryDwell&)>& dwell,
                                bool with_levels, int64_t from_unix_ms, int64_t to_unix_ms) {
  reading([&] {
    DwellRows rows(database_, DwellOrder::kByEnd, with_levels, from_unix_ms, to_unix_ms);
    while (const auto next = rows.next()) dwell(*next);
  });
}

}  // namespace pelagrim_host
