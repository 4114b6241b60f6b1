#include "survey/survey.h"

#include <algorithm>
#include <cmath>

#include "survey/whole_number.h"

namespace pelagrim {

namespace {

double activity(const Channel& channel) {
  return channel.looks == 0 ? 0.0 : static_cast<double>(channel.hits) / channel.looks;
}

/// A channel's place in the display order, with what decides it at hand.
struct Ranked {
  double activity;
  double centre_hz;
  long slot;
  const Channel* channel;

  /// A total order even over centres that are not numbers, so no sort can run astray.
  bool operator<(const Ranked& other) const {
    if (activity != other.activity) return activity > other.activity;
    const bool unplaced = std::isnan(centre_hz);
    const bool other_unplaced = std::isnan(other.centre_hz);
    if (unplaced != other_unplaced) return other_unplaced;
    if (!unplaced && centre_hz != other.centre_hz) return centre_hz < other.centre_hz;
    return slot < other.slot;
  }
};

}  // namespace

long Survey::slotOf(double hz) const {
  return roundToInteger(hz / raster_hz);
}

void Survey::lookAt(double lo_hz, double hi_hz) {
  for (auto& [slot, channel] : channels) {
    if (lo_hz <= channel.centre_hz && channel.centre_hz <= hi_hz) ++channel.looks;
  }
}

void Survey::add(const Detection& found, int64_t now_ms) {
  const bool limited = band_lo_hz < band_hi_hz;
  if (limited && (found.centre_hz < band_lo_hz || found.centre_hz > band_hi_hz)) return;

  const Channel fresh{.centre_hz = found.centre_hz,
                      .width_hz = found.width_hz,
                      .peak_db = found.peak_db,
                      .floor_db = found.floor_db,
                      .first_unix_ms = now_ms,
                      .last_unix_ms = now_ms,
                      .hits = 1,
                      .looks = 1,
                      .min_width_hz = found.width_hz,
                      .max_width_hz = found.width_hz};
  const auto [entry, entered] = channels.try_emplace(slotOf(found.centre_hz), fresh);
  if (entered) return;

  Channel& channel = entry->second;
  const double hits = channel.hits;
  channel.last_unix_ms = now_ms;
  channel.centre_hz = (channel.centre_hz * hits + found.centre_hz) / (hits + 1.0);
  channel.width_hz = (channel.width_hz * hits + found.width_hz) / (hits + 1.0);
  ++channel.hits;
  channel.min_width_hz = std::min(channel.min_width_hz, found.width_hz);
  channel.max_width_hz = std::max(channel.max_width_hz, found.width_hz);
  channel.peak_db = std::max(channel.peak_db, found.peak_db);
  channel.floor_db = found.floor_db;
}

void Survey::restore(const Channel& channel) {
  channels.insert_or_assign(slotOf(channel.centre_hz), channel);
}

std::vector<Channel> Survey::busiest(size_t most) const {
  std::vector<Ranked> ranking;
  ranking.reserve(channels.size());
  for (const auto& [slot, channel] : channels) {
    ranking.push_back({activity(channel), channel.centre_hz, slot, &channel});
  }
  const size_t count = std::min(most, ranking.size());
  const auto last = ranking.begin() + static_cast<std::ptrdiff_t>(count);
  if (last != ranking.end()) std::nth_element(ranking.begin(), last, ranking.end());
  std::sort(ranking.begin(), last);

  std::vector<Channel> ordered;
  ordered.reserve(count);
  std::for_each(ranking.begin(), last, [&](const Ranked& r) { ordered.push_back(*r.channel); });
  return ordered;
}

}  // namespace pelagrim
