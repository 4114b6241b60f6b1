#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/report/band_layout.h"
#include "host/report/survey_change.h"
#include "host/survey_dir/saved_survey.h"

namespace pelagrim_host {

/// Everything that a report shows. Texts may hold any bytes; the code that draws them makes them
/// safe.
struct ReportData {
  std::vector<ReportedChannel> channels;
  std::vector<pelagrim::BandLabel> band_plan;
  BandLayout layout;
  bool is_compared = false;
  bool times_are_guesses = false;
  bool old_times_are_guesses = false;  ///< of the earlier survey, and so of gone channels
  std::vector<std::pair<std::string, std::string>> settings;  ///< name and value, for the reader
  std::vector<std::string> remarks;
};

/// The report on a survey; if `old` is not null, compared with that earlier one of the band. The
/// comparison needs a raster, which is the plug-in's default if the survey has no settings file.
ReportData makeReport(const SurveyFiles& survey, const SurveyFiles* old);

}  // namespace pelagrim_host
