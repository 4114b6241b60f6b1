#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "survey/channel.h"

namespace pelagrim {

/// All channels found so far, at most one per slot of a fixed frequency raster.
///
/// A channel stays in the slot in which it entered, even when its mean centre drifts into a
/// neighbour's range; detections are matched by their own slot only. Not synchronised: callers hold
/// the lock of whatever owns the survey. Members that allocate may throw std::bad_alloc and then
/// leave the survey as it was.
struct Survey {
  std::map<long, Channel> channels;  ///< by slot
  double raster_hz = 5000.0;         ///< width of a slot
  double band_lo_hz = 0.0;  ///< detections outside the band are dropped; its limits are inside
  double band_hi_hz = 0.0;  ///< no limits unless band_lo_hz < band_hi_hz

  /// The slot of a frequency: the nearest multiple of the raster, halves away from zero.
  long slotOf(double hz) const;

  /// Counts a look for every channel whose centre lies in lo_hz to hi_hz, ends included. Once per
  /// dwell, before any add.
  void lookAt(double lo_hz, double hi_hz);

  /// Merges a detection into the channel of its slot, or enters a new one. A new channel starts
  /// with this dwell's look; for a known one lookAt has counted it.
  void add(const Detection& found, int64_t now_ms);

  /// Files a channel under the slot of its centre, replacing whatever was there.
  void restore(const Channel& channel);

  /// Removes all channels; raster and band stay.
  void clear() { channels.clear(); }

  size_t size() const { return channels.size(); }

  /// All channels in display order: most active first, activity being hits / looks (0 without
  /// looks); among equals the lower centre first, a centre that is not a number last, then by slot.
  std::vector<Channel> byActivity() const { return busiest(channels.size()); }

  /// The first `max_count` channels of that order. Takes about linear time in the number of
  /// channels when few are wanted.
  std::vector<Channel> busiest(size_t max_count) const;
};

}  // namespace pelagrim
