#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/simulation/simulated_station.h"

namespace pelagrim_host {

/// One JSON object per line and station: name, centre_hz, width_hz, level_db, kind, and on_air, the
/// share of time on the air in the long run.
std::string stationLines(const std::vector<SimulatedStation>& stations);

/// What was on the air in the first span_ms milliseconds of the simulation, which began at
/// start_unix_ms: one JSON object per line and transmission, station by station, in order of time:
/// name, centre_hz, start_unix_ms, end_unix_ms (the first millisecond without it). Transmissions
/// are cut to the span.
std::string truthLines(const std::vector<SimulatedStation>& stations, int64_t start_unix_ms,
                       int64_t span_ms);

}  // namespace pelagrim_host
