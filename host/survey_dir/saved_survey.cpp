#include "host/survey_dir/saved_survey.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "host/survey_dir/survey_settings_file.h"

namespace pelagrim_host {
namespace {

constexpr const char* kResultsName = "survey.csv";
constexpr const char* kBandPlanName = "survey-labels.txt";
constexpr std::string_view kFormatLine = "# survey.csv format 2";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // some editors begin a file with it
constexpr std::string_view kColumns = "centre_hz,";
constexpr std::string_view kUnknownKind = "?";

// The plug-in reads the band plan in pieces of at most this size and takes each for a line.
constexpr size_t kLongestLine = 511;

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

/// Takes the next line, or `most` bytes of it, off the front of `text`, its line feed included.
std::string takeLine(std::string_view& text, size_t most = std::string_view::npos) {
  const size_t length = std::min({text.find('\n'), text.size() - 1, most - 1}) + 1;
  std::string line(text.substr(0, length));
  text.remove_prefix(length);
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

std::optional<BandRange> bandRangeOf(std::string line) {
  line = line.substr(0, line.find('#'));
  double low_mhz = 0.0;
  double high_mhz = 0.0;
  int name_at = -1;  // stays so when the line ends before a name
  if (std::sscanf(line.c_str(), "%lf %lf %n", &low_mhz, &high_mhz, &name_at) != 2 ||
      !(low_mhz <= high_mhz) || name_at < 0) {  // also for edges that are not a number
    return std::nullopt;
  }
  // A zero byte ends the name, as it does for the plug-in.
  std::string name = line.c_str() + name_at;
  name.erase(name.find_last_not_of(" \t\r\n") + 1);
  if (name.empty()) return std::nullopt;
  return BandRange{low_mhz * 1e6, high_mhz * 1e6, std::move(name)};
}

std::string readText(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    throw std::runtime_error(fmt::format("{} is a directory, not a file", path.string()));
  }
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (!file) {
    throw std::runtime_error(fmt::format("cannot read {}: {}", path.string(),
                                         errno == 0 ? "read error" : std::strerror(errno)));
  }
  return text;
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

std::vector<BandRange> parseBandPlan(std::string_view text) {
  std::vector<BandRange> band_plan;
  while (!text.empty()) {
    if (auto range = bandRangeOf(takeLine(text, kLongestLine)))
      band_plan.push_back(*std::move(range));
  }
  return band_plan;
}

const BandRange* findBandRange(const std::vector<BandRange>& band_plan, double hz) {
  for (const BandRange& range : band_plan) {
    const bool is_single = range.low_hz == range.high_hz;
    if (is_single ? hz == range.low_hz : range.low_hz <= hz && hz < range.high_hz) return &range;
  }
  return nullptr;
}

SurveySettings parseSurveySettings(std::string_view text) {
  SurveySettings settings;
  // The plug-in's defaults.
  settings.start_hz = findNumber(text, "start").value_or(144e6);
  settings.stop_hz = findNumber(text, "stop").value_or(146e6);
  settings.threshold_db = findNumber(text, "threshold_db").value_or(12.0);
  settings.dwell_seconds = findNumber(text, "dwell_seconds").value_or(20.0);
  settings.raster_hz = findNumber(text, "raster_hz").value_or(5000.0);
  settings.sweep = asksToSweep(text);
  return settings;
}

std::filesystem::path surveyPlace(const std::string& named) {
  if (!named.empty()) return named;
  const auto variable = [](const char* name) {
    const char* const value = std::getenv(name);
    return std::filesystem::path(value == nullptr ? "" : value);
  };
  if (auto directory = variable("ORVANE_SURVEY_DIR"); !directory.empty()) return directory;
  if (auto home = variable("HOME"); !home.empty()) return home / ".orvane" / "pelagrim";
  return ".";
}

SurveyFiles readSurveyFiles(const std::filesystem::path& place) {
  std::error_code error;
  SurveyFiles survey;
  const bool is_directory = std::filesystem::is_directory(place, error);
  survey.results_path = is_directory ? place / kResultsName : place;
  if (!std::filesystem::exists(survey.results_path, error)) {
    throw std::runtime_error(
        fmt::format("there is no survey at {}; name a survey directory or its {}",
                    survey.results_path.string(), kResultsName));
  }
  survey.rows = parseSurveyRows(readText(survey.results_path));
  if (survey.rows.skipped_lines > 0 && survey.rows.channels.empty() && !survey.rows.has_header) {
    throw std::runtime_error(fmt::format("{} is no survey: it has neither a header nor a channel",
                                         survey.results_path.string()));
  }
  const auto directory = survey.results_path.parent_path();
  for (const auto& path : {directory / kBandPlanName, settingsPath(directory)}) {
    // Nobody named it, and reading it waits for a writer that may never come.
    if (std::filesystem::is_fifo(path, error)) {
      throw std::runtime_error(fmt::format("{} is a pipe, not a file", path.string()));
    }
  }
  if (std::filesystem::exists(directory / kBandPlanName, error)) {
    survey.band_plan = parseBandPlan(readText(directory / kBandPlanName));
  }
  if (const auto text = readSettings(directory)) survey.settings = parseSurveySettings(*text);
  return survey;
}

std::vector<std::filesystem::path> pathsOf(const SurveyFiles& survey) {
  const auto directory = survey.results_path.parent_path();
  return {survey.results_path, directory / kResultsName, directory / kBandPlanName,
          settingsPath(directory)};
}

std::vector<std::string> surveyRemarks(const SurveyFiles& survey) {
  std::vector<std::string> remarks;
  const auto& [channels, is_older_format, has_header, skipped_lines, first_skipped_line] =
      survey.rows;
  const std::string path = survey.results_path.string();
  if (skipped_lines > 0) {
    remarks.push_back(fmt::format("{}: skipped {} line{} that could not be read, first line {}",
                                  path, skipped_lines, skipped_lines == 1 ? "" : "s",
                                  first_skipped_line));
  }
  if (channels.empty()) {
    remarks.push_back(fmt::format("{} holds no channels", path));
  } else if (is_older_format) {
    remarks.push_back(fmt::format(
        "{} is of an older format: its centres are shown as they are, half a bin too high", path));
  }
  return remarks;
}

}  // namespace pelagrim_host
