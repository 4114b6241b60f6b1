#include "host/simulation/station_lines.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace pelagrim_host {
namespace {

using Json = nlohmann::ordered_json;

}  // namespace

std::string stationLines(const std::vector<SimulatedStation>& stations) {
  std::string text;
  for (const SimulatedStation& station : stations) {
    const Json line = {{"name", station.name},
                       {"centre_hz", std::llround(station.centre_hz)},
                       {"width_hz", std::llround(station.width_hz)},
                       {"level_db", station.level_db},
                       {"kind", kindText(station.kind)},
                       {"on_air", station.onAir()}};
    text += line.dump() + "\n";
  }
  return text;
}

std::string truthLines(const std::vector<SimulatedStation>& stations, int64_t start_unix_ms,
                       int64_t span_ms) {
  std::string text;
  for (const SimulatedStation& station : stations) {
    Stretch stretch;
    for (int64_t ms = 0; ms < span_ms; ms = stretch.end_ms) {
      stretch = station.stretchAt(ms);
      if (!stretch.is_on) continue;
      const int64_t end_ms = std::min(stretch.end_ms, span_ms);
      const Json line = {{"name", station.name},
                         {"centre_hz", std::llround(station.centre_hz)},
                         {"start_unix_ms", start_unix_ms + std::max<int64_t>(stretch.begin_ms, 0)},
                         {"end_unix_ms", start_unix_ms + end_ms}};
      text += line.dump() + "\n";
    }
  }
  return text;
}

}  // namespace pelagrim_host
