#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace pelagrim_host {

/// Watches whether the plug-in manages to write its results after every dwell, because it does not
/// report a failure. Make one before the run begins.
class ResultsWatch {
 public:
  /// File systems have a coarse clock, so two quick dwells may leave the same time: a file whose
  /// time has not changed counts as not written only after `patience`.
  explicit ResultsWatch(std::filesystem::path results_path,
                        std::chrono::milliseconds patience = std::chrono::seconds(1));

  /// Call it after a dwell. Returns a line for the user if saving has begun to fail, or works
  /// again.
  std::optional<std::string> news();

  /// Whether the file has been written since the run began, and to the end.
  bool written() const;

  /// What the user should look into if it was not.
  std::string advice() const;

 private:
  using Clock = std::chrono::steady_clock;

  bool isWhole() const;

  std::filesystem::path path_;
  std::chrono::milliseconds patience_;
  bool was_whole_;  ///< before the run
  std::filesystem::file_time_type time_before_;
  std::filesystem::file_time_type time_seen_;
  Clock::time_point seen_;
  bool fails_ = false;
};

}  // namespace pelagrim_host
