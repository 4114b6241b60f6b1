#include "survey/survey.h"

#include <algorithm>
#include <cmath>

#include "survey/whole_number.h"

namespace pelagrim {

namespace {

double activityOf(const Channel& channel) {
  return channel.looks == 0 ? 0.0 : static_cast<double>(channel.hits) / channel.looks;
}

/// A channel and the values that decide its place in the display order.
struct Ranked {
  double activity;
  double centre_hz;
  long slot;
  const Channel* channel;

  /// A total order even over centres that are not numbers, as a sort needs one.
  friend bool operator<(const Ranked& a, const Ranked& b) {
    if (a.activity != b.activity) return a.activity > b.activity;
    const bool a_unplaced = std::isnan(a.centre_hz);
    const bool b_unplaced = std::isnan(b.centre_hz);
    if (a_unplaced != b_unplaced) return b_unplaced;
    if (!a_unplaced && a.centre_hz != b.centre_hz) return a.centre_hz < b.centre_hz;
    return a.slot < b.slot;
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

std::vector<Channel> Survey::busiest(size_t max_count) const {
  const size_t count = std::min(max_count, channels.size());
  std::vector<Ranked> best;  // once full, a heap with its lowest-ranked channel on top
  best.reserve(count);
  for (const auto& [slot, channel] : channels) {
    const Ranked next{activityOf(channel), channel.centre_hz, slot, &channel};
    if (best.size() < count) {
      best.push_back(next);
      if (best.size() == count) std::make_heap(best.begin(), best.end());
    } else if (count > 0 && next < best.front()) {
      std::pop_heap(best.begin(), best.end());
      best.back() = next;
      std::push_heap(best.begin(), best.end());
    }
  }
  std::sort(best.begin(), best.end());

  std::vector<Channel> ordered;
  ordered.reserve(count);
  for (const Ranked& ranked : best) ordered.push_back(*ranked.channel);
  return ordered;
}

}  // namespace pelagrim
