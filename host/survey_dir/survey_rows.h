#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace pelagrim_host {

/// One row of survey.csv. Levels are relative decibels, not a number where the file has none or one
/// beyond 1000; times are Unix milliseconds, 0 where the survey had no clock.
struct SurveyedChannel {
  double centre_hz = 0.0;
  double width_hz = 0.0;  ///< the mean; the next two are the narrowest and the widest seen
  double min_width_hz = 0.0;
  double max_width_hz = 0.0;
  double peak_db = 0.0;
  double floor_db = 0.0;
  uint32_t hits = 0;   ///< dwells in which it was seen, at least 1
  uint32_t looks = 0;  ///< dwells that covered it; never fewer than hits
  int64_t first_unix_ms = 0;
  int64_t last_unix_ms = 0;
  std::string_view kind;  ///< the guess by width, one of signalKinds()

  /// How often it was seen of the times it could be, 0 to 1.
  double activity() const { return static_cast<double>(hits) / static_cast<double>(looks); }

  /// The same in whole per cent, but 100 only when it was never missed, and never 0.
  int activityPercent() const;
};

/// A survey.csv as far as it can be read, rows in the file's order.
struct SurveyRows {
  std::vector<SurveyedChannel> channels;
  /// Written before centres were put in the middle of their bins: they lie half a bin high, by an
  /// amount that takes the receiver's sample rate, which the file does not hold.
  bool is_older_format = false;
  bool has_header = false;
  size_t skipped_lines = 0;
  size_t first_skipped_line = 0;  ///< counted from 1
};

/// Every guess at the kind of a signal, from narrow to wide; the last one, "?", is for the widths
/// that fit none.
const std::vector<std::string_view>& signalKinds();

/// The guess for a width.
std::string_view guessSignalKind(double width_hz);

/// Reads the text of a survey.csv. Lines that are neither header, comment, blank nor a channel are
/// counted and left out, as is a last line that was cut off in writing.
SurveyRows parseSurveyRows(std::string_view text);

}  // namespace pelagrim_host
