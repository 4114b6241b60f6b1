#include "host/survey_dir/survey_rows.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include "files/results_row.h"
#include "survey/signal_kind.h"

namespace pelagrim_host {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // some editors write one
constexpr std::string_view kColumns = "centre_hz,";

// Two numbers that run together in a damaged file give a frequency that no radio has, or a level
// that no sum of samples has.
constexpr double kHighestHz = 1e12;
constexpr double kHighestLevelDb = 1000.0;

/// Takes the next line, its line feed included, off the front of `text`.
std::string takeLine(std::string_view& text) {
  std::string line(text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1));
  text.remove_prefix(line.size());
  return line;
}

/// What the file says, if it is a known kind: it was guessed from the width before rounding.
std::string_view kindOf(std::string_view written, double width_hz) {
  static const auto kinds = pelagrim::signalKinds();
  if (!written.empty() && written.front() == ',') written.remove_prefix(1);
  written = written.substr(0, written.find_last_not_of("\r\n") + 1);
  const auto known = std::find(kinds.begin(), kinds.end(), written);
  return known == kinds.end() ? pelagrim::guessKind(width_hz) : *known;
}

double levelOrNone(double level_db) {
  return std::abs(level_db) <= kHighestLevelDb ? level_db
                                               : std::numeric_limits<double>::quiet_NaN();
}

/// Stricter than the plug-in, which takes any number, because what is shown has to make sense.
std::optional<SurveyedChannel> channelOf(const std::string& line) {
  const auto row = pelagrim::parseResultsRow(line.c_str());
  if (!row) return std::nullopt;
  const bool was_cut_off = row->rest.empty();  // no line feed: the last number may be short
  SurveyedChannel channel{row->channel, {}};
  const auto [narrowest_hz, widest_hz] =
      std::minmax({channel.width_hz, channel.min_width_hz, channel.max_width_hz});
  if (was_cut_off || narrowest_hz < 0.0 || std::max(channel.centre_hz, widest_hz) > kHighestHz) {
    return std::nullopt;
  }
  channel.looks = row->written_looks;
  channel.peak_db = levelOrNone(channel.peak_db);
  channel.floor_db = levelOrNone(channel.floor_db);
  channel.kind = kindOf(row->rest, channel.width_hz);
  return channel;
}

bool isMeantAsText(const std::string& line) {
  const size_t first = line.find_first_not_of(" \t\r\n");
  return first == std::string::npos || line[0] == 'c' || line[first] == '#';
}

}  // namespace

SurveyRows parseSurveyRows(std::string_view text) {
  SurveyRows rows;
  rows.is_older_format = true;
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  for (size_t number = 1; !text.empty(); ++number) {
    const std::string line = takeLine(text);
    if (line.starts_with(pelagrim::kFormatMark)) rows.is_older_format = false;
    if (line.starts_with(pelagrim::kFormatMark) || line.starts_with(kColumns))
      rows.has_header = true;
    if (isMeantAsText(line)) continue;
    if (auto channel = channelOf(line)) {
      rows.channels.push_back(*channel);
    } else if (rows.skipped_lines++ == 0) {
      rows.first_skipped_line = number;
    }
  }
  return rows;
}

}  // namespace pelagrim_host
