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
  std::vector<BandRange> band_plan;
  BandLayout layout;
  bool is_compared = false;
  std::vector<std::pair<std::string, std::string>> settings;  ///< name and value, to be read
  std::vector<std::string> remarks;
};

}  // namespace pelagrim_host
