#include "host/survey_dir/band_plan.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <optional>
#include <utility>

namespace pelagrim_host {
namespace {

// The plug-in reads the band plan in pieces of at most this size and takes each for a line.
constexpr size_t kLongestLine = 511;

/// Takes the next line, or a piece of it, off the front of `text`.
std::string takeLine(std::string_view& text) {
  const size_t length = std::min({text.find('\n'), text.size() - 1, kLongestLine - 1}) + 1;
  std::string line(text.substr(0, length));
  text.remove_prefix(length);
  return line;
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

}  // namespace

std::vector<BandRange> parseBandPlan(std::string_view text) {
  std::vector<BandRange> band_plan;
  while (!text.empty()) {
    if (auto range = bandRangeOf(takeLine(text))) band_plan.push_back(*std::move(range));
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

}  // namespace pelagrim_host
