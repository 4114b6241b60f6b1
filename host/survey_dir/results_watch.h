#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace pelagrim_host {

/// Watches whether the plug-in gets its results written after every dwell: it does not say when it
/// fails. Made before the run begins.
class ResultsWatch {
 public:
  /// File systems keep times by a coarse clock, so two quick dwells may leave the same one: a file
  /// whose time has not changed counts as not written only after `patience`.
  explicit ResultsWatch(std::filesystem::path results_path,
                        std::chrono::milliseconds patience = std::chrono::seconds(1));

  /// After a dwell: a line for the user when saving has begun to fail, or works again.
  std::optional<std::string> news();

  /// Whether the file was written since the run began, and to its end.
  bool written() const;

  /// What to look into when it was not.
  std::string advice() const;

 private:
  using Clock = std::chrono::steady_clock;

  bool isWhole() const;

  std::filesystem::path path_;
  std::chrono::milliseconds patience_;
  std::filesystem::file_time_type time_before_;
  std::filesystem::file_time_type time_seen_;
  Clock::time_point seen_;
  bool fails_ = false;
};

}  // namespace pelagrim_host
