#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "host/commands/survey_options.h"
#include "host/sources/iq_source.h"
#include "host/survey_dir/survey_settings.h"

namespace pelagrim_host {

/// Where a run keeps its survey, and its settings, as far as they are known without its source.
struct SurveySetup {
  std::filesystem::path directory;
  bool has_settings_file = false;
  SurveySettings changes;  ///< to survey.cfg
  SurveySettings set;      ///< what survey.cfg will set, with those changes

  pelagrim::Settings inForce() const { return set.inForce(); }
};

/// The directory, from the command line, the environment or else the source's name, and the
/// settings, from survey.cfg and the command line. Reads survey.cfg and changes nothing.
SurveySetup setUpSurvey(const Options& options);

/// Completes the setup for its source if there is no survey.cfg yet. The plug-in would sweep its
/// default band; instead, a source that cannot be tuned is surveyed as it is, in dwells short
/// enough to fit between its own changes of centre, and a simulated band gets short dwells. The
/// command line comes first.
void fitToSource(SurveySetup& setup, const Options& options, const IqSource& source);

/// Why a survey with these settings could keep nothing from a source that cannot be tuned, with the
/// remedy; unset if it could.
std::optional<std::string> bandMismatch(const pelagrim::Settings& settings, const IqSource& source);

/// Which samples of a recording a survey with these settings would drop, because its centre changes
/// before a dwell is over, with the remedy; unset if the dwells fit.
std::optional<std::string> dwellMismatch(const pelagrim::Settings& settings,
                                         const IqSource& source);

}  // namespace pelagrim_host
