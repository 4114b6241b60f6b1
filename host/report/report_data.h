#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/report/band_layout.h"
#include "host/report/survey_change.h"
#include "host/survey_dir/saved_survey.h"

namespace pelagrim_host {

/// All that a report shows. Texts may hold any bytes; whoever draws them makes them safe.
struct ReportData {
  std::vector<ReportedChannel> channels;
  std::vector<pelagrim::BandLabel> band_plan;
  BandLayout layout;
  bool is_compared = false;
  bool times_are_guesses = false;
  bool old_times_are_guesses = false;  ///< of the earlier survey, and so of what is gone
  std::vector<std::pair<std::string, std::string>> settings;  ///< name and value, to be read
  std::vector<std::string> remarks;
};

/// The report on a survey; when `old` is not null, compared with that earlier one of the band. The
/// raster that comparing needs is the plug-in's default where the survey has no settings file.
ReportData makeReport(const SurveyFiles& survey, const SurveyFiles* old);

}  // namespace pelagrim_host
