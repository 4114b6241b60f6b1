#include "host/survey_dir/survey_rows.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>

namespace pelagrim_host {
namespace {

constexpr std::string_view kFormatLine = "# survey.csv format 2";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // some editors begin a file with it
constexpr std::string_view kColumns = "centre_hz,";
constexpr std::string_view kUnknownKind = "?";

// Two numbers run together by a damaged file give a frequency that no radio has, or a level that
// no sum of samples has.
constexpr long long kHighestHz = 1'000'000'000'000;
constexpr double kHighestLevelDb = 1000.0;

struct KindOfWidth {
  double below_hz;
  std::string_view kind;
};

constexpr KindOfWidth kKindsOfWidth[] = {
    {1200.0, "carrier?"},   {4000.0, "SSB/CW?"},
    {9000.0, "AM?"},        {20000.0, "NFM?"},
    {40000.0, "wide NFM?"}, {120000.0, kUnknownKind},
    {260000.0, "WFM?"},     {std::numeric_limits<double>::infinity(), "wideband?"},
};

/// Takes the next line, its line feed included, off the front of `text`.
std::string takeLine(std::string_view& text) {
  std::string line(text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1));
  text.remove_prefix(line.size());
  return line;
}

/// What the file says where that is a known kind (it was guessed from the width before rounding).
std::string_view kindOf(std::string_view written, double width_hz) {
  while (!written.empty() && (written.back() == '\n' || written.back() == '\r')) {
    written.remove_suffix(1);
  }
  const auto& kinds = signalKinds();
  const auto known = std::find(kinds.begin(), kinds.end(), written);
  return known == kinds.end() ? guessSignalKind(width_hz) : *known;
}

double levelOrNone(double level_db) {
  return std::abs(level_db) <= kHighestLevelDb ? level_db
                                               : std::numeric_limits<double>::quiet_NaN();
}

std::optional<SurveyedChannel> channelOf(const std::string& line) {
  long long centre_hz = 0;
  long long width_hz = 0;
  long long min_width_hz = 0;
  long long max_width_hz = 0;
  long long first_unix_ms = 0;
  long long last_unix_ms = 0;
  int end = 0;
  SurveyedChannel channel;
  const int fields =
      std::sscanf(line.c_str(), "%lld,%lld,%lld,%lld,%lf,%lf,%u,%u,%lld,%lld%n", &centre_hz,
                  &width_hz, &min_width_hz, &max_width_hz, &channel.peak_db, &channel.floor_db,
                  &channel.hits, &channel.looks, &first_unix_ms, &last_unix_ms, &end);
  if (fields != 10 || centre_hz < 1 || channel.hits == 0) return std::nullopt;
  if (std::max({centre_hz, width_hz, min_width_hz, max_width_hz}) > kHighestHz) return std::nullopt;
  if (std::min({width_hz, min_width_hz, max_width_hz}) < 0) return std::nullopt;
  channel.centre_hz = static_cast<double>(centre_hz);
  channel.width_hz = static_cast<double>(width_hz);
  channel.min_width_hz = static_cast<double>(min_width_hz);
  channel.max_width_hz = static_cast<double>(max_width_hz);
  channel.peak_db = levelOrNone(channel.peak_db);
  channel.floor_db = levelOrNone(channel.floor_db);
  channel.looks = std::max(channel.looks, channel.hits);
  channel.first_unix_ms = first_unix_ms;
  channel.last_unix_ms = last_unix_ms;

  std::string_view rest = std::string_view(line).substr(static_cast<size_t>(end));
  const bool was_cut_off = rest.empty();  // not even a line feed: its last number may be short
  if (was_cut_off) return std::nullopt;
  if (rest.front() == ',') rest.remove_prefix(1);
  channel.kind = kindOf(rest, channel.width_hz);
  return channel;
}

bool isMeantAsText(const std::string& line) {
  const size_t first = line.find_first_not_of(" \t\r\n");
  return first == std::string::npos || line[0] == 'c' || line[first] == '#';
}

}  // namespace

int SurveyedChannel::activityPercent() const {
  const int percent = static_cast<int>(std::lround(100.0 * activity()));
  return hits < looks ? std::clamp(percent, 1, 99) : percent;
}

const std::vector<std::string_view>& signalKinds() {
  static const std::vector<std::string_view> kinds = [] {
    std::vector<std::string_view> all;
    for (const KindOfWidth& row : kKindsOfWidth) {
      if (row.kind != kUnknownKind) all.push_back(row.kind);
    }
    all.push_back(kUnknownKind);
    return all;
  }();
  return kinds;
}

std::string_view guessSignalKind(double width_hz) {
  if (!(width_hz > 0.0)) return kUnknownKind;
  for (const KindOfWidth& row : kKindsOfWidth) {
    if (width_hz < row.below_hz) return row.kind;
  }
  return std::end(kKindsOfWidth)[-1].kind;
}

SurveyRows parseSurveyRows(std::string_view text) {
  SurveyRows rows;
  rows.is_older_format = true;
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  for (size_t number = 1; !text.empty(); ++number) {
    const std::string line = takeLine(text);
    if (line.starts_with(kFormatLine)) rows.is_older_format = false;
    if (line.starts_with(kFormatLine) || line.starts_with(kColumns)) rows.has_header = true;
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
