#include "host/survey_dir/list_claim.h"

#include <fmt/format.h>

#include <exception>
#include <string>
#include <utility>

#include "host/process/command_errors.h"
#include "host/process/whole_file.h"
#include "host/survey_dir/survey_place.h"
#include "host/survey_dir/survey_rows.h"

namespace pelagrim_host {
namespace {

SurveyRows rowsIn(const std::filesystem::path& survey_dir) {
  return parseSurveyRows(readIfThere(resultsPath(survey_dir)).value_or(""));
}

std::string whoseText(const std::optional<SurveyMemory>& memory, const SurveyMemory& now) {
  if (!memory) return "a list of channels from an unknown source";
  const bool has_same_name = memory->source == now.source;
  switch (memory->kind) {
    case SourceKind::kRecording:
      return fmt::format("the survey of another recording, {}{}", memory->source,
                         has_same_name ? ", or of this one before it changed" : "");
    case SourceKind::kStandardInput:
      return "the survey of standard input";
    case SourceKind::kReceiver:
      return fmt::format("the survey of a receiver, {}", memory->source);
    case SourceKind::kSimulation:
      return "the survey of a simulated band";
  }
  return "another survey";
}

}  // namespace

ListUse useOfList(const std::filesystem::path& survey_dir, const SurveyMemory& now, ListWish wish) {
  if (wish == ListWish::kContinue) return ListUse::kGoOn;
  if (wish == ListWish::kFresh) return ListUse::kBeginAfresh;
  if (rowsIn(survey_dir).channels.empty()) return ListUse::kGoOn;
  const auto memory = readMemory(survey_dir);
  const bool goes_on = now.kind == SourceKind::kReceiver || now.kind == SourceKind::kSimulation;
  if (goes_on && (!memory || memory->kind == now.kind)) return ListUse::kGoOn;
  const bool is_known = memory && memory->kind == SourceKind::kRecording && memory->identity;
  if (now.kind == SourceKind::kRecording && is_known && memory->identity == now.identity) {
    return ListUse::kBeginAfresh;
  }
  throw UsageError(fmt::format(
      "{} holds {}; carry on with that list with --continue, keep a copy of it and start "
      "a new one with --fresh, or name another directory with --dir",
      survey_dir.string(), whoseText(memory, now)));
}

void requireSurveyOrNothing(const std::filesystem::path& survey_dir) {
  const SurveyRows rows = rowsIn(survey_dir);
  if (rows.skipped_lines == 0 || rows.has_header || !rows.channels.empty()) return;
  throw std::runtime_error(
      fmt::format("{} is not a survey, and surveying would overwrite it; move it, or name another "
                  "directory with --dir",
                  resultsPath(survey_dir).string()));
}

SetAsideList::SetAsideList(const std::filesystem::path& survey_dir)
    : results_path_(resultsPath(survey_dir)) {
  const std::string text = readIfThere(results_path_).value_or("");
  for (int number = 1; copy_path_.empty(); ++number) {
    const auto path = survey_dir / fmt::format("survey-{}.csv", number);
    // createFile would write the text for every name that is taken.
    const bool is_taken = std::filesystem::exists(std::filesystem::symlink_status(path));
    if (!is_taken && createFile(path, text)) copy_path_ = path;
  }
}

SetAsideList::~SetAsideList() {
  if (!is_open_) return;
  try {
    settle();
  } catch (const std::exception&) {  // the old list stays where it was copied to
  }
}

void SetAsideList::beginAfresh(std::optional<SurveyMemory> memory) {
  memory_ = std::move(memory);
  replaceFile(results_path_, "");  // rather than removed: it keeps its mode, and links stay
  is_open_ = true;
}

SetAsideList::Outcome SetAsideList::settle() {
  is_open_ = false;
  const std::string now = readIfThere(results_path_).value_or("");
  const std::string old = readIfThere(copy_path_).value_or("");
  if (now.empty()) {
    replaceFile(results_path_, old);
    putBackMemory(results_path_.parent_path(), memory_);
  } else if (now != old) {
    return Outcome::kKept;
  }
  std::filesystem::remove(copy_path_);
  return now.empty() ? Outcome::kPutBack : Outcome::kUnneeded;
}

}  // namespace pelagrim_host
