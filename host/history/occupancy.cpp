#include "host/history/occupancy.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "survey/detection.h"
#include "survey/spectrum.h"

namespace pelagrim_host {
namespace {

using pelagrim::kSpectrumBins;

/// Sorts and joins what overlaps or lies no further apart than `gap_s`.
std::vector<OnAirStretch> joined(std::vector<OnAirStretch> stretches, double gap_s) {
  std::sort(stretches.begin(), stretches.end(),
            [](const OnAirStretch& a, const OnAirStretch& b) { return a.from_s < b.from_s; });
  std::vector<OnAirStretch> apart;
  for (const OnAirStretch& stretch : stretches) {
    if (!apart.empty() && stretch.from_s - apart.back().to_s <= gap_s) {
      apart.back().to_s = std::max(apart.back().to_s, stretch.to_s);
    } else {
      apart.push_back(stretch);
    }
  }
  return apart;
}

void addStretches(const WatchedPlace& place, double seconds, std::vector<OnAirStretch>& stretches) {
  const auto& edges = place.edges_ms;
  for (size_t i = 0; i < edges.size(); i += 2) {
    const double from_s = edges[i] / 1000.0;
    const double to_s = i + 1 < edges.size() ? edges[i + 1] / 1000.0 : seconds;
    if (from_s < seconds) stretches.push_back({from_s, std::min(to_s, seconds)});
  }
}

/// Whether the highest level of every bin of the interval stayed below what two bins alone need to
/// count as on the air, at most 6 dB above the noise. A wider interval needs less, but in the
/// highest of hundreds of rows noise is above that, too.
bool wasSilent(const DwellRecord& dwell, FrequencyInterval interval) {
  if (dwell.max_db.size() != kSpectrumBins || dwell.mean_db.size() != kSpectrumBins) return false;
  const double bin_hz = dwell.slice.sample_rate_hz / kSpectrumBins;
  const double low_bin = std::floor((interval.low_hz - dwell.slice.lowHz()) / bin_hz + 0.5);
  const double high_bin = std::ceil((interval.high_hz - dwell.slice.lowHz()) / bin_hz + 0.5);
  if (!(low_bin >= 0.0 && high_bin <= static_cast<double>(kSpectrumBins))) return false;
  const auto first = dwell.max_db.begin() + static_cast<std::ptrdiff_t>(low_bin);
  const auto last = dwell.max_db.begin() + static_cast<std::ptrdiff_t>(high_bin);
  const double limit_db = pelagrim::noiseFloorDb(dwell.mean_db, dwell.threshold_db) +
                          10.0 * std::log10(onAirThreshold(2, dwell.row_frames));
  return std::all_of(first, last,
                     [&](float level_db) { return static_cast<double>(level_db) <= limit_db; });
}

/// Dwells that follow each other without a gap, on one axis of time.
struct Visit {
  int64_t first_unix_ms;
  double seconds = 0.0;
  std::vector<double> ends_s{};  ///< of its dwells
  std::vector<OnAirStretch> on_air{};
};

std::vector<Visit> visitsOf(std::span<const Watch> watches, double bridged_s) {
  std::vector<Visit> visits;
  const Watch* before = nullptr;
  for (const Watch& watch : watches) {
    const bool goes_on =
        before && before->run == watch.run && before->end_sample == watch.first_sample;
    if (!goes_on) visits.push_back({.first_unix_ms = watch.first_unix_ms});
    Visit& visit = visits.back();
    for (const OnAirStretch& on : watch.on_air) {
      visit.on_air.push_back({visit.seconds + on.from_s, visit.seconds + on.to_s});
    }
    visit.seconds += watch.seconds;
    visit.ends_s.push_back(visit.seconds);
    before = &watch;
  }
  for (Visit& visit : visits) visit.on_air = joined(std::move(visit.on_air), bridged_s);
  return visits;
}

void addTransmissions(const Visit& visit, Occupancy& occupancy) {
  for (const OnAirStretch& on : visit.on_air) {
    occupancy.transmissions.push_back(
        {.start_unix_ms = visit.first_unix_ms + std::llround(1000.0 * on.from_s),
         .seconds = on.to_s - on.from_s,
         .is_cut = on.from_s <= 0.0 || on.to_s >= visit.seconds});
  }
}

/// The share of each dwell of a visit.
void addShares(const Visit& visit, std::vector<VisitShare>& shares) {
  double from_s = 0.0;
  size_t next = 0;
  for (const double to_s : visit.ends_s) {
    double on_s = 0.0;
    while (next < visit.on_air.size() && visit.on_air[next].to_s <= from_s) ++next;
    for (size_t i = next; i < visit.on_air.size() && visit.on_air[i].from_s < to_s; ++i) {
      on_s += std::min(to_s, visit.on_air[i].to_s) - std::max(from_s, visit.on_air[i].from_s);
    }
    shares.push_back({to_s - from_s, on_s});
    from_s = to_s;
  }
}

/// Counts changes of state, `was_on` being the one at the end of the visit before.
void countChanges(const Visit& visit, std::optional<bool>& was_on, size_t& changes) {
  const bool starts_on = !visit.on_air.empty() && visit.on_air.front().from_s <= 0.0;
  const bool ends_on = !visit.on_air.empty() && visit.on_air.back().to_s >= visit.seconds;
  if (was_on && *was_on != starts_on) ++changes;
  changes += 2 * visit.on_air.size() - (starts_on ? 1 : 0) - (ends_on ? 1 : 0);
  was_on = ends_on;
}

}  // namespace

std::optional<Watch> watchOf(const DwellRecord& dwell, int64_t run, FrequencyInterval interval) {
  Watch watch{.run = run,
              .first_sample = dwell.first_sample,
              .end_sample = dwell.first_sample + dwell.samples,
              .first_unix_ms = dwell.first_unix_ms,
              .seconds = static_cast<double>(dwell.samples) / dwell.slice.sample_rate_hz,
              .on_air = {}};
  bool was_watched = false;
  for (const WatchedPlace& place : dwell.places) {
    if (place.high_hz < interval.low_hz || place.low_hz > interval.high_hz) continue;
    was_watched = true;
    addStretches(place, watch.seconds, watch.on_air);
  }
  watch.on_air = joined(std::move(watch.on_air), 0.0);
  if (!was_watched && !wasSilent(dwell, interval)) return std::nullopt;
  return watch;
}

Occupancy occupancyOf(std::span<const Watch> watches, double bridged_s) {
  Occupancy occupancy;
  std::vector<VisitShare> shares;
  std::optional<bool> was_on;
  const std::vector<Visit> visits = visitsOf(watches, bridged_s);
  for (const Visit& visit : visits) {
    addTransmissions(visit, occupancy);
    addShares(visit, shares);
    countChanges(visit, was_on, occupancy.changes);
  }
  occupancy.visits = visits.size();
  for (const VisitShare& share : shares) {
    occupancy.observed_s += share.observed_s;
    occupancy.on_air_s += share.on_s;
  }
  if (occupancy.changes >= kMinChanges) occupancy.interval = shareInterval(shares);
  return occupancy;
}

}  // namespace pelagrim_host
