#pragma once

#include <string>
#include <vector>

#include "survey/channel.h"
#include "survey/survey.h"

namespace pelagrim {

/// What a results file held.
struct ResultsFile {
  std::vector<Channel>
      channels;        ///< in the order of their rows; rows that make no sense are skipped
  bool older = false;  ///< in the older format, where centres were half a bin too high
};

/// Reads survey.csv in `dir`; a file that cannot be opened holds nothing. The centres of an older
/// file are moved down by half a bin of `sample_rate_hz`. The only failure
/// reported is std::bad_alloc.
ResultsFile loadSurvey(const std::string& dir, double sample_rate_hz);

/// The text of survey.csv: two header lines and a row for every channel, most active first.
std::string surveyText(const Survey& survey);

/// Rewrites survey.csv in `dir`, in place. The text is complete in memory before the file is
/// opened, so running out of memory (std::bad_alloc) never loses what the file holds. Other
/// failures are ignored.
void saveSurvey(const std::string& dir, const Survey& survey);

}  // namespace pelagrim
