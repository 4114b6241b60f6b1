#pragma once

#include <array>
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

/// The last complete list of a survey directory, kept beside survey.csv. The plug-in rewrites that
/// in place: a kill at that moment leaves it empty, a full disk cuts it short.
///
/// Two slots are written in turn, so that one is always whole while the other is written. Copying
/// and flushing has its own thread; the survey only tells it that there is something new. Hold the
/// directory's run lock while one of these exists.
class SafeCopy {
 public:
  /// Opens the slots, reserves their room and notes that a run goes on from what survey.csv holds.
  /// From then on a copy is taken at most every `min_interval`. `warn` gets a line when copies
  /// begin to fail or work again, on the thread that calls this, dwellWritten or end; the survey
  /// goes on without them. Throws FileError if the slots cannot be opened.
  SafeCopy(const std::filesystem::path& survey_dir, std::chrono::milliseconds min_interval,
           std::function<void(const std::string&)> warn);

  /// Stops without noting that the run ended in order.
  ~SafeCopy();
  SafeCopy(const SafeCopy&) = delete;
  SafeCopy& operator=(const SafeCopy&) = delete;

  /// The plug-in is about to start from survey.csv with this raster. With another one it may have
  /// fewer channels than before, but never fewer than the slots that the file's rows fall into: a
  /// list that has was cut short. Reads the file.
  void surveyStarts(double raster_hz);

  /// The plug-in has written survey.csv. Never waits.
  void dwellWritten();

  /// The run is over: takes the last copy and, if survey.csv is whole, notes that the run ended in
  /// order. Waits for the disk.
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
  size_t reserved_bytes_ = 0;
  std::chrono::steady_clock::time_point last_copy_;

  std::mutex mutex_;  ///< guards the members below
  std::condition_variable changed_;
  bool has_news_ = false;
  size_t min_rows_ = 0;  ///< that a whole list has now
  uint64_t starts_ = 0;  ///< calls of surveyStarts
  bool stops_ = false;
  std::string trouble_;       ///< why the last copy failed; empty: it worked
  std::string told_trouble_;  ///< what the user was told last
  std::thread thread_;        ///< declared after everything it uses
};

/// What survey.csv holds for a reader who may come while a run is writing it: never part of a list.
struct SteadyResults {
  std::string text;
  bool is_copy = false;  ///< survey.csv is cut short, and this is the last safe list
};
SteadyResults readResults(const std::filesystem::path& survey_dir);

/// The newest list in the copies of a survey directory; nothing if there is none.
std::optional<KeptList> newestCopy(const std::filesystem::path& survey_dir);

/// Replaces a survey.csv that a run has left cut short by the newest copy: the run did not end in
/// order, and the file is empty, lacks its last line feed or has fewer rows than the copy. Anything
/// else may be a person's work and is kept. Returns a line that says so, or nothing if nothing was
/// done. Throws FileError if the file cannot be written, as the survey must not go on from the
/// short one.
std::optional<std::string> restoreResults(const std::filesystem::path& survey_dir);

}  // namespace pelagrim_host
