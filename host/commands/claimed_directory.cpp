#include "host/commands/claimed_directory.h"

#include <fmt/format.h>

#include <chrono>
#include <stdexcept>
#include <utility>

#include "host/commands/in_force_text.h"
#include "host/process/whole_file.h"
#include "host/survey_dir/ownership.h"
#include "host/survey_dir/settings_doubts.h"
#include "host/survey_dir/survey_place.h"
#include "survey/slice_plan.h"

namespace pelagrim_host {
namespace {

/// A recording can be surveyed again, and its dwells follow each other as fast as the machine
/// allows.
std::chrono::milliseconds copyInterval(SourceKind kind) {
  return std::chrono::seconds(kind == SourceKind::kReceiver ? 0 : 1);
}

std::vector<double> slicesSwept(const pelagrim::Settings& settings, double sample_rate_hz) {
  if (!settings.sweep) return {};
  return pelagrim::planSlices(settings.start_hz, settings.stop_hz, sample_rate_hz);
}

}  // namespace

ClaimedDirectory::ClaimedDirectory(const Options& options, const SurveySetup& setup,
                                   SurveyMemory memory, double sample_rate_hz, SurveyView& view)
    : directory_(setup.directory),
      memory_(std::move(memory)),
      sample_rate_hz_(sample_rate_hz),
      view_(view),
      changes_(setup.changes),
      gain_(options.device.empty() ? "" : gainText(options.gain)) {
  requireOwnFiles(directory_);  // before a directory is created where somebody's link leads
  const bool created = createSurveyDirectory(directory_);
  view_.note(
      fmt::format("survey directory {}{}", directory_.string(), created ? " (created)" : ""));
  requireOwnFiles(directory_);
  lock_.emplace(directory_);
  if (lock_->lack()) view_.warning(*lock_->lack());
  if (const auto restored = restoreResults(directory_)) view_.warning(*restored);
  requireSurveyOrNothing(directory_);
  before_ = readMemory(directory_);
  raster_hz_ = before_ ? before_->settings.raster_hz
                       : readSettings(directory_).value_or(SurveySettings{}).inForce().raster_hz;
  takeList(options);
  if (!setup.changes.isEmpty()) {
    editSettings(directory_, setup.changes);
    view_.note(
        fmt::format("written to {}: {}", settingsPath(directory_).string(), setup.changes.text()));
  }
  pointPluginTo(directory_);
  try {
    copy_ = std::make_unique<SafeCopy>(directory_, copyInterval(memory_.kind),
                                       [this](const std::string& line) { view_.warning(line); });
  } catch (const FileError& failure) {
    view_.warning(fmt::format("no safe copy of survey.csv can be kept: {}", failure.what()));
  }
}

void ClaimedDirectory::takeList(const Options& options) {
  if (useOfList(directory_, memory_, options.list_wish) == ListUse::kGoOn) return;
  if (readIfThere(resultsPath(directory_)).value_or("").empty()) return;
  set_aside_.emplace(directory_);
  set_aside_->beginAfresh(before_);
  raster_hz_.reset();
  view_.note(
      fmt::format("starts a new list; the old one is kept as {}", set_aside_->path().string()));
}

void ClaimedDirectory::surveyStarts() {
  std::string settings;
  try {
    settings = readIfThere(settingsPath(directory_)).value_or("");
  } catch (const std::runtime_error&) {  // the plug-in goes on without the file, too
  }
  for (const std::string& doubt : settingsDoubts(settings)) view_.warning(doubt);
  const SurveySettings set = parseSettings(settings);
  // As in the plug-in, a key that is not in the file keeps its value, at first the default.
  memory_.settings = set.inForce(memory_.settings);
  view_.inForce({inForceText(memory_.settings, set.without(changes_), gain_),
                 memory_.settings.dwell_seconds, slicesSwept(memory_.settings, sample_rate_hz_)});
  changes_ = {};
  if (raster_hz_) keepBeforeMerging(*raster_hz_, memory_.settings.raster_hz);
  raster_hz_ = memory_.settings.raster_hz;
  rememberSource();
  if (copy_) copy_->surveyStarts(memory_.settings.raster_hz);
}

void ClaimedDirectory::rememberSource() {
  try {
    writeMemory(directory_, memory_);
  } catch (const FileError& failure) {
    if (!has_started_) throw;  // nothing is lost yet, and a list must not get the wrong source
    view_.warning(failure.what());
  }
  has_started_ = true;
}

void ClaimedDirectory::keepBeforeMerging(double old_raster_hz, double raster_hz) {
  if (old_raster_hz == raster_hz || !readIfThere(resultsPath(directory_))) return;
  const SetAsideList before(directory_);
  view_.warning(fmt::format(
      "the raster has changed from {} to {} Hz, which may merge channels for good; the old list "
      "is kept as {}",
      old_raster_hz, raster_hz, before.path().string()));
}

void ClaimedDirectory::dwellWritten() {
  has_dwells_ = true;
  if (copy_) copy_->dwellWritten();
}

void ClaimedDirectory::end() {
  if (copy_) copy_->end();
  if (!has_dwells_) putBackMemory(directory_, before_);  // the list has nothing of this source
  if (!set_aside_) return;
  const SetAsideList::Outcome outcome = set_aside_->settle();
  if (outcome == SetAsideList::Outcome::kUnneeded) {
    view_.note("the list is the same as before: " + set_aside_->path().string() + " is not needed");
  } else if (outcome == SetAsideList::Outcome::kPutBack) {
    view_.note("there is no new list, so the old one is back");
  }
}

}  // namespace pelagrim_host
