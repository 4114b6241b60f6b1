#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "host/survey_dir/copy_slot.h"

namespace pelagrim_host {

/// The last complete list of a survey directory, kept beside survey.csv, which the plug-in rewrites
/// in place: a kill in that moment leaves it empty, a full disk cuts it short.
///
/// Two slots are written in turn, so that the one before is whole while one is written. A thread of
/// its own copies and flushes; the survey only tells it that there is something new. Whoever makes
/// one holds the directory's run lock.
class SafeCopy {
 public:
  /// Opens the slots, reserves their room and notes that a run goes on from what survey.csv holds.
  /// From then on a copy is taken at most every `min_interval`. `warn` gets a line when copies
  /// begin to fail or work again, on the thread that calls this, dwellWritten or end; the survey
  /// goes on without them. Throws FileError where the slots cannot be opened.
  SafeCopy(const std::filesystem::path& survey_dir, std::chrono::milliseconds min_interval,
           std::function<void(const std::string&)> warn);

  /// Stops without the note that the run ended in order.
  ~SafeCopy();
  SafeCopy(const SafeCopy&) = delete;
  SafeCopy& operator=(const SafeCopy&) = delete;

  /// The plug-in starts afresh from survey.csv: with another raster it may have fewer channels than
  /// before, which otherwise means that the file was cut. Never waits.
  void surveyStarts() { list_may_shrink_ = true; }

  /// The plug-in has written survey.csv. Never waits.
  void dwellWritten();

  /// The run is over: takes the last copy and notes that it ended in order, where survey.csv is
  /// whole. Waits for the disk.
  void end();

 private:
  void run();
  void copyNow(bool run_ended);
  void keep(const KeptList& list);
  void tellTrouble();

  std::filesystem::path results_path_;
  std::chrono::milliseconds min_interval_;
  std::function<void(const std::string&)> warn_;
  std::array<CopySlot, 2> slots_;
  size_t next_slot_ = 0;
  uint64_t sequence_ = 0;
  size_t min_rows_ = 0;  ///< of the last copy
  std::atomic<bool> list_may_shrink_ = true;
  size_t reserved_bytes_ = 0;
  std::chrono::steady_clock::time_point last_copy_;

  std::mutex mutex_;  ///< guards what follows
  std::condition_variable changed_;
  bool has_news_ = false;
  bool stops_ = false;
  std::string trouble_;       ///< of the last copy; empty: it worked
  std::string told_trouble_;  ///< what the user was told last
  std::thread thread_;        ///< after all that it uses
};

/// What survey.csv holds for a reader who may come while a run writes it: never a part of a list.
struct SteadyResults {
  std::string text;
  bool is_copy = false;  ///< survey.csv stays cut short, and this is the list that was safe
};
SteadyResults readResults(const std::filesystem::path& survey_dir);

/// The newest list that the copies of a survey directory hold; nothing where there is none.
std::optional<KeptList> newestCopy(const std::filesystem::path& survey_dir);

/// Puts the newest copy in the place of a survey.csv that a run has left cut short: the run did not
/// end in order, and the file is empty, lacks its last line feed or has fewer rows than the copy.
/// Anything else a person may have done, and it stays. A line that says so, nothing where nothing
/// was done. Throws FileError where the file cannot be written: the survey must not go on from the
/// short one.
std::optional<std::string> restoreResults(const std::filesystem::path& survey_dir);

}  // namespace pelagrim_host
