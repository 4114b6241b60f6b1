#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/commands/survey_options.h"
#include "host/commands/survey_setup.h"
#include "host/session/survey_view.h"
#include "host/survey_dir/list_claim.h"
#include "host/survey_dir/run_lock.h"
#include "host/survey_dir/safe_copy.h"
#include "host/survey_dir/survey_memory.h"

namespace pelagrim_host {

/// A survey directory that this run has to itself, ready for the plug-in: nothing in it belongs to
/// somebody else, a list that the last run left torn is whole again, and the list belongs to this
/// source. It stays that way as long as the object exists. The view, which must outlive the object,
/// is told what was done. All calls on the thread that runs the survey.
class ClaimedDirectory {
 public:
  /// Throws TryAgainLater while another run has the directory, UsageError if its list belongs to
  /// another source, std::runtime_error if it cannot be used.
  ClaimedDirectory(const Options& options, const SurveySetup& setup, SurveyMemory memory,
                   double sample_rate_hz, SurveyView& view);

  /// Call before every create of the plug-in: says which settings are in force, and keeps the old
  /// list if a new raster is about to merge channels.
  void surveyStarts();

  /// What surveyStarts found to be in force.
  const pelagrim::Settings& settingsInForce() const { return memory_.settings; }

  /// Call after every dwell: the plug-in has written its list.
  void dwellWritten();

  /// The run has ended in order.
  void end();

 private:
  void takeList(const Options& options);
  void rememberSource();
  void keepBeforeMerging(double old_raster_hz, double raster_hz);

  std::filesystem::path directory_;
  SurveyMemory memory_;
  std::optional<SurveyMemory> before_;  ///< whose list it was
  double sample_rate_hz_;
  SurveyView& view_;
  SurveySettings changes_;  ///< of the command line, until survey.cfg is read again
  std::string gain_;        ///< of a receiver, in words
  std::optional<RunLock> lock_;
  std::optional<double> raster_hz_;  ///< of the present list
  bool has_started_ = false;
  bool has_dwells_ = false;
  std::optional<SetAsideList> set_aside_;
  std::unique_ptr<SafeCopy> copy_;
};

}  // namespace pelagrim_host
