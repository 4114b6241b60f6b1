#include <fmt/format.h>

#include <cstdio>
#include <string>
#include <vector>

#include "host/commands/commands.h"
#include "host/commands/open_source.h"
#include "host/commands/survey_setup.h"
#include "host/process/text_output.h"
#include "host/simulation/station_lines.h"

namespace pelagrim_host {

namespace {

std::string stationTable(const std::vector<SimulatedStation>& stations) {
  std::string text = fmt::format("{:>14}  {:>10}  {:>9}  {:<10}  {:<22}  {}\n", "Frequency",
                                 "Width", "Level", "Kind", "On air", "Station");
  for (const SimulatedStation& station : stations) {
    text += fmt::format("{:>10.4f} MHz  {:>6.1f} kHz  {:>6.0f} dB  {:<10}  {:<22}  {}\n",
                        station.centre_hz / 1e6, station.width_hz / 1e3, station.level_db,
                        kindText(station.kind), scheduleText(station), station.name);
  }
  return text;
}

}  // namespace

void runListStations(const Options& options) {
  const SimulatedBand band(simulatedBandConfig(options, setUpSurvey(options).inForce()));
  const auto& stations = band.stations();
  TextOutput(stdout).write(options.json ? stationLines(stations) : stationTable(stations));
}

}  // namespace pelagrim_host
