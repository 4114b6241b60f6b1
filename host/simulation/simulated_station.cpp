#include "host/simulation/simulated_station.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include <fmt/format.h>

namespace pelagrim_host {

namespace {

constexpr double kSetHz = 2e6;
constexpr size_t kMaxSets = 500;  // 1 GHz: more stations than anyone waits for
constexpr double kFrequencyStepHz = 5000.0;
constexpr double kSsbMiddleHz = 1500.0;  // above the suppressed carrier, which is on the step

/// A station of the set. Its place is the distance of its carrier from the lower end.
struct Place {
  const char* name;
  SimulatedKind kind;
  double offset_hz;
  double level_db;
  double deviation_hz = 0.0;
  double first_on_seconds = 0.0;
  double on_seconds = 0.0;
  double period_seconds = 0.0;
};

/// In order of importance: a narrow band gets the first ones.
constexpr std::array kSet = {
    Place{"calling channel", SimulatedKind::kNfmVoice, 1500e3, 30.0, 3000.0, 2.0, 11.0, 17.0},
    Place{"repeater", SimulatedKind::kNfmVoice, 1650e3, 34.0, 3000.0, 22.0, 25.0, 95.0},
    Place{"long talk", SimulatedKind::kNfmVoice, 1225e3, 30.0, 2500.0},
    Place{"beacon", SimulatedKind::kCw, 420e3, 26.0},
    Place{"SSB talk", SimulatedKind::kSsbVoice, 300e3, 21.0},
    Place{"AM talk", SimulatedKind::kAmVoice, 1350e3, 32.0},
    Place{"packet node", SimulatedKind::kData, 800e3, 30.0, 2600.0, 1.0, 0.5, 3.0},
    Place{"broadcast", SimulatedKind::kWideFm, 620e3, 30.0, 75000.0},
    Place{"CW contact", SimulatedKind::kCw, 50e3, 30.0, 0.0, 0.0, 26.0, 40.0},
    Place{"weak SSB", SimulatedKind::kSsbVoice, 200e3, 20.0, 0.0, 3.0, 9.0, 20.0},
    Place{"edge talk", SimulatedKind::kNfmVoice, 950e3, 31.0, 3000.0},
    Place{"local talk", SimulatedKind::kNfmVoice, 1575e3, 40.0, 5000.0},
    Place{"telemetry", SimulatedKind::kData, 1840e3, 26.0, 2600.0, 1.0, 1.0, 4.0},
    Place{"satellite voice", SimulatedKind::kNfmVoice, 1880e3, 29.0, 3000.0, 10.0, 45.0, 70.0},
    Place{"satellite beacon", SimulatedKind::kCw, 1935e3, 23.0},
    Place{"satellite SSB", SimulatedKind::kSsbVoice, 1960e3, 20.0},
};

/// Nominal, as in a band plan.
double nominalWidthHz(const Place& place) {
  constexpr double kVoiceTopHz = 2600.0;
  constexpr double kMusicTopHz = 15000.0;
  switch (place.kind) {
    case SimulatedKind::kNfmVoice:
      return 2.0 * (place.deviation_hz + kVoiceTopHz);  // Carson's rule
    case SimulatedKind::kAmVoice:
      return 2.0 * kVoiceTopHz;
    case SimulatedKind::kSsbVoice:
      return 2200.0;
    case SimulatedKind::kCw:
      return 150.0;
    case SimulatedKind::kWideFm:
      return 2.0 * (place.deviation_hz + kMusicTopHz);
    case SimulatedKind::kData:
      return 9600.0 + 2.0 * place.deviation_hz;
  }
  return 0.0;
}

bool keepsClear(const SimulatedStation& station, const std::vector<SimulatedStation>& others) {
  constexpr double kClearanceHz = 8000.0;  // two stations stay two signals
  return std::all_of(others.begin(), others.end(), [&](const SimulatedStation& other) {
    return station.lowHz() - kClearanceHz > other.highHz() ||
           station.highHz() + kClearanceHz < other.lowHz();
  });
}

SimulatedStation stationAt(const Place& place, double wanted_hz) {
  const double carrier_hz = kFrequencyStepHz * std::round(wanted_hz / kFrequencyStepHz);
  const double middle_hz = place.kind == SimulatedKind::kSsbVoice ? kSsbMiddleHz : 0.0;
  return {.name = place.name,
          .kind = place.kind,
          .centre_hz = carrier_hz + middle_hz,
          .width_hz = nominalWidthHz(place),
          .level_db = place.level_db,
          .deviation_hz = place.deviation_hz,
          .first_on_seconds = place.first_on_seconds,
          .on_seconds = place.on_seconds,
          .period_seconds = place.period_seconds};
}

/// The stations of the set that fit between the limits, in order of frequency.
std::vector<SimulatedStation> placedSet(double low_hz, double high_hz) {
  std::vector<SimulatedStation> placed;
  for (const Place& place : kSet) {
    const double wanted_hz = low_hz + (high_hz - low_hz) * place.offset_hz / kSetHz;
    SimulatedStation station = stationAt(place, wanted_hz);
    const bool inside = station.lowHz() - station.guardHz() >= low_hz &&
                        station.highHz() + station.guardHz() <= high_hz;
    if (inside && keepsClear(station, placed)) placed.push_back(std::move(station));
  }
  std::sort(placed.begin(), placed.end(),
            [](const auto& a, const auto& b) { return a.centre_hz < b.centre_hz; });
  return placed;
}

}  // namespace

const char* kindText(SimulatedKind kind) {
  switch (kind) {
    case SimulatedKind::kNfmVoice:
      return "NFM voice";
    case SimulatedKind::kAmVoice:
      return "AM voice";
    case SimulatedKind::kSsbVoice:
      return "SSB voice";
    case SimulatedKind::kCw:
      return "CW";
    case SimulatedKind::kWideFm:
      return "wide FM";
    case SimulatedKind::kData:
      return "data";
  }
  return "?";
}

double SimulatedStation::guardHz() const {
  return std::max(3000.0, 0.25 * width_hz);
}

double SimulatedStation::strengthAt(double seconds) const {
  if (!(period_seconds > 0.0)) return 1.0;
  const double cycles = (seconds - first_on_seconds) / period_seconds;
  const double since_on = (cycles - std::floor(cycles)) * period_seconds;
  const double to_edge = std::min(since_on, on_seconds - since_on);
  return std::clamp(to_edge / kKeySlopeSeconds, 0.0, 1.0);
}

std::string scheduleText(const SimulatedStation& station) {
  if (!(station.period_seconds > 0.0)) return "always";
  return fmt::format("{:g} s of {:g} s from {:g} s", station.on_seconds, station.period_seconds,
                     station.first_on_seconds);
}

std::vector<SimulatedStation> simulatedPopulation(double low_hz, double high_hz) {
  const double wanted_sets = std::round((high_hz - low_hz) / kSetHz);
  const auto sets =
      static_cast<size_t>(std::clamp(wanted_sets, 1.0, static_cast<double>(kMaxSets)));
  const double set_hz = (high_hz - low_hz) / static_cast<double>(sets);
  std::vector<SimulatedStation> stations;
  for (size_t set = 0; set < sets; ++set) {
    const double set_low_hz = low_hz + set_hz * static_cast<double>(set);
    std::vector<SimulatedStation> placed = placedSet(set_low_hz, set_low_hz + set_hz);
    for (SimulatedStation& station : placed) {
      if (sets > 1) station.name += fmt::format(" {}", set + 1);
      stations.push_back(std::move(station));
    }
  }
  return stations;
}

}  // namespace pelagrim_host
