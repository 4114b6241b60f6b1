#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "survey/channel.h"

namespace pelagrim_host {

/// One row of survey.csv. A level is not a number if the file has none, or one beyond 1000. Hits,
/// at least 1, are detections, and one dwell can have several; looks, as in the file, are dwells
/// since the channel was first heard. So there can be more hits than looks.
struct SurveyedChannel : pelagrim::Channel {
  std::string_view kind;  ///< the guess by width, one of pelagrim::signalKinds()

  /// Hits divided by looks, at most 1: to sort, colour and select by.
  double activity() const {
    return hits < looks ? static_cast<double>(hits) / static_cast<double>(looks) : 1.0;
  }
};

/// A survey.csv, as far as it can be read. The rows are in the file's order.
struct SurveyRows {
  std::vector<SurveyedChannel> channels;
  /// Written before centres were put in the middle of their bins. They are half a bin high; how
  /// much that is depends on the receiver's sample rate, which the file does not hold.
  bool is_older_format = false;
  bool has_header = false;
  size_t skipped_lines = 0;
  size_t first_skipped_line = 0;  ///< counted from 1
};

/// Reads the text of a survey.csv. Lines that are neither header, comment, blank nor a channel are
/// counted and left out, and so is a last line that was cut off while it was written.
SurveyRows parseSurveyRows(std::string_view text);

}  // namespace pelagrim_host
