#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
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

/// A range of the band plan; a single frequency where both edges are equal. The name is as it
/// stands in the file and may hold any byte but a line feed.
struct BandRange {
  double low_hz = 0.0;
  double high_hz = 0.0;
  std::string name;
};

/// What survey.cfg asks for, with the plug-in's default for a key that it lacks; all empty when
/// there is no such file.
struct SurveySettings {
  std::optional<double> start_hz;
  std::optional<double> stop_hz;
  std::optional<double> threshold_db;
  std::optional<double> dwell_seconds;
  std::optional<double> raster_hz;
  std::optional<bool> sweep;
};

/// A survey directory, or a survey.csv with what lies beside it.
struct SurveyFiles {
  std::filesystem::path results_path;
  SurveyRows rows;
  std::vector<BandRange> band_plan;  ///< empty when there is no such file
  SurveySettings settings;
};

/// Every guess at the kind of a signal, from narrow to wide; the last one, "?", is for the widths
/// that fit none.
const std::vector<std::string_view>& signalKinds();

/// The guess for a width.
std::string_view guessSignalKind(double width_hz);

/// Reads the text of a survey.csv. Lines that are neither header, comment, blank nor a channel are
/// counted and left out, as is a last line that was cut off in writing.
SurveyRows parseSurveyRows(std::string_view text);

/// Reads the text of a survey-labels.txt: "<low MHz> <high MHz> <name>", "#" begins a comment.
/// Everything else is left out.
std::vector<BandRange> parseBandPlan(std::string_view text);

/// The first range of `band_plan` that holds `hz`: its lower edge belongs to it, its upper does
/// not; a single frequency holds only itself. Null when there is none.
const BandRange* findBandRange(const std::vector<BandRange>& band_plan, double hz);

/// Reads the text of a survey.cfg.
SurveySettings parseSurveySettings(std::string_view text);

/// Where the survey lies that the user means: `named`, a directory or a file, or when that is empty
/// the directory in which the plug-in keeps its own: $ORVANE_SURVEY_DIR, else ~/.orvane/pelagrim,
/// else the working directory.
std::filesystem::path surveyPlace(const std::string& named);

/// Reads the survey at `place`, a survey directory or a results file. Throws std::runtime_error,
/// naming the file, when there is none, when it cannot be read, or when it has lines but neither a
/// header nor a channel and so is something else.
SurveyFiles readSurveyFiles(const std::filesystem::path& place);

/// What was read and the results, settings and band plan of its directory, there or not.
std::vector<std::filesystem::path> pathsOf(const SurveyFiles& survey);

/// One line for each thing that the reader of a report or an export should know: lines skipped,
/// centres of an older file, no channel at all.
std::vector<std::string> surveyRemarks(const SurveyFiles& survey);

}  // namespace pelagrim_host
