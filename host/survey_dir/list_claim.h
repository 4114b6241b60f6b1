#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/survey_dir/survey_memory.h"

namespace pelagrim_host {

/// What the user says about the list that a directory already has.
enum class ListWish { kAsUsual, kContinue, kFresh };

/// What a run does with that list.
enum class ListUse { kGoOn, kBeginAfresh };

/// Which it is, for a run that would leave the memory `now`: a receiver or a simulated band goes on
/// with its list, also with one that nobody knows the source of; a recording that was surveyed here
/// before is surveyed afresh, so that doing it twice gives the same list. Any other list is another
/// source's, and the two are not to be mixed: throws UsageError with the ways out.
ListUse useOfList(const std::filesystem::path& survey_dir, const SurveyMemory& now, ListWish wish);

/// Throws std::runtime_error when survey.csv is there and holds something else than a survey, which
/// the plug-in would overwrite.
void requireSurveyOrNothing(const std::filesystem::path& survey_dir);

/// The list of a survey directory, set aside under a name with a number, such as survey-1.csv, for
/// a run that begins afresh or merges channels.
class SetAsideList {
 public:
  /// Copies survey.csv to a new name. Throws FileError.
  explicit SetAsideList(const std::filesystem::path& survey_dir);

  /// Takes survey.csv away, so that the plug-in begins with an empty list.
  void beginAfresh();

  enum class Outcome { kKept, kPutBack, kUnneeded };

  /// At the end of the run: where there is no new list the old one comes back, and where the new
  /// one is the same there is no need for the copy.
  Outcome settle();

  const std::filesystem::path& path() const { return copy_path_; }

 private:
  std::filesystem::path results_path_;
  std::filesystem::path copy_path_;
};

}  // namespace pelagrim_host
