#include "host/simulation/simulated_station.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include <fmt/format.h>

#include "host/simulation/white_noise.h"

namespace pelagrim_host {

namespace {

using Kind = SimulatedKind;

constexpr double kSetHz = 2e6;
constexpr size_t kMaxSets = 500;  // 1 GHz: more stations than anyone waits for
constexpr double kFrequencyStepHz = 5000.0;
constexpr double kSsbMiddleHz = 1500.0;  // above the suppressed carrier, which is on the step

/// When a station is on the air, regularly and irregularly; what is 0 means always.
struct Times {
  double first_on_seconds = 0.0;
  double on_seconds = 0.0;
  double period_seconds = 0.0;
  double mean_on_seconds = 0.0;
  double mean_off_seconds = 0.0;
};

/// A station of the set. Its place is the distance of its carrier from the lower end.
struct Place {
  const char* name;
  Kind kind;
  double offset_hz;
  double level_db;
  double deviation_hz;
  Times times;
};

/// In order of importance: a narrow band gets the first ones. The irregular times range from half a
/// second to a minute, and from 5 to 75 % on the air.
constexpr std::array kSet = {
    Place{"calling channel", Kind::kNfmVoice, 1500e3, 30.0, 3000.0, {2.0, 11.0, 17.0, 3.0, 20.0}},
    Place{"repeater", Kind::kNfmVoice, 1650e3, 34.0, 3000.0, {22.0, 25.0, 95.0, 12.0, 30.0}},
    Place{"long talk", Kind::kNfmVoice, 1225e3, 30.0, 2500.0, {}},
    Place{"beacon", Kind::kCw, 420e3, 26.0, 0.0, {}},
    Place{"SSB talk", Kind::kSsbVoice, 300e3, 21.0, 0.0, {0.0, 0.0, 0.0, 15.0, 10.0}},
    Place{"AM talk", Kind::kAmVoice, 1350e3, 32.0, 0.0, {0.0, 0.0, 0.0, 4.0, 16.0}},
    Place{"packet node", Kind::kData, 800e3, 30.0, 2600.0, {1.0, 0.5, 3.0, 0.5, 2.5}},
    Place{"broadcast", Kind::kWideFm, 620e3, 30.0, 75000.0, {}},
    Place{"CW contact", Kind::kCw, 50e3, 30.0, 0.0, {0.0, 26.0, 40.0, 18.0, 14.0}},
    Place{"weak SSB", Kind::kSsbVoice, 200e3, 20.0, 0.0, {3.0, 9.0, 20.0, 6.0, 12.0}},
    Place{"edge talk", Kind::kNfmVoice, 950e3, 31.0, 3000.0, {0.0, 0.0, 0.0, 2.0, 38.0}},
    Place{"local talk", Kind::kNfmVoice, 1575e3, 40.0, 5000.0, {0.0, 0.0, 0.0, 30.0, 10.0}},
    Place{"telemetry", Kind::kData, 1840e3, 26.0, 2600.0, {1.0, 1.0, 4.0, 1.0, 9.0}},
    Place{"satellite voice", Kind::kNfmVoice, 1880e3, 29.0, 3000.0, {10.0, 45.0, 70.0, 60.0, 60.0}},
    Place{"satellite beacon", Kind::kCw, 1935e3, 23.0, 0.0, {}},
    Place{"satellite SSB", Kind::kSsbVoice, 1960e3, 20.0, 0.0, {0.0, 0.0, 0.0, 8.0, 24.0}},
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
          .first_on_seconds = place.times.first_on_seconds,
          .on_seconds = place.times.on_seconds,
          .period_seconds = place.times.period_seconds};
}

/// The stations of the set that fit between the limits, in order of frequency. A station's
/// irregular times depend on its place in the set, not on the band or on the other stations.
std::vector<SimulatedStation> placedSet(double low_hz, double high_hz,
                                        std::optional<uint64_t> irregular_seed) {
  std::vector<SimulatedStation> placed;
  for (size_t i = 0; i < kSet.size(); ++i) {
    const Place& place = kSet[i];
    const double wanted_hz = low_hz + (high_hz - low_hz) * place.offset_hz / kSetHz;
    SimulatedStation station = stationAt(place, wanted_hz);
    if (irregular_seed && place.times.mean_on_seconds > 0.0) {
      station.irregular.emplace(hashedNumber(*irregular_seed, i), place.times.mean_on_seconds,
                                place.times.mean_off_seconds);
    }
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

Stretch SimulatedStation::stretchAt(int64_t ms) const {
  if (irregular) return irregular->stretchAt(ms);
  if (!(period_seconds > 0.0)) {
    return {std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max(), true};
  }
  const int64_t period_ms = std::max<int64_t>(std::llround(1000.0 * period_seconds), 1);
  const int64_t on_ms = std::llround(1000.0 * on_seconds);
  const int64_t cycle_ms = (ms - std::llround(1000.0 * first_on_seconds)) % period_ms;
  const int64_t since_on_ms = cycle_ms < 0 ? cycle_ms + period_ms : cycle_ms;
  const int64_t on_at_ms = ms - since_on_ms;
  if (since_on_ms < on_ms) return {on_at_ms, on_at_ms + on_ms, true};
  return {on_at_ms + on_ms, on_at_ms + period_ms, false};
}

double SimulatedStation::onAir() const {
  if (irregular) {
    return irregular->meanOnSeconds() / (irregular->meanOnSeconds() + irregular->meanOffSeconds());
  }
  return period_seconds > 0.0 ? on_seconds / period_seconds : 1.0;
}

double StationStrength::at(double seconds) {
  double to_edge = 0.0;
  if (station_.irregular) {
    const auto ms = static_cast<int64_t>(std::floor(1000.0 * seconds));
    if (!stretch_.contains(ms)) stretch_ = station_.stretchAt(ms);
    if (!stretch_.is_on) return 0.0;
    to_edge = std::min(seconds - 0.001 * static_cast<double>(stretch_.begin_ms),
                       0.001 * static_cast<double>(stretch_.end_ms) - seconds);
  } else {
    if (!(station_.period_seconds > 0.0)) return 1.0;
    const double cycles = (seconds - station_.first_on_seconds) / station_.period_seconds;
    const double since_on = (cycles - std::floor(cycles)) * station_.period_seconds;
    to_edge = std::min(since_on, station_.on_seconds - since_on);
  }
  return std::clamp(to_edge / kKeySlopeSeconds, 0.0, 1.0);
}

std::string scheduleText(const SimulatedStation& station) {
  if (station.irregular) {
    return fmt::format("~{:g} s on, ~{:g} s off", station.irregular->meanOnSeconds(),
                       station.irregular->meanOffSeconds());
  }
  if (!(station.period_seconds > 0.0)) return "always";
  return fmt::format("{:g} s of {:g} s from {:g} s", station.on_seconds, station.period_seconds,
                     station.first_on_seconds);
}

std::vector<SimulatedStation> simulatedPopulation(double low_hz, double high_hz,
                                                  std::optional<uint64_t> irregular_seed) {
  const double wanted_sets = std::round((high_hz - low_hz) / kSetHz);
  const auto sets =
      static_cast<size_t>(std::clamp(wanted_sets, 1.0, static_cast<double>(kMaxSets)));
  const double set_hz = (high_hz - low_hz) / static_cast<double>(sets);
  std::vector<SimulatedStation> stations;
  for (size_t set = 0; set < sets; ++set) {
    const double set_low_hz = low_hz + set_hz * static_cast<double>(set);
    std::optional<uint64_t> set_seed;
    if (irregular_seed) set_seed = hashedNumber(*irregular_seed, set);
    std::vector<SimulatedStation> placed = placedSet(set_low_hz, set_low_hz + set_hz, set_seed);
    for (SimulatedStation& station : placed) {
      if (sets > 1) station.name += fmt::format(" {}", set + 1);
      stations.push_back(std::move(station));
    }
  }
  return stations;
}

}  // namespace pelagrim_host
