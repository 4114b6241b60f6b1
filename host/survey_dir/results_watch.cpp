#include "host/survey_dir/results_watch.h"

#include <fmt/format.h>

#include <fstream>
#include <system_error>
#include <utility>

namespace pelagrim_host {
namespace {

std::filesystem::file_time_type writeTime(const std::filesystem::path& path) {
  std::error_code error;
  const auto time = std::filesystem::last_write_time(path, error);
  return error ? std::filesystem::file_time_type::min() : time;
}

}  // namespace

ResultsWatch::ResultsWatch(std::filesystem::path results_path, std::chrono::milliseconds patience)
    : path_(std::move(results_path)),
      patience_(patience),
      was_whole_(isWhole()),
      time_before_(writeTime(path_)),
      time_seen_(time_before_),
      seen_(Clock::now()) {}

std::optional<std::string> ResultsWatch::news() {
  const auto now = Clock::now();
  const auto time = writeTime(path_);
  const bool is_stale = time == time_seen_;
  if (is_stale && now - seen_ < patience_) return std::nullopt;
  time_seen_ = time;
  seen_ = now;
  const bool failed_before = std::exchange(fails_, is_stale || !isWhole());
  if (fails_ && !failed_before) return advice() + "; until then it is kept in memory";
  if (!fails_ && failed_before) return "the survey is written again, with all that was in memory";
  return std::nullopt;
}

bool ResultsWatch::written() const {
  return isWhole() && (!was_whole_ || writeTime(path_) != time_before_);
}

std::string ResultsWatch::advice() const {
  return fmt::format(
      "the survey could not be written whole to {}; check that the disk has room and the file can "
      "be written",
      path_.string());
}

/// A full disk cuts the file off in the middle of a row.
bool ResultsWatch::isWhole() const {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path_, error)) return false;
  std::ifstream file(path_, std::ios::binary);
  file.seekg(-1, std::ios::end);
  return file.get() == '\n';
}

}  // namespace pelagrim_host
