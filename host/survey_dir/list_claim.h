#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/survey_dir/survey_memory.h"

namespace pelagrim_host {

/// What the user wants done with the list that a directory already has.
enum class ListWish { kAsUsual, kContinue, kFresh };

/// What a run does with that list.
enum class ListUse { kGoOn, kBeginAfresh };

/// Decides that, for a run that would leave the memory `now`. A receiver or a simulated band goes
/// on with its list, or with one of unknown source; a recording that was surveyed here before is
/// surveyed afresh, so that doing it twice gives the same list. Any other list belongs to another
/// source, and the two must not be mixed: throws UsageError, with the ways out.
ListUse useOfList(const std::filesystem::path& survey_dir, const SurveyMemory& now, ListWish wish);

/// Throws std::runtime_error if survey.csv holds something other than a survey, which the plug-in
/// would overwrite.
void requireSurveyOrNothing(const std::filesystem::path& survey_dir);

/// The list of a survey directory, set aside under a numbered name such as survey-1.csv, for a run
/// that starts afresh or merges channels.
class SetAsideList {
 public:
  /// Copies survey.csv to a new name. Throws FileError.
  explicit SetAsideList(const std::filesystem::path& survey_dir);

  /// Brings the old list back if the run never got as far as settle().
  ~SetAsideList();
  SetAsideList(const SetAsideList&) = delete;
  SetAsideList& operator=(const SetAsideList&) = delete;

  /// Empties survey.csv, so that the plug-in starts with an empty list. `memory`: whose list the
  /// old one is. Throws FileError.
  void beginAfresh(std::optional<SurveyMemory> memory);

  enum class Outcome { kKept, kPutBack, kUnneeded };

  /// At the end of a run that began afresh: brings the old list back, with its memory, if there is
  /// no new one, and deletes the copy if the new one is the same. Throws FileError; the copy then
  /// stays.
  Outcome settle();

  const std::filesystem::path& path() const { return copy_path_; }

 private:
  std::filesystem::path results_path_;
  std::filesystem::path copy_path_;
  std::optional<SurveyMemory> memory_;
  bool is_open_ = false;  ///< begun afresh and not settled
};

}  // namespace pelagrim_host
