#include "host/survey_dir/safe_copy.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "files/results_file.h"
#include "host/process/signals.h"
#include "host/process/whole_file.h"
#include "host/survey_dir/survey_place.h"

namespace pelagrim_host {
namespace {

constexpr size_t kMinRoomBytes = 1 << 16;

std::array<std::filesystem::path, 2> slotPaths(const std::filesystem::path& survey_dir) {
  return {survey_dir / "survey.copy-1", survey_dir / "survey.copy-2"};
}

/// Lines that are neither header nor comment.
size_t countRows(std::string_view results) {
  size_t rows = 0;
  while (!results.empty()) {
    if (results.front() != '#' && results.front() != 'c' && results.front() != '\n') ++rows;
    const size_t end = results.find('\n');
    if (end == std::string_view::npos) break;
    results.remove_prefix(end + 1);
  }
  return rows;
}

bool isWhole(std::string_view results, size_t min_rows) {
  return !results.empty() && results.back() == '\n' && countRows(results) >= min_rows;
}

/// The channels that the plug-in will at least have when it has started from survey.csv: one for
/// each slot of the raster, where the last row counts. 0 if the file is in the older format, whose
/// centres it moves.
size_t slotsIn(const std::filesystem::path& survey_dir, double raster_hz) {
  const auto file = pelagrim::loadSurvey(survey_dir.string(), 0.0);
  if (file.older) return 0;
  pelagrim::Survey survey;
  survey.raster_hz = raster_hz > 0.0 ? raster_hz : 1.0;
  for (const pelagrim::Channel& channel : file.channels) survey.restore(channel);
  return survey.size();
}

/// A text that the plug-in has finished writing. It may be writing right now, so the text has to be
/// whole and read the same twice. Nothing if it never does.
std::optional<std::string> readSteadily(const std::filesystem::path& path, size_t min_rows) {
  constexpr int kTries = 20;
  std::string before;
  for (int i = 0; i < kTries; ++i) {
    auto results = readIfThere(path).value_or("");
    if (isWhole(results, min_rows) && results == before) return results;
    before = std::move(results);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return std::nullopt;
}

}  // namespace

SafeCopy::SafeCopy(const std::filesystem::path& survey_dir, std::chrono::milliseconds min_interval,
                   std::function<void(const std::string&)> warn)
    : results_path_(resultsPath(survey_dir)),
      min_interval_(min_interval),
      warn_(std::move(warn)),
      slots_{CopySlot(slotPaths(survey_dir)[0]), CopySlot(slotPaths(survey_dir)[1])},
      last_copy_(std::chrono::steady_clock::now() - min_interval) {
  for (size_t slot = 0; slot < slots_.size(); ++slot) {
    const auto list = slots_[slot].read();
    if (!list || list->sequence < sequence_) continue;
    sequence_ = list->sequence;
    next_slot_ = 1 - slot;
  }
  const KeptList first{sequence_ + 1, false, readIfThere(results_path_).value_or("")};
  keep(first);
  tellTrouble();
  thread_ = std::thread([this] { run(); });
}

SafeCopy::~SafeCopy() {
  {
    const std::lock_guard lock(mutex_);
    stops_ = true;
  }
  changed_.notify_one();
  if (thread_.joinable()) thread_.join();
}

void SafeCopy::surveyStarts(double raster_hz) {
  const size_t min_rows = slotsIn(results_path_.parent_path(), raster_hz);
  const std::lock_guard lock(mutex_);
  min_rows_ = min_rows;
  ++starts_;
}

void SafeCopy::dwellWritten() {
  {
    const std::lock_guard lock(mutex_);
    has_news_ = true;
  }
  changed_.notify_one();
  tellTrouble();
}

void SafeCopy::end() {
  {
    const std::lock_guard lock(mutex_);
    stops_ = true;
  }
  changed_.notify_one();
  thread_.join();
  copyNow(true);
  tellTrouble();
}

void SafeCopy::run() {
  leaveSignalsToOtherThreads();
  std::unique_lock lock(mutex_);
  while (!stops_) {
    changed_.wait(lock, [this] { return has_news_ || stops_; });
    changed_.wait_until(lock, last_copy_ + min_interval_, [this] { return stops_; });
    if (stops_) return;
    has_news_ = false;
    lock.unlock();
    copyNow(false);
    lock.lock();
  }
}

void SafeCopy::copyNow(bool run_ended) {
  last_copy_ = std::chrono::steady_clock::now();
  size_t min_rows = 0;
  uint64_t starts = 0;
  {
    const std::lock_guard lock(mutex_);
    min_rows = min_rows_;
    starts = starts_;
  }
  std::optional<std::string> results;
  try {
    results = readSteadily(results_path_, min_rows);
  } catch (const std::exception&) {
    return;  // a directory in its place, say; that it cannot be written is said at every dwell
  }
  if (!results) return;
  min_rows = countRows(*results);
  keep({sequence_ + 1, run_ended, *std::move(results)});
  const std::lock_guard lock(mutex_);
  if (starts == starts_) min_rows_ = min_rows;
}

/// Writes a list into the slot whose turn it is. A slot that failed is written again, because the
/// other one holds the last safe list.
void SafeCopy::keep(const KeptList& list) {
  std::string trouble;
  const auto attempt = [&trouble](const auto& step) {
    try {
      step();
    } catch (const std::exception& failure) {
      trouble = failure.what();
    }
  };
  if (2 * list.results.size() >= reserved_bytes_) {
    attempt([&] {
      const size_t wanted = std::max(kMinRoomBytes, 4 * list.results.size());
      for (CopySlot& slot : slots_) slot.reserve(wanted);
      reserved_bytes_ = wanted;
    });
  }
  attempt([&] {
    slots_[next_slot_].write(list);
    sequence_ = list.sequence;
    next_slot_ = 1 - next_slot_;
  });
  const std::lock_guard lock(mutex_);
  trouble_ = std::move(trouble);
}

void SafeCopy::tellTrouble() {
  std::string line;
  {
    const std::lock_guard lock(mutex_);
    if (trouble_.empty() == told_trouble_.empty()) return;
    line = trouble_.empty() ? "the copy of survey.csv is kept again"
                            : "no safe copy of survey.csv can be kept: " + trouble_;
    told_trouble_ = trouble_;
  }
  warn_(line);
}

std::optional<KeptList> newestCopy(const std::filesystem::path& survey_dir) {
  std::optional<KeptList> newest;
  for (const auto& path : slotPaths(survey_dir)) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) continue;
    auto list = CopySlot::readFile(path);
    if (list && (!newest || list->sequence > newest->sequence)) newest = std::move(list);
  }
  return newest;
}

SteadyResults readResults(const std::filesystem::path& survey_dir) {
  const auto path = resultsPath(survey_dir);
  auto copy = newestCopy(survey_dir);
  if (!copy || copy->run_ended) return {readIfThere(path).value_or("")};
  // It is usually whole at the first look; a run writes it within milliseconds.
  if (auto results = readSteadily(path, countRows(copy->results))) return {*std::move(results)};
  auto there = readIfThere(path).value_or("");
  if (isWhole(there, 0) || copy->results.empty()) return {std::move(there)};
  return {std::move(copy->results), true};
}

std::optional<std::string> restoreResults(const std::filesystem::path& survey_dir) {
  const auto copy = newestCopy(survey_dir);
  if (!copy || copy->run_ended || copy->results.empty()) return std::nullopt;
  const auto path = resultsPath(survey_dir);
  const auto there = readIfThere(path);
  const size_t rows = countRows(copy->results);
  // A missing file was removed by a person: a kill does not do that.
  if (!there || isWhole(*there, rows)) return std::nullopt;
  replaceFile(path, copy->results);
  return fmt::format(
      "{} was cut short when the last run ended: restored the last safe list, of {} channels",
      path.string(), rows);
}

}  // namespace pelagrim_host
