#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/history/history_values.h"
#include "survey/survey.h"

namespace pelagrim_host {

/// The channels in the bytes of a survey.csv, read exactly as the plug-in reads the file. The
/// centres of the older format are moved down by half a bin of `rate_hz`.
std::vector<pelagrim::Channel> channelsOfList(std::string_view list, double rate_hz);

/// Follows the list from an anchor through the dwells after it, as the plug-in does: the same model
/// with the same rounding, and the plug-in's own format. No files and no clock.
class Replay {
 public:
  explicit Replay(const HistoryAnchor& anchor);

  void add(const DwellRecord& dwell);

  const pelagrim::Survey& survey() const { return survey_; }

  /// What survey.csv holds after the last dwell, to the byte.
  std::string list() const;

  /// Where the list stands, as an anchor from which it goes on.
  HistoryAnchor anchor() const;

 private:
  double rate_hz_;
  double threshold_db_;
  pelagrim::Survey survey_;
};

}  // namespace pelagrim_host
